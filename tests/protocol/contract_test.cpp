// What the schema promises: the file's registration, the order and shape of
// every declaration, and that all of it is in the generated pool.

#include <gmock/gmock.h>
#include <google/protobuf/descriptor.h>
#include <google/protobuf/descriptor.pb.h>
#include <gtest/gtest.h>

#include <fstream>
#include <sstream>
#include <string>
#include <vector>

#include "support/messages.h"

namespace {

using google::protobuf::Descriptor;
using google::protobuf::DescriptorPool;
using google::protobuf::EnumDescriptor;
using google::protobuf::FieldDescriptor;
using google::protobuf::FileDescriptor;
using google::protobuf::FileDescriptorProto;
using google::protobuf::MethodDescriptor;
using testing::ElementsAre;
using testing::IsEmpty;
using testing::SizeIs;

const FileDescriptor& file() {
  const FileDescriptor* found =
      DescriptorPool::generated_pool()->FindFileByName("RuleService.proto");
  if (found == nullptr) {
    throw std::runtime_error("RuleService.proto is not in the generated pool");
  }
  return *found;
}

TEST(Registration, TheFileHasItsNameAndPackage) {
  EXPECT_EQ(std::string(file().name()), "RuleService.proto");
  EXPECT_EQ(std::string(file().package()), "vok.rulecheck");
}

TEST(Registration, TheEmbeddedDescriptorIs9019Bytes) {
  FileDescriptorProto proto;
  file().CopyTo(&proto);
  EXPECT_EQ(proto.SerializeAsString().size(), 9019u);
}

TEST(Registration, TheFileHasOneOptionAndNoImports) {
  google::protobuf::FileOptions options;
  options.set_java_package("ui.vok.rulecheck.pb");
  EXPECT_EQ(file().options().SerializeAsString(), options.SerializeAsString());
  EXPECT_EQ(file().dependency_count(), 0);
}

TEST(Registration, TheFileHasNoSyntaxLine) {
  FileDescriptorProto proto;
  file().CopyTo(&proto);
  EXPECT_FALSE(proto.has_syntax());
}

TEST(Registration, TheFileHas38MessagesOneEnumAndOneService) {
  EXPECT_EQ(file().message_type_count(), 38);
  EXPECT_EQ(file().enum_type_count(), 1);
  EXPECT_EQ(file().service_count(), 1);
  EXPECT_EQ(file().extension_count(), 0);
}

TEST(Registration, TheFileHasSevenEnumsInDeclarationOrder) {
  std::vector<std::string> names;
  for (int i = 0; i < file().message_type_count(); ++i) {
    for (int j = 0; j < file().message_type(i)->enum_type_count(); ++j) {
      names.emplace_back(file().message_type(i)->enum_type(j)->full_name());
    }
  }
  names.emplace_back(file().enum_type(0)->full_name());
  EXPECT_THAT(
      names, ElementsAre("vok.rulecheck.Resource.Scheme", "vok.rulecheck.Reference.RefType",
                         "vok.rulecheck.Violation.Severity", "vok.rulecheck.RuleSpec.Disposition",
                         "vok.rulecheck.Request.RequestType", "vok.rulecheck.Response.ResponseType",
                         "vok.rulecheck.ActualVersion"));
}

TEST(Registration, TheFileHasNineMapEntriesInDeclarationOrder) {
  std::vector<std::string> names;
  for (int i = 0; i < file().message_type_count(); ++i) {
    const Descriptor& message = *file().message_type(i);
    for (int j = 0; j < message.nested_type_count(); ++j) {
      EXPECT_TRUE(message.nested_type(j)->options().map_entry())
          << std::string(message.nested_type(j)->full_name());
      names.push_back(std::string(message.name()) + "." +
                      std::string(message.nested_type(j)->name()));
    }
  }
  EXPECT_THAT(
      names, ElementsAre("Affirmation.CategoriesEntry", "AffirmationMap.HashmapEntry",
                         "Violation.CategoriesEntry", "ViolationMap.HashmapEntry",
                         "RuleSpec.CategoriesEntry", "RuleSpec.DynamicCategoriesEntry",
                         "RuleSpecMap.HashmapEntry", "CreateAffirmation.DynamicCategoryValuesEntry",
                         "CreateViolation.DynamicCategoryValuesEntry"));
}

TEST(Registration, TheServiceCanBeFoundByItsName) {
  const auto* service =
      DescriptorPool::generated_pool()->FindServiceByName("vok.rulecheck.RuleCheckService");
  ASSERT_NE(service, nullptr);
  EXPECT_EQ(service->method_count(), 14);
}

TEST(Registration, EveryClassIsTheDeclarationAtItsPlace) {
  const auto& messages = tests::allMessages();
  ASSERT_THAT(messages, SizeIs(38));
  for (int i = 0; i < file().message_type_count(); ++i) {
    const Descriptor* descriptor = messages[static_cast<std::size_t>(i)]->GetDescriptor();
    EXPECT_EQ(descriptor, file().message_type(i)) << std::string(descriptor->full_name());
    EXPECT_EQ(std::string(descriptor->full_name()),
              "vok.rulecheck." + std::string(file().message_type(i)->name()));
  }
}

// The contract as text: one line for each declaration, in declaration order.
class Listing {
 public:
  std::vector<std::string> of(const FileDescriptor& declarations) {
    for (int i = 0; i < declarations.message_type_count(); ++i) {
      add(*declarations.message_type(i));
    }
    add(*declarations.enum_type(0));
    for (int i = 0; i < declarations.service(0)->method_count(); ++i) {
      add(*declarations.service(0)->method(i));
    }
    return lines_;
  }

