// SPDX-License-Identifier: Apache-2.0

// Prints what the schema declares, without comments: the library's schema, or that of
// a file with a FileDescriptorSet.
//
// usage: print_contract [FILE]

#include <google/protobuf/descriptor.h>
#include <google/protobuf/descriptor.pb.h>
#include <vok/rulecheck/RuleService.pb.h>

#include <fstream>
#include <iostream>

int main(int argc, char** argv) {
  google::protobuf::DescriptorPool pool;
  const google::protobuf::FileDescriptor* file = vok::rulecheck::Link::descriptor()->file();
  if (argc > 1) {
    google::protobuf::FileDescriptorSet set;
    std::ifstream in(argv[1], std::ios::binary);
    if (!set.ParseFromIstream(&in) || set.file_size() != 1) {
      std::cerr << argv[1] << ": not a FileDescriptorSet of one file\n";
      return 2;
    }
    // protoc adds the JSON names, which the library's schema does not have.
    for (auto& message : *set.mutable_file(0)->mutable_message_type()) {
      for (auto& field : *message.mutable_field()) {
        field.clear_json_name();
      }
    }
    file = pool.BuildFile(set.file(0));
  }
  std::cout << file->DebugString();
}
