// SPDX-License-Identifier: Apache-2.0

// The main function of a target without a fuzzer: replays files, and the files of folders. Each
// name is printed before its input is replayed, so the last one ended the process.

#include <filesystem>
#include <fstream>
#include <iostream>
#include <iterator>
#include <string>

#include "fuzz.h"

namespace {

namespace fs = std::filesystem;

// Returns the number of inputs.
int replay(const fs::path& path) {
  if (fs::is_directory(path)) {
    int count = 0;
    for (const auto& entry : fs::directory_iterator(path)) {
      count += replay(entry.path());
    }
    return count;
  }
  std::cout << path.string() << std::endl;
  std::ifstream in;
  in.exceptions(std::ios::failbit | std::ios::badbit);
  in.open(path, std::ios::binary);
  fuzz::run({std::istreambuf_iterator<char>(in), std::istreambuf_iterator<char>()});
  return 1;
}

}  // namespace

int main(int argc, char** argv) {
  fuzz::initialize();
  int count = 0;
  for (int i = 1; i < argc; ++i) {
    count += replay(argv[i]);
  }
  std::cout << count << " inputs\n";
  return count > 0 ? 0 : 2;
}
