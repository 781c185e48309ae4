// SPDX-License-Identifier: Apache-2.0

// Numbers: doubles as printf's "%f" under every numeric locale and rounding
// mode, integers as plain digits under every locale.

#include <gtest/gtest.h>
#include <vok/rulecheck/Converter.h>

#include <cfenv>
#include <cfloat>
#include <cmath>
#include <cstdio>
#include <cstring>
#include <functional>
#include <locale>
#include <random>
#include <string>

#include "rendering/calls.h"
#include "support/numeric_settings.h"

namespace {

using tests::counted;
using tests::ProcessLocale;
using tests::RoundingMode;
using tests::ThreadLocale;
using namespace vok::rulecheck;

std::string rendered(double number) {
  Scalar scalar;
  scalar.set_double_val(number);
  return counted([&] { return Converter::toString(scalar); });
}

void expectPrinted(double number) {
  char text[1024];
  std::snprintf(text, sizeof text, "%f", number);
  EXPECT_EQ(rendered(number), text) << std::hexfloat << number;
}

void expectRemarkableDoublesPrinted() {
  // The fractions are halves of the last digit, which are rounded to even, and numbers near them.
  for (const double number : {0.0, 2.5, 1e20, 1e300, 123456.7890625, 0x1p-21, 0x1.00001p-1, 0x1p-7,
                              0x1.8p-6, 0.0000005, 0.99999949999999, 999999.9999995, DBL_MAX,
                              5e-324, 4503599627370496.5, HUGE_VAL, double{NAN}}) {
    expectPrinted(number);
    expectPrinted(-number);
  }
}

struct Random {
  const char* name;
  int count;
  std::function<double(std::mt19937_64&)> next;
};

double fromBits(std::uint64_t bits) {
  double number;
  std::memcpy(&number, &bits, sizeof number);
  return number;
}

// A whole number and an odd multiple of 2^-7 has seven decimals, the last one a 5.
double tie(std::mt19937_64& random) {
  return static_cast<double>(random() % 1000000) +
         static_cast<double>(random() % 64 * 2 + 1) * 0x1p-7;
}

const Random randomDoubles[] = {
    {"Bits", RANDOM_DOUBLES, [](auto& random) { return fromBits(random()); }},
    // Each exponent at which the digits are not those of a large or tiny number.
    {"MiddlingExponents", RANDOM_DOUBLES,
     [](auto& random) {
       const std::uint64_t exponent = 1023 - 80 + random() % 141;
       return fromBits(random() >> 63 << 63 | exponent << 52 | random() >> 12);
     }},
    {"EverydaySizes", RANDOM_DOUBLES / 2,
     [](auto& random) { return std::uniform_real_distribution<double>(-1e6, 1e6)(random); }},
    {"Ties", RANDOM_DOUBLES / 5, tie},
    {"BelowTies", RANDOM_DOUBLES / 5, [](auto& random) { return std::nextafter(tie(random), 0); }},
    {"AboveTies", RANDOM_DOUBLES / 5,
     [](auto& random) { return std::nextafter(tie(random), 1e9); }},
};

class RandomDoubles : public testing::TestWithParam<Random> {};

TEST_P(RandomDoubles, EqualPrintf) {
  std::mt19937_64 random(20260101);
  for (int i = 0; i < GetParam().count && !HasFailure(); ++i) {
    expectPrinted(GetParam().next(random));
  }
}

INSTANTIATE_TEST_SUITE_P(Of, RandomDoubles, testing::ValuesIn(randomDoubles),
                         [](const auto& tested) { return std::string(tested.param.name); });

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

TEST(Doubles, FollowTheLocaleAndTheRoundingMode) {
  const std::pair<const char*, const char*> locales[] = {{"C", "1234567.500000"},
                                                         {"comma", "1234567,500000"},
                                                         {"two_bytes",
                                                          "1234567\xd9\xab"
                                                          "500000"},
                                                         {"point", "1234567.500000"}};
  for (const int mode : {FE_TONEAREST, FE_UPWARD, FE_DOWNWARD, FE_TOWARDZERO}) {
    const RoundingMode rounding(mode);
    for (const auto& [name, text] : locales) {
      SCOPED_TRACE(std::string(name) + ", rounding mode " + std::to_string(mode));
      {
        const ThreadLocale locale(name);
        EXPECT_EQ(rendered(1234567.5), text);
        expectRemarkableDoublesPrinted();
      }
      const ProcessLocale locale(name);
      EXPECT_EQ(rendered(1234567.5), text);
      expectRemarkableDoublesPrinted();
    }
  }
}

void expectPlainIntegers() {
  EXPECT_EQ(tests::call("toString(Scalar)", "int_val: -1234567890").render(), "-1234567890");
  EXPECT_EQ(tests::call("toHtml(Arg)", "scalar { int_val: 1234567 }").render(), "1234567");
  EXPECT_EQ(tests::call("href(Resource)", "scheme: FTP port: 1234567").render(), ":1234567");
  EXPECT_EQ(tests::call("toString(Reference)", "id: 1234567").render(), "array #1234567");
}

TEST(Integers, ArePlainDigitsUnderEveryLocaleOfC) {
  for (const char* name : {"C", "comma", "two_bytes", "point"}) {
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

}  // namespace
