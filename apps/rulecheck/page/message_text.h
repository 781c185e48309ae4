// SPDX-License-Identifier: Apache-2.0

// Message texts with their arguments in place.

#ifndef VOK_APPS_RULECHECK_PAGE_MESSAGE_TEXT_H_
#define VOK_APPS_RULECHECK_PAGE_MESSAGE_TEXT_H_

#include <vok/rulecheck/RuleService.pb.h>

#include <cstddef>
#include <string>
#include <string_view>
#include <vector>

namespace rulecheck {

// A message in HTML, with its arguments apart.
//
// In the text, "%" and a number from 1 on is the place of the argument with that
// number; "%%" is a percent sign. A number without an argument, and any other
// "%", stays as it is. Arguments are not searched for places. Once the arguments in
// place make up a mebibyte, the places that are left stay as they are.
class MessageParts {
 public:
  // An argument can be left out, counted from 0: at the beginning of the text, with a colon
  // and a blank behind it, and where the text does not mention it. The message has to exist
  // for as long as this.
  explicit MessageParts(const vok::rulecheck::MsgInst& message, int leftOut = -1);

  // With kPlace where an argument is, which is in no text of a page.
  const std::string& text() const { return text_; }
  // The argument of each place.
  const std::vector<int>& places() const { return places_; }
  // The arguments without a place.
  std::vector<int> others() const;
  const std::string& argument(int number);

 private:
  bool mayPlace(int number) const;
  void compose(std::string_view text);
  std::size_t place(std::string_view text);

  const vok::rulecheck::MsgInst& message_;
  int leftOut_;
  std::string text_;
  std::vector<int> places_;
  std::size_t argumentBytes_ = 0;
  std::vector<std::string> arguments_;  // empty until they are needed
};
constexpr char kPlace = '\x01';

// The message in one piece. Arguments that have no place in the text follow it in
// parentheses.
std::string messageHtml(const vok::rulecheck::MsgInst& message);

}  // namespace rulecheck

#endif  // VOK_APPS_RULECHECK_PAGE_MESSAGE_TEXT_H_
