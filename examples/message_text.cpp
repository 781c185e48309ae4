// Renders a message whose text format is the argument as a fragment of a page.
//
// usage: message_text MESSAGE

// Shown in docs/recipes.md: begin
#include <vok/rulecheck/Converter.h>

#include <cstddef>
#include <string>
#include <vector>

#include "make_safe.h"

using namespace vok::rulecheck;

// If there is a placeholder such as "%2" at *at for one of size arguments, returns its index from 0
// and moves *at past it. Otherwise returns size and leaves *at unchanged.
std::size_t argumentAt(const std::string& text, std::size_t size, std::size_t* at) {
  std::size_t number = 0;
  std::size_t end = *at + 1;
  for (; end < text.size() && text[end] >= '0' && text[end] <= '9' && number <= size; ++end) {
    number = 10 * number + static_cast<std::size_t>(text[end] - '0');
  }
  if (text.compare(*at, 2, "%0") == 0 || number == 0 || number > size) {
    return size;
  }
  *at = end;
  return number - 1;
}

// Returns the text of a message with its placeholders replaced, followed by the arguments without
// one. Many placeholders can make the HTML huge: past 1 MiB no more are replaced.
std::string messageHtml(MsgInst message) {
  makeSafe(&message);
  std::vector<std::string> arguments;
  for (const Arg& arg : message.args().arg()) {
    arguments.push_back(Converter::toHtml(arg));
  }
  std::vector<bool> placed(arguments.size());
  const std::string& text = message.text();
  std::string html;
  for (std::size_t at = 0; at < text.size();) {
    if (text.compare(at, 2, "%%") == 0) {
      html += '%';
      at += 2;
      continue;
    }
    const bool isPlace = text[at] == '%' && html.size() < (1U << 20);
    const std::size_t argument =
        isPlace ? argumentAt(text, arguments.size(), &at) : arguments.size();
    if (argument < arguments.size()) {
      html += arguments[argument];
      placed[argument] = true;
    } else {
      html += text[at++];
    }
  }
  const char* separator = " (";
  for (std::size_t i = 0; i < arguments.size(); ++i) {
    if (!placed[i]) {
      html += separator + arguments[i];
      separator = ", ";
    }
  }
  html += *separator == ',' ? ")" : "";
  return html;
}
// Shown in docs/recipes.md: end

#include <google/protobuf/text_format.h>

#include <iostream>

int main(int argc, char** argv) {
  MsgInst message;
  if (argc != 2 || !google::protobuf::TextFormat::ParseFromString(argv[1], &message)) {
    std::cout << "no message\n";
    return 1;
  }
  std::cout << messageHtml(message) << "\n";
}
