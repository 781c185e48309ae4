// SPDX-License-Identifier: Apache-2.0

#include "rule_server/files.h"

#include <pwd.h>
#include <stdlib.h>

#include <algorithm>
#include <cstdint>
#include <system_error>
#include <utility>

#include "common/message_file.h"

namespace rule_server {
namespace {

namespace fs = std::filesystem;

// One answer for all paths outside, so that clients don't learn which of them exist.
const char* const kUnreachable = ": outside of the server's directory, or unreachable";

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

bool isHidden(const fs::path& path) {
  return std::any_of(path.begin(), path.end(),
                     [](const fs::path& component) { return component.string()[0] == '.'; });
}

// Clients are not told where the directory is: work's failure begins with the target.
template <typename Work>
auto failingFor(const std::string& path, const std::string& target, Work work) {
  try {
    return work();
  } catch (const apps::FileError& error) {
    throw apps::FileError(path + std::string(error.what()).substr(target.size()));
  }
}

}  // namespace

DirectoryFiles::DirectoryFiles(const fs::path& directory) : directory_(fs::canonical(directory)) {}

std::string DirectoryFiles::resolved(const std::string& path) const {
  if (path.find('\0') != std::string::npos) {
    throw apps::FileError("a path with a zero byte in it");
  }
  try {
    // What is outside makes no difference, not even to "../directory/../inside".
    const fs::path target = fs::weakly_canonical((directory_ / path).lexically_normal());
    if (!isBelow(directory_, target)) {
      throw apps::FileError(path + kUnreachable);
    }
    if (isHidden(target.lexically_relative(directory_))) {
      throw apps::FileError(path + ": a hidden file");
    }
    if (target.extension() != fs::path(path).extension()) {
      throw apps::FileError(path + ": a link to a file with another extension");
    }
    if (!isRegularOrAbsent(target)) {
      throw apps::FileError(path + ": not a regular file");
    }
    return target.string();
  } catch (const fs::filesystem_error&) {
    throw apps::FileError(path + kUnreachable);
  }
}

std::string DirectoryFiles::read(const std::string& path) {
  constexpr std::uintmax_t kMostBytes = 16U << 20;
  const std::string target = resolved(path);
  std::error_code ignored;
  const std::uintmax_t bytes = fs::file_size(target, ignored);
  if (!ignored && bytes > kMostBytes) {
    throw apps::FileError(path + ": has more than 16 MiB; split it");
  }
  return failingFor(path, target, [&] { return apps::readFile(target); });
}

void DirectoryFiles::write(const std::string& path, const std::string& content) {
  const std::string target = resolved(path);
  failingFor(path, target, [&] { apps::writeFile(target, content); });
}

bool holdsHome(const fs::path& directory) {
  const fs::path outer = fs::canonical(directory);
  const auto isAbove = [&outer](const char* home) {
    std::error_code missing;
    const fs::path inner = home == nullptr ? "" : fs::canonical(home, missing);
    return !inner.empty() && isBelow(outer, inner);
  };
  if (outer == outer.root_path() || isAbove(getenv("HOME"))) {
    return true;
  }
  bool found = false;
  setpwent();
  for (const passwd* user = getpwent(); user != nullptr && !found; user = getpwent()) {
    found = isAbove(user->pw_dir);
  }
  endpwent();
  return found;
}

}  // namespace rule_server
