#include "malformed_input/amplification.h"

#include <google/protobuf/arena.h>
#include <google/protobuf/descriptor.h>

#include <cstdint>
#include <functional>
#include <memory>
#include <stdexcept>
#include <vector>

#include "malformed_input/heap_meter.h"
#include "parse_and_serialize.h"
#include "support/messages.h"

namespace tests {

using google::protobuf::Arena;
using google::protobuf::Descriptor;
using google::protobuf::FieldDescriptor;
using google::protobuf::Message;

namespace {

constexpr int kKey = 1;
constexpr int kValue = 2;

// Shorter inputs are left out: they can take little, whatever the ratio.
constexpr std::size_t kLeastBytes = 1024;

void read(const std::string& bytes, Message* message) {
  if (!message->ParsePartialFromString(bytes)) {
    throw std::logic_error("the search made bytes that are refused: " + toHex(bytes));
  }
}

// What a message of that content takes. An arena takes whole blocks: the mean of
// many messages.
double memoryOfOne(const Message& prototype, const std::string& content, Place place) {
  if (place == Place::kHeap) {
    return static_cast<double>(memoryToRead(prototype, content, place));
  }
  constexpr int kMany = 256;
  const HeapMeter meter;
  Arena arena;
  for (int i = 0; i < kMany; ++i) {
    read(content, prototype.New(&arena));
  }
  return static_cast<double>(meter.peak()) / kMany;
}

const Message& prototypeOf(const Descriptor* descriptor) {
  return *google::protobuf::MessageFactory::generated_factory()->GetPrototype(descriptor);
}

bool isMessage(const FieldDescriptor& field) {
  return field.cpp_type() == FieldDescriptor::CPPTYPE_MESSAGE;
}

// The smallest number under which a message knows no field of that wire type.
int unknownNumber(const Descriptor& descriptor, int wireType) {
  for (int number = 1;; ++number) {
    const FieldDescriptor* field = descriptor.FindFieldByNumber(number);
    const bool hasLength =
        field != nullptr &&
        (field->cpp_type() == FieldDescriptor::CPPTYPE_STRING || isMessage(*field));
    if (field == nullptr || hasLength != (wireType == 2)) {
      return number;
    }
  }
}

std::vector<std::string> unknownFields(const Descriptor& descriptor) {
  const int ofString = unknownNumber(descriptor, 2);
  const int ofGroup = unknownNumber(descriptor, 3);
  const auto group = [ofGroup](const std::string& content) {
    return tag(ofGroup, 3) + content + tag(ofGroup, 4);
  };
  return {record(ofString, ""), group(""), group(group("")), group(record(1, "")),
          tag(ofGroup, 5) + "1234"};
}

// Fills messages so that they take much memory for their bytes.
class Filler {
 public:
  // A byte must take at least so much memory to be worth its sending.
  Filler(Place place, double price) : place_(place), price_(price) {}

  std::string contentOf(const Descriptor* descriptor) {
    const auto known = contents_.find(descriptor);
    if (known != contents_.end()) {
      return known->second;
    }
    const Message& prototype = prototypeOf(descriptor);
    std::string content;
    double memory = memoryOfOne(prototype, content, place_);
    for (const std::string& addition : additionsTo(*descriptor)) {
      const double more = memoryOfOne(prototype, content + addition, place_);
      if (more - memory > price_ * static_cast<double>(addition.size())) {
        content += addition;
        memory = more;
      }
    }
    return contents_[descriptor] = content;
  }

 private:
  std::vector<std::string> additionsTo(const Descriptor& descriptor) {
    std::vector<std::string> additions = unknownFields(descriptor);
    for (int i = 0; i < descriptor.field_count(); ++i) {
      const FieldDescriptor& field = *descriptor.field(i);
      if (isMessage(field)) {
        additions.push_back(record(field.number(), contentOf(field.message_type())));
        additions.push_back(record(field.number(), ""));
      } else if (field.cpp_type() == FieldDescriptor::CPPTYPE_STRING) {
        additions.push_back(record(field.number(), ""));
        additions.push_back(record(field.number(), std::string(16, 's')));
      }
    }
    return additions;
  }

