// SPDX-License-Identifier: Apache-2.0

#include "rulecheck/page/message_text.h"

#include <vok/rulecheck/Converter.h>

#include <charconv>
#include <cstddef>
#include <string_view>
#include <utility>
#include <vector>

#include "rulecheck/page/safe_text.h"

namespace rulecheck {
namespace {

using vok::rulecheck::Arg;
using vok::rulecheck::Converter;
using vok::rulecheck::MsgInst;

// A text could name an argument any number of times, in each of many findings.
constexpr std::size_t maxArgumentBytes = 1u << 20;
constexpr int maxPlaces = 8;

struct Argument {
  std::string html;
  int places;
};

std::string argumentHtml(const Arg& arg) {
  const std::string html = Converter::toHtml(arg);
  return isBlank(html) ? "<span class=\"absent\">(empty)</span>"
                       : "<code class=\"arg\">" + html + "</code>";
}

std::vector<Argument> argumentsOf(const MsgInst& message) {
  std::vector<Argument> arguments;
  for (const Arg& arg : message.args().arg()) {
    arguments.push_back({argumentHtml(arg), 0});
  }
  return arguments;
}

// Puts arguments into the places of a text.
class Composer {
 public:
  explicit Composer(std::vector<Argument> arguments) : arguments_(std::move(arguments)) {}

  std::string compose(std::string_view text) {
    for (auto percent = text.find('%'); percent != std::string_view::npos;
         percent = text.find('%')) {
      html_ += text.substr(0, percent);
      text.remove_prefix(percent);
      text.remove_prefix(place(text));
    }
    html_ += text;
    appendUnplaced();
    return html_;
  }

 private:
  // Appends what the "%" at the front of the text stands for, and returns the
  // number of bytes that this replaces.
  std::size_t place(std::string_view text) {
    if (text.substr(1, 1) == "%") {
      html_ += '%';
      return 2;
    }
    std::size_t number = 0;
    const char* const digits = text.data() + 1;
    const char* const end = std::from_chars(digits, text.data() + text.size(), number).ptr;
    const bool fits = text.substr(1, 1) != "0" && number >= 1 && number <= arguments_.size();
    if (!fits || argumentBytes_ > maxArgumentBytes || arguments_[number - 1].places == maxPlaces) {
      html_ += '%';
      return 1;
    }
    Argument& argument = arguments_[number - 1];
    ++argument.places;
    argumentBytes_ += argument.html.size();
    html_ += argument.html;
    return static_cast<std::size_t>(end - text.data());
  }

  void appendUnplaced() {
    const char* separator = " <span class=\"unplaced\">(";
    for (const Argument& argument : arguments_) {
      if (argument.places == 0) {
        html_ += separator + argument.html;
        separator = ", ";
      }
    }
    html_ += *separator == ',' ? ")</span>" : "";
  }

  std::vector<Argument> arguments_;
  std::size_t argumentBytes_ = 0;
  std::string html_;
};

}  // namespace

std::string messageHtml(const MsgInst& safeMessage) {
  return Composer(argumentsOf(safeMessage)).compose(safeMessage.text());
}

}  // namespace rulecheck
