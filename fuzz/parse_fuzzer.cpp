// SPDX-License-Identifier: Apache-2.0

// The input is a byte that selects a message type, and the bytes of a message.

#include <memory>
#include <string>

#include "fuzz.h"
#include "malformed_input/parse_and_serialize.h"
#include "support/messages.h"

namespace {

using google::protobuf::Message;
using tests::bytesOf;
using tests::toHex;

std::unique_ptr<Message> newLike(const Message& message) {
  return std::unique_ptr<Message>(message.New());
}

// Merging is what parsing both messages' bytes in a row is.
void expectMerging(const Message& message) {
  const auto merged = newLike(message);
  merged->CopyFrom(message);
  merged->MergeFrom(message);
  const auto parsed = newLike(message);
  const std::string bytes = bytesOf(message);
  EXPECT_TRUE(parsed->ParsePartialFromString(bytes + bytes));
  EXPECT_EQ(toHex(bytesOf(*merged)), toHex(bytesOf(*parsed)));
}

// Text format has no unknown fields, and does not keep the bits of a NaN.
void expectText(const Message& message) {
  const auto known = newLike(message);
  known->CopyFrom(message);
  known->DiscardUnknownFields();
  const std::string text = tests::textOf(*known);
  const auto again = newLike(message);
  EXPECT_TRUE(fuzz::read(text, again.get())) << text;
  EXPECT_EQ(tests::textOf(*again), text);
  if (text.find("nan") == std::string::npos) {
    EXPECT_EQ(toHex(bytesOf(*again)), toHex(bytesOf(*known)));
  }
}

}  // namespace

void fuzz::run(const std::string& input) {
  const auto& types = tests::allMessages();
  if (input.empty()) {
    return;
  }
  const auto message = newLike(*types[static_cast<unsigned char>(input[0]) % types.size()]);
  const std::string bytes = input.substr(1);
  SCOPED_TRACE(message->GetTypeName());
  if (tests::writtenAgain(*message, bytes) != "refused") {
    EXPECT_TRUE(message->ParsePartialFromString(bytes));
    EXPECT_EQ(message->IsInitialized(), message->InitializationErrorString().empty());
    expectMerging(*message);
    expectText(*message);
  }
}
