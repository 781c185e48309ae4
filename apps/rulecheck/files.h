// SPDX-License-Identifier: Apache-2.0

// Results and texts in files; "-" is the standard input or output.

#ifndef VOK_APPS_RULECHECK_FILES_H_
#define VOK_APPS_RULECHECK_FILES_H_

#include <vok/rulecheck/RuleService.pb.h>

#include <string>

namespace rulecheck {

// The formats of results by extension, for --help.
extern const char kResultFormats[];

// The format is an extension without its dot; if it is empty, that of the path, or "pb" for
// "-". A result can be read, but not written, as SARIF; checkFormat() says whether it can be
// written. All throw apps::FileError.
void readResult(const std::string& path, const std::string& format,
                vok::rulecheck::SessionResult* result);
void writeResult(const std::string& path, const std::string& format,
                 const vok::rulecheck::SessionResult& result);
void checkFormat(const std::string& path, const std::string& format);
void writeText(const std::string& path, const std::string& content);

// Throws apps::FileError if the output is the input.
void checkIsOther(const std::string& output, const std::string& input);

}  // namespace rulecheck

#endif  // VOK_APPS_RULECHECK_FILES_H_
