#include "vectors/golden_vectors.h"

#include <algorithm>
#include <filesystem>
#include <fstream>
#include <iterator>
#include <stdexcept>

namespace tests {
namespace {

std::string contentOf(const std::filesystem::path& path) {
  std::ifstream in(path, std::ios::binary);
  if (!in) {
    throw std::runtime_error("cannot read " + path.string());
  }
  return {std::istreambuf_iterator<char>(in), std::istreambuf_iterator<char>()};
}

}  // namespace

const std::vector<GoldenVector>& goldenVectors() {
  static const std::vector<GoldenVector> all = [] {
    std::vector<GoldenVector> found;
    for (const auto& entry : std::filesystem::directory_iterator(VECTORS_DIR)) {
      const std::string name = entry.path().filename().string();
      found.push_back({name, name.substr(0, name.find('.')), contentOf(entry.path() / "about.txt"),
                       contentOf(entry.path() / "text.txtpb"),
                       contentOf(entry.path() / "wire.bin")});
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
