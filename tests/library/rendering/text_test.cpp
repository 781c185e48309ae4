// SPDX-License-Identifier: Apache-2.0

// Display words and plain text.

#include <gtest/gtest.h>

#include <limits>
#include <string>
#include <vector>

#include "rendering/counted_converter.h"
#include "support/messages.h"

namespace {

using tests::parse;
using Converter = tests::CountedConverter;
using namespace vok::rulecheck;

// Calls toString for every number from -300 to 300 and for the extreme ones.
template <typename Enum>
void expectWords(const std::vector<std::string>& words, const std::string& other) {
  std::vector<int> numbers = {std::numeric_limits<int>::min(), std::numeric_limits<int>::max()};
  for (int number = -300; number <= 300; ++number) {
    numbers.push_back(number);
  }
  for (const int number : numbers) {
    const bool listed = number >= 0 && number < static_cast<int>(words.size());
    EXPECT_EQ(Converter::toString(static_cast<Enum>(number)),
              listed ? words[static_cast<std::size_t>(number)] : other)
        << number;
  }
}

TEST(Words, OfSchemesAreLowerCaseAndUnknownOtherwise) {
  expectWords<Resource_Scheme>({"data", "file", "ftp", "http", "https", "irc", "mailto"},
                               "unknown");
}

TEST(Words, OfReferenceKindsAreUndefinedOtherwise) {
  expectWords<Reference_RefType>(
      {"array",     "AXI",        "channel",   "condition", "constraint", "conversion",
       "core",      "data mover", "data type", "DDR bank",  "file",       "function",
       "hierarchy", "interface",  "kernel",    "loop",      "memory",     "operation",
       "operator",  "other",      "PCIE",      "port",      "pragma",     "predicate",
       "READ OP",   "region",     "system",    "variable",  "WRITE OP"},
      "<undefined>");
}

TEST(Words, OfSeveritiesAreUndefinedOtherwiseAndForUnknown) {
  expectWords<Violation_Severity>(
      {"fatal", "error", "critical warning", "warning", "advisory", "<undefined>"}, "<undefined>");
}

TEST(Words, OfACriticalWarningAreSixteenCharacters) {
  EXPECT_EQ(Converter::toString(Violation::SEV_CRITICAL_WARNING).size(), 16u);
}

struct TextCase {
  const char* name;
  const char* message;
  const char* text;
};

const TextCase scalarCases[] = {
    {"an empty scalar is nothing", "", ""},
    {"a string is shown as it is", "string_val: 'abc'", "abc"},
    {"an integer is plain digits", "int_val: 1234567", "1234567"},
    {"a negative integer has a minus sign", "int_val: -42", "-42"},
    {"zero is shown", "int_val: 0", "0"},
    {"the largest integer is shown in full", "int_val: 9223372036854775807", "9223372036854775807"},
    {"the smallest integer is shown in full", "int_val: -9223372036854775808",
     "-9223372036854775808"},
    {"a double has six digits after the point", "double_val: 2.5", "2.500000"},
    {"an address is shown as it is", "address: '0x1000'", "0x1000"},
    {"units alone follow a space", "units: 'ns'", " ns"},
    {"empty units alone are a space", "units: ''", " "},
    {"units follow an integer", "int_val: -42 units: 'MHz'", "-42 MHz"},
    {"units follow a double", "double_val: 1.5 units: 'ns'", "1.500000 ns"},
    {"units follow a string", "string_val: 'abc' units: 'B'", "abc B"},
    {"units follow an empty string", "string_val: '' units: 'x'", " x"},
    {"empty units add a space", "int_val: 3 units: ''", "3 "},
    {"a string wins over an integer", "string_val: 'abc' int_val: 7", "abc"},
    {"an empty string wins over an integer", "string_val: '' int_val: 7 units: 'x'", " x"},
    {"an integer wins over a double", "int_val: 7 double_val: 1.5", "7"},
    {"an integer of 0 wins over a double", "int_val: 0 double_val: 1.5", "0"},
    {"a double wins over an address", "double_val: 1.5 address: 'a'", "1.500000"},
    {"an address suppresses the units", "address: '0x1000' units: 'B'", "0x1000"},
    {"an address that is not shown suppresses the units of an integer",
     "int_val: 3 address: 'a' units: 'B'", "3"},
    {"an address that is not shown suppresses the units of a double",
     "double_val: 3 address: 'a' units: 'B'", "3.000000"},
    {"an address that is not shown suppresses the units of a string",
     "string_val: 's' address: 'a' units: 'B'", "s"},
    {"an empty address suppresses the units", "int_val: 3 address: '' units: 'B'", "3"},
    {"an empty address alone is nothing", "address: '' units: 'B'", ""},
    {"nothing is escaped or trimmed", "string_val: ' <&\"> ' units: ' u '", " <&\">   u "},
};

TEST(ScalarText, FollowsTheTable) {
  for (const TextCase& c : scalarCases) {
    EXPECT_EQ(Converter::toString(parse<Scalar>(c.message)), c.text) << c.name;
  }
}

const TextCase referenceTexts[] = {
    {"an empty reference is an array", "", "array"},
    {"a kind alone is its word", "type: PCIE", "PCIE"},
    {"a name is shown alone", "type: PORT name: 'top' id: 9 uuid: 'u'", "top"},
    {"an empty name is shown alone", "type: PORT name: '' id: 9 uuid: 'u'", ""},
    {"a number follows the kind", "type: KERNEL id: 4", "kernel #4"},
    {"a number of 0 is shown and hides the identifier", "type: LOOP id: 0 uuid: 'u'", "loop #0"},
    {"a negative number has a minus sign", "type: LOOP id: -1", "loop #-1"},
    {"the largest number is shown in full", "type: LOOP id: 2147483647", "loop #2147483647"},
    {"the smallest number is shown in full", "type: LOOP id: -2147483648", "loop #-2147483648"},
    {"an identifier follows the kind", "type: DATAMOVER uuid: 'ab-12'", "data mover ab-12"},
    {"an empty identifier follows the kind", "type: LOOP uuid: ''", "loop "},
    {"a number without a kind is an array's", "id: 2", "array #2"},
    {"an identifier without a kind is an array's", "uuid: 'u'", "array u"},
    {"value and url are not used", "type: LOOP id: 2 value { int_val: 3 } url { scheme: FILE }",
     "loop #2"},
};

TEST(ReferenceText, FollowsTheTable) {
  for (const TextCase& c : referenceTexts) {
    EXPECT_EQ(Converter::toString(parse<Reference>(c.message)), c.text) << c.name;
  }
}

TEST(ReferenceText, OfAnUnlistedKindIsUndefined) {
  for (const int number : {-1, 29, 1000}) {
    auto reference = parse<Reference>("id: 2");
    reference.set_type(static_cast<Reference::RefType>(number));
    EXPECT_EQ(Converter::toString(reference), "<undefined> #2") << number;
  }
}

TEST(ReferenceText, CopiesZeroBytes) {
  Reference reference;
  reference.set_name(std::string("a\0b", 3));
  EXPECT_EQ(Converter::toString(reference), std::string("a\0b", 3));
}

}  // namespace
