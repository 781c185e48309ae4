#include "calls.h"

#include <vok/rulecheck/Converter.h>

#include "support/messages.h"

namespace tests {
namespace {

using namespace vok::rulecheck;

// The text with 700 letters in the place of each asterisk.
std::string lengthened(const std::string& text) {
  std::string longer;
  for (const char c : text) {
    longer.append(c == '*' ? 700 : 1, c == '*' ? 'x' : c);
  }
  return longer;
}

template <typename Enum>
Call callOn(std::string (*function)(Enum), Enum number) {
  return {"a number " + std::to_string(static_cast<int>(number)), nullptr,
          [=] { return function(number); }};
}

template <typename Message>
Call callOn(std::string (*function)(const Message&), const std::string& text) {
  const auto message = std::make_shared<const Message>(parse<Message>(lengthened(text)));
  return {std::string(Message::descriptor()->name()) + " { " + text + " }", message,
          [=] { return function(*message); }};
}

Call anchor(const std::string& text, const std::string& anchorText) {
  const auto resource = std::make_shared<const Resource>(parse<Resource>(lengthened(text)));
  const std::string content = lengthened(anchorText);
  return {"an anchor of { " + text + " } around " + anchorText, resource,
          [=] { return Converter::toHtml(*resource, content); }};
}

void append(std::vector<Call> more, std::vector<Call>* calls) {
  calls->insert(calls->end(), more.begin(), more.end());
}

std::vector<Call> callsWithNumbers() {
  return {
      callOn<Resource_Scheme>(Converter::toString, Resource::FILE),
      callOn<Reference_RefType>(Converter::toString, Reference::DATAMOVER),
      callOn<Violation_Severity>(Converter::toString, Violation::SEV_CRITICAL_WARNING),
  };
}

std::vector<Call> callsForText() {
  return {
      callOn<Scalar>(Converter::toString, ""),
      callOn<Scalar>(Converter::toString, "string_val: 'short' units: 'ns'"),
      callOn<Scalar>(Converter::toString, "string_val: '*' units: '*'"),
      callOn<Scalar>(Converter::toString, "int_val: -9223372036854775808 units: 'ns'"),
      callOn<Scalar>(Converter::toString, "address: '*'"),
      callOn<Reference>(Converter::toString, "type: PORT name: '*'"),
      callOn<Reference>(Converter::toString, "type: DATAMOVER id: -2147483648"),
      callOn<Reference>(Converter::toString, "type: DATAMOVER uuid: '*'"),
      callOn<Resource>(Converter::href, "scheme: FILE path: 'a'"),
      callOn<Resource>(Converter::href,
                       "scheme: HTTPS host: 'h' port: -2147483648 path: 'p' query: 'q' "
                       "fragment: 'f'"),
      callOn<Resource>(Converter::href,
                       "scheme: HTTPS host: '*' port: 1 path: '*' query: '*' fragment: '*'"),
      callOn<Resource>(Converter::href, "scheme: DATA media_type: '*' encoding: '*' data: '*'"),
  };
}

std::vector<Call> callsForHtml() {
  return {
      anchor("scheme: FILE path: '/a'", "A"),
      anchor("scheme: HTTP host: '*' path: '*'", "*"),
      anchor("scheme: DATA media_type: 'text/html' data: '*'", "dropped"),
      callOn<Link>(Converter::toHtml, ""),
      callOn<Link>(Converter::toHtml, "link_text: '*'"),
      callOn<Link>(Converter::toHtml, "link_text: '*' url { scheme: FILE path: '*' }"),
      callOn<Link>(Converter::toHtml, "url { scheme: DATA media_type: '*' data: '*' }"),
      callOn<Reference>(Converter::toHtml, "type: KERNEL id: 4"),
      callOn<Reference>(Converter::toHtml,
                        "type: PORT name: '*' url { scheme: FILE path: '*' fragment: 'L7' }"),
      callOn<Arg>(Converter::toHtml, "string_val: '*'"),
      callOn<Arg>(Converter::toHtml, "scalar { int_val: -9223372036854775808 }"),
      callOn<Arg>(Converter::toHtml, "uri { link_text: '*' url { scheme: FILE path: '/a' } }"),
      callOn<Arg>(Converter::toHtml,
                  "refs { ref { type: PORT name: 'a' } ref { type: LOOP id: 2 } ref { name: '*' } "
                  "ref { type: PORT name: '*' url { scheme: FILE path: '*' } } }"),
      callOn<Arg>(Converter::toHtml,
                  "uris { uri { } uri { link_text: '*' } uri { url { scheme: HTTP host: '*' } } }"),
  };
}

}  // namespace

std::vector<Call> callsWithDoubles() {
  return {
      callOn<Scalar>(Converter::toString, "double_val: 0.5"),
      callOn<Scalar>(Converter::toString, "double_val: -1234567.5 units: 'MHz'"),
      callOn<Scalar>(Converter::toString, "double_val: -1.7976931348623157e308 units: '*'"),
      callOn<Arg>(Converter::toHtml, "scalar { double_val: 0.5 }"),
      callOn<Arg>(Converter::toHtml, "scalar { double_val: -1.7976931348623157e308 }"),
  };
}

std::vector<Call> callsOfEveryFunction() {
  std::vector<Call> calls = callsWithNumbers();
  append(callsForText(), &calls);
  append(callsForHtml(), &calls);
  append(callsWithDoubles(), &calls);
  return calls;
}

}  // namespace tests
