// SPDX-License-Identifier: Apache-2.0

// Further styles of plain::Rendering: {fmt}, and std::ostringstream.

#ifndef VOK_BENCHMARKS_RENDERING_STYLES_H_
#define VOK_BENCHMARKS_RENDERING_STYLES_H_

#include <fmt/format.h>

#include <cstdint>
#include <sstream>
#include <string>
#include <string_view>

namespace benchmarks {

class Format {
 public:
  template <typename... Parts>
  void add(const Parts&... parts) {
    constexpr std::string_view fields = "{}{}{}{}{}";
    fmt::format_to(fmt::appender(text_), fmt::runtime(fields.substr(0, 2 * sizeof...(parts))),
                   parts...);
  }
  void addNumber(std::int64_t value) { add(value); }
  void addNumber(double value) { fmt::format_to(fmt::appender(text_), "{:f}", value); }
  std::string take() { return fmt::to_string(text_); }

 private:
  fmt::memory_buffer text_;
};

class Streams {
 public:
  template <typename... Parts>
  void add(const Parts&... parts) {
    (out_ << ... << parts);
  }
  void addNumber(std::int64_t value) { out_ << value; }
  void addNumber(double value) { out_ << std::fixed << value; }
  std::string take() { return out_.str(); }

 private:
  std::ostringstream out_;
};

}  // namespace benchmarks

#endif  // VOK_BENCHMARKS_RENDERING_STYLES_H_
