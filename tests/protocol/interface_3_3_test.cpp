// What the generated code offers with releases of the runtime before 3.4 only.

#include <dlfcn.h>
#include <google/protobuf/arena.h>
#include <google/protobuf/stubs/common.h>
#include <gtest/gtest.h>
#include <malloc.h>
#include <vok/rulecheck/RuleService.pb.h>

#include <cstdlib>
#include <string>

namespace vok {
namespace rulecheck {

// As the generated source defines it; the header only declares it.
class RequestDefaultTypeInternal
    : public google::protobuf::internal::ExplicitlyConstructed<Request> {};

}  // namespace rulecheck
}  // namespace vok

namespace {

using namespace vok::rulecheck;
namespace registration = vok::rulecheck::protobuf_RuleService_2eproto;

TEST(Interface, HasFunctionsOfTheRegistration) {
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
  struct Case {
    const void* object;
    const void* instance;
  };
  const Case cases[] = {
#define VOK_CASE(Type) {&_##Type##_default_instance_, &Type::default_instance()}
      VOK_CASE(Affirmation),
      VOK_CASE(AffirmationMap),
      VOK_CASE(Arg),
      VOK_CASE(ArgList),
      VOK_CASE(CreateAffirmation),
      VOK_CASE(CreateViolation),
      VOK_CASE(DumpRules),
      VOK_CASE(EmptyMessage),
      VOK_CASE(ErrorResponse),
      VOK_CASE(ExchangeToken),
      VOK_CASE(GetRuleSpecs),
      VOK_CASE(GetSession),
      VOK_CASE(GetSessionResult),
      VOK_CASE(GetVersion),
      VOK_CASE(Link),
      VOK_CASE(Links),
      VOK_CASE(LoadRuleDataFile),
      VOK_CASE(MsgInst),
      VOK_CASE(RefList),
      VOK_CASE(Reference),
      VOK_CASE(Request),
      VOK_CASE(ResetSession),
      VOK_CASE(Resource),
      VOK_CASE(Response),
      VOK_CASE(RuleSpec),
      VOK_CASE(RuleSpecMap),
      VOK_CASE(Scalar),
      VOK_CASE(Session),
      VOK_CASE(SessionResult),
      VOK_CASE(StartSession),
      VOK_CASE(StatusResponse),
      VOK_CASE(StopSession),
      VOK_CASE(StringList),
      VOK_CASE(UpsertRuleSpec),
      VOK_CASE(Version),
      VOK_CASE(Violation),
      VOK_CASE(ViolationMap),
      VOK_CASE(WriteReport)
#undef VOK_CASE
  };
  for (const Case& c : cases) {
    EXPECT_EQ(c.object, c.instance) << &c - cases;
  }
}

TEST(Interface, DestroysDefaultInstancesAtShutdown) {
  EXPECT_TRUE(_Request_default_instance_.IsInitialized());
  for (void (*shutDown)() :
       {&registration::TableStruct::Shutdown, &google::protobuf::ShutdownProtobufLibrary}) {
    EXPECT_EXIT(
        {
          shutDown();
          std::_Exit(_Request_default_instance_.IsInitialized() ? 1 : 0);
        },
        testing::ExitedWithCode(0), "");
  }
}

TEST(Interface, HasFieldNumbersWithAnAddress) {
  const int* address = &Resource::kMediaTypeFieldNumber;
  EXPECT_EQ(*address, 7);
  const int& reference = Resource::kPathFieldNumber;
  EXPECT_EQ(reference, 4);
}

// The first two are private to the class, but exported all the same.
TEST(Interface, ExportsTheFunctionsOfACachedSizeAndSwap) {
  for (const char* name :
       {"_ZNK3vok9rulecheck8Resource13SetCachedSizeEi",
        "_ZN3vok9rulecheck8Resource12InternalSwapEPS1_",
        "_ZNK3vok9rulecheck8Resource39InternalSerializeWithCachedSizesToArrayEbPh"}) {
    EXPECT_NE(dlsym(RTLD_DEFAULT, name), nullptr) << name;
  }
  Resource resource;
  resource.set_host("a host");
  std::string bytes(resource.ByteSizeLong(), '\0');
  auto* start = reinterpret_cast<google::protobuf::uint8*>(&bytes[0]);
  EXPECT_EQ(resource.InternalSerializeWithCachedSizesToArray(true, start), start + bytes.size());
  EXPECT_EQ(bytes, resource.SerializePartialAsString());
}

TEST(Interface, SwapExchangesCachedSizes) {
  Resource filled;
  filled.set_host("a host");
  const int size = static_cast<int>(filled.ByteSizeLong());
  Resource empty;
  empty.Swap(&filled);
  EXPECT_EQ(empty.GetCachedSize(), size);
  EXPECT_EQ(filled.GetCachedSize(), 0);
}

TEST(Interface, ArenasOwnMessagesOnTheHeap) {
  google::protobuf::Arena arena;
  Resource* resource = Resource::default_instance().New(&arena);
  EXPECT_EQ(resource->GetArena(), nullptr);
  resource->set_host(std::string(100000, 'h'));
  EXPECT_LT(arena.SpaceUsed(), sizeof(Resource));
  const auto before = mallinfo2().uordblks;
  arena.Reset();
  EXPECT_LT(mallinfo2().uordblks + 100000, before);
}

}  // namespace
