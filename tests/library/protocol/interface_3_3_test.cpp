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
using google::protobuf::internal::ExplicitlyConstructed;
using namespace vok::rulecheck;
namespace registration = vok::rulecheck::protobuf_RuleService_2eproto;

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
    const std::string symbol =
        std::string("_ZN3vok9rulecheck28protobuf_RuleService_2eproto") + member;
    EXPECT_NE(dlsym(RTLD_DEFAULT, symbol.c_str()), nullptr) << member;
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

TEST(Interface, SerializesToAnArray) {
  const auto message = tests::fullMessage("Response");
  const std::string bytes = tests::bytesOf(*message);
  EXPECT_EQ(message->ByteSizeLong(), bytes.size());
  std::string array(bytes.size(), '\0');
  auto* start = reinterpret_cast<google::protobuf::uint8*>(&array[0]);
  EXPECT_EQ(message->InternalSerializeWithCachedSizesToArray(true, start), start + bytes.size());
  EXPECT_EQ(array, bytes);
}

TEST(Interface, SwapsCachedSizesToo) {
  Link message;
  message.set_link_text("text");
  const int size = message.ByteSize();
  Link other;
  other.Swap(&message);
  EXPECT_EQ(other.GetCachedSize(), size);
  EXPECT_EQ(message.GetCachedSize(), 0);
}

TEST(Interface, CreatesMessagesOfAnArenaOnTheHeap) {
  Arena arena;
  Violation* owned = Violation().New(&arena);
  EXPECT_EQ(owned->GetArena(), nullptr);
  owned->mutable_unknown_fields()->AddLengthDelimited(1)->assign(100000, 'u');
  EXPECT_LT(arena.SpaceUsed(), sizeof(Violation));
  const auto before = mallinfo2().uordblks;
  arena.Reset();
  EXPECT_LT(mallinfo2().uordblks + 100000, before);
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
