// SPDX-License-Identifier: Apache-2.0

#include "common/message_file.h"

#include <google/protobuf/io/coded_stream.h>
#include <google/protobuf/io/tokenizer.h>
#include <google/protobuf/io/zero_copy_stream_impl.h>
#include <google/protobuf/text_format.h>
#include <google/protobuf/util/json_util.h>

#include <algorithm>
#include <array>
#include <cerrno>
#include <cstddef>
#include <cstdint>
#include <filesystem>
#include <fstream>
#include <limits>
#include <set>
#include <string_view>
#include <system_error>

namespace apps {
namespace {

// The message's size has been asked for, and isn't computed again.
bool writeBinary(const google::protobuf::Message& message,
                 google::protobuf::io::ZeroCopyOutputStream* sink) {
  google::protobuf::io::CodedOutputStream out(sink);
  out.SetSerializationDeterministic(true);
  message.SerializeWithCachedSizes(&out);
  return !out.HadError();
}

bool encodeBinary(const google::protobuf::Message& message, std::string* bytes) {
  google::protobuf::io::StringOutputStream sink(bytes);
  return writeBinary(message, &sink);
}

bool encodeJson(const google::protobuf::Message& message, std::string* json) {
  google::protobuf::util::JsonPrintOptions options;
  options.add_whitespace = true;
  return google::protobuf::util::MessageToJsonString(message, json, options).ok();
}

// The functions below return what is wrong, or nothing.

std::string decodeBinary(const std::string& content, google::protobuf::Message* message) {
  return message->ParsePartialFromString(content) ? "" : "malformed bytes";
}

// Keeps the first error. Releases differ in the function they call, so neither
// can be marked as an override.
class FirstError : public google::protobuf::io::ErrorCollector {
 public:
  // NOLINTNEXTLINE(modernize-use-override)
  void AddError(int line, int column, const std::string& message) {
    RecordError(line, column, message);
  }
  // NOLINTNEXTLINE(modernize-use-override)
  void RecordError(int line, int column, std::string_view message) {
    if (text_.empty()) {
      text_ = std::to_string(line + 1) + ":" + std::to_string(column + 1) + ": ";
      text_ += message;
    }
  }
  const std::string& text() const { return text_; }

 private:
  std::string text_;
};

std::string decodeText(const std::string& content, google::protobuf::Message* message) {
  FirstError error;
  google::protobuf::TextFormat::Parser parser;
  parser.RecordErrorsTo(&error);
  parser.AllowPartialMessage(true);
  return parser.ParseFromString(content, message) ? "" : error.text();
}

std::string decodeJson(const std::string& content, google::protobuf::Message* message) {
  const auto status = google::protobuf::util::JsonStringToMessage(content, message);
  if (status.ok()) {
    return "";
  }
  // "CODE:reason" or, for a field, "CODE:: reason", then the lines around it.
  const std::string text = status.ToString();
  const auto reason = std::min(text.find_first_not_of(": ", text.find(':')), text.size());
  return text.substr(reason, text.find('\n') - reason);
}

struct Format {
  std::set<std::string> extensions;
  bool (*encode)(const google::protobuf::Message&, std::string*);
  std::string (*decode)(const std::string&, google::protobuf::Message*);
};

const Format& formatOf(const std::string& path) {
  static const Format formats[] = {
      {{".pb", ".bin"}, encodeBinary, decodeBinary},
      {{".txtpb", ".textproto", ".txt"}, google::protobuf::TextFormat::PrintToString, decodeText},
      {{".json"}, encodeJson, decodeJson},
  };
  for (const Format& format : formats) {
    if (format.extensions.count(std::filesystem::path(path).extension().string()) != 0) {
      return format;
    }
  }
  throw FormatError(path +
                    ": unknown extension, expected .pb, .bin, .txtpb, .textproto, .txt or .json");
}

void checkEncodable(const std::string& path, const google::protobuf::Message& message) {
  if (!message.IsInitialized()) {
    throw FormatError(path + ": missing " + message.InitializationErrorString());
  }
  // The conversion to JSON takes a message that is too long for an empty one.
  if (message.ByteSizeLong() > std::numeric_limits<std::int32_t>::max()) {
    throw FormatError(path + ": the message has more than 2 GiB");
  }
}

}  // namespace

std::string readFile(const std::string& path) {
  std::error_code ignored;
  std::ifstream in(path, std::ios::binary);
  std::string content;
  // Or a large file would take twice its size while it is read.
  const auto size = std::filesystem::is_regular_file(path, ignored)
                        ? std::filesystem::file_size(path, ignored)
                        : 0;
  content.reserve(size);
  std::array<char, 65536> buffer;
  while (in.read(buffer.data(), buffer.size()) || in.gcount() > 0) {
    content.append(buffer.data(), static_cast<std::size_t>(in.gcount()));
  }
  if (!in.is_open() || in.bad()) {
    throw FileError(path + ": cannot be read: " + std::generic_category().message(errno));
  }
  return content;
}

bool isBinary(const std::string& path) {
  const std::string extension = std::filesystem::path(path).extension().string();
  return extension == ".pb" || extension == ".bin";
}

void checkExtension(const std::string& path) {
  static_cast<void>(formatOf(path));
}

std::string encodeFor(const std::string& path, const google::protobuf::Message& message) {
  const Format& format = formatOf(path);
  checkEncodable(path, message);
  std::string content;
  if (!format.encode(message, &content)) {
    throw FormatError(path + ": the message cannot be written in this format");
  }
  return content;
}

void decodeFrom(const std::string& path, const std::string& content,
                google::protobuf::Message* message) {
  const std::string error = formatOf(path).decode(content, message);
  if (!error.empty()) {
    throw FormatError(path + ": " + error);
  }
  if (!message->IsInitialized()) {
    throw FormatError(path + ": missing " + message->InitializationErrorString());
  }
}

void writeMessage(const std::string& path, const std::string& name,
                  const google::protobuf::Message& message) {
  if (!isBinary(name)) {
    writeFile(path, encodeFor(name, message));
    return;
  }
  checkEncodable(name, message);
  writeFile(path, [&](int descriptor) {
    google::protobuf::io::FileOutputStream sink(descriptor);
    const bool isWritten = writeBinary(message, &sink) && sink.Flush();
    errno = sink.GetErrno();
    return isWritten;
  });
}

}  // namespace apps
