// What stream_fuzzer makes of its input: frames, which are a length as a varint and
// as many bytes each. The first one holds the content of the files of rules that
// requests may name, each further one a request.

#ifndef VOK_FUZZ_STREAM_INPUT_H_
#define VOK_FUZZ_STREAM_INPUT_H_

#include <cstddef>
#include <optional>
#include <string>

namespace fuzz {

// Returns the content of the frame at the position and moves the position behind it,
// if it is there as a whole.
std::optional<std::string> readFrame(const std::string& stream, std::size_t* position);

void appendFrame(const std::string& content, std::string* stream);

}  // namespace fuzz

#endif  // VOK_FUZZ_STREAM_INPUT_H_
