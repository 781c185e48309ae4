// SPDX-License-Identifier: Apache-2.0

// The main function of a target without a fuzzer: replays files, and the files of folders. Each
// name is printed before its input is replayed, so the last one ended the process.

#include <filesystem>
#include <fstream>
#include <iostream>
#include <iterator>
#include <string>

#include "check.h"

namespace {

namespace fs = std::filesystem;

int count = 0;

bool replay(const fs::path& path) {
  if (fs::is_directory(path)) {
    for (const auto& entry : fs::directory_iterator(path)) {
      if (!replay(entry.path())) {
        return false;
      }
    }
    return true;
  }
  std::cout << path.string() << std::endl;
  std::ifstream in(path, std::ios::binary);
  const std::string input{std::istreambuf_iterator<char>(in), std::istreambuf_iterator<char>()};
  LLVMFuzzerTestOneInput(reinterpret_cast<const std::uint8_t*>(input.data()), input.size());
  ++count;
  return in.good() || in.eof();
}

}  // namespace

int main(int argc, char** argv) {
  for (int i = 1; i < argc; ++i) {
    if (!replay(argv[i])) {
      std::cerr << "cannot read " << argv[i] << "\n";
      return 2;
    }
  }
  if (count == 0) {
    std::cerr << "no input to replay\n";
    return 2;
  }
  std::cout << count << " inputs\n";
}
