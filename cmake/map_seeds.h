// SPDX-License-Identifier: Apache-2.0

// Included into the generated source for releases of Protocol Buffers before 3.4.
//
// There a map's bucket for a key is hash + seed with NDEBUG, hash * (seed | 1)
// without, and maps pass between the library, which has NDEBUG, and programs
// that may not: lookups would miss, or abort with "CHECK failed: find(...) ==
// end()". With a seed of 0 both are the hash. The seed protects from nothing:
// whatever it is, hashes that are equal in their lowest bits share a bucket.

#pragma once

#include <google/protobuf/map.h>

#include <string>

namespace vok {
namespace rulecheck {
class Affirmation;
class RuleSpec;
class Violation;
}  // namespace rulecheck
}  // namespace vok

namespace google {
namespace protobuf {

// One for each type of map in the schema.
#define VOK_MAP_WITHOUT_SEED(Key, Value)                  \
  template <>                                             \
  inline size_t Map<Key, Value>::InnerMap::Seed() const { \
    return 0;                                             \
  }
VOK_MAP_WITHOUT_SEED(int32, bool)
VOK_MAP_WITHOUT_SEED(int32, std::string)
VOK_MAP_WITHOUT_SEED(int32, vok::rulecheck::Affirmation)
VOK_MAP_WITHOUT_SEED(int32, vok::rulecheck::Violation)
VOK_MAP_WITHOUT_SEED(std::string, std::string)
VOK_MAP_WITHOUT_SEED(std::string, vok::rulecheck::RuleSpec)
#undef VOK_MAP_WITHOUT_SEED

}  // namespace protobuf
}  // namespace google
