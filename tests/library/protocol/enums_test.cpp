// SPDX-License-Identifier: Apache-2.0

// Every enumeration: which numbers it accepts, its bounds, its names.

#include <google/protobuf/descriptor.h>
#include <gtest/gtest.h>
#include <vok/rulecheck/RuleService.pb.h>

#include <limits>
#include <set>
#include <string>

namespace {

using namespace vok::rulecheck;

void expectEnum(const google::protobuf::EnumDescriptor& type, bool (*isValid)(int), int min,
                int max, int arraySize) {
  SCOPED_TRACE(std::string(type.full_name()));
  std::set<int> numbers;
  for (int i = 0; i < type.value_count(); ++i) {
    numbers.insert(type.value(i)->number());
  }
  EXPECT_EQ(min, *numbers.begin());
  EXPECT_EQ(max, *numbers.rbegin());
  EXPECT_EQ(arraySize, max + 1);
  for (int number = -300; number <= 300; ++number) {
    EXPECT_EQ(isValid(number), numbers.count(number) == 1) << number;
  }
  EXPECT_FALSE(isValid(std::numeric_limits<int>::min()));
  EXPECT_FALSE(isValid(std::numeric_limits<int>::max()));
}

// contract.txt lists the numbers and the names.
TEST(Enums, HaveTheirNumbersAndBounds) {
#define VOK_ENUM(functions, bounds)                                                      \
  expectEnum(*functions##_descriptor(), functions##_IsValid, bounds##_MIN, bounds##_MAX, \
             bounds##_ARRAYSIZE);
// Under the names of the class and under those of the namespace.
#define VOK_NESTED(Outer, Inner)       \
  VOK_ENUM(Outer::Inner, Outer::Inner) \
  VOK_ENUM(Outer##_##Inner, Outer##_##Inner##_##Inner)
  VOK_NESTED(Resource, Scheme)
  VOK_NESTED(Reference, RefType)
  VOK_NESTED(Violation, Severity)
  VOK_NESTED(RuleSpec, Disposition)
  VOK_NESTED(Request, RequestType)
  VOK_NESTED(Response, ResponseType)
  VOK_ENUM(ActualVersion, ActualVersion)
#undef VOK_NESTED
#undef VOK_ENUM
}

TEST(Enums, NamesAreThoseOfTheSchema) {
  EXPECT_EQ(std::string(Resource::Scheme_Name(Resource::MAILTO)), "MAILTO");
  EXPECT_EQ(std::string(Resource_Scheme_Name(static_cast<Resource_Scheme>(7))), "");
  auto scheme = Resource::DATA;
  EXPECT_TRUE(Resource::Scheme_Parse("FILE", &scheme));
  for (const char* name : {"", "file", "GOPHER", "FILE "}) {
    EXPECT_FALSE(Resource_Scheme_Parse(name, &scheme)) << name;
  }
  EXPECT_EQ(scheme, Resource::FILE);
}

TEST(Enums, ConstantsHaveTheirNumbersUnderBothNames) {
  EXPECT_EQ(static_cast<int>(Resource::FILE), 1);
  EXPECT_EQ(static_cast<int>(Resource_Scheme_FILE), 1);
  EXPECT_EQ(static_cast<int>(Reference::FILE), 10);
  EXPECT_EQ(static_cast<int>(Reference_RefType_FILE), 10);
  EXPECT_EQ(static_cast<int>(MINOR), 4);
}

// The setters are inline, so it is the program's NDEBUG that counts.
TEST(Enums, SettersStoreAnUnlistedNumberOrAbort) {
  Resource resource;
  const auto unlisted = static_cast<Resource_Scheme>(7);
#ifdef NDEBUG
  resource.set_scheme(unlisted);
  EXPECT_TRUE(resource.has_scheme());
  EXPECT_EQ(static_cast<int>(resource.scheme()), 7);
#else
  EXPECT_DEATH(resource.set_scheme(unlisted), "IsValid");
#endif
}

}  // namespace
