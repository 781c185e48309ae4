// SPDX-License-Identifier: Apache-2.0

// A process whose runtime is older than the release that the library was generated
// with: its check of the versions, which aborts, is replaced by one that says so.

#include <vok/rulecheck/RuleService.pb.h>

#include <cstdio>
#include <cstdlib>
#include <cstring>

namespace google {
namespace protobuf {
namespace internal {

void VerifyVersion(int headers, int oldestRuntime, const char* file) {
  if (std::strstr(file, "RuleService") != nullptr && oldestRuntime > 3002000) {
    std::printf("%d needs %d\n", headers, oldestRuntime);
    std::fflush(stdout);
    std::_Exit(1);
  }
}

}  // namespace internal
}  // namespace protobuf
}  // namespace google

int main() {
  std::puts("started");
  return vok::rulecheck::Resource().has_host();
}
