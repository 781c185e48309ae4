// Three other ways to write what Converter does, as programs would without it.
// They have its functions and return the same texts; each function is composed
// of the others' results.

#ifndef VOK_BENCHMARKS_RENDERING_RENDERERS_H_
#define VOK_BENCHMARKS_RENDERING_RENDERERS_H_

#include <vok/rulecheck/RuleService.pb.h>

#include <string>

namespace benchmarks {

// std::ostringstream.
class Streams {
 public:
  static std::string toString(vok::rulecheck::Resource_Scheme scheme);
  static std::string toString(vok::rulecheck::Reference_RefType type);
  static std::string toString(vok::rulecheck::Violation_Severity severity);
  static std::string toString(const vok::rulecheck::Scalar& scalar);
  static std::string toString(const vok::rulecheck::Reference& reference);
  static std::string href(const vok::rulecheck::Resource& resource);
  static std::string toHtml(const vok::rulecheck::Resource& resource, const std::string& text);
  static std::string toHtml(const vok::rulecheck::Link& link);
  static std::string toHtml(const vok::rulecheck::Reference& reference);
  static std::string toHtml(const vok::rulecheck::Arg& arg);
};

// operator+ of std::string, with snprintf for numbers.
class Concatenation {
 public:
  static std::string toString(vok::rulecheck::Resource_Scheme scheme);
  static std::string toString(vok::rulecheck::Reference_RefType type);
  static std::string toString(vok::rulecheck::Violation_Severity severity);
  static std::string toString(const vok::rulecheck::Scalar& scalar);
  static std::string toString(const vok::rulecheck::Reference& reference);
  static std::string href(const vok::rulecheck::Resource& resource);
  static std::string toHtml(const vok::rulecheck::Resource& resource, const std::string& text);
  static std::string toHtml(const vok::rulecheck::Link& link);
  static std::string toHtml(const vok::rulecheck::Reference& reference);
  static std::string toHtml(const vok::rulecheck::Arg& arg);
};

// The {fmt} library.
class Format {
 public:
  static std::string toString(vok::rulecheck::Resource_Scheme scheme);
  static std::string toString(vok::rulecheck::Reference_RefType type);
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

#endif  // VOK_BENCHMARKS_RENDERING_RENDERERS_H_
