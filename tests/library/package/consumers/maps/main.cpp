// SPDX-License-Identifier: Apache-2.0

// Maps that the library fills and this program reads, and the reverse. Each side
// has its own compiled copy of the runtime's map; both must agree on the bucket
// of a key. Prints what differs, and exits with the number of failures.

#include <vok/rulecheck/RuleService.pb.h>

#include <google/protobuf/io/coded_stream.h>

#include <cstdint>
#include <iostream>
#include <string>

namespace {

namespace pb = google::protobuf;
using namespace vok::rulecheck;

constexpr int size = 2000;
int failures = 0;

template <typename Key>
Key make_key(int i);
template <>
std::int32_t make_key(int i) {
  return (i - size / 2) * 7919;
}
template <>
std::string make_key(int i) {
  return "rule " + std::to_string(i);
}

template <typename Key, typename Value>
void expect_all_keys(const pb::Map<Key, Value>& map, const std::string& what) {
  int missing = 0;
  for (int i = 0; i < size; ++i) {
    missing += map.find(make_key<Key>(i)) == map.end();
  }
  if (missing != 0 || map.size() != size) {
    std::cout << what << ": " << map.size() << " entries, " << missing << " keys are not found\n";
    ++failures;
  }
}

void parse_into(pb::Message* message, const std::string& bytes) {
  pb::io::CodedInputStream input(reinterpret_cast<const std::uint8_t*>(bytes.data()),
                                 static_cast<int>(bytes.size()));
  message->MergePartialFromCodedStream(&input);
}

template <typename Message, typename Key, typename Value>
void check(const pb::Map<Key, Value>& (Message::*map)() const,
           pb::Map<Key, Value>* (Message::*mutable_map)()) {
  const std::string name = Message::descriptor()->name();
  Message filled;
  for (int i = 0; i < size; ++i) {
    (*(filled.*mutable_map)())[make_key<Key>(i)];
  }
  const std::string bytes = filled.SerializePartialAsString();

  Message parsed;
  parse_into(&parsed, bytes);
  expect_all_keys((parsed.*map)(), name + " parsed");
  parse_into(&filled, bytes);
  expect_all_keys((filled.*map)(), name + " filled here, then parsed into");
  filled.MergeFrom(parsed);
  expect_all_keys((filled.*map)(), name + " filled here, then merged into");
  const Message copy(filled);
  expect_all_keys((copy.*map)(), name + " copied");
  for (int i = 0; i < size; ++i) {
    (*(parsed.*mutable_map)())[make_key<Key>(i)];
  }
  expect_all_keys((parsed.*map)(), name + " parsed, then filled here");
  for (int i = 0; i < size; ++i) {
    (parsed.*mutable_map)()->erase(make_key<Key>(i));
  }
  if (!(parsed.*map)().empty()) {
    std::cout << name << " parsed: " << (parsed.*map)().size() << " keys are not erased\n";
    ++failures;
  }
}

}  // namespace

int main() {
  check(&Violation::categories, &Violation::mutable_categories);
  check(&RuleSpec::dynamic_categories, &RuleSpec::mutable_dynamic_categories);
  check(&AffirmationMap::hashmap, &AffirmationMap::mutable_hashmap);
  check(&ViolationMap::hashmap, &ViolationMap::mutable_hashmap);
  check(&RuleSpecMap::hashmap, &RuleSpecMap::mutable_hashmap);
  check(&CreateViolation::dynamic_category_values,
        &CreateViolation::mutable_dynamic_category_values);
  return failures;
}
