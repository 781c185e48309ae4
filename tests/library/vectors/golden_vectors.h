// SPDX-License-Identifier: Apache-2.0

// The golden vectors: a file for each case, with what it shows, and the bytes and the
// text form of a message.

#ifndef VOK_TESTS_LIBRARY_VECTORS_GOLDEN_VECTORS_H_
#define VOK_TESTS_LIBRARY_VECTORS_GOLDEN_VECTORS_H_

#include <filesystem>
#include <fstream>
#include <iterator>
#include <stdexcept>
#include <string>
#include <vector>

#include "support/messages.h"

namespace tests {

struct GoldenVector {
  std::string name;  // such as "Link.every_field"
  std::string type;  // the name of its message type
  std::string text;
  std::string wire;
};

inline std::vector<GoldenVector> goldenVectors() {
  std::vector<GoldenVector> vectors;
  for (const auto& entry : std::filesystem::directory_iterator(VECTORS_DIR)) {
    std::ifstream in(entry.path());
    std::string about, hash, bytes, digits;
    std::getline(in, about);
    std::getline(in >> hash >> bytes, digits);
    if (bytes != "bytes:") {
      throw std::runtime_error(entry.path().string() + ": the second line is not # bytes: HEX");
    }
    const std::string name = entry.path().stem().string();
    vectors.push_back({name,
                       name.substr(0, name.find('.')),
                       {std::istreambuf_iterator<char>(in), {}},
                       fromHex(digits)});
  }
  return vectors;
}

}  // namespace tests

#endif  // VOK_TESTS_LIBRARY_VECTORS_GOLDEN_VECTORS_H_
