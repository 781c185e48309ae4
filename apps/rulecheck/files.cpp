// SPDX-License-Identifier: Apache-2.0

#include "rulecheck/files.h"

#include <filesystem>
#include <iostream>
#include <new>
#include <system_error>

#include "common/message_file.h"
#include "rulecheck/sarif.h"

namespace rulecheck {
namespace {

using vok::rulecheck::SessionResult;

// A name with the extension that the format has.
std::string named(const std::string& path, const std::string& format) {
  if (path == "-") {
    return "-." + (format.empty() ? "pb" : format);
  }
  return format.empty() ? path : path + '.' + format;
}

void checkReadable(const std::string& name) {
  try {
    apps::checkExtension(name);
  } catch (const apps::FileError&) {
    throw apps::FileError(name + ": unknown extension, expected " + kResultFormats);
  }
}

}  // namespace

const char kResultFormats[] = ".pb, .bin, .txtpb, .textproto, .txt, .json, or .sarif for input";

void readResult(const std::string& path, const std::string& format, SessionResult* result) {
  const std::string name = named(path, format);
  const std::string content = apps::readFile(path == "-" ? "/dev/stdin" : path);
  if (std::filesystem::path(name).extension() != ".sarif") {
    checkReadable(name);
    apps::decodeFrom(name, content, result);
    return;
  }
  try {
    fromSarif(content, std::filesystem::current_path(), result);
  } catch (const std::bad_alloc&) {
    throw;
  } catch (const std::exception& error) {
    throw apps::FileError(path + ": " + error.what());
  }
}

void writeResult(const std::string& path, const std::string& format, const SessionResult& result) {
  if (path == "-") {
    writeText(path, apps::encodeFor(named(path, format), result));
  } else {
    apps::writeMessage(path, named(path, format), result);
  }
}

void checkFormat(const std::string& path, const std::string& format) {
  apps::checkExtension(named(path, format));
}

void writeText(const std::string& path, const std::string& content) {
  if (path != "-") {
    apps::writeFile(path, content);
  } else if (!(std::cout << content << std::flush)) {
    throw apps::FileError("the standard output cannot be written");
  }
}

void checkIsOther(const std::string& output, const std::string& input) {
  std::error_code ignored;
  if (std::filesystem::equivalent(input, output, ignored)) {
    throw apps::FileError(output + ": is the input");
  }
}

}  // namespace rulecheck
