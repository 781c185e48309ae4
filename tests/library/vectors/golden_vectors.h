// SPDX-License-Identifier: Apache-2.0

// The golden vectors: a file for each case, with what it shows, and the bytes and the
// text form of a message.

#ifndef VOK_TESTS_LIBRARY_VECTORS_GOLDEN_VECTORS_H_
#define VOK_TESTS_LIBRARY_VECTORS_GOLDEN_VECTORS_H_

#include <string>
#include <vector>

namespace tests {

struct GoldenVector {
  std::string name;  // such as "Link.every_field"
  std::string type;  // the name of its message type
  std::string about;
  std::string text;
  std::string wire;
};

// All of them, by name.
const std::vector<GoldenVector>& goldenVectors();

// The bytes of a message of that type with all fields set.
const std::string& everyField(const std::string& type);

}  // namespace tests

#endif  // VOK_TESTS_LIBRARY_VECTORS_GOLDEN_VECTORS_H_
