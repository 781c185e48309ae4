#include "rule_server/files.h"

#include <algorithm>
#include <system_error>
#include <utility>

#include "common/message_file.h"

namespace rule_server {
namespace {

namespace fs = std::filesystem;

bool isBelow(const fs::path& directory, const fs::path& path) {
  return std::mismatch(directory.begin(), directory.end(), path.begin(), path.end()).first ==
         directory.end();
}

// A link that points nowhere is not followed by weakly_canonical, but by whoever
// opens it.
bool isRegularOrAbsent(const fs::path& path) {
  const fs::file_status status = fs::symlink_status(path);
  return !fs::exists(status) || fs::is_regular_file(status);
}

}  // namespace

DirectoryFiles::DirectoryFiles(const fs::path& directory) : directory_(fs::canonical(directory)) {}

std::string DirectoryFiles::resolved(const std::string& path) const {
  if (path.find('\0') != std::string::npos) {
    throw examples::FileError("a path with a zero byte in it");
  }
  try {
    const fs::path target = fs::weakly_canonical(directory_ / path);
    if (!isBelow(directory_, target)) {
      throw examples::FileError(path + ": outside of the server's directory");
    }
    if (!isRegularOrAbsent(target)) {
      throw examples::FileError(path + ": not a regular file");
    }
    return target.string();
  } catch (const fs::filesystem_error& error) {
    throw examples::FileError(path + ": " + error.code().message());
  }
}

std::string DirectoryFiles::read(const std::string& path) {
  return examples::readFile(resolved(path));
}

void DirectoryFiles::write(const std::string& path, const std::string& content) {
  examples::writeFile(resolved(path), content);
}

}  // namespace rule_server
