// SPDX-License-Identifier: Apache-2.0

// Messages in files, in three formats that the file's extension selects:
//
//   .pb .bin                  binary, as on the wire
//   .txtpb .textproto .txt    text format
//   .json                     JSON
//
// Failures throw FileError, whose text names the file: FormatError if its name or content, or
// the message, is the reason.

#ifndef VOK_APPS_COMMON_MESSAGE_FILE_H_
#define VOK_APPS_COMMON_MESSAGE_FILE_H_

#include <google/protobuf/message.h>

#include <functional>
#include <stdexcept>
#include <string>

namespace apps {

class FileError : public std::runtime_error {
 public:
  using std::runtime_error::runtime_error;
};

class FormatError : public FileError {
 public:
  using FileError::FileError;
};

// The whole content of a file.
std::string readFile(const std::string& path);

// Writes the whole content of a file. The file keeps its old content, and a new file
// does not appear, unless all is written and on the disk: the content goes into a
// temporary file (.part-*) in the same folder first, which is renamed then, and removed
// after a failure. SIGHUP, SIGINT, SIGQUIT and SIGTERM wait until that is done. If the
// process ends before, the temporary file remains, and may be deleted.
// The file keeps its mode and, if the program may do that, its owner; symbolic links are
// followed and stay; other names of the same file keep the old content. Devices and FIFOs
// are written to in place.
void writeFile(const std::string& path, const std::string& content);

// Writes content to a descriptor. Returns false, with errno set, if that fails.
using Content = std::function<bool(int)>;
void writeFile(const std::string& path, const Content& content);

// Removes the regular file that writeFile() would replace, if there is one.
void removeFile(const std::string& path);

// Whether the extension of a file is one of the binary format.
bool isBinary(const std::string& path);

// Throws unless the extension of a file is one of the above.
void checkExtension(const std::string& path);

// Turns a message into the content of a file of that name, and back. A message
// that is not initialized or has more than 2 GiB, and content that is malformed or
// incomplete, throw.
// Binary and text bytes of equal messages are equal.
std::string encodeFor(const std::string& path, const google::protobuf::Message& message);
void decodeFrom(const std::string& path, const std::string& content,
                google::protobuf::Message* message);

// Writes to the path what encodeFor() makes for a file of that name, but binary bytes piece by
// piece: those of a large message take much memory.
void writeMessage(const std::string& path, const std::string& name,
                  const google::protobuf::Message& message);

}  // namespace apps

#endif  // VOK_APPS_COMMON_MESSAGE_FILE_H_
