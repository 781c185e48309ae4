// SPDX-License-Identifier: Apache-2.0

// What the generated code offers with releases of the runtime before 3.4 only.

#include <dlfcn.h>
#include <google/protobuf/arena.h>
#include <google/protobuf/io/coded_stream.h>
#include <google/protobuf/io/zero_copy_stream_impl_lite.h>
#include <google/protobuf/stubs/common.h>
#include <gtest/gtest.h>
#include <malloc.h>

#include <cstdlib>
#include <string>

#include "support/message_types.h"
#include "support/messages.h"
#include "vectors/golden_vectors.h"

namespace {

using google::protobuf::Arena;
using google::protobuf::Message;
using google::protobuf::internal::ExplicitlyConstructed;
using namespace vok::rulecheck;
namespace registration = vok::rulecheck::protobuf_RuleService_2eproto;

// What the library exports for a member of the package, or of one of its classes, from
// the rest of its mangled name.
void* exported(const std::string& name, const std::string& rest, const char* prefix = "_ZN") {
  const std::string symbol =
      prefix + std::string("3vok9rulecheck") + std::to_string(name.size()) + name + rest;
  return dlsym(RTLD_DEFAULT, symbol.c_str());
}

void* defaultInstance(const std::string& type) {
  return exported("_" + type + "_default_instance_", "E");
}

template <typename... Types>
int constructedDefaultInstances(tests::TypeList<Types...> /*types*/) {
  return (const_cast<ExplicitlyConstructed<Types>*>(
              reinterpret_cast<const ExplicitlyConstructed<Types>*>(&Types::default_instance()))
              ->IsInitialized() +
          ...);
}

TEST(Interface, ExportsTheRegistration) {
  for (const char* member :
       {"12InitDefaultsEv", "14AddDescriptorsEv", "18AddDescriptorsImplEv",
        "29static_descriptor_initializerE", "11TableStruct16InitDefaultsImplEv",
        "11TableStruct8ShutdownEv", "11TableStruct7entriesE", "11TableStruct3auxE",
        "11TableStruct6schemaE", "11TableStruct7offsetsE"}) {
    EXPECT_NE(exported("protobuf_RuleService_2eproto", member), nullptr) << member;
  }
  registration::AddDescriptors();
  registration::InitDefaults();
  // Builds the default instances anew, so not in this process.
  EXPECT_EXIT(
      {
        registration::TableStruct::InitDefaultsImpl();
        std::_Exit(Request::default_instance().has_type() ? 1 : 0);
      },
      testing::ExitedWithCode(0), "");
}

TEST(Interface, NamesDefaultInstances) {
  int maps = 0;
  for (const Message* message : tests::allMessages()) {
    const auto* type = message->GetDescriptor();
    EXPECT_EQ(defaultInstance(type->name()), message) << type->name();
    for (int i = 0; i < type->nested_type_count(); ++i, ++maps) {
      const auto* entry = type->nested_type(i);
      EXPECT_EQ(defaultInstance(type->name() + "_" + entry->name()),
                google::protobuf::MessageFactory::generated_factory()->GetPrototype(entry))
          << entry->full_name();
    }
  }
  EXPECT_EQ(maps, 9);
}

TEST(Interface, DestroysDefaultInstancesAtShutdown) {
  EXPECT_EQ(constructedDefaultInstances(tests::MessageTypes()), 38);
  for (void (*shutDown)() :
       {&registration::TableStruct::Shutdown, &google::protobuf::ShutdownProtobufLibrary}) {
    EXPECT_EXIT(
        {
          shutDown();
          std::_Exit(constructedDefaultInstances(tests::MessageTypes()));
        },
        testing::ExitedWithCode(0), "");
  }
}

TEST(Interface, HasFieldNumbersWithAnAddress) {
  struct Case {
    const int* constant;
    int number;
  };
  const Case cases[] = {
#define VOK_FIELD(message, name, constant, number) {&message::constant, number},
#define VOK_STRING(message, name)
#define VOK_MESSAGE(message, name)
#include "fields.inc"
  };
  for (const Case& c : cases) {
    EXPECT_EQ(*c.constant, c.number) << &c - cases;
  }
}

template <typename Type>
struct OfOneType {
  const std::string name{Type::descriptor()->name()};
  const std::string bytes = tests::everyField(name);

