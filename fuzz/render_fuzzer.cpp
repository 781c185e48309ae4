// SPDX-License-Identifier: Apache-2.0

// The input is settings in five bytes, and an Arg in text format, which contains each kind of
// value that can be rendered.

#include <vok/rulecheck/Converter.h>

#include <cfenv>
#include <cstring>
#include <locale>
#include <memory>
#include <string>

#include "check.h"
#include "support/messages.h"
#include "support/numeric_settings.h"
#include "support/rendering_model.h"

namespace {

using fuzz::checkEqual;
using tests::ProcessLocale;
using tests::RoundingMode;
using tests::ThreadLocale;
using namespace vok::rulecheck;
namespace model = tests::model;

class Grouping : public std::numpunct<char> {
  std::string do_grouping() const override { return "\1"; }
  char do_thousands_sep() const override { return '.'; }
  char do_decimal_point() const override { return ','; }
};

// Makes a locale that groups digits the global one of C++ for a scope.
class GroupingLocale {
 public:
  GroupingLocale() : previous_(std::locale::global(std::locale(std::locale(), new Grouping))) {}
  ~GroupingLocale() { std::locale::global(previous_); }
  GroupingLocale(const GroupingLocale&) = delete;
  GroupingLocale& operator=(const GroupingLocale&) = delete;

 private:
  std::locale previous_;
};

// Settings, for a scope: bits 0 and 1 select the locale, bit 2 whether it is that of the thread or
// of the process, bits 3 and 4 the rounding mode, bit 5 a global locale of C++ that groups digits.
class Settings {
 public:
  explicit Settings(unsigned bits) : rounding_(roundingMode(bits >> 3 & 3)) {
    static const char* const names[] = {"C", "comma", "two_bytes", "point"};
    if ((bits & 4) == 0) {
      thread_ = std::make_unique<ThreadLocale>(names[bits & 3]);
    } else {
      process_ = std::make_unique<ProcessLocale>(names[bits & 3]);
    }
    if ((bits & 0x20) != 0) {
      grouping_ = std::make_unique<GroupingLocale>();
    }
  }

 private:
  static int roundingMode(unsigned index) {
    const int modes[] = {FE_TONEAREST, FE_UPWARD, FE_DOWNWARD, FE_TOWARDZERO};
    return modes[index];
  }

  RoundingMode rounding_;
  std::unique_ptr<ThreadLocale> thread_;
  std::unique_ptr<ProcessLocale> process_;
  std::unique_ptr<GroupingLocale> grouping_;
};

// Replaces schemes and kinds by a number, which an enumeration may not list.
struct Renumbering {
  void apply(Resource* resource) const {
    resource->set_scheme(static_cast<Resource_Scheme>(number));
  }
  void apply(Link* link) const {
    if (link->has_url()) {
      apply(link->mutable_url());
    }
  }
  void apply(Reference* reference) const {
    reference->set_type(static_cast<Reference_RefType>(number));
    if (reference->has_url()) {
      apply(reference->mutable_url());
    }
  }
  void apply(Arg* arg) const {
    if (arg->has_ref()) {
      apply(arg->mutable_ref());
    }
    if (arg->has_uri()) {
      apply(arg->mutable_uri());
    }
    for (int i = 0; i < arg->refs().ref_size(); ++i) {
      apply(arg->mutable_refs()->mutable_ref(i));
    }
    for (int i = 0; i < arg->uris().uri_size(); ++i) {
      apply(arg->mutable_uris()->mutable_uri(i));
    }
  }

  int number;
};

void checkWords(int number) {
  checkEqual(Converter::toString(static_cast<Resource_Scheme>(number)), model::wordOfScheme(number),
             "toString(Resource_Scheme)", "the word differs from the model's");
  checkEqual(Converter::toString(static_cast<Reference_RefType>(number)), model::wordOfKind(number),
             "toString(Reference_RefType)", "the word differs from the model's");
  checkEqual(Converter::toString(static_cast<Violation_Severity>(number)),
             model::wordOfSeverity(number), "toString(Violation_Severity)",
             "the word differs from the model's");
}

void checkValue(const Scalar& scalar) {
  checkEqual(Converter::toString(scalar), model::text(scalar), "toString(Scalar)",
             "the text differs from the model's");
}

void checkValue(const Resource& resource, const std::string& anchorText) {
  checkEqual(Converter::href(resource), model::address(resource), "href(Resource)",
             "the address differs from the model's");
  checkEqual(Converter::toHtml(resource, anchorText), model::html(resource, anchorText),
             "toHtml(Resource)", "the anchor differs from the model's");
}

void checkValue(const Link& link, const std::string& anchorText) {
  checkEqual(Converter::toHtml(link), model::html(link), "toHtml(Link)",
             "the anchor differs from the model's");
  checkValue(link.url(), anchorText);
}

void checkValue(const Reference& reference, const std::string& anchorText) {
  checkEqual(Converter::toString(reference), model::text(reference), "toString(Reference)",
             "the text differs from the model's");
  checkEqual(Converter::toHtml(reference), model::html(reference), "toHtml(Reference)",
             "the anchor differs from the model's");
  checkValue(reference.value());
  checkValue(reference.url(), anchorText);
}

// An argument, and each value in it, whether the argument shows it or not.
void checkValue(const Arg& arg) {
  checkEqual(Converter::toHtml(arg), model::html(arg), "toHtml(Arg)",
             "the argument differs from the model's");
  checkValue(arg.scalar());
  checkValue(arg.ref(), arg.string_val());
  checkValue(arg.uri(), arg.string_val());
  for (const Reference& reference : arg.refs().ref()) {
    checkValue(reference, arg.string_val());
  }
  for (const Link& link : arg.uris().uri()) {
    checkValue(link, arg.string_val());
  }
}

}  // namespace

// Bit 6 of the first byte replaces schemes and kinds by the number in the other four.
extern "C" int LLVMFuzzerTestOneInput(const std::uint8_t* data, std::size_t size) {
  constexpr std::size_t kSettings = 5;
  Arg arg;
  if (size < kSettings ||
      !fuzz::read(std::string(reinterpret_cast<const char*>(data) + kSettings, size - kSettings),
                  &arg)) {
    return 0;
  }
  std::int32_t number = 0;
  std::memcpy(&number, data + 1, sizeof number);
  if ((*data & 0x40) != 0) {
    Renumbering{number}.apply(&arg);
  }
  const std::string before = tests::bytesOf(arg);
  {
    [[maybe_unused]] const Settings scope(*data);
    const int mode = std::fegetround();
    checkWords(number);
    checkValue(arg);
    fuzz::check(std::fegetround() == mode, "Converter", "it changed the rounding mode");
  }
  checkEqual(tests::bytesOf(arg), before, "Converter", "it changed what it rendered");
  return 0;
}
