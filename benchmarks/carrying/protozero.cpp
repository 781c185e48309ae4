#include <protozero/pbf_reader.hpp>
#include <protozero/pbf_writer.hpp>

#include <array>
#include <cstdint>
#include <initializer_list>
#include <string>
#include <utility>
#include <vector>

#include "carrying/carriers.h"
#include "data/messages.h"
#include "support/measure.h"

namespace benchmarks {

namespace {

// Which fields of a message are messages.
class Shape {
 public:
  constexpr Shape() = default;
  constexpr Shape(std::initializer_list<std::pair<std::uint32_t, const Shape*>> children) {
    for (const auto& child : children) {
      children_[child.first] = child.second;
    }
  }

  // Null for a field that is none.
  const Shape* child(std::uint32_t tag) const {
    return tag < children_.size() ? children_[tag] : nullptr;
  }

 private:
  std::array<const Shape*, 20> children_ = {};
};

constexpr Shape leaf;
constexpr Shape link = {{2, &leaf}};
constexpr Shape links = {{1, &link}};
constexpr Shape reference = {{5, &leaf}, {6, &leaf}};
constexpr Shape references = {{1, &reference}};
constexpr Shape arg = {{1, &reference}, {2, &references}, {3, &link}, {4, &links}, {5, &leaf}};
constexpr Shape args = {{1, &arg}};
constexpr Shape text = {{2, &args}};
constexpr Shape affirmation = {{3, &links}, {6, &leaf}, {7, &leaf},
                               {8, &text},  {9, &text}, {10, &leaf}};
constexpr Shape affirmationEntry = {{2, &affirmation}};
constexpr Shape affirmations = {{1, &affirmationEntry}};
constexpr Shape violation = {{4, &links}, {7, &leaf},  {8, &leaf},
                             {9, &text},  {10, &text}, {11, &leaf}};
constexpr Shape violationEntry = {{2, &violation}};
constexpr Shape violations = {{1, &violationEntry}};
constexpr Shape spec = {{7, &leaf},  {9, &links}, {11, &leaf}, {12, &leaf},
                        {14, &leaf}, {15, &leaf}, {18, &leaf}, {19, &leaf}};
constexpr Shape specEntry = {{2, &spec}};
constexpr Shape specs = {{1, &specEntry}};
constexpr Shape session = {{5, &leaf}, {6, &leaf}};
constexpr Shape sessionResult = {{1, &session},      {5, &violations}, {6, &violations},
                                 {7, &affirmations}, {8, &specs},      {9, &specs}};
constexpr Shape createViolation = {{3, &args}, {4, &leaf}, {5, &leaf}, {6, &leaf}};
constexpr Shape request = {{3, &createViolation}};

// Visits every field of a message and of the messages in it.
template <typename Visitor>
void scan(protozero::pbf_reader message, const Shape& shape, Visitor visitor) {
  while (message.next()) {
    switch (message.wire_type()) {
      case protozero::pbf_wire_type::varint:
        visitor.number(message.tag(), message.get_uint64());
        break;
      case protozero::pbf_wire_type::fixed64:
        visitor.fixed(message.tag(), message.get_fixed64());
        break;
      default:
        if (const Shape* child = shape.child(message.tag())) {
          const protozero::pbf_tag_type tag = message.tag();
          scan(message.get_message(), *child, visitor.inside(tag));
        } else {
          visitor.text(message.tag(), message.get_view());
        }
    }
  }
}

// Reads each number, and of each text its first byte.
class Touch {
 public:
  explicit Touch(std::uint64_t* sum) : sum_(sum) {}

  void number(protozero::pbf_tag_type /*tag*/, std::uint64_t value) { *sum_ += value; }
  void fixed(protozero::pbf_tag_type /*tag*/, std::uint64_t value) { *sum_ += value; }
  void text(protozero::pbf_tag_type /*tag*/, protozero::data_view value) {
    *sum_ += value.empty() ? 0 : static_cast<unsigned char>(value.data()[0]);
  }
  Touch inside(protozero::pbf_tag_type /*tag*/) { return *this; }

 private:
  std::uint64_t* sum_;
};

// Writes what it is shown.
class Copy {
 public:
  explicit Copy(protozero::pbf_writer writer) : writer_(std::move(writer)) {}

  void number(protozero::pbf_tag_type tag, std::uint64_t value) { writer_.add_uint64(tag, value); }
  void fixed(protozero::pbf_tag_type tag, std::uint64_t value) { writer_.add_fixed64(tag, value); }
  void text(protozero::pbf_tag_type tag, protozero::data_view value) {
    writer_.add_bytes(tag, value);
  }
  Copy inside(protozero::pbf_tag_type tag) { return Copy(protozero::pbf_writer(writer_, tag)); }

 private:
  protozero::pbf_writer writer_;
};

void requireSameBytes(const std::string& bytes, const Shape& shape) {
  std::string copy;
  scan(protozero::pbf_reader(bytes), shape, Copy(protozero::pbf_writer(copy)));
  require(copy == bytes, "protozero: the fields seen make other bytes");
}

void touch(const std::string& bytes, const Shape& shape) {
  std::uint64_t sum = 0;
  scan(protozero::pbf_reader(bytes), shape, Touch(&sum));
  benchmark::DoNotOptimize(sum);
}

}  // namespace

void registerProtozero() {
  const std::string& result = resultBytes(resultViolations);
  const std::vector<std::string>& stream = requestBytes();
  requireSameBytes(result, sessionResult);
  for (const std::string& bytes : stream) {
    requireSameBytes(bytes, request);
  }
  measure("result, parse/protozero", {resultViolations},
          [&result] { touch(result, sessionResult); });
  measure("requests, parse/protozero", {stream.size()}, [&stream] {
    for (const std::string& bytes : stream) {
      touch(bytes, request);
    }
  });
}

}  // namespace benchmarks
