// SPDX-License-Identifier: Apache-2.0

// The input is a byte that selects a message type, and the bytes of a message.

#include <google/protobuf/io/zero_copy_stream_impl_lite.h>
#include <google/protobuf/message.h>

#include <memory>
#include <string>

#include "check.h"
#include "support/messages.h"

namespace {

using fuzz::check;
using fuzz::checkEqual;
using google::protobuf::Message;
using tests::bytesOf;

// A parsed message, and what it is serialized as.
struct Subject {
  const Message& message;
  const std::string name;
  const std::string bytes;
};

std::unique_ptr<Message> newLike(const Message& message) {
  return std::unique_ptr<Message>(message.New());
}

void checkBytes(const Subject& s) {
  check(s.message.ByteSizeLong() == s.bytes.size(), s.name, "ByteSizeLong() is wrong");
  const auto again = newLike(s.message);
  check(again->ParsePartialFromString(s.message.SerializePartialAsString()), s.name,
        "its own bytes cannot be parsed");
  checkEqual(bytesOf(*again), s.bytes, s.name, "serializing and parsing changes it");
}

void checkPieces(const Subject& s, const std::string& input) {
  for (const int size : {1, 5, 17}) {
    google::protobuf::io::ArrayInputStream pieces(input.data(), static_cast<int>(input.size()),
                                                  size);
    const auto message = newLike(s.message);
    check(message->ParsePartialFromZeroCopyStream(&pieces), s.name,
          "it cannot be parsed in pieces");
    checkEqual(bytesOf(*message), s.bytes, s.name, "parsing in pieces gives another message");
  }
}

void checkCompleteness(const Subject& s) {
  const bool isComplete = tests::isComplete(s.message);
  check(s.message.IsInitialized() == isComplete, s.name, "IsInitialized() is wrong");
  check(s.message.InitializationErrorString().empty() == isComplete, s.name,
        "InitializationErrorString() is wrong");
}

// Merging is what parsing both messages' bytes in a row is.
void checkMerging(const Subject& s) {
  const auto merged = newLike(s.message);
  merged->CopyFrom(s.message);
  merged->MergeFrom(s.message);
  const auto parsed = newLike(s.message);
  check(parsed->ParsePartialFromString(s.bytes + s.bytes), s.name, "it cannot be parsed twice");
  checkEqual(bytesOf(*merged), bytesOf(*parsed), s.name, "MergeFrom() is wrong");
}

// Text format has no unknown fields, and does not keep the bits of a NaN.
void checkText(const Subject& s) {
  const auto known = newLike(s.message);
  known->CopyFrom(s.message);
  known->DiscardUnknownFields();
  const std::string text = tests::textOf(*known);
  const auto again = newLike(s.message);
  check(fuzz::read(text, again.get()), s.name, "its text format cannot be read");
  checkEqual(tests::textOf(*again), text, s.name, "reading its text format changes it");
  if (text.find("nan") == std::string::npos) {
    checkEqual(bytesOf(*again), bytesOf(*known), s.name, "its text format is another message");
  }
}

}  // namespace

extern "C" int LLVMFuzzerTestOneInput(const std::uint8_t* data, std::size_t size) {
  const auto& types = tests::allMessages();
  if (size == 0) {
    return 0;
  }
  const std::string input(reinterpret_cast<const char*>(data + 1), size - 1);
  const auto message = newLike(*types[*data % types.size()]);
  if (message->ParsePartialFromString(input)) {
    const Subject subject{*message, message->GetDescriptor()->name(), bytesOf(*message)};
    checkBytes(subject);
    checkPieces(subject, input);
    checkCompleteness(subject);
    checkMerging(subject);
    checkText(subject);
  }
  return 0;
}
