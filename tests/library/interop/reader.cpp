// The client in C++, with which the others are compared. See README.md for what it is
// asked and what it answers: what it writes is deterministic.

#include <cstdio>
#include <exception>
#include <iostream>
#include <sstream>
#include <string>

#include "support/messages.h"

namespace {

std::string hexOf(const std::string& bytes) {
  std::string digits;
  for (const char c : tests::toHex(bytes)) {
    if (c != ' ') {
      digits += c;
    }
  }
  return digits;
}

std::string answer(const std::string& line) {
  std::istringstream words(line);
  std::string operation;
  std::string type;
  std::string digits;
  words >> operation >> type >> digits;
  const auto message = tests::newMessage(type);
  if (!message->ParsePartialFromString(tests::fromHex(digits))) {
    return "unreadable";
  }
  if (operation == "known") {
    message->DiscardUnknownFields();
  }
  return "ok " + hexOf(tests::bytesOf(*message));
}

}  // namespace

int main() {
  try {
    for (std::string line; std::getline(std::cin, line);) {
      std::cout << answer(line) << '\n';
    }
    return 0;
  } catch (const std::exception& error) {
    std::fprintf(stderr, "interop_reader: %s\n", error.what());
    return 1;
  }
}
