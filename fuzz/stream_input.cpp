#include "stream_input.h"

#include <google/protobuf/io/coded_stream.h>
#include <google/protobuf/io/zero_copy_stream_impl_lite.h>

#include <cstdint>
#include <limits>

namespace fuzz {

std::optional<std::string> readFrame(const std::string& stream, std::size_t* position) {
  google::protobuf::io::CodedInputStream in(
      reinterpret_cast<const std::uint8_t*>(stream.data()) + *position,
      static_cast<int>(stream.size() - *position));
  std::uint64_t length = 0;
  std::string content;
  if (!in.ReadVarint64(&length) || length > std::numeric_limits<int>::max() ||
      !in.ReadString(&content, static_cast<int>(length))) {
    return {};
  }
  *position += static_cast<std::size_t>(in.CurrentPosition());
  return content;
}

void appendFrame(const std::string& content, std::string* stream) {
  google::protobuf::io::StringOutputStream sink(stream);
  google::protobuf::io::CodedOutputStream out(&sink);
  out.WriteVarint32(static_cast<std::uint32_t>(content.size()));
  out.WriteString(content);
}

}  // namespace fuzz
