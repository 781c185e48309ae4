// The search for the bytes that make a message take the most memory.

#ifndef VOK_TESTS_LIBRARY_MALFORMED_INPUT_AMPLIFICATION_H_
#define VOK_TESTS_LIBRARY_MALFORMED_INPUT_AMPLIFICATION_H_

#include <google/protobuf/message.h>

#include <cstddef>
#include <map>
#include <string>

namespace tests {

enum class Place { kHeap, kArena };

// The most memory that reading those bytes takes, the message included. The
// arena is one with default options.
std::size_t memoryToRead(const google::protobuf::Message& prototype, const std::string& bytes,
                         Place place);

// Bytes of a message type that take much memory.
struct Flood {
  std::string bytes;
  std::string repeated;  // the path of the field that they repeat
  std::size_t memory = 0;

  double ratio() const { return static_cast<double>(memory) / static_cast<double>(bytes.size()); }
};

// For each message type, the worst flood that was found.
std::map<std::string, Flood> worstFloods(Place place);

}  // namespace tests

#endif  // VOK_TESTS_LIBRARY_MALFORMED_INPUT_AMPLIFICATION_H_
