// SPDX-License-Identifier: Apache-2.0

// A temporary directory, which the destructor removes.

#ifndef VOK_TESTS_APPS_COMMON_DIRECTORY_H_
#define VOK_TESTS_APPS_COMMON_DIRECTORY_H_

#include <stdlib.h>

#include <filesystem>
#include <stdexcept>
#include <string>

namespace tests {

class Directory {
 public:
  Directory() : path_((std::filesystem::temp_directory_path() / "file_test-XXXXXX").string()) {
    if (mkdtemp(path_.data()) == nullptr) {
      throw std::runtime_error("no temporary directory");
    }
  }
  ~Directory() { std::filesystem::remove_all(path_); }
  Directory(const Directory&) = delete;
  Directory& operator=(const Directory&) = delete;

  const std::string& path() const { return path_; }

 private:
  std::string path_;
};

}  // namespace tests

#endif  // VOK_TESTS_APPS_COMMON_DIRECTORY_H_
