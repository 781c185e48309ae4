// SPDX-License-Identifier: Apache-2.0

// The input is settings in a byte, and an Arg in text format, which contains each kind of value
// that can be rendered. Bits 0 and 1 of the settings select the locale, bits 2 and 3 the rounding
// mode.

#include <vok/rulecheck/Converter.h>

#include <cfenv>
#include <string>

#include "fuzz.h"
#include "support/messages.h"
#include "support/numeric_settings.h"
#include "support/rendering_model.h"

namespace {

using namespace vok::rulecheck;
namespace model = tests::model;

void expectAsInModel(const Resource& resource, const std::string& anchorText) {
  EXPECT_EQ(Converter::href(resource), model::address(resource));
  EXPECT_EQ(Converter::toHtml(resource, anchorText), model::html(resource, anchorText));
}

void expectAsInModel(const Link& link, const std::string& anchorText) {
  EXPECT_EQ(Converter::toHtml(link), model::html(link));
  expectAsInModel(link.url(), anchorText);
}

void expectAsInModel(const Reference& reference, const std::string& anchorText) {
  EXPECT_EQ(Converter::toString(reference), model::text(reference));
  EXPECT_EQ(Converter::toHtml(reference), model::html(reference));
  EXPECT_EQ(Converter::toString(reference.value()), model::text(reference.value()));
  expectAsInModel(reference.url(), anchorText);
}

// An argument, and each value in it, whether the argument shows it or not.
void expectAsInModel(const Arg& arg) {
  EXPECT_EQ(Converter::toHtml(arg), model::html(arg));
  EXPECT_EQ(Converter::toString(arg.scalar()), model::text(arg.scalar()));
  expectAsInModel(arg.ref(), arg.string_val());
  expectAsInModel(arg.uri(), arg.string_val());
  for (const Reference& reference : arg.refs().ref()) {
    expectAsInModel(reference, arg.string_val());
  }
  for (const Link& link : arg.uris().uri()) {
    expectAsInModel(link, arg.string_val());
  }
}

}  // namespace

void fuzz::run(const std::string& input) {
  const char* const locales[] = {"C", "comma", "two_bytes", "point"};
  const int modes[] = {FE_TONEAREST, FE_UPWARD, FE_DOWNWARD, FE_TOWARDZERO};
  Arg arg;
  if (input.empty() || !fuzz::read(input.substr(1), &arg)) {
    return;
  }
  const std::string before = tests::bytesOf(arg);
  {
    const tests::ThreadLocale locale(locales[input[0] & 3]);
    const tests::RoundingMode rounding(modes[input[0] >> 2 & 3]);
    expectAsInModel(arg);
    EXPECT_EQ(std::fegetround(), modes[input[0] >> 2 & 3]);
  }
  EXPECT_EQ(tests::bytesOf(arg), before);
}
