// SPDX-License-Identifier: Apache-2.0

// Runs each hot path a thousand times, after a first time that is not counted,
// and has callgrind write its counts under the path's name.

#include <valgrind/callgrind.h>
#include <vok/rulecheck/Converter.h>

#include <string>

#include "support/messages.h"

namespace {

using tests::parse;
using namespace vok::rulecheck;

const int kTimes = 1000;

void keep(const std::string& text) {
  asm volatile("" : : "r"(text.data()) : "memory");
}

template <typename Call>
void count(const char* path, Call call) {
  call();
  CALLGRIND_ZERO_STATS;
  CALLGRIND_TOGGLE_COLLECT;
  for (int i = 0; i < kTimes; ++i) {
    call();
  }
  CALLGRIND_TOGGLE_COLLECT;
  CALLGRIND_DUMP_STATS_AT(path);
}

const std::string kFile = "url { scheme: FILE path: '/home/uart/rtl/registers.v' fragment: 'L42' }";
const std::string kMember = "ref { type: LOOP id: 12 " + kFile + " } ";

}  // namespace

int main() {
  count("word", [] { keep(Converter::toString(Violation::SEV_CRITICAL_WARNING)); });
  const auto integer = parse<Scalar>("int_val: 123456 units: 'cells'");
  count("scalar_integer", [&] { keep(Converter::toString(integer)); });
  const auto fraction = parse<Scalar>("double_val: 350.25 units: 'MHz'");
  count("scalar_double", [&] { keep(Converter::toString(fraction)); });
  const auto page = parse<Resource>(
      "scheme: HTTPS host: 'reports.example' port: 8443 path: 'session/4711' query: "
      "'sort=severity'");
  count("href", [&] { keep(Converter::href(page)); });
  const auto link = parse<Arg>("uri { link_text: 'rtl/registers.v:42' " + kFile + " }");
  count("html_link", [&] { keep(Converter::toHtml(link)); });
  const auto reference = parse<Arg>(kMember);
  count("html_reference", [&] { keep(Converter::toHtml(reference)); });
  const auto list = parse<Arg>("refs { " + kMember + kMember + kMember + "}");
  count("html_list", [&] { keep(Converter::toHtml(list)); });
  auto request = parse<Request>(
      "type: CREATE_VIOLATION create_violation { rule_key: 'WIDTHTRUNC' session_uuid: "
      "'0d9f6f6e-6a35-4b0e-9a05-5a0b8f3f7a11' args { "
      "arg { ref { type: VARIABLE name: 'baud_count' url { scheme: FILE path: 'rtl/baud_gen.v' "
      "fragment: 'L21' } } } arg { scalar { int_val: 16 units: 'bits' } } "
      "arg { string_val: 'the assignment' } } }");
  const std::string bytes = tests::bytesOf(request);
  count("parse_request", [&] { request.ParsePartialFromString(bytes); });
  std::string written;
  count("write_request", [&] { request.SerializePartialToString(&written); });
}
