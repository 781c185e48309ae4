// SPDX-License-Identifier: Apache-2.0

#include "vectors/golden_vectors.h"

#include <algorithm>
#include <filesystem>
#include <fstream>
#include <iterator>
#include <stdexcept>

#include "support/messages.h"

namespace tests {
namespace {

// The rest of the next line, which begins with that.
std::string lineAfter(const std::string& start, std::istream& in) {
  std::string line;
  if (!std::getline(in, line) || line.compare(0, start.size(), start) != 0) {
    throw std::runtime_error("no line begins with " + start + ": " + line);
  }
  return line.substr(start.size());
}

GoldenVector read(const std::filesystem::path& path) {
  std::ifstream in(path);
  GoldenVector vector;
  vector.name = path.stem().string();
  vector.type = vector.name.substr(0, vector.name.find('.'));
  vector.about = lineAfter("# ", in);
  vector.wire = fromHex(lineAfter("# bytes: ", in));
  vector.text.assign(std::istreambuf_iterator<char>(in), {});
  return vector;
}

}  // namespace

const std::vector<GoldenVector>& goldenVectors() {
  static const std::vector<GoldenVector> all = [] {
    std::vector<GoldenVector> found;
    for (const auto& entry : std::filesystem::directory_iterator(VECTORS_DIR)) {
      found.push_back(read(entry.path()));
    }
    std::sort(found.begin(), found.end(),
              [](const GoldenVector& a, const GoldenVector& b) { return a.name < b.name; });
    return found;
  }();
  return all;
}

const std::string& everyField(const std::string& type) {
  for (const GoldenVector& vector : goldenVectors()) {
    if (vector.name == type + ".every_field") {
      return vector.wire;
    }
  }
  throw std::invalid_argument("no vector has every field of " + type);
}

}  // namespace tests
