// SPDX-License-Identifier: Apache-2.0

#include "rulecheck/page/sources.h"

#include <algorithm>
#include <cstdint>
#include <sstream>
#include <system_error>

#include "common/message_file.h"

namespace rulecheck {
namespace {

namespace fs = std::filesystem;

constexpr std::uintmax_t kMostBytesOfFile = std::uintmax_t{4} << 20;

std::vector<std::string> split(const std::string& content) {
  std::vector<std::string> lines;
  std::istringstream stream(content);
  for (std::string line; std::getline(stream, line);) {
    lines.push_back(line);
  }
  return lines;
}

}  // namespace

Sources::Sources(const fs::path& root) {
  std::error_code error;
  root_ = root.empty() ? root : fs::canonical(root, error);
}

bool Sources::mayRead(const fs::path& file) const {
  const auto [end, rest] = std::mismatch(root_.begin(), root_.end(), file.begin(), file.end());
  const auto isHidden = [](const fs::path& part) { return part.string().front() == '.'; };
  std::error_code error;
  return end == root_.end() && std::none_of(rest, file.end(), isHidden) &&
         fs::is_regular_file(file, error);
}

std::vector<std::string> Sources::linesOf(const std::string& path) {
  std::error_code error;
  const fs::path file = fs::canonical(root_ / path, error);
  if (root_.empty() || error || !mayRead(file)) {
    return {};
  }
  const std::uintmax_t size = fs::file_size(file, error);
  if (error || size > std::min<std::uintmax_t>(kMostBytesOfFile, bytesLeft_)) {
    return {};
  }
  bytesLeft_ -= static_cast<std::size_t>(size);
  try {
    return split(apps::readFile(file.string()));
  } catch (const apps::FileError&) {
    return {};
  }
}

}  // namespace rulecheck
