// SPDX-License-Identifier: Apache-2.0

// Numbers: doubles as printf's "%f" under every numeric locale and rounding
// mode, integers as plain digits under every locale.

#include <gtest/gtest.h>

#include <cfenv>
#include <cfloat>
#include <cmath>
#include <cstdio>
#include <cstring>
#include <functional>
#include <limits>
#include <locale>
#include <random>
#include <string>
#include <thread>
#include <vector>

#include "rendering/counted_converter.h"
#include "support/messages.h"
#include "support/numeric_settings.h"

namespace {

using tests::ProcessLocale;
using tests::RoundingMode;
using tests::ThreadLocale;
using vok::rulecheck::Arg;
using Converter = tests::CountedConverter;
using vok::rulecheck::Reference;
using vok::rulecheck::Resource;
using vok::rulecheck::Scalar;

std::string printed(double number) {
  char text[1024];
  std::snprintf(text, sizeof text, "%f", number);
  return text;
}

std::string rendered(double number) {
  Scalar scalar;
  scalar.set_double_val(number);
  return Converter::toString(scalar);
}

std::string renderedAsArgument(double number) {
  Arg argument;
  argument.mutable_scalar()->set_double_val(number);
  return Converter::toHtml(argument);
}

void expectPrinted(double number) {
  EXPECT_EQ(rendered(number), printed(number)) << std::hexfloat << number;
  EXPECT_EQ(renderedAsArgument(number), printed(number)) << std::hexfloat << number;
}

const std::vector<double>& remarkableDoubles() {
  static const std::vector<double> doubles = {
      0.0, -0.0, 0.5, -0.5, 1.0, 2.5, 1.5, 350.25, 1.234567, 1e20, -1e20, 1e22, 1e300,
      123456.7890625,
      // halves of the last digit, which is rounded to even: exact in binary
      0.00000048828125, 0.0000009765625, 0.5 + 0x1p-21, 0x1p-7, 3 * 0x1p-7, 5 * 0x1p-7, 0.0000005,
      0.0000015, 0.0000025, 0.9999995, 0.99999949999999, 9.9999995, 999999.9999995, DBL_MAX,
      -DBL_MAX, DBL_MIN, 5e-324, -5e-324, DBL_EPSILON, 4503599627370496.5, 9007199254740993.0,
      std::numeric_limits<double>::infinity(), -std::numeric_limits<double>::infinity(),
      std::numeric_limits<double>::quiet_NaN(), -std::numeric_limits<double>::quiet_NaN(),
      std::numeric_limits<double>::signaling_NaN()};
  return doubles;
}

void expectRemarkableDoublesPrinted() {
  for (const double number : remarkableDoubles()) {
    expectPrinted(number);
  }
}

double fromBits(std::uint64_t bits) {
  double number;
  std::memcpy(&number, &bits, sizeof number);
  return number;
}

const int roundingModes[] = {FE_TONEAREST, FE_UPWARD, FE_DOWNWARD, FE_TOWARDZERO};

TEST(Doubles, HaveTheseLiteralTexts) {
  struct Row {
    double number;
    const char* text;
  };
  const Row rows[] = {
      {2.5, "2.500000"},
      {-0.0, "-0.000000"},
      {0x1p-7, "0.007812"},
      {3 * 0x1p-7, "0.023438"},
      {350.25, "350.250000"},
      {1e20, "100000000000000000000.000000"},
      {5e-324, "0.000000"},
      {std::numeric_limits<double>::infinity(), "inf"},
      {-std::numeric_limits<double>::infinity(), "-inf"},
  };
  for (const Row& row : rows) {
    EXPECT_EQ(rendered(row.number), row.text);
    EXPECT_EQ(renderedAsArgument(row.number), row.text);
  }
}

TEST(Doubles, AreNeverCutShort) {
  EXPECT_EQ(rendered(-DBL_MAX).size(), 317u);
  EXPECT_EQ(rendered(DBL_MAX).size(), 316u);
}

TEST(Doubles, EqualPrintfForRemarkableNumbers) {
  expectRemarkableDoublesPrinted();
}

// Quicker than expectPrinted, for millions of numbers.
void expectAllPrinted(int count, const std::function<double()>& next) {
  Scalar scalar;
  char text[1024];
  for (int i = 0; i < count && !testing::Test::HasFailure(); ++i) {
    scalar.set_double_val(next());
    std::snprintf(text, sizeof text, "%f", scalar.double_val());
    EXPECT_EQ(Converter::toString(scalar), text) << std::hexfloat << scalar.double_val();
  }
}

TEST(Doubles, EqualPrintfForRandomBits) {
  std::mt19937_64 random(20260101);
  expectAllPrinted(RANDOM_DOUBLES, [&] { return fromBits(random()); });
}

// Each exponent at which the digits are not those of a large or tiny number.
TEST(Doubles, EqualPrintfForRandomBitsOfEveryMiddlingExponent) {
  std::mt19937_64 random(20260107);
  const std::uint64_t bias = 1023;
  for (std::uint64_t exponent = bias - 80; exponent <= bias + 60; ++exponent) {
    expectAllPrinted(RANDOM_DOUBLES / 140, [&] {
      return fromBits(random() >> 63 << 63 | exponent << 52 | random() >> 12);
    });
  }
}

TEST(Doubles, EqualPrintfForRandomNumbersOfEverydaySize) {
  std::mt19937_64 random(20260102);
  std::uniform_real_distribution<double> size(-1e6, 1e6);
  for (int i = 0; i < 200000 && !testing::Test::HasFailure(); ++i) {
    expectPrinted(size(random));
  }
}

TEST(Doubles, EqualPrintfForTies) {
  std::mt19937_64 random(20260103);
  for (int i = 0; i < 100000 && !testing::Test::HasFailure(); ++i) {
    // A whole number and an odd multiple of 2^-7 has seven decimals, the last one a 5.
    expectPrinted(static_cast<double>(random() % 1000000) +
                  static_cast<double>(random() % 64 * 2 + 1) * 0x1p-7);
  }
}

TEST(Doubles, EqualPrintfBesideTies) {
  std::mt19937_64 random(20260108);
  for (int i = 0; i < 100000 && !testing::Test::HasFailure(); ++i) {
    const double tie = static_cast<double>(random() % 1000000) +
                       static_cast<double>(random() % 64 * 2 + 1) * 0x1p-7;
    expectPrinted(std::nextafter(tie, 0));
    expectPrinted(std::nextafter(tie, 1e9));
  }
}

// Where one way of writing digits gives way to another.
TEST(Doubles, EqualPrintfAroundPowersOfTwoAndTen) {
  for (int exponent = -80; exponent <= 70; ++exponent) {
    for (const double power : {std::ldexp(1, exponent), std::pow(10, exponent)}) {
      for (const double number :
           {std::nextafter(power, 0), power, std::nextafter(power, DBL_MAX)}) {
        expectPrinted(number);
        expectPrinted(-number);
      }
    }
  }
}

TEST(Doubles, EqualPrintfInEveryRoundingMode) {
  std::mt19937_64 random(20260104);
  for (const int mode : roundingModes) {
    const RoundingMode scope(mode);
    expectRemarkableDoublesPrinted();
    for (int i = 0; i < 20000 && !testing::Test::HasFailure(); ++i) {
      expectPrinted(fromBits(random()));
    }
  }
}

TEST(Doubles, FollowTheLocaleOfTheThread) {
  struct Row {
    const char* locale;
    const char* text;
  };
  const Row rows[] = {{"comma", "1234567,500000"},
                      {"two_bytes",
                       "1234567\xd9\xab"
                       "500000"},
                      {"point", "1234567.500000"}};
  for (const Row& row : rows) {
    const ThreadLocale scope(row.locale);
    EXPECT_EQ(rendered(1234567.5), row.text) << row.locale;
    expectRemarkableDoublesPrinted();
  }
  EXPECT_EQ(rendered(1234567.5), "1234567.500000");
}

TEST(Doubles, FollowTheLocaleOfTheProcess) {
  for (const char* name : {"comma", "two_bytes", "point"}) {
    const ProcessLocale scope(name);
    expectRemarkableDoublesPrinted();
  }
  const ProcessLocale scope("comma");
  EXPECT_EQ(rendered(0.5), "0,500000");
}

TEST(Doubles, FollowTheLocaleInEveryRoundingMode) {
  const ThreadLocale locale("comma");
  for (const int mode : roundingModes) {
    const RoundingMode scope(mode);
    expectRemarkableDoublesPrinted();
  }
}

TEST(Doubles, FollowEachThreadsOwnLocale) {
  const auto render = [](const char* locale, std::string* text) {
    const ThreadLocale scope(locale);
    for (int i = 0; i < 1000; ++i) {
      *text = rendered(0.5);
    }
  };
  std::string comma;
  std::string point;
  std::thread first(render, "comma", &comma);
  std::thread second(render, "point", &point);
  first.join();
  second.join();
  EXPECT_EQ(comma, "0,500000");
  EXPECT_EQ(point, "0.500000");
}

void expectPlainIntegers() {
  Scalar scalar;
  scalar.set_int_val(-1234567890);
  EXPECT_EQ(Converter::toString(scalar), "-1234567890");
  Arg argument;
  *argument.mutable_scalar() = scalar;
  EXPECT_EQ(Converter::toHtml(argument), "-1234567890");
  Resource resource;
  resource.set_scheme(Resource::HTTP);
  resource.set_port(1234567);
  EXPECT_EQ(Converter::href(resource), "http://:1234567");
  Reference reference;
  reference.set_id(1234567);
  EXPECT_EQ(Converter::toString(reference), "array #1234567");
}

TEST(Integers, ArePlainDigitsUnderEveryLocaleOfC) {
  expectPlainIntegers();
  for (const char* name : {"comma", "two_bytes", "point"}) {
    const ThreadLocale thread(name);
    const ProcessLocale process(name);
    expectPlainIntegers();
  }
}

class Grouping : public std::numpunct<char> {
  std::string do_grouping() const override { return "\3"; }
  char do_thousands_sep() const override { return '.'; }
  char do_decimal_point() const override { return ','; }
};

TEST(Integers, ArePlainDigitsUnderAGroupingGlobalLocaleOfCpp) {
  const std::locale previous = std::locale::global(std::locale(std::locale(), new Grouping));
  expectPlainIntegers();
  EXPECT_EQ(rendered(1234567.5), "1234567.500000");
  std::locale::global(previous);
}

TEST(Integers, EqualPrintfForRandomNumbers) {
  std::mt19937_64 random(20260105);
  for (int i = 0; i < 100000; ++i) {
    const auto number = static_cast<std::int64_t>(random() >> (random() % 64));
    Scalar scalar;
    scalar.set_int_val(i % 2 == 0 ? number : -number);
    char text[32];
    std::snprintf(text, sizeof text, "%lld", static_cast<long long>(scalar.int_val()));
    ASSERT_EQ(Converter::toString(scalar), text);
  }
}

}  // namespace
