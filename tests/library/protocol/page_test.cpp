// The tables and numbers of docs/protocol.md are those of the schema.

#include <gmock/gmock.h>
#include <gtest/gtest.h>
#include <vok/rulecheck/RuleService.pb.h>

#include <cstddef>
#include <fstream>
#include <iterator>
#include <regex>
#include <set>
#include <string>
#include <vector>

namespace {

using google::protobuf::Descriptor;
using google::protobuf::EnumDescriptor;
using google::protobuf::FieldDescriptor;
using google::protobuf::FileDescriptor;
using testing::ElementsAreArray;

const FileDescriptor& schema() {
  return *vok::rulecheck::Request::descriptor()->file();
}

const std::string& page() {
  static const std::string text = [] {
    std::ifstream file(PAGE_ON_PROTOCOL);
    return std::string(std::istreambuf_iterator<char>(file), {});
  }();
  return text;
}

// All matches of the groups of a pattern, joined by blanks.
std::vector<std::string> matches(const std::string& pattern) {
  const std::regex regex(pattern);
  std::vector<std::string> result;
  for (std::sregex_iterator match(page().begin(), page().end(), regex), end; match != end;
       ++match) {
    std::string words;
    for (std::size_t group = 1; group < match->size(); ++group) {
      words += (group == 1 ? "" : " ") + match->str(group);
    }
    result.push_back(words);
  }
  return result;
}

const FieldDescriptor* bodyOf(const Descriptor* envelope, int number) {
  return envelope->FindFieldByNumber(number);
}

std::string bodyWords(const FieldDescriptor* body) {
  return std::string(body->name()) + " " + std::to_string(body->number()) + " " +
         std::string(body->message_type()->name());
}

TEST(PageOnTheProtocol, ListsEachRequestTypeWithItsBody) {
  const EnumDescriptor* types = vok::rulecheck::Request::RequestType_descriptor();
  std::vector<std::string> expected;
  for (int i = 0; i < types->value_count(); ++i) {
    const int number = types->value(i)->number();
    const FieldDescriptor* body = bodyOf(vok::rulecheck::Request::descriptor(), number + 1);
    if (body != nullptr) {
      expected.push_back(std::to_string(number) + " " + std::string(types->value(i)->name()) + " " +
                         bodyWords(body));
    }
  }
  EXPECT_EQ(expected.size(), 14U);
  EXPECT_THAT(
      matches(R"(\| (\d+) \| `(\w+)` \| `(\w+)` (\d+) \| `(\w+)` \| [^|\n]+ \| [^|\n]+ \|)"),
      ElementsAreArray(expected));
  EXPECT_EQ(matches(R"(\| (\d+) \| `(\w+)` \| none \| none \|)"),
            std::vector<std::string>{"15 STOP_SERVER"});
}

TEST(PageOnTheProtocol, ListsEachMethodWithItsArgumentAndResult) {
  const auto* service = schema().service(0);
  std::set<std::string> expected;
  for (int i = 0; i < service->method_count(); ++i) {
    const auto* method = service->method(i);
    expected.insert(std::string(method->output_type()->name()) + " " + std::string(method->name()) +
                    " " + std::string(method->input_type()->name()));
  }
  const auto listed = matches(R"(\| `(\w+)` \| `(\w+)\((\w+)\)` \|)");
  EXPECT_EQ(listed.size(), 14U);
  EXPECT_EQ(std::set<std::string>(listed.begin(), listed.end()), expected);
}

TEST(PageOnTheProtocol, ListsEachResponseTypeWithItsBody) {
  const EnumDescriptor* types = vok::rulecheck::Response::ResponseType_descriptor();
  std::vector<std::string> expected;
  for (int i = 0; i < types->value_count(); ++i) {
    const int number = types->value(i)->number();
    expected.push_back(std::to_string(number) + " " + std::string(types->value(i)->name()) + " " +
                       bodyWords(bodyOf(vok::rulecheck::Response::descriptor(), number + 2)));
  }
  EXPECT_THAT(matches(R"(\| (\d+) \| `(\w+)` \| `(\w+)` (\d+) \| `(\w+)` \|\n)"),
              ElementsAreArray(expected));
}

TEST(PageOnTheProtocol, ListsAllRequiredFields) {
  std::vector<std::string> expected;
  for (int i = 0; i < schema().message_type_count(); ++i) {
    const Descriptor* message = schema().message_type(i);
    std::string fields;
    for (int j = 0; j < message->field_count(); ++j) {
      if (message->field(j)->is_required()) {
        fields += (fields.empty() ? "`" : ", `") + std::string(message->field(j)->name()) + "`";
      }
    }
    if (!fields.empty()) {
      expected.push_back(std::string(message->name()) + " " + fields);
    }
  }
  EXPECT_EQ(expected.size(), 17U);
  EXPECT_THAT(matches(R"(\n  \| `(\w+)` \| (`[\w`, ]+`) \|)"), ElementsAreArray(expected));
}

TEST(PageOnTheProtocol, GivesTheNumbersOfFields) {
  const auto numbered = matches(R"(`(\w+)\.(\w+)` \((\d+)\))");
  EXPECT_EQ(numbered.size(), 14U);
  for (const std::string& words : numbered) {
    const auto first = words.find(' ');
    const auto second = words.find(' ', first + 1);
    const Descriptor* message = schema().FindMessageTypeByName(words.substr(0, first));
    ASSERT_NE(message, nullptr) << words;
    const FieldDescriptor* field =
        message->FindFieldByName(words.substr(first + 1, second - first - 1));
    ASSERT_NE(field, nullptr) << words;
    EXPECT_EQ(std::to_string(field->number()), words.substr(second + 1)) << words;
  }
}

}  // namespace
