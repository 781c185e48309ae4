// SPDX-License-Identifier: Apache-2.0

// Parses and serializes untrusted bytes.

#ifndef VOK_TESTS_LIBRARY_MALFORMED_INPUT_PARSE_AND_SERIALIZE_H_
#define VOK_TESTS_LIBRARY_MALFORMED_INPUT_PARSE_AND_SERIALIZE_H_

#include <google/protobuf/message.h>

#include <cstdint>
#include <string>

namespace tests {

// What a message that was read from the bytes is written as, in hexadecimal
// digits, or "refused". Required fields may be missing.
//
// The bytes are read in three ways: from one block, byte by byte from a stream,
// and onto an arena. All must agree, what is written must be as long as
// announced, and read and written once more it must be the same; the test that
// calls fails otherwise.
std::string writtenAgain(const google::protobuf::Message& prototype, const std::string& bytes);

// Bytes of the wire format: a number, and the tag of a field.
std::string varint(std::uint64_t number);
std::string tag(int field, int wireType);

// A field with a length and that content.
std::string record(int field, const std::string& content);

}  // namespace tests

#endif  // VOK_TESTS_LIBRARY_MALFORMED_INPUT_PARSE_AND_SERIALIZE_H_
