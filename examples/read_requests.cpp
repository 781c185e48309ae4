// Lists the requests that come on the standard input, a file or a socket.

// Shown in docs/recipes.md: begin
#include <google/protobuf/io/coded_stream.h>
#include <google/protobuf/io/zero_copy_stream_impl.h>
#include <google/protobuf/message_lite.h>
#include <vok/rulecheck/RuleService.pb.h>

#include <cstdint>
#include <string>

using vok::rulecheck::Request;

enum class Frame { Read, End, Bad };

// Reads the next message. It is bad if it is truncated, longer than maxBytes, malformed or
// incomplete. After a bad one the start of the next one is unknown.
Frame readFrame(google::protobuf::io::ZeroCopyInputStream* stream, int maxBytes,
                google::protobuf::MessageLite* message) {
  google::protobuf::io::CodedInputStream in(stream);
  const void* next = nullptr;
  int available = 0;
  if (!in.GetDirectBufferPointer(&next, &available)) {
    return Frame::End;
  }
  std::uint64_t length = 0;
  if (!in.ReadVarint64(&length) || length > static_cast<std::uint64_t>(maxBytes)) {
    return Frame::Bad;
  }
  std::string body;
  if (!in.ReadString(&body, static_cast<int>(length)) || !message->ParsePartialFromString(body) ||
      !message->IsInitialized()) {
    return Frame::Bad;
  }
  return Frame::Read;
}

// Handles the requests from an open file or a connected socket. Returns true at its end, and false
// for a bad request or if reading fails.
bool handleAll(int descriptor, void (*handle)(const Request&)) {
  google::protobuf::io::FileInputStream stream(descriptor);
  Request request;  // reused, which is faster than a new one each time
  Frame frame = Frame::End;
  while ((frame = readFrame(&stream, 1 << 20, &request)) == Frame::Read) {
    handle(request);
  }
  return frame == Frame::End && stream.GetErrno() == 0;
}
// Shown in docs/recipes.md: end

#include <unistd.h>

#include <iostream>

namespace {

void list(const Request& request) {
  std::cout << vok::rulecheck::Request_RequestType_Name(request.type()) << std::endl;
}

}  // namespace

int main() {
  if (!handleAll(STDIN_FILENO, list)) {
    std::cout << "a bad request" << std::endl;
    return 1;
  }
  std::cout << "the end" << std::endl;
}
