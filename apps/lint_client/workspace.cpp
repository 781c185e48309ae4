// SPDX-License-Identifier: Apache-2.0

#include "lint_client/workspace.h"

#include <stdlib.h>

#include <cctype>
#include <cerrno>
#include <cstddef>
#include <set>
#include <system_error>

namespace lint_client {
namespace {

namespace fs = std::filesystem;

// Keeps the name's extension, and its stem where that can be a module's name.
std::string plain(std::string name) {
  for (char& c : name) {
    const bool isPlain = std::isalnum(static_cast<unsigned char>(c)) != 0 || c == '.' || c == '-';
    c = isPlain ? c : '_';
  }
  return name;
}

}  // namespace

TemporaryDirectory::TemporaryDirectory() {
  std::string name = (fs::temp_directory_path() / "lint_client-XXXXXX").string();
  if (mkdtemp(name.data()) == nullptr) {
    throw std::system_error(errno, std::generic_category(), name);
  }
  path_ = name;
}

TemporaryDirectory::~TemporaryDirectory() {
  std::error_code ignored;
  fs::remove_all(path_, ignored);
}

Workspace::Workspace(const std::vector<std::string>& files) {
  std::set<fs::path> known;
  for (const std::string& file : files) {
    const std::string number = std::to_string(files_.size());
    const fs::path target = fs::absolute(file);
    fs::create_directory(directory() / number);
    files_.push_back(number + '/' + plain(target.filename().string()));
    link(target, files_.back(), file);
    if (known.insert(target.parent_path()).second) {
      directories_.push_back("in" + number);
      link(target.parent_path(), directories_.back(), fs::path(file).parent_path().string());
    }
  }
}

void Workspace::link(const fs::path& target, const std::string& name, const std::string& original) {
  fs::create_symlink(target, directory() / name);
  originals_[name] = original;
}

std::string Workspace::original(const std::string& name) const {
  const auto file = originals_.find(name);
  if (file != originals_.end()) {
    return file->second;
  }
  const std::size_t slash = name.find('/');
  const auto directory = originals_.find(name.substr(0, slash));
  if (slash == std::string::npos || directory == originals_.end()) {
    return name;
  }
  return (fs::path(directory->second) / name.substr(slash + 1)).string();
}

}  // namespace lint_client