  void parsesAndSerializesItself() const {
    const auto* data = reinterpret_cast<const google::protobuf::uint8*>(bytes.data());
    google::protobuf::io::CodedInputStream in(data, static_cast<int>(bytes.size()));
    Type message;
    EXPECT_TRUE(message.MergePartialFromCodedStream(&in)) << name;
    EXPECT_EQ(message.ByteSizeLong(), bytes.size()) << name;

    std::string array(bytes.size(), '\0');
    auto* start = reinterpret_cast<google::protobuf::uint8*>(&array[0]);
    EXPECT_EQ(message.InternalSerializeWithCachedSizesToArray(true, start), start + bytes.size());
    EXPECT_EQ(array, bytes) << name;

    std::string streamed;
    {
      google::protobuf::io::StringOutputStream sink(&streamed);
      google::protobuf::io::CodedOutputStream out(&sink);
      out.SetSerializationDeterministic(true);
      message.SerializeWithCachedSizes(&out);
    }
    EXPECT_EQ(streamed, bytes) << name;
  }

  // The functions are private to the class, but exported all the same.
  void swapsAndSetsCachedSizes() const {
    const auto setCachedSize =
        reinterpret_cast<void (*)(const Type*, int)>(exported(name, "13SetCachedSizeEi", "_ZNK"));
    const auto internalSwap =
        reinterpret_cast<void (*)(Type*, Type*)>(exported(name, "12InternalSwapEPS1_"));
    ASSERT_NE(setCachedSize, nullptr) << name;
    ASSERT_NE(internalSwap, nullptr) << name;
    Type filled;
    ASSERT_TRUE(filled.ParseFromString(bytes)) << name;
    Type other;
    setCachedSize(&filled, 7);
    other.Swap(&filled);
    EXPECT_EQ(other.GetCachedSize(), 7) << name;
    EXPECT_EQ(filled.GetCachedSize(), 0) << name;
    internalSwap(&filled, &other);
    EXPECT_EQ(filled.GetCachedSize(), 7) << name;
    EXPECT_EQ(tests::bytesOf(filled), bytes) << name;
  }

  void isOwnedByAnArenaButOnTheHeap() const {
    Arena arena;
    Type* message = Type::default_instance().New(&arena);
    EXPECT_EQ(message->GetArena(), nullptr) << name;
    message->mutable_unknown_fields()->AddLengthDelimited(1)->assign(100000, 'u');
    EXPECT_LT(arena.SpaceUsed(), sizeof(Type)) << name;
    const auto before = mallinfo2().uordblks;
    arena.Reset();
    EXPECT_LT(mallinfo2().uordblks + 100000, before) << name;
  }

  void namesItsDescriptorAndReflection() const {
    const google::protobuf::Metadata metadata = Type().GetMetadata();
    EXPECT_EQ(metadata.descriptor, Type::descriptor()) << name;
    EXPECT_EQ(metadata.reflection, Type().GetReflection()) << name;
  }

  void sumsRequiredFieldsIfThereAreSome() const {
    const bool several = name == "Violation" || name == "RuleSpec" || name == "Version";
    EXPECT_EQ(exported(name, "30RequiredFieldsByteSizeFallbackEv", "_ZNK") != nullptr, several)
        << name;
  }
};

template <typename... Types>
void checkAll(tests::TypeList<Types...> /*types*/) {
  (OfOneType<Types>().parsesAndSerializesItself(), ...);
  (OfOneType<Types>().swapsAndSetsCachedSizes(), ...);
  (OfOneType<Types>().isOwnedByAnArenaButOnTheHeap(), ...);
  (OfOneType<Types>().namesItsDescriptorAndReflection(), ...);
  (OfOneType<Types>().sumsRequiredFieldsIfThereAreSome(), ...);
}

TEST(Interface, HasTheFunctionsOfEveryClass) {
  checkAll(tests::MessageTypes());
}

template <typename Entry>
void expectArena() {
  Arena arena;
  Entry entry(&arena);
  EXPECT_EQ(entry.GetArena(), &arena) << entry.GetTypeName();
  EXPECT_EQ(Entry().GetArena(), nullptr) << entry.GetTypeName();
}

TEST(Interface, HasAClassForTheEntriesOfEachMapThatTakesAnArena) {
  expectArena<Affirmation::Affirmation_CategoriesEntry>();
  expectArena<AffirmationMap::AffirmationMap_HashmapEntry>();
  expectArena<Violation::Violation_CategoriesEntry>();
  expectArena<ViolationMap::ViolationMap_HashmapEntry>();
  expectArena<RuleSpec::RuleSpec_CategoriesEntry>();
  expectArena<RuleSpec::RuleSpec_DynamicCategoriesEntry>();
  expectArena<RuleSpecMap::RuleSpecMap_HashmapEntry>();
  expectArena<CreateAffirmation::CreateAffirmation_DynamicCategoryValuesEntry>();
  expectArena<CreateViolation::CreateViolation_DynamicCategoryValuesEntry>();
}

}  // namespace
