// The main function of a target without a fuzzer: replays inputs. The arguments
// are files, and folders whose files are taken.
//
// The input that is replayed is named before it is: the last name printed is that
// of the input that ended the process.

#include <algorithm>
#include <filesystem>
#include <fstream>
#include <iostream>
#include <iterator>
#include <string>
#include <vector>

#include "target.h"

namespace {

namespace fs = std::filesystem;

std::vector<fs::path> filesOf(const fs::path& path) {
  if (!fs::is_directory(path)) {
    return {path};
  }
  std::vector<fs::path> files;
  for (const auto& entry : fs::recursive_directory_iterator(path)) {
    if (entry.is_regular_file()) {
      files.push_back(entry.path());
    }
  }
  std::sort(files.begin(), files.end());
  return files;
}

bool replay(const fs::path& path) {
  std::cout << path.string() << std::endl;
  std::ifstream in(path, std::ios::binary);
  if (!in) {
    return false;
  }
  const std::string input{std::istreambuf_iterator<char>(in), std::istreambuf_iterator<char>()};
  LLVMFuzzerTestOneInput(reinterpret_cast<const std::uint8_t*>(input.data()), input.size());
  return true;
}

}  // namespace

int main(int argc, char** argv) {
  int count = 0;
  for (const std::string& argument : std::vector<std::string>(argv + 1, argv + argc)) {
    for (const fs::path& path : filesOf(argument)) {
      if (!replay(path)) {
        std::cerr << "cannot read " << path.string() << "\n";
        return 2;
      }
      ++count;
    }
  }
  if (count == 0) {
    std::cerr << "no input to replay\n";
    return 2;
  }
  std::cout << count << " inputs\n";
}
