// SPDX-License-Identifier: Apache-2.0

// A byte that selects one of the messages, and its bytes: what can be parsed
// survives being serialized, copied, merged, swapped, moved and printed.

#include <google/protobuf/arena.h>
#include <google/protobuf/io/zero_copy_stream_impl_lite.h>
#include <google/protobuf/message.h>
#include <google/protobuf/text_format.h>

#include <cstddef>
#include <cstdint>
#include <memory>
#include <string>
#include <utility>
#include <vector>

#include "check.h"
#include "support/message_types.h"
#include "support/messages.h"
#include "target.h"

namespace {

using fuzz::check;
using fuzz::checkEqual;
using google::protobuf::Message;
using tests::bytesOf;

std::unique_ptr<Message> newLike(const Message& message) {
  return std::unique_ptr<Message>(message.New());
}

std::unique_ptr<Message> copyOf(const Message& message) {
  auto copy = newLike(message);
  copy->CopyFrom(message);
  return copy;
}

// The message that was parsed, and the bytes that it is written as.
struct Subject {
  explicit Subject(const Message& parsed)
      : message(parsed), name(parsed.GetDescriptor()->name()), bytes(bytesOf(parsed)) {}

  const Message& message;
  const std::string name;
  const std::string bytes;
};

std::unique_ptr<Message> parsed(const Subject& s, const std::string& bytes) {
  auto message = newLike(s.message);
  check(message->ParsePartialFromString(bytes), s.name, "its own bytes cannot be parsed");
  return message;
}

void checkBytes(const Subject& s) {
  checkEqual(bytesOf(*parsed(s, s.bytes)), s.bytes, s.name,
             "its bytes change when they are parsed and written again");
  check(s.message.ByteSizeLong() == s.bytes.size(), s.name, "its size is not that of its bytes");

  const std::string anyOrder = s.message.SerializePartialAsString();
  check(anyOrder.size() == s.bytes.size(), s.name, "its size depends on the order of map entries");
  checkEqual(bytesOf(*parsed(s, anyOrder)), s.bytes, s.name,
             "the order in which map entries are written makes a difference");
}

void checkCompleteness(const Subject& s) {
  const bool isComplete = tests::isComplete(s.message);
  check(s.message.IsInitialized() == isComplete, s.name,
        "IsInitialized() does not say whether all required fields are set");
  check(s.message.InitializationErrorString().empty() == isComplete, s.name,
        "InitializationErrorString() does not say whether all required fields are set");
  // An incomplete one would be refused as well, but with a line in the log.
  if (isComplete) {
    const auto message = newLike(s.message);
    check(message->ParseFromString(s.bytes), s.name, "it is complete, but cannot be parsed");
    check(message->SerializeAsString().size() == s.bytes.size(), s.name,
          "it is complete, but not written as a whole");
  }
}

void checkCopies(const Subject& s) {
  const auto copy = copyOf(s.message);
  checkEqual(bytesOf(*copy), s.bytes, s.name, "a copy differs");

  const auto merged = newLike(s.message);
  merged->MergeFrom(s.message);
  checkEqual(bytesOf(*merged), s.bytes, s.name, "it differs when merged into an empty message");

  merged->MergeFrom(*copy);
  checkEqual(bytesOf(*merged), bytesOf(*parsed(s, s.bytes + s.bytes)), s.name,
             "merging it with its copy is not what parsing its bytes twice over is");
  checkEqual(bytesOf(*copy), s.bytes, s.name, "merging a copy changed the copy");

  copy->Clear();
  check(bytesOf(*copy).empty(), s.name, "it is not empty when cleared");
}

// Swaps the subject's bytes into a message that holds others, and out of it again
// into an empty one.
void checkSwap(const Subject& s, Message* holder) {
  const auto doubled = parsed(s, s.bytes + s.bytes);
  const auto other = parsed(s, s.bytes);
  const auto empty = newLike(s.message);
  const auto* reflection = holder->GetReflection();
  holder->CopyFrom(*doubled);
  reflection->Swap(holder, other.get());
  checkEqual(bytesOf(*holder), s.bytes, s.name, "swapping gives it another content");
  checkEqual(bytesOf(*other), bytesOf(*doubled), s.name, "swapping changes what it gives away");
  reflection->Swap(empty.get(), holder);
  checkEqual(bytesOf(*empty), s.bytes, s.name, "swapping changes what an empty one gets");
  check(bytesOf(*holder).empty(), s.name, "it is not empty after swapping with an empty one");
}

void checkSwaps(const Subject& s) {
  checkSwap(s, newLike(s.message).get());
  google::protobuf::Arena arena;
  checkSwap(s, s.message.New(&arena));
}

// Swapping and moving as each class does it, rather than by reflection.
template <typename Type>
void checkMoves(const Subject& s) {
  Type first(static_cast<const Type&>(s.message));
  Type second;
  second.Swap(&first);
  checkEqual(bytesOf(second), s.bytes, s.name, "Swap() gives it another content");
  check(bytesOf(first).empty(), s.name, "it is not empty after Swap() with an empty one");
  Type third(std::move(second));
  checkEqual(bytesOf(third), s.bytes, s.name, "its content changes when it is moved");
  first = std::move(third);
  checkEqual(bytesOf(first), s.bytes, s.name, "its content changes when it is assigned");
}

using Check = void (*)(const Subject&);

template <typename... Types>
std::vector<Check> moveChecks(tests::TypeList<Types...> /*types*/) {
  return {checkMoves<Types>...};
}

// The text has neither unknown fields nor the bits of a not-a-number.
void checkText(const Subject& s) {
  const auto known = copyOf(s.message);
  known->DiscardUnknownFields();
  const std::string text = tests::textOf(*known);
  const auto read = newLike(s.message);
  tests::fill(text, read.get());
  checkEqual(tests::textOf(*read), text, s.name, "its text changes when it is read and printed");
  if (text.find("nan") == std::string::npos) {
    checkEqual(bytesOf(*read), bytesOf(*known), s.name, "reading its text gives another message");
  }
}

// Streams hand over their bytes in pieces, which may end anywhere.
void checkPieces(const Subject& s, const std::string& input) {
  for (const int size : {1, 5, 17}) {
    google::protobuf::io::ArrayInputStream pieces(input.data(), static_cast<int>(input.size()),
                                                  size);
    const auto message = newLike(s.message);
    check(message->ParsePartialFromZeroCopyStream(&pieces), s.name,
          "it can be parsed as a whole, but not in pieces");
    checkEqual(bytesOf(*message), s.bytes, s.name, "parsed in pieces, it differs");
  }
}

// The number is the message's place in the schema.
void checkType(std::size_t number, const std::string& input) {
  static const auto moves = moveChecks(tests::MessageTypes());
  const auto message = newLike(*tests::allMessages()[number]);
  if (!message->ParsePartialFromString(input)) {
    return;
  }
  const Subject subject(*message);
  checkBytes(subject);
  checkCompleteness(subject);
  checkCopies(subject);
  checkSwaps(subject);
  moves[number](subject);
  checkText(subject);
  checkPieces(subject, input);
  checkEqual(bytesOf(*message), subject.bytes, subject.name, "looking at it changed it");
}

}  // namespace

extern "C" int LLVMFuzzerTestOneInput(const std::uint8_t* data, std::size_t size) {
  if (size == 0) {
    return 0;
  }
  checkType(*data % tests::allMessages().size(),
            std::string(reinterpret_cast<const char*>(data + 1), size - 1));
  return 0;
}
