// SPDX-License-Identifier: Apache-2.0

#include <fcntl.h>
#include <stdio.h>
#include <sys/stat.h>
#include <unistd.h>

#include <cerrno>
#include <cstddef>
#include <filesystem>
#include <random>
#include <string>
#include <string_view>
#include <system_error>

#include "common/descriptor.h"
#include "common/held_signals.h"
#include "common/message_file.h"

namespace apps {
namespace {

namespace fs = std::filesystem;

// The functions below return false, with errno set, if they fail.

bool writeAll(int descriptor, std::string_view content) {
  while (!content.empty()) {
    const ssize_t count = write(descriptor, content.data(), content.size());
    if (count >= 0) {
      content.remove_prefix(static_cast<std::size_t>(count));
    } else if (errno != EINTR) {
      return false;
    }
  }
  return true;
}

bool writeInPlace(const fs::path& path, const Content& content) {
  const Descriptor file(open(path.c_str(), O_WRONLY | O_TRUNC | O_NOCTTY | O_CLOEXEC));
  return file.isOpen() && content(file.number());
}

std::string temporaryName() {
  std::random_device random;
  return ".part-" + std::to_string(random()) + std::to_string(random());
}

// Only root can keep another user's ownership of a file.
bool takeModeOf(const struct stat& old, const Descriptor& file) {
  return (fchown(file.number(), old.st_uid, old.st_gid) == 0 || errno == EPERM) &&
         fchmod(file.number(), old.st_mode & 0777) == 0;
}

// old is null for a file that is new. The folder is opened once, so that neither long
// paths nor folders that are moved make a difference.
bool replace(const fs::path& path, const struct stat* old, const Content& content) {
  const std::string temporary = temporaryName();
  const fs::path parent = path.has_parent_path() ? path.parent_path() : ".";
  const Descriptor folder(open(parent.c_str(), O_PATH | O_DIRECTORY | O_CLOEXEC));
  if (!folder.isOpen()) {
    return false;
  }
  const HeldSignals held;
  // Others could open the file before it has the mode of the old one.
  const mode_t mode = old == nullptr ? 0666 : 0600;
  const Descriptor file(
      openat(folder.number(), temporary.c_str(), O_WRONLY | O_CREAT | O_EXCL | O_CLOEXEC, mode));
  if (!file.isOpen()) {
    return false;
  }
  if ((old == nullptr || takeModeOf(*old, file)) && content(file.number()) &&
      fsync(file.number()) == 0 &&
      renameat(folder.number(), temporary.c_str(), folder.number(), path.filename().c_str()) == 0) {
    return true;
  }
  const int error = errno;
  unlinkat(folder.number(), temporary.c_str(), 0);
  errno = error;
  return false;
}

// Links of /proc lead to a program's open files, whatever they say.
bool isLink(const fs::path& path) {
  std::error_code ignored;
  return fs::is_symlink(path, ignored) &&
         fs::weakly_canonical(path.parent_path(), ignored).native().compare(0, 6, "/proc/") != 0;
}

// The file that a symbolic link leads to, so that the link stays.
fs::path targetOf(fs::path path) {
  constexpr int kMostLinks = 40;
  std::error_code ignored;
  for (int i = 0; i < kMostLinks && isLink(path); ++i) {
    path = path.parent_path() / fs::read_symlink(path, ignored);
  }
  return path;
}

bool writeWhole(const fs::path& path, const Content& content) {
  struct stat old = {};
  if (lstat(path.c_str(), &old) != 0) {
    return errno == ENOENT && replace(path, nullptr, content);
  }
  if (!S_ISREG(old.st_mode)) {
    return writeInPlace(path, content);
  }
  return faccessat(AT_FDCWD, path.c_str(), W_OK, AT_EACCESS) == 0 && replace(path, &old, content);
}

}  // namespace

void writeFile(const std::string& path, const std::string& content) {
  writeFile(path, [&](int descriptor) { return writeAll(descriptor, content); });
}

void writeFile(const std::string& path, const Content& content) {
  if (!writeWhole(targetOf(path), content)) {
    throw FileError(path + ": cannot be written: " + std::generic_category().message(errno));
  }
}

void removeFile(const std::string& path) {
  const fs::path target = targetOf(path);
  struct stat old = {};
  if (lstat(target.c_str(), &old) == 0 && S_ISREG(old.st_mode) && unlink(target.c_str()) != 0) {
    throw FileError(path + ": cannot be removed: " + std::generic_category().message(errno));
  }
}

}  // namespace apps
