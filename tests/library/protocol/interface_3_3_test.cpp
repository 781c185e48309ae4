// SPDX-License-Identifier: Apache-2.0

// What the generated code offers with releases of the runtime before 3.4 only.

#include <dlfcn.h>
#include <google/protobuf/arena.h>
#include <google/protobuf/stubs/common.h>
#include <gtest/gtest.h>
#include <malloc.h>

#include <cstdlib>
#include <string>

#include "support/messages.h"

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
  const int* const volatile host = &Resource::kHostFieldNumber;  // not to be computed away
  EXPECT_EQ(*host, 2);
  const int* const volatile hashmap = &ViolationMap::kHashmapFieldNumber;
  EXPECT_EQ(*hashmap, 1);
}

template <typename Type>
void expectFunctionsOfClass() {
  const std::string name = Type::descriptor()->name();
  SCOPED_TRACE(name);
  const std::string bytes = tests::bytesOf(*tests::fullMessage(name));
  Type message;
  ASSERT_TRUE(message.ParseFromString(bytes));
  EXPECT_EQ(message.GetMetadata().descriptor, Type::descriptor());
  EXPECT_EQ(message.GetMetadata().reflection, message.GetReflection());
  EXPECT_EQ(message.ByteSizeLong(), bytes.size());
  std::string array(bytes.size(), '\0');
  auto* start = reinterpret_cast<google::protobuf::uint8*>(&array[0]);
  EXPECT_EQ(message.InternalSerializeWithCachedSizesToArray(true, start), start + bytes.size());
  EXPECT_EQ(array, bytes);

  // Private to the class, but exported all the same.
  const auto setCachedSize =
      reinterpret_cast<void (*)(const Type*, int)>(exported(name, "13SetCachedSizeEi", "_ZNK"));
  const auto internalSwap =
      reinterpret_cast<void (*)(Type*, Type*)>(exported(name, "12InternalSwapEPS1_"));
  ASSERT_TRUE(setCachedSize != nullptr && internalSwap != nullptr);
  Type other;
  setCachedSize(&message, 7);
  other.Swap(&message);
  EXPECT_EQ(other.GetCachedSize(), 7);
  EXPECT_EQ(message.GetCachedSize(), 0);
  internalSwap(&message, &other);
  EXPECT_EQ(message.GetCachedSize(), 7);
  const bool several = name == "Violation" || name == "RuleSpec" || name == "Version";
  EXPECT_EQ(exported(name, "30RequiredFieldsByteSizeFallbackEv", "_ZNK") != nullptr, several);

  // On the heap, but owned by the arena.
  Arena arena;
  Type* owned = message.New(&arena);
  EXPECT_EQ(owned->GetArena(), nullptr);
  owned->mutable_unknown_fields()->AddLengthDelimited(1)->assign(100000, 'u');
  EXPECT_LT(arena.SpaceUsed(), sizeof(Type));
  const auto before = mallinfo2().uordblks;
  arena.Reset();
  EXPECT_LT(mallinfo2().uordblks + 100000, before);
}

template <typename... Types>
void expectFunctionsOfClasses(tests::TypeList<Types...> /*types*/) {
  (expectFunctionsOfClass<Types>(), ...);
}

TEST(Interface, HasTheFunctionsOfEveryClass) {
  expectFunctionsOfClasses(tests::MessageTypes());
}

template <typename Entry>
void expectArena() {
  Arena arena;
  Entry entry(&arena);
  EXPECT_EQ(entry.GetArena(), &arena) << entry.GetTypeName();
  EXPECT_EQ(Entry().GetArena(), nullptr) << entry.GetTypeName();
}

TEST(Interface, HasAnEntryClassForEachMapThatTakesAnArena) {
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
