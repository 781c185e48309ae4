// SPDX-License-Identifier: Apache-2.0

// What Converter returns, computed in another way: from the rules of its header,
// with string streams and snprintf, for comparison. Slow, and without any code of
// the library's.

#ifndef VOK_TESTS_SUPPORT_RENDERING_MODEL_H_
#define VOK_TESTS_SUPPORT_RENDERING_MODEL_H_

#include <vok/rulecheck/RuleService.pb.h>

#include <string>

namespace tests {
namespace model {

std::string wordOfScheme(int number);
std::string wordOfKind(int number);
std::string wordOfSeverity(int number);

std::string text(const vok::rulecheck::Scalar& scalar);
std::string text(const vok::rulecheck::Reference& reference);
std::string address(const vok::rulecheck::Resource& resource);
std::string html(const vok::rulecheck::Resource& resource, const std::string& anchorText);
std::string html(const vok::rulecheck::Link& link);
std::string html(const vok::rulecheck::Reference& reference);
std::string html(const vok::rulecheck::Arg& arg);

}  // namespace model
}  // namespace tests

#endif  // VOK_TESTS_SUPPORT_RENDERING_MODEL_H_
