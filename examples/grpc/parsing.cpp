#include "grpc/parsing.h"

#include "grpc/statuses.h"

namespace rule_grpc {

grpc::Status parse(grpc::ByteBuffer* bytes, google::protobuf::Message* message) {
  grpc::Slice block;
  const grpc::Status copied = bytes->DumpToSingleSlice(&block);
  bytes->Clear();
  if (!copied.ok()) {
    return copied;
  }
  if (!message->ParsePartialFromArray(block.begin(), static_cast<int>(block.size()))) {
    return refusal(grpc::StatusCode::INVALID_ARGUMENT, "malformed bytes");
  }
  if (!message->IsInitialized()) {
    return refusal(grpc::StatusCode::INVALID_ARGUMENT,
                   "missing " + message->InitializationErrorString());
  }
  return grpc::Status::OK;
}

}  // namespace rule_grpc
