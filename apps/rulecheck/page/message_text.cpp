// SPDX-License-Identifier: Apache-2.0

#include "rulecheck/page/message_text.h"

#include <vok/rulecheck/Converter.h>

#include <algorithm>
#include <charconv>

#include "rulecheck/page/safe_html.h"

namespace rulecheck {
namespace {

using vok::rulecheck::Arg;
using vok::rulecheck::Converter;
using vok::rulecheck::MsgInst;

// A text could name an argument any number of times, in each of many findings.
constexpr std::size_t maxArgumentBytes = 1u << 20;
constexpr std::ptrdiff_t maxPlaces = 8;

// Most arguments are, and need no copy to become safe.
bool isString(const Arg& arg) {
  return arg.has_string_val() && !arg.has_ref() && !arg.has_refs() && !arg.has_uri() &&
         !arg.has_uris() && !arg.has_scalar();
}

std::string argumentHtml(const Arg& arg) {
  const std::string html =
      isString(arg) ? escapeText(arg.string_val()) : Converter::toHtml(safeCopy(arg));
  return isBlank(html) ? "<span class=\"absent\">(empty)</span>" : html;
}

std::string marked(const std::string& argument) {
  return "<code class=\"arg\">" + argument + "</code>";
}

}  // namespace

MessageParts::MessageParts(const MsgInst& message, int leftOut)
    : message_(message),
      leftOut_(leftOut),
      arguments_(static_cast<std::size_t>(message.args().arg_size())) {
  const std::string text = escapeText(message.text());
  const std::string prefix = '%' + std::to_string(leftOut + 1) + ": ";
  const bool hasPrefix = leftOut >= 0 && text.compare(0, prefix.size(), prefix) == 0;
  compose(std::string_view(text).substr(hasPrefix ? prefix.size() : 0));
}

std::vector<int> MessageParts::others() const {
  std::vector<int> others;
  for (int i = 0; i < message_.args().arg_size(); ++i) {
    if (i != leftOut_ && std::find(places_.begin(), places_.end(), i) == places_.end()) {
      others.push_back(i);
    }
  }
  return others;
}

const std::string& MessageParts::argument(int number) {
  std::string& html = arguments_[static_cast<std::size_t>(number)];
  if (html.empty()) {
    html = argumentHtml(message_.args().arg(number));
  }
  return html;
}

void MessageParts::compose(std::string_view text) {
  for (auto percent = text.find('%'); percent != std::string_view::npos; percent = text.find('%')) {
    text_ += text.substr(0, percent);
    text.remove_prefix(percent);
    text.remove_prefix(place(text));
  }
  text_ += text;
}

bool MessageParts::mayPlace(int number) const {
  return number >= 0 && number < message_.args().arg_size() && argumentBytes_ <= maxArgumentBytes &&
         std::count(places_.begin(), places_.end(), number) < maxPlaces;
}

// Appends what a "%" at the front of the text refers to. Returns how many bytes of the
// text that replaces.
std::size_t MessageParts::place(std::string_view text) {
  if (text.substr(1, 1) == "%") {
    text_ += '%';
    return 2;
  }
  int number = 0;
  const char* const digits = text.data() + 1;
  const char* const end = std::from_chars(digits, text.data() + text.size(), number).ptr;
  if (text.substr(1, 1) == "0" || !mayPlace(number - 1)) {
    text_ += '%';
    return 1;
  }
  argumentBytes_ += argument(number - 1).size();
  places_.push_back(number - 1);
  text_ += kPlace;
  return static_cast<std::size_t>(end - text.data());
}

std::string messageHtml(const MsgInst& message) {
  MessageParts parts(message);
  std::string html;
  std::string_view rest = parts.text();
  for (const int argument : parts.places()) {
    html.append(rest.substr(0, rest.find(kPlace))).append(marked(parts.argument(argument)));
    rest.remove_prefix(rest.find(kPlace) + 1);
  }
  html += rest;
  const char* separator = " <span class=\"unplaced\">(";
  for (const int argument : parts.others()) {
    html += separator + marked(parts.argument(argument));
    separator = ", ";
  }
  return html + (*separator == ',' ? ")</span>" : "");
}

}  // namespace rulecheck
