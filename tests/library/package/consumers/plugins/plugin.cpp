// A plugin: one function that uses the library, descriptors included.

#include <google/protobuf/descriptor.h>
#include <vok/rulecheck/Converter.h>

#include <string>

#ifndef ENTRY
#define ENTRY entry
#endif

extern "C" const void* ENTRY() {
  vok::rulecheck::Violation violation;
  violation.set_id(1);
  violation.set_severity(vok::rulecheck::Violation::SEV_ERROR);
  (*violation.mutable_categories())[1] = "c";
  std::string bytes;
  if (!violation.SerializeToString(&bytes) ||
      violation.DebugString().find("SEV_ERROR") == std::string::npos ||
      vok::rulecheck::Converter::toString(violation.severity()) != "error") {
    return nullptr;
  }
  return vok::rulecheck::Violation::descriptor();
}
