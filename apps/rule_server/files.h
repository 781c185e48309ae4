// SPDX-License-Identifier: Apache-2.0

// How the rule server reaches files: through this interface only.

#ifndef VOK_APPS_RULE_SERVER_FILES_H_
#define VOK_APPS_RULE_SERVER_FILES_H_

#include <filesystem>
#include <string>

namespace rule_server {

// Both functions throw apps::FileError, with one line of text that names the
// path, if they fail.
class Files {
 public:
  virtual ~Files() = default;
  // Files that are too long fail, too.
  virtual std::string read(const std::string& path) = 0;
  virtual void write(const std::string& path, const std::string& content) = 0;
};

// The regular files in and below a directory, but none that is hidden: whose path there
// has a component that begins with a dot. A path is relative to the directory, or
// absolute. One that leads out of the directory, by ".." or by a symbolic link, fails,
// as does a link to a file with another extension. The directory must exist, and no
// other user may replace links in it while a file is opened.
class DirectoryFiles : public Files {
 public:
  explicit DirectoryFiles(const std::filesystem::path& directory);
  std::string read(const std::string& path) override;
  void write(const std::string& path, const std::string& content) override;

 private:
  std::string resolved(const std::string& path) const;

  std::filesystem::path directory_;
};

// Whether a directory is "/", the home directory of a user, or above one.
bool holdsHome(const std::filesystem::path& directory);

}  // namespace rule_server

#endif  // VOK_APPS_RULE_SERVER_FILES_H_
