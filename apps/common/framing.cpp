// SPDX-License-Identifier: Apache-2.0

#include "common/framing.h"

#include <google/protobuf/io/coded_stream.h>
#include <google/protobuf/io/zero_copy_stream_impl_lite.h>
#include <google/protobuf/util/delimited_message_util.h>

#include <algorithm>
#include <cstdint>

namespace apps {

bool appendFramed(const google::protobuf::Message& message, std::string* stream) {
  google::protobuf::io::StringOutputStream out(stream);
  return message.IsInitialized() &&
         google::protobuf::util::SerializeDelimitedToZeroCopyStream(message, &out);
}

bool readFramed(const std::string& stream, std::size_t* position,
                google::protobuf::Message* message, std::size_t maxBytes) {
  constexpr std::size_t kLongestVarint = 10;
  google::protobuf::io::CodedInputStream in(
      reinterpret_cast<const std::uint8_t*>(stream.data()) + *position,
      static_cast<int>(std::min(stream.size() - *position, kLongestVarint)));
  std::uint64_t length = 0;
  if (!in.ReadVarint64(&length)) {
    return false;
  }
  const std::size_t start = *position + static_cast<std::size_t>(in.CurrentPosition());
  if (length > maxBytes || length > stream.size() - start) {
    return false;
  }
  if (!message->ParsePartialFromArray(stream.data() + start, static_cast<int>(length)) ||
      !message->IsInitialized()) {
    return false;
  }
  *position = start + static_cast<std::size_t>(length);
  return true;
}

}  // namespace apps
