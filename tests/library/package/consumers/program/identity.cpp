// The default instance that a program sees is the one that the library
// registered, also where the linker gave the program a copy of it.

#include <google/protobuf/descriptor.h>
#include <google/protobuf/message.h>
#include <vok/rulecheck/RuleService.pb.h>

#include "check.h"

using namespace vok::rulecheck;

template <typename Type>
static void checkDefaultInstance() {
  const auto* prototype =
      google::protobuf::MessageFactory::generated_factory()->GetPrototype(Type::descriptor());
  CHECK(prototype == &Type::default_instance());
}

void checkIdentity() {
  checkDefaultInstance<Resource>();
  checkDefaultInstance<Scalar>();
  checkDefaultInstance<Violation>();
  checkDefaultInstance<RuleSpecMap>();
  checkDefaultInstance<SessionResult>();
  checkDefaultInstance<Request>();
  checkDefaultInstance<Response>();
  CHECK(&Link().url() == &Resource::default_instance());
  CHECK(&Request().create_violation() == &CreateViolation::default_instance());
}
