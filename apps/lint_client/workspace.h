// SPDX-License-Identifier: Apache-2.0

// A directory in which Verilator finds the files to check under plain names.

#ifndef VOK_APPS_LINT_CLIENT_WORKSPACE_H_
#define VOK_APPS_LINT_CLIENT_WORKSPACE_H_

#include <filesystem>
#include <map>
#include <string>
#include <vector>

namespace lint_client {

// A directory of its own, which goes away with the object.
class TemporaryDirectory {
 public:
  TemporaryDirectory();
  ~TemporaryDirectory();
  TemporaryDirectory(const TemporaryDirectory&) = delete;
  TemporaryDirectory& operator=(const TemporaryDirectory&) = delete;

  const std::filesystem::path& path() const { return path_; }

 private:
  std::filesystem::path path_;
};

// Verilator cuts the name of a file at the first blank in it. A workspace is a
// temporary directory with links, so that no name that Verilator sees has one,
// whatever the user's names are.
class Workspace {
 public:
  explicit Workspace(const std::vector<std::string>& files);

  const std::filesystem::path& directory() const { return directory_.path(); }

  // What to call the files in the workspace, in the order in which they were given,
  // and the directories that they are in, each once.
  const std::vector<std::string>& files() const { return files_; }
  const std::vector<std::string>& directories() const { return directories_; }

  // The user's name of a file that is named as Verilator sees it. The name of a file
  // beside one that the user gave begins as that does.
  std::string original(const std::string& name) const;

 private:
  void link(const std::filesystem::path& target, const std::string& name,
            const std::string& original);

  TemporaryDirectory directory_;
  std::vector<std::string> files_;
  std::vector<std::string> directories_;
  std::map<std::string, std::string> originals_;
};

}  // namespace lint_client

#endif  // VOK_APPS_LINT_CLIENT_WORKSPACE_H_
