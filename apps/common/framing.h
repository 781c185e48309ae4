// SPDX-License-Identifier: Apache-2.0

// Messages on a byte stream: each is preceded by its length as a varint, the
// way in which protobuf runtimes of all languages delimit messages.

#ifndef VOK_APPS_COMMON_FRAMING_H_
#define VOK_APPS_COMMON_FRAMING_H_

#include <google/protobuf/message.h>

#include <cstddef>
#include <string>

namespace apps {

// The longest message that is read if nothing else is said: a session's result can
// be long.
constexpr std::size_t kMaxMessageBytes = 64U << 20;

// Appends length and message to the stream. Returns false, with nothing
// appended, if the message is not initialized or has more than 2 GiB.
bool appendFramed(const google::protobuf::Message& message, std::string* stream);

// Reads the message that begins at *position, which is at most the stream's size,
// and moves *position behind it. Returns false, with *position unchanged and
// *message in any state, if the stream ends early or the message is malformed,
// incomplete or longer than maxBytes, which is less than 2 GiB.
bool readFramed(const std::string& stream, std::size_t* position,
                google::protobuf::Message* message, std::size_t maxBytes = kMaxMessageBytes);

}  // namespace apps

#endif  // VOK_APPS_COMMON_FRAMING_H_
