// How the rule server reaches files: through this interface only.

#ifndef VOK_EXAMPLES_RULE_SERVER_FILES_H_
#define VOK_EXAMPLES_RULE_SERVER_FILES_H_

#include <filesystem>
#include <string>

namespace rule_server {

// Both functions throw examples::FileError, with one line of text that names the
// path, if they fail.
class Files {
 public:
  virtual ~Files() = default;
  virtual std::string read(const std::string& path) = 0;
  virtual void write(const std::string& path, const std::string& content) = 0;
};

// The regular files in and below a directory. A path is relative to the
// directory, or absolute. One that leads out of the directory, by ".." or by a
// symbolic link, fails. The directory must exist, and nobody else may move links
// in it about while a file is opened.
class DirectoryFiles : public Files {
 public:
  explicit DirectoryFiles(const std::filesystem::path& directory);
  std::string read(const std::string& path) override;
  void write(const std::string& path, const std::string& content) override;

 private:
  std::string resolved(const std::string& path) const;

  std::filesystem::path directory_;
};

}  // namespace rule_server

#endif  // VOK_EXAMPLES_RULE_SERVER_FILES_H_
