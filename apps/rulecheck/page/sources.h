// SPDX-License-Identifier: Apache-2.0

// The lines of source code around findings.

#ifndef VOK_APPS_RULECHECK_PAGE_SOURCES_H_
#define VOK_APPS_RULECHECK_PAGE_SOURCES_H_

#include <cstddef>
#include <filesystem>
#include <string>
#include <vector>

namespace rulecheck {

// How many lines a page shows before and after that of a finding.
constexpr int kLinesAround = 2;

// Reads files that results name. Since strangers may have written a result, only regular
// files below a folder are read, after symbolic links are resolved, of at most 4 MiB, and
// 64 MiB in all; none whose name, or a folder's below the root, begins with a dot.
class Sources {
 public:
  // Reads nothing if the root is empty or does not exist.
  explicit Sources(const std::filesystem::path& root);

  // The lines of a file, or none if it may not or cannot be read. A relative path is one
  // below the root. Bytes are those of the file.
  std::vector<std::string> linesOf(const std::string& path);

 private:
  bool mayRead(const std::filesystem::path& file) const;

  std::filesystem::path root_;
  std::size_t bytesLeft_ = std::size_t{64} << 20;
};

}  // namespace rulecheck

#endif  // VOK_APPS_RULECHECK_PAGE_SOURCES_H_
