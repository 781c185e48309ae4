// SPDX-License-Identifier: Apache-2.0

// A client of the library, as a program and as a plugin: each is compiled from this
// file, with options of its own. The program checks that both see the library's objects.
//
// usage: program PLUGIN

#include <dlfcn.h>
#include <google/protobuf/descriptor.h>
#include <google/protobuf/message.h>

#include <algorithm>
#include <cstdio>
#include <memory>
#include <string>
#include <typeindex>
#include <typeinfo>
#include <vector>

#include "support/messages.h"

// What a client sees, for each type of message, in the order of declaration.
struct ClientView {
  const void* default_instance;
  const void* descriptor;
};

// Checks what the client named so sees: prints what is wrong, and returns
// null then. The array ends in nulls.
extern "C" const ClientView* clientView(const char* client);

namespace {

using google::protobuf::Descriptor;
using google::protobuf::FieldDescriptor;
using google::protobuf::Message;
using namespace vok::rulecheck;

const char* nameOfClient = "";
int failures = 0;

void check(bool condition, const std::string& what) {
  if (!condition) {
    std::printf("%s: not true: %s\n", nameOfClient, what.c_str());
    ++failures;
  }
}

std::string nameOf(const Message* message) {
  return std::string(message->GetDescriptor()->name());
}

// The default instance that the library has registered with the runtime.
const Message* ofLibrary(const Descriptor* type) {
  return google::protobuf::MessageFactory::generated_factory()->GetPrototype(type);
}

// The default instance that this client reaches by the type's name.
const Message* ofClient(const Descriptor* type) {
  const auto& all = tests::allMessages();
  const auto found = std::find_if(all.begin(), all.end(), [type](const Message* message) {
    return message->GetDescriptor() == type;
  });
  return found == all.end() ? nullptr : *found;
}

// Whether the loader, asked for the type's default instance by name, agrees.
// Releases from 22.0 on keep it inside an object of another name.
bool isSymbol(const Message* message) {
  const std::string variable = "_" + nameOf(message) + "_default_instance_";
  const std::string symbol = "_ZN3vok9rulecheck" + std::to_string(variable.size()) + variable + "E";
  const void* address = dlsym(RTLD_DEFAULT, symbol.c_str());
  return address == message || (address == nullptr && GOOGLE_PROTOBUF_VERSION >= 4022000);
}

void checkDefaultInstances() {
  for (const Message* message : tests::allMessages()) {
    check(message == ofLibrary(message->GetDescriptor()) && isSymbol(message),
          nameOf(message) + "::default_instance() is the library's");
  }
}

void checkUnsetMessagesByReflection() {
  for (const Message* message : tests::allMessages()) {
    const Descriptor* type = message->GetDescriptor();
    for (int i = 0; i < type->field_count(); ++i) {
      const FieldDescriptor* field = type->field(i);
      if (field->is_repeated() || field->cpp_type() != FieldDescriptor::CPPTYPE_MESSAGE) {
        continue;
      }
      check(
          &message->GetReflection()->GetMessage(*message, field) == ofClient(field->message_type()),
          std::string(field->full_name()) + " is the default instance while it is unset");
    }
  }
}

void checkUnsetMessagesByGetter() {
  check(&Link().url() == &Resource::default_instance(), "Link().url() is the default instance");
  check(&Reference().value() == &Scalar::default_instance(), "so is Reference().value()");
  check(&Violation().details() == &MsgInst::default_instance(), "so is Violation().details()");
  check(&RuleSpec().first_release() == &Version::default_instance(), "so is first_release()");
  check(&SessionResult().specs_violated() == &RuleSpecMap::default_instance(),
        "so is SessionResult().specs_violated()");
  check(&Request().create_violation() == &CreateViolation::default_instance(),
        "so is Request().create_violation()");
  check(&Response().error() == &ErrorResponse::default_instance(), "so is Response().error()");
}

// Objects that the library makes have its type information; the program may
// have a copy of that, which it names.
template <typename Type>
void checkType(const std::string& name) {
  const std::unique_ptr<Message> fresh(ofLibrary(Type::descriptor())->New());
  const Message& object = *fresh;
  check(typeid(object) == typeid(Type), "the type of a new " + name + " is " + name);
  check(std::type_index(typeid(object)) == std::type_index(typeid(Type)), "and its index too");
  check(dynamic_cast<const Type*>(&object) != nullptr, "and it can be cast to that");
  check(dynamic_cast<const Scalar*>(&object) == nullptr, "but not to another");
}

template <typename Value>
int throughAddress(const Value& value) {
  const Value* volatile address = &value;  // not to be computed away
  return static_cast<int>(*address);
}

void checkConstants() {
  check(throughAddress(Resource::Scheme_MAX) == Resource::MAILTO, "Scheme_MAX is MAILTO");
  check(throughAddress(Resource::Scheme_ARRAYSIZE) == 7, "Scheme_ARRAYSIZE is 7");
  check(throughAddress(Violation::Severity_MIN) == Violation::SEV_FATAL, "the least is fatal");
  check(throughAddress(Violation::SEV_ERROR) == 1, "SEV_ERROR is 1");
  check(Resource::kPathFieldNumber == 4, "kPathFieldNumber is 4");
  check(RuleSpec::kDynamicCategoriesFieldNumber == 19, "kDynamicCategoriesFieldNumber is 19");
}

}  // namespace

extern "C" const ClientView* clientView(const char* client) {
  nameOfClient = client;
  checkDefaultInstances();
  checkUnsetMessagesByReflection();
  checkUnsetMessagesByGetter();
  checkType<Violation>("Violation");
  checkType<Request>("Request");
  checkConstants();
  static std::vector<ClientView> view;
  for (const Message* message : tests::allMessages()) {
    view.push_back({message, message->GetDescriptor()});
  }
  view.push_back({nullptr, nullptr});
  return failures == 0 ? view.data() : nullptr;
}

#ifdef PROGRAM
static const ClientView* viewOfPlugin(const char* path) {
  void* plugin = dlopen(path, RTLD_NOW | RTLD_LOCAL);
  if (plugin == nullptr) {
    std::printf("%s\n", dlerror());
    return nullptr;
  }
  return reinterpret_cast<decltype(&clientView)>(dlsym(plugin, "clientView"))("the plugin");
}

int main(int argc, char** argv) {
  if (argc != 2) {
    return 2;
  }
  const ClientView* own = clientView("the program");
  const ClientView* other = viewOfPlugin(argv[1]);
  if (own == nullptr || other == nullptr) {
    return 1;
  }
  int types = 0;
  for (; own->default_instance != nullptr; ++own, ++other, ++types) {
    if (own->default_instance != other->default_instance || own->descriptor != other->descriptor) {
      std::printf("the program and the plugin see different objects of type %d\n", types);
      return 1;
    }
  }
  std::printf("%d types\n", types);
  return 0;
}
#endif
