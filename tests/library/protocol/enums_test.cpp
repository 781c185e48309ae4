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

TEST(Enums, ClassMembersEqualTheNamespaceLevelConstants) {
  struct Row {
    const char* name;
    int member;
    int constant;
  };
  const Row rows[] = {
      {"Resource::Scheme_MIN", Resource::Scheme_MIN, 0},
      {"Resource::Scheme_MAX", Resource::Scheme_MAX, 6},
      {"Resource::Scheme_ARRAYSIZE", Resource::Scheme_ARRAYSIZE, 7},
      {"Reference::RefType_MIN", Reference::RefType_MIN, 0},
      {"Reference::RefType_MAX", Reference::RefType_MAX, 28},
      {"Reference::RefType_ARRAYSIZE", Reference::RefType_ARRAYSIZE, 29},
      {"Violation::Severity_MIN", Violation::Severity_MIN, Violation::SEV_FATAL},
      {"Violation::Severity_MAX", Violation::Severity_MAX, Violation::SEV_UNKNOWN},
      {"Violation::Severity_ARRAYSIZE", Violation::Severity_ARRAYSIZE, 6},
      {"RuleSpec::Disposition_MIN", RuleSpec::Disposition_MIN, RuleSpec::ENABLED},
      {"RuleSpec::Disposition_MAX", RuleSpec::Disposition_MAX, RuleSpec::NODISABLE},
      {"RuleSpec::Disposition_ARRAYSIZE", RuleSpec::Disposition_ARRAYSIZE, 7},
      {"Request::RequestType_MIN", Request::RequestType_MIN, 1},
      {"Request::RequestType_MAX", Request::RequestType_MAX, 15},
      {"Request::RequestType_ARRAYSIZE", Request::RequestType_ARRAYSIZE, 16},
      {"Response::ResponseType_MIN", Response::ResponseType_MIN, 0},
      {"Response::ResponseType_MAX", Response::ResponseType_MAX, 6},
      {"Response::ResponseType_ARRAYSIZE", Response::ResponseType_ARRAYSIZE, 7},
      {"ActualVersion_MIN", ActualVersion_MIN, PATCH},
      {"ActualVersion_MAX", ActualVersion_MAX, MINOR},
      {"ActualVersion_ARRAYSIZE", ActualVersion_ARRAYSIZE, 5},
  };
  for (const Row& row : rows) {
    EXPECT_EQ(row.member, row.constant) << row.name;
  }
}

TEST(Enums, ClassMembersAliasTheNamespaceLevelFunctions) {
  for (int number = -1; number <= 30; ++number) {
    EXPECT_EQ(Resource::Scheme_IsValid(number), Resource_Scheme_IsValid(number)) << number;
    EXPECT_EQ(Reference::RefType_IsValid(number), Reference_RefType_IsValid(number)) << number;
    EXPECT_EQ(Violation::Severity_IsValid(number), Violation_Severity_IsValid(number)) << number;
    EXPECT_EQ(RuleSpec::Disposition_IsValid(number), RuleSpec_Disposition_IsValid(number))
        << number;
    EXPECT_EQ(Request::RequestType_IsValid(number), Request_RequestType_IsValid(number)) << number;
    EXPECT_EQ(Response::ResponseType_IsValid(number), Response_ResponseType_IsValid(number))
        << number;
  }
  EXPECT_EQ(Resource::Scheme_descriptor(), Resource_Scheme_descriptor());
  EXPECT_EQ(Reference::RefType_descriptor(), Reference_RefType_descriptor());
  EXPECT_EQ(Violation::Severity_descriptor(), Violation_Severity_descriptor());
  EXPECT_EQ(RuleSpec::Disposition_descriptor(), RuleSpec_Disposition_descriptor());
  EXPECT_EQ(Request::RequestType_descriptor(), Request_RequestType_descriptor());
  EXPECT_EQ(Response::ResponseType_descriptor(), Response_ResponseType_descriptor());
}

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

TEST(Enums, ReferenceKindsAreNumberedInTheByteOrderOfTheirNames) {
  const auto* descriptor = Reference::RefType_descriptor();
  for (int i = 1; i < descriptor->value_count(); ++i) {
    EXPECT_LT(std::string(descriptor->value(i - 1)->name()),
              std::string(descriptor->value(i)->name()));
    EXPECT_EQ(descriptor->value(i)->number(), i);
  }
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
