// SPDX-License-Identifier: Apache-2.0

// What stream_fuzzer makes of its input: frames, which are a length as a varint and
// as many bytes each. The first one holds the content of the files of rules that
// requests may name, each further one a request.

#ifndef VOK_FUZZ_STREAM_INPUT_H_
#define VOK_FUZZ_STREAM_INPUT_H_

#include <google/protobuf/io/coded_stream.h>
#include <google/protobuf/io/zero_copy_stream_impl_lite.h>

#include <cstddef>
#include <cstdint>
#include <limits>
#include <optional>
#include <string>

namespace fuzz {

// Returns the content of the frame at the position and moves the position behind it,
// if it is there as a whole.
inline std::optional<std::string> readFrame(const std::string& stream, std::size_t* position) {
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

inline void appendFrame(const std::string& content, std::string* stream) {
  google::protobuf::io::StringOutputStream sink(stream);
  google::protobuf::io::CodedOutputStream out(&sink);
  out.WriteVarint32(static_cast<std::uint32_t>(content.size()));
  out.WriteString(content);
}

}  // namespace fuzz

#endif  // VOK_FUZZ_STREAM_INPUT_H_
