#include <vok/rulecheck/Converter.h>

#include <cfenv>
#include <cstdio>
#include <string>

#include "measure.h"
#include "rendering/numbers.h"

namespace benchmarks {

using vok::rulecheck::Converter;
using vok::rulecheck::Scalar;

namespace {

std::string printed(double number) {
  char text[400];
  const int length = std::snprintf(text, sizeof text, "%f", number);
  return std::string(text, static_cast<std::size_t>(length));
}

Scalar scalarOf(double number) {
  Scalar scalar;
  scalar.set_double_val(number);
  return scalar;
}

void registerNumber(const std::string& digits, double number) {
  const std::string name = "double " + digits;
  const Scalar scalar = scalarOf(number);
  require(Converter::toString(scalar) == printed(number), name + " is not printed as by snprintf");
  measure(name + "/Converter", {1}, [scalar] {
    std::string text = Converter::toString(scalar);
    benchmark::DoNotOptimize(text);
  });
  measure(name + "/snprintf", {1}, [number]() mutable {
    benchmark::DoNotOptimize(number);
    std::string text = printed(number);
    benchmark::DoNotOptimize(text);
  });
}

// The C library formats doubles in other rounding modes than the usual one.
void registerUpward(const std::string& digits, double number) {
  const std::string name = "double " + digits + ", rounding upward/Converter";
  const auto run = [scalar = scalarOf(number)](benchmark::State& state) {
    std::fesetround(FE_UPWARD);
    for (auto _ : state) {
      std::string text = Converter::toString(scalar);
      benchmark::DoNotOptimize(text);
    }
    std::fesetround(FE_TONEAREST);
    state.counters["items"] = 1;
  };
  benchmark::RegisterBenchmark(name.c_str(), run);
}

}  // namespace

void registerNumbers() {
  registerNumber("0.5", 0.5);
  registerNumber("1.234567", 1.234567);
  registerNumber("350.25", 350.25);
  registerNumber("1e20", 1e20);
  registerNumber("1e300", 1e300);
  registerNumber("5e-324", 5e-324);
  registerUpward("350.25", 350.25);
}

}  // namespace benchmarks
