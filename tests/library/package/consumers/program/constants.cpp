// Constants of the classes, by address and by reference: before C++17 that needs
// a definition in the library.

#include <vok/rulecheck/RuleService.pb.h>

#include <algorithm>

#include "check.h"

using namespace vok::rulecheck;

template <typename Enum>
static int sumOf(const Enum& min, const Enum& max, const int& arraySize) {
  const int* volatile address = &arraySize;  // not to be computed away
  return static_cast<int>(std::min(min, max)) + static_cast<int>(std::max(min, max)) + *address;
}

void checkConstants() {
  CHECK(sumOf(Resource::Scheme_MIN, Resource::Scheme_MAX, Resource::Scheme_ARRAYSIZE) == 13);
  CHECK(sumOf(Reference::RefType_MIN, Reference::RefType_MAX, Reference::RefType_ARRAYSIZE) == 57);
  CHECK(sumOf(Violation::Severity_MIN, Violation::Severity_MAX, Violation::Severity_ARRAYSIZE) ==
        11);
  CHECK(sumOf(RuleSpec::Disposition_MIN, RuleSpec::Disposition_MAX,
              RuleSpec::Disposition_ARRAYSIZE) == 13);
  CHECK(sumOf(Request::RequestType_MIN, Request::RequestType_MAX, Request::RequestType_ARRAYSIZE) ==
        32);
  CHECK(sumOf(Response::ResponseType_MIN, Response::ResponseType_MAX,
              Response::ResponseType_ARRAYSIZE) == 13);
  const Resource::Scheme* volatile scheme = &Resource::FILE;
  const Request::RequestType* volatile type = &Request::STOP_SERVER;
  CHECK(*scheme == Resource_Scheme_FILE && *type == Request_RequestType_STOP_SERVER);
}
