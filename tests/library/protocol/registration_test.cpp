// The file of the schema in the generated pool. Its declarations are compared with
// tests/library/compatibility/contract.txt.

#include <gmock/gmock.h>
#include <google/protobuf/descriptor.h>
#include <google/protobuf/descriptor.pb.h>
#include <gtest/gtest.h>

#include <stdexcept>
#include <string>

#include "support/messages.h"

namespace {

using google::protobuf::Descriptor;
using google::protobuf::DescriptorPool;
using google::protobuf::FileDescriptor;
using google::protobuf::FileDescriptorProto;
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

TEST(Registration, TheFileHasNoSyntaxLine) {
  FileDescriptorProto proto;
  file().CopyTo(&proto);
  EXPECT_FALSE(proto.has_syntax());
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

}  // namespace
