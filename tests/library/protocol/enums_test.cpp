// SPDX-License-Identifier: Apache-2.0

// Every enum: which numbers it accepts, its bounds, its names.

#include <gmock/gmock.h>
#include <google/protobuf/descriptor.h>
#include <gtest/gtest.h>
#include <vok/rulecheck/RuleService.pb.h>

#include <limits>
#include <set>
#include <string>
#include <vector>

namespace {

using namespace vok::rulecheck;

struct EnumCase {
  const char* name;
  bool (*isValid)(int);
  const google::protobuf::EnumDescriptor* (*descriptor)();
  std::string (*nameOf)(int);
  int (*parse)(const std::string&);  // -1 if that is refused
  std::set<int> valid;
  int min;
  int max;
  int arraySize;
};

std::set<int> range(int first, int last) {
  std::set<int> numbers;
  for (int number = first; number <= last; ++number) {
    numbers.insert(number);
  }
  return numbers;
}

#define VOK_NAMES(Enum, nameOf, parse)                                       \
  [](int number) { return std::string(nameOf(static_cast<Enum>(number))); }, \
      [](const std::string& name) {                                          \
        Enum value{};                                                        \
        return parse(name, &value) ? static_cast<int>(value) : -1;           \
      }
#define VOK_NESTED(Outer, Inner, numbers)                                            \
  {                                                                                  \
#Outer "." #Inner, Outer##_##Inner##_IsValid, Outer##_##Inner##_descriptor,      \
        VOK_NAMES(Outer::Inner, Outer::Inner##_Name, Outer::Inner##_Parse), numbers, \
        Outer##_##Inner##_##Inner##_MIN, Outer##_##Inner##_##Inner##_MAX,            \
        Outer##_##Inner##_##Inner##_ARRAYSIZE                                        \
  }

const EnumCase enumCases[] = {
    VOK_NESTED(Resource, Scheme, range(0, 6)),
    VOK_NESTED(Reference, RefType, range(0, 28)),
    VOK_NESTED(Violation, Severity, range(0, 5)),
    VOK_NESTED(RuleSpec, Disposition, range(0, 6)),
    VOK_NESTED(Request, RequestType, range(1, 15)),
    VOK_NESTED(Response, ResponseType, range(0, 6)),
    {"ActualVersion",
     ActualVersion_IsValid,
     ActualVersion_descriptor,
     VOK_NAMES(ActualVersion, ActualVersion_Name, ActualVersion_Parse),
     {0, 1, 4},
     ActualVersion_MIN,
     ActualVersion_MAX,
     ActualVersion_ARRAYSIZE},
};

TEST(Enums, IsValidAcceptsExactlyTheDeclaredNumbers) {
  for (const EnumCase& c : enumCases) {
    for (int number = -300; number <= 300; ++number) {
      EXPECT_EQ(c.isValid(number), c.valid.count(number) == 1) << c.name << " " << number;
    }
    EXPECT_FALSE(c.isValid(std::numeric_limits<int>::min())) << c.name;
    EXPECT_FALSE(c.isValid(std::numeric_limits<int>::max())) << c.name;
  }
}

TEST(Enums, BoundsAreTheSmallestAndTheLargestNumber) {
  for (const EnumCase& c : enumCases) {
    EXPECT_EQ(c.min, *c.valid.begin()) << c.name;
    EXPECT_EQ(c.max, *c.valid.rbegin()) << c.name;
    EXPECT_EQ(c.arraySize, *c.valid.rbegin() + 1) << c.name;
  }
}

TEST(Enums, DescriptorsListExactlyTheDeclaredNumbers) {
  for (const EnumCase& c : enumCases) {
    EXPECT_EQ(std::string(c.descriptor()->full_name()), std::string("vok.rulecheck.") + c.name);
    std::set<int> numbers;
    for (int i = 0; i < c.descriptor()->value_count(); ++i) {
      numbers.insert(c.descriptor()->value(i)->number());
    }
    EXPECT_EQ(numbers, c.valid) << c.name;
  }
}

#define VOK_EXPECT_ALIASES(Outer, Inner)                                                \
  EXPECT_EQ(Outer::Inner##_MIN, Outer##_##Inner##_##Inner##_MIN);                       \
  EXPECT_EQ(Outer::Inner##_MAX, Outer##_##Inner##_##Inner##_MAX);                       \
  EXPECT_EQ(int{Outer::Inner##_ARRAYSIZE}, int{Outer##_##Inner##_##Inner##_ARRAYSIZE}); \
  EXPECT_EQ(Outer::Inner##_descriptor(), Outer##_##Inner##_descriptor());               \
  for (int number = -1; number <= 30; ++number) {                                       \
    EXPECT_EQ(Outer::Inner##_IsValid(number), Outer##_##Inner##_IsValid(number));       \
  }

TEST(Enums, ClassMembersAliasTheNamesOfTheNamespace){
    VOK_EXPECT_ALIASES(Resource, Scheme) VOK_EXPECT_ALIASES(Reference, RefType)
        VOK_EXPECT_ALIASES(Violation, Severity) VOK_EXPECT_ALIASES(RuleSpec, Disposition)
            VOK_EXPECT_ALIASES(Request, RequestType) VOK_EXPECT_ALIASES(Response, ResponseType)}

TEST(Enums, ConstantsHaveTheirNumbersUnderBothNames) {
  EXPECT_EQ(static_cast<int>(Resource::FILE), 1);
  EXPECT_EQ(static_cast<int>(Resource_Scheme_FILE), 1);
  EXPECT_EQ(static_cast<int>(Reference::FILE), 10);
  EXPECT_EQ(static_cast<int>(Reference_RefType_FILE), 10);
  EXPECT_EQ(static_cast<int>(Reference::DATAMOVER), 7);
  EXPECT_EQ(static_cast<int>(Reference::DATA_TYPE), 8);
  EXPECT_EQ(static_cast<int>(Violation_Severity_SEV_UNKNOWN), 5);
  EXPECT_EQ(static_cast<int>(RuleSpec_Disposition_READONLY), 5);
  EXPECT_EQ(static_cast<int>(Request_RequestType_STOP_SERVER), 15);
  EXPECT_EQ(static_cast<int>(Response_ResponseType_VIOLATION), 6);
  EXPECT_EQ(static_cast<int>(MAJOR), 1);
  EXPECT_EQ(static_cast<int>(MINOR), 4);
  EXPECT_EQ(static_cast<int>(PATCH), 0);
}

TEST(Enums, NamesAndNumbersTranslateBothWays) {
  for (const EnumCase& c : enumCases) {
    for (int number = 0; number < 32; ++number) {
      const auto* value = c.descriptor()->FindValueByNumber(number);
      EXPECT_EQ(c.nameOf(number), value == nullptr ? "" : std::string(value->name()))
          << c.name << " " << number;
      EXPECT_EQ(c.parse(c.nameOf(number)), value == nullptr ? -1 : number)
          << c.name << " " << number;
    }
  }
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

TEST(Enums, ParsingANameThatIsNotListedFails) {
  Resource::Scheme scheme = Resource::IRC;
  for (const char* name : {"", "file", "GOPHER", "FILE "}) {
    EXPECT_FALSE(Resource::Scheme_Parse(name, &scheme)) << name;
  }
  EXPECT_EQ(scheme, Resource::IRC);
}

}  // namespace
