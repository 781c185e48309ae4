// SPDX-License-Identifier: Apache-2.0

#include <google/protobuf/descriptor.h>
#include <protozero/pbf_reader.hpp>
#include <protozero/pbf_writer.hpp>

#include <array>
#include <cstddef>
#include <cstdint>
#include <memory>
#include <string>
#include <utility>
#include <vector>

#include "carrying/carrying.h"

namespace benchmarks {

namespace {

// Which fields of a message are messages.
class Shape {
 public:
  explicit Shape(const google::protobuf::Descriptor* type) {
    for (int i = 0; i < type->field_count(); ++i) {
      if (const auto* child = type->field(i)->message_type()) {
        children_[static_cast<std::size_t>(type->field(i)->number())] =
            std::make_unique<Shape>(child);
      }
    }
  }

  // Null for a field that is not a message.
  const Shape* child(std::uint32_t tag) const {
    return tag < children_.size() ? children_[tag].get() : nullptr;
  }

 private:
  std::array<std::unique_ptr<Shape>, 20> children_;
};

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

// Writes what it visits, to check that the scan visits everything.
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
  require(copy == bytes, "protozero does not see all fields of a message");
}

void touch(const std::string& bytes, const Shape& shape) {
  std::uint64_t sum = 0;
  scan(protozero::pbf_reader(bytes), shape, Touch(&sum));
  benchmark::DoNotOptimize(sum);
}

}  // namespace

void registerProtozero() {
  const auto resultShape = std::make_shared<Shape>(vok::rulecheck::SessionResult::descriptor());
  const auto requestShape = std::make_shared<Shape>(vok::rulecheck::Request::descriptor());
  requireSameBytes(resultBytes(resultViolations), *resultShape);
  for (const std::string& bytes : requestBytes()) {
    requireSameBytes(bytes, *requestShape);
  }
  measure("result, parse/protozero", {resultViolations},
          [resultShape] { touch(resultBytes(resultViolations), *resultShape); });
  measure("requests, parse/protozero", {requestBytes().size()}, [requestShape] {
    for (const std::string& bytes : requestBytes()) {
      touch(bytes, *requestShape);
    }
  });
}

}  // namespace benchmarks
