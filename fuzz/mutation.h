// SPDX-License-Identifier: Apache-2.0

// Changes of messages that keep them messages, for fuzzers whose input holds some: a changed byte
// mostly leaves bytes that cannot be parsed.

#ifndef VOK_FUZZ_MUTATION_H_
#define VOK_FUZZ_MUTATION_H_

#include <google/protobuf/message.h>

#include <cstddef>
#include <cstdint>
#include <map>
#include <random>
#include <string>
#include <vector>

// libFuzzer calls the first function for the next input, and offers the second one.
extern "C" std::size_t LLVMFuzzerCustomMutator(std::uint8_t* data, std::size_t size,
                                               std::size_t maxSize, unsigned seed);
extern "C" std::size_t LLVMFuzzerMutate(std::uint8_t* data, std::size_t size, std::size_t maxSize);

namespace fuzz {

// Texts that fields often get: by "MESSAGE.FIELD" or else by the name of the field, and under ""
// for any field.
using Words = std::map<std::string, std::vector<std::string>>;

class Mutation {
 public:
  // Refers to the words.
  Mutation(unsigned seed, const Words& words) : random_(seed), words_(words) {}

  // Changes one field of the message or of a message in it.
  void change(google::protobuf::Message* message);

  // Changes bytes in any way.
  void change(std::string* bytes);

  // Sets most of the fields, in messages in it too.
  void fill(google::protobuf::Message* message);

  // Sets the required fields that are absent, in messages in it too.
  void complete(google::protobuf::Message* message);

  bool oneIn(std::size_t count) { return below(count) == 0; }
  std::size_t below(std::size_t count) { return random_() % count; }

 private:
  using Field = google::protobuf::FieldDescriptor;

  void changeList(google::protobuf::Message* message, const Field* field);
  void set(google::protobuf::Message* message, const Field* field);
  void add(google::protobuf::Message* message, const Field* field);
  std::string text(const Field* field, std::string current);
  std::int64_t number();
  double real();

  std::mt19937_64 random_;
  const Words& words_;
};

// Copies the bytes to an input of at most that size and returns their number. If they are too many,
// the input is changed as bytes instead.
std::size_t put(const std::string& bytes, std::uint8_t* data, std::size_t size,
                std::size_t maxSize);

}  // namespace fuzz

#endif  // VOK_FUZZ_MUTATION_H_
