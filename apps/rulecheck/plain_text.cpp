// SPDX-License-Identifier: Apache-2.0

#include "rulecheck/plain_text.h"

#include <re2/re2.h>
#include <vok/rulecheck/Converter.h>

#include "common/characters.h"
#include "rulecheck/place.h"
#include "rulecheck/severity.h"

namespace rulecheck {
namespace {

using re2::StringPiece;
using vok::rulecheck::Arg;
using vok::rulecheck::Converter;
using vok::rulecheck::Link;
using vok::rulecheck::MsgInst;

std::string textOf(const Link& link) {
  return link.has_link_text() ? link.link_text() : Converter::href(link.url());
}

template <typename List, typename Text>
std::string joined(const List& list, Text text) {
  std::string all;
  for (const auto& element : list) {
    all += (all.empty() ? "" : ", ") + text(element);
  }
  return all;
}

}  // namespace

std::string plainText(const Arg& argument) {
  if (argument.has_ref()) {
    return Converter::toString(argument.ref());
  }
  if (argument.has_uri()) {
    return textOf(argument.uri());
  }
  if (argument.has_refs()) {
    return joined(argument.refs().ref(), [](const auto& ref) { return Converter::toString(ref); });
  }
  if (argument.has_uris()) {
    return joined(argument.uris().uri(), [](const Link& link) { return textOf(link); });
  }
  return argument.has_string_val() ? argument.string_val() : Converter::toString(argument.scalar());
}

std::string plainText(const MsgInst& message) {
  static const RE2 mark(R"((?s)([^%]*)%(%|[1-9]\d{0,3})?)", RE2::Latin1);
  std::string text;
  StringPiece rest = message.text();
  StringPiece before;
  StringPiece name;
  while (RE2::Consume(&rest, mark, &before, &name)) {
    text.append(before.data(), before.size());
    const int number = name.empty() || name == "%" ? 0 : std::stoi(name.as_string());
    if (number >= 1 && number <= message.args().arg_size()) {
      text += plainText(message.args().arg(number - 1));
    } else {
      text += number == 0 ? "%" : '%' + name.as_string();
    }
  }
  text.append(rest.data(), rest.size());
  const std::string place = textOf(placeOf(message.args())) + ": ";
  return text.compare(0, place.size(), place) == 0 ? text.substr(place.size()) : text;
}

std::string lineOf(const vok::rulecheck::Violation& violation) {
  const std::string place = textOf(placeOf(violation.details().args()));
  return apps::oneLine((place.empty() ? "" : place + ": ") + levelOf(violation).word + ": " +
                       plainText(violation.details()) + " [" + violation.rule_key() + ']');
}

}  // namespace rulecheck