 private:
  static std::string local(const std::string& fullName) {
    return fullName.substr(std::string("vok.rulecheck.").size());
  }

  static std::string typeOf(const FieldDescriptor& field) {
    if (field.is_map()) {
      return "map<" + typeOf(*field.message_type()->field(0)) + ", " +
             typeOf(*field.message_type()->field(1)) + ">";
    }
    if (field.message_type() != nullptr) {
      return local(std::string(field.message_type()->full_name()));
    }
    if (field.enum_type() != nullptr) {
      return local(std::string(field.enum_type()->full_name()));
    }
    return std::string(field.type_name());
  }

  static std::string labelOf(const FieldDescriptor& field) {
    if (field.is_map()) {
      return "";
    }
    return field.is_repeated() ? "repeated " : field.is_required() ? "required " : "optional ";
  }

  static std::string defaultOf(const FieldDescriptor& field) {
    return field.has_default_value()
               ? " [default = " + std::string(field.default_value_enum()->name()) + "]"
               : "";
  }

  void add(const Descriptor& message) {
    lines_.push_back("message " + std::string(message.name()));
    for (int i = 0; i < message.enum_type_count(); ++i) {
      add(*message.enum_type(i));
    }
    for (int i = 0; i < message.field_count(); ++i) {
      const FieldDescriptor& field = *message.field(i);
      lines_.push_back("  " + labelOf(field) + typeOf(field) + " " + std::string(field.name()) +
                       " = " + std::to_string(field.number()) + defaultOf(field));
    }
    EXPECT_EQ(message.oneof_decl_count(), 0) << std::string(message.name());
    EXPECT_EQ(message.extension_range_count(), 0) << std::string(message.name());
  }

  void add(const EnumDescriptor& type) {
    lines_.push_back("enum " + local(std::string(type.full_name())));
    for (int i = 0; i < type.value_count(); ++i) {
      lines_.push_back("  " + std::string(type.value(i)->name()) + " = " +
                       std::to_string(type.value(i)->number()));
    }
  }

  void add(const MethodDescriptor& method) {
    lines_.push_back("rpc " + std::string(method.name()) + "(" +
                     std::string(method.input_type()->name()) + ") returns (" +
                     std::string(method.output_type()->name()) + ")");
    EXPECT_FALSE(method.client_streaming() || method.server_streaming());
  }

  std::vector<std::string> lines_;
};

std::vector<std::string> linesOf(const std::string& path) {
  std::ifstream in(path);
  std::vector<std::string> lines;
  for (std::string line; std::getline(in, line);) {
    lines.push_back(line);
  }
  return lines;
}

TEST(Contract, EveryDeclarationIsTheCommittedOne) {
  const std::vector<std::string> actual = Listing().of(file());
  const std::vector<std::string> expected = linesOf(CONTRACT_FILE);
  ASSERT_THAT(expected, testing::Not(IsEmpty())) << CONTRACT_FILE;
  for (std::size_t i = 0; i < std::min(actual.size(), expected.size()); ++i) {
    ASSERT_EQ(actual[i], expected[i]) << "line " << i + 1 << " of the contract";
  }
  EXPECT_EQ(actual.size(), expected.size());
}

}  // namespace
