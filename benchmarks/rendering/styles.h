// What Converter does, written as programs would write it without the library, in three styles.

#ifndef VOK_BENCHMARKS_RENDERING_STYLES_H_
#define VOK_BENCHMARKS_RENDERING_STYLES_H_

#include <vok/rulecheck/RuleService.pb.h>

#include <string>

namespace benchmarks {

// Builders of text: std::string with snprintf for numbers, {fmt}, std::ostringstream.
class Concatenation;
class Format;
class Streams;

// The functions of Converter. Each combines what the others return.
template <typename Style>
class Rendering {
 public:
  static std::string toString(vok::rulecheck::Violation_Severity severity);
  static std::string toString(const vok::rulecheck::Scalar& scalar);
  static std::string toString(const vok::rulecheck::Reference& reference);
  static std::string href(const vok::rulecheck::Resource& resource);
  static std::string toHtml(const vok::rulecheck::Resource& resource, const std::string& text);
  static std::string toHtml(const vok::rulecheck::Link& link);
  static std::string toHtml(const vok::rulecheck::Reference& reference);
  static std::string toHtml(const vok::rulecheck::Arg& arg);
};

}  // namespace benchmarks

#endif  // VOK_BENCHMARKS_RENDERING_STYLES_H_