  Place place_;
  double price_;
  std::map<const Descriptor*, std::string> contents_;
};

// One of many elements, by its number.
using Element = std::function<std::string(int)>;

std::string shortestKey(const FieldDescriptor& key, int i) {
  if (key.cpp_type() != FieldDescriptor::CPPTYPE_STRING) {
    return tag(kKey, 0) + varint(static_cast<std::uint64_t>(i));
  }
  std::string digits;
  for (int rest = i; rest > 0; rest /= 256) {
    digits += static_cast<char>(rest % 256);
  }
  return record(kKey, digits);
}

// Entries with and without key and value, in any order, with the same key or
// another one in each.
std::vector<Element> elementsOfMap(const FieldDescriptor& field, Filler* filler) {
  const FieldDescriptor& key = *field.message_type()->FindFieldByNumber(kKey);
  const FieldDescriptor& value = *field.message_type()->FindFieldByNumber(kValue);
  std::vector<std::string> values = {""};
  if (isMessage(value)) {
    values.push_back(record(kValue, filler->contentOf(value.message_type())));
  } else if (value.cpp_type() == FieldDescriptor::CPPTYPE_STRING) {
    values.push_back(record(kValue, ""));
    values.push_back(record(kValue, std::string(16, 's')));
  }
  const int number = field.number();
  std::vector<Element> elements;
  for (const std::string& v : values) {
    elements.push_back([=](int) { return record(number, v); });
    elements.push_back([=, &key](int) { return record(number, shortestKey(key, 1) + v); });
    elements.push_back([=, &key](int) { return record(number, v + shortestKey(key, 1)); });
    elements.push_back([=, &key](int i) { return record(number, shortestKey(key, i) + v); });
    elements.push_back([=, &key](int i) { return record(number, v + shortestKey(key, i)); });
    elements.push_back([=, &key](int i) { return record(number, shortestKey(key, i) + v + v); });
  }
  return elements;
}

std::vector<Element> elementsOf(const FieldDescriptor& field, Filler* filler) {
  if (!field.is_repeated()) {
    return {};
  }
  if (field.is_map()) {
    return elementsOfMap(field, filler);
  }
  const std::string content = isMessage(field) ? filler->contentOf(field.message_type()) : "";
  const int number = field.number();
  return {[=](int) { return record(number, content); }};
}

std::string times(const Element& element, int count) {
  std::string bytes;
  for (int i = 0; i < count; ++i) {
    bytes += element(i);
  }
  return bytes;
}

// The worst flood of fields of that message itself, not of messages inside it.
class FloodSearch {
 public:
  FloodSearch(const Message& prototype, Place place) : prototype_(prototype), place_(place) {}

  void tryAllFields(Filler* filler) {
    const Descriptor& descriptor = *prototype_.GetDescriptor();
    for (int i = 0; i < descriptor.field_count(); ++i) {
      for (const Element& element : elementsOf(*descriptor.field(i), filler)) {
        tryElement(element, std::string(descriptor.field(i)->name()));
      }
    }
    for (const std::string& unknown : unknownFields(descriptor)) {
      tryElement([unknown](int) { return unknown; }, "unknown");
    }
  }

  // Lists and tables grow by leaps: they are fullest just after one.
  Flood worst() const {
    Flood worst;
    for (const int count : {193, 257, 385, 513, 769, 1025, 1537, 2049, 3073, 4097}) {
      const Flood flood = floodOf(element_, repeated_, count);
      const bool isLong = flood.bytes.size() >= kLeastBytes;
      if (isLong && (worst.memory == 0 || flood.ratio() > worst.ratio())) {
        worst = flood;
      }
    }
    return worst;
  }

 private:
  void tryElement(const Element& element, const std::string& repeated) {
    const double ratio = floodOf(element, repeated, 1025).ratio();
    if (ratio > ratio_) {
      ratio_ = ratio;
      element_ = element;
      repeated_ = repeated;
    }
  }

  Flood floodOf(const Element& element, const std::string& repeated, int count) const {
    const std::string bytes = times(element, count);
    return {bytes, repeated, memoryToRead(prototype_, bytes, place_)};
  }

  const Message& prototype_;
  Place place_;
  double ratio_ = 0;
  Element element_;
  std::string repeated_;
};

std::map<std::string, Flood> worstOwnFloods(Place place) {
  std::map<std::string, FloodSearch> searches;
  for (const Message* prototype : allMessages()) {
    searches.emplace(prototype->GetDescriptor()->name(), FloodSearch(*prototype, place));
  }
  for (const double price : {30, 45, 60, 80}) {
    Filler filler(place, price);
    for (auto& search : searches) {
      search.second.tryAllFields(&filler);
    }
  }
  std::map<std::string, Flood> floods;
  for (const auto& search : searches) {
    floods[search.first] = search.second.worst();
  }
  return floods;
}

// The worst flood in a message or in any message inside it, as the content of
// that message.
Flood worstWithin(const Descriptor* descriptor, const std::map<std::string, Flood>& own) {
  Flood worst;
  const auto known = own.find(std::string(descriptor->name()));
  if (known != own.end()) {
    worst = known->second;
  }
  for (int i = 0; i < descriptor->field_count(); ++i) {
    const FieldDescriptor& field = *descriptor->field(i);
    if (isMessage(field)) {
      const Flood inner = worstWithin(field.message_type(), own);
      if (worst.memory == 0 || (inner.memory > 0 && inner.ratio() > worst.ratio())) {
        worst = {record(field.number(), inner.bytes),
                 std::string(field.name()) + "." + inner.repeated, inner.memory};
      }
    }
  }
  return worst;
}

}  // namespace

std::size_t memoryToRead(const Message& prototype, const std::string& bytes, Place place) {
  const HeapMeter meter;
  if (place == Place::kHeap) {
    const std::unique_ptr<Message> message(prototype.New());
    read(bytes, message.get());
  } else {
    Arena arena;
    read(bytes, prototype.New(&arena));
  }
  return meter.peak();
}

std::map<std::string, Flood> worstFloods(Place place) {
  const std::map<std::string, Flood> own = worstOwnFloods(place);
  std::map<std::string, Flood> floods;
  for (const Message* prototype : allMessages()) {
    Flood worst = worstWithin(prototype->GetDescriptor(), own);
    worst.memory = memoryToRead(*prototype, worst.bytes, place);
    floods[std::string(prototype->GetDescriptor()->name())] = worst;
  }
  return floods;
}

}  // namespace tests
