// SPDX-License-Identifier: Apache-2.0

// A client of the library, as a program and as a plugin: each is compiled from this
// file, with options of its own. The program checks that both see the library's objects.
//
// usage: program PLUGIN

#include <dlfcn.h>
#include <google/protobuf/descriptor.h>
#include <google/protobuf/message.h>

#include <cstdio>
#include <memory>
#include <string>
#include <typeinfo>
#include <vector>

#include "support/messages.h"

namespace {

using google::protobuf::Descriptor;
using google::protobuf::FieldDescriptor;
using google::protobuf::Message;
using namespace vok::rulecheck;

int failures = 0;

void check(bool condition, const std::string& what) {
  if (!condition) {
    std::printf("not true: %s\n", what.c_str());
    ++failures;
  }
}

// The default instance that the library has registered with the runtime.
const Message* ofLibrary(const Descriptor* type) {
  return google::protobuf::MessageFactory::generated_factory()->GetPrototype(type);
}

void checkDefaultInstances() {
  for (const Message* message : tests::allMessages()) {
    const Descriptor* type = message->GetDescriptor();
    check(message == ofLibrary(type),
          std::string(type->name()) + "::default_instance() is the library's");
    for (int i = 0; i < type->field_count(); ++i) {
      const FieldDescriptor* field = type->field(i);
      if (!field->is_repeated() && field->cpp_type() == FieldDescriptor::CPPTYPE_MESSAGE) {
        check(&message->GetReflection()->GetMessage(*message, field) ==
                  ofLibrary(field->message_type()),
              std::string(field->full_name()) + " is the default instance while it is unset");
      }
    }
  }
}

// Objects that the library makes have its type information; the program may
// have a copy of that, which it names.
template <typename Type>
void checkType(const std::string& name) {
  const std::unique_ptr<Message> fresh(ofLibrary(Type::descriptor())->New());
  const Message& object = *fresh;
  check(typeid(object) == typeid(Type), "the type of a new " + name + " is " + name);
  check(dynamic_cast<const Type*>(&object) != nullptr, "and it can be cast to that");
  check(dynamic_cast<const Scalar*>(&object) == nullptr, "but not to another");
}

}  // namespace

// The default instance and the descriptor of each type.
extern "C" void look(std::vector<const void*>* seen, int* wrong);
extern "C" void look(std::vector<const void*>* seen, int* wrong) {
  checkDefaultInstances();
  checkType<Violation>("Violation");
  checkType<Request>("Request");
  const auto* const volatile largest = &Resource::Scheme_MAX;  // not to be computed away
  check(*largest == Resource::MAILTO, "Scheme_MAX is MAILTO");
  for (const Message* message : tests::allMessages()) {
    seen->push_back(message);
    seen->push_back(message->GetDescriptor());
  }
  *wrong += failures;
}

#ifdef PROGRAM
int main(int argc, char** argv) {
  void* plugin = argc == 2 ? dlopen(argv[1], RTLD_NOW | RTLD_LOCAL) : nullptr;
  if (plugin == nullptr) {
    return 2;
  }
  std::vector<const void*> own, other;
  int wrong = 0;
  look(&own, &wrong);
  reinterpret_cast<decltype(&look)>(dlsym(plugin, "look"))(&other, &wrong);
  check(own == other, "the program and the plugin see the same objects");
  std::printf("%zu types\n", own.size() / 2);
  return wrong + failures;
}
#endif
