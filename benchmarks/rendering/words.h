// The display words, for the three renderers.

#ifndef VOK_BENCHMARKS_RENDERING_WORDS_H_
#define VOK_BENCHMARKS_RENDERING_WORDS_H_

#include <vok/rulecheck/RuleService.pb.h>

namespace benchmarks {

const char* word(vok::rulecheck::Resource_Scheme scheme);
const char* word(vok::rulecheck::Reference_RefType type);
const char* word(vok::rulecheck::Violation_Severity severity);

// What an address begins with.
const char* addressPrefix(vok::rulecheck::Resource_Scheme scheme);

}  // namespace benchmarks

#endif  // VOK_BENCHMARKS_RENDERING_WORDS_H_
