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

struct EnumCase {
  const google::protobuf::EnumDescriptor* descriptor;
  bool (*isValid)(int);
  std::string (*nameOf)(int);
  int (*parse)(const std::string&);  // -1 if that is refused
  int min, max, arraySize;
};

#define VOK_ENUM(Type, functions, bounds)                                                  \
  functions##_descriptor(), functions##_IsValid,                                           \
      [](int number) { return std::string(functions##_Name(static_cast<Type>(number))); }, \
      [](const std::string& name) {                                                        \
        Type value{};                                                                      \
        return functions##_Parse(name, &value) ? static_cast<int>(value) : -1;             \
      },                                                                                   \
      bounds##_MIN, bounds##_MAX, bounds##_ARRAYSIZE
// Under the names of the class and under those of the namespace.
#define VOK_NESTED(Outer, Inner)                                       \
  {VOK_ENUM(Outer::Inner, Outer::Inner, Outer::Inner)}, {              \
    VOK_ENUM(Outer::Inner, Outer##_##Inner, Outer##_##Inner##_##Inner) \
  }

const EnumCase enumCases[] = {
    VOK_NESTED(Resource, Scheme),
    VOK_NESTED(Reference, RefType),
    VOK_NESTED(Violation, Severity),
    VOK_NESTED(RuleSpec, Disposition),
    VOK_NESTED(Request, RequestType),
    VOK_NESTED(Response, ResponseType),
    {VOK_ENUM(ActualVersion, ActualVersion, ActualVersion)},
};

// contract.txt lists the numbers and the names.
TEST(Enums, HaveTheirNumbersBoundsAndNames) {
  for (const EnumCase& c : enumCases) {
    SCOPED_TRACE(std::string(c.descriptor->full_name()));
    std::set<int> numbers;
    for (int i = 0; i < c.descriptor->value_count(); ++i) {
      const int number = c.descriptor->value(i)->number();
      numbers.insert(number);
      EXPECT_EQ(c.nameOf(number), std::string(c.descriptor->value(i)->name()));
      EXPECT_EQ(c.parse(c.nameOf(number)), number);
    }
    EXPECT_EQ(c.min, *numbers.begin());
    EXPECT_EQ(c.max, *numbers.rbegin());
    EXPECT_EQ(c.arraySize, c.max + 1);
    for (int number = -300; number <= 300; ++number) {
      EXPECT_EQ(c.isValid(number), numbers.count(number) == 1) << number;
    }
    EXPECT_FALSE(c.isValid(std::numeric_limits<int>::min()));
    EXPECT_FALSE(c.isValid(std::numeric_limits<int>::max()));
    EXPECT_EQ(c.nameOf(c.max + 1), "");
    for (const char* name : {"", "file", "GOPHER", "FILE "}) {
      EXPECT_EQ(c.parse(name), -1) << name;
    }
  }
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
