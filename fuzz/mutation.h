// Changes of messages that keep them messages, for fuzzers whose input holds some:
// a changed byte mostly leaves bytes that can't be parsed.

#ifndef VOK_FUZZ_MUTATION_H_
#define VOK_FUZZ_MUTATION_H_

#include <google/protobuf/message.h>

#include <cstddef>
#include <cstdint>
#include <map>
#include <random>
#include <string>
#include <vector>

// What a fuzzer calls to get the next input, if it is there; the mutation of bytes
// that libFuzzer offers for its use.
extern "C" std::size_t LLVMFuzzerCustomMutator(std::uint8_t* data, std::size_t size,
                                               std::size_t maxSize, unsigned seed);
extern "C" std::size_t LLVMFuzzerMutate(std::uint8_t* data, std::size_t size, std::size_t maxSize);

namespace fuzz {

// Texts that fields often get: by "MESSAGE.FIELD" or else by the name of the field, and
// under "" for any field.
using Words = std::map<std::string, std::vector<std::string>>;

class Mutation {
 public:
  // Refers to the words.
  Mutation(unsigned seed, const Words& words);

  // Changes one field of the message or of a message in it.
  void change(google::protobuf::Message* message);

  // Sets most of the fields, in messages in it too.
  void fill(google::protobuf::Message* message);

  // Sets the required fields that are absent.
  void complete(google::protobuf::Message* message);

  // Changes bytes in any way.
  void change(std::string* bytes);

  bool oneIn(std::size_t count) { return below(count) == 0; }
  std::size_t below(std::size_t count);

 private:
  using Field = google::protobuf::FieldDescriptor;

  void changeList(google::protobuf::Message* message, const Field* field);
  void set(google::protobuf::Message* message, const Field* field);
  void add(google::protobuf::Message* message, const Field* field);
  const std::vector<std::string>& wordsFor(const Field* field);
  std::string text(const Field* field, const std::string& current);
  std::int64_t number();
  double real();

  std::mt19937 random_;
  const Words& words_;
};

// Copies the bytes to an input of at most that size and returns their number; where
// they are too many, the input is changed as bytes instead.
std::size_t put(const std::string& bytes, std::uint8_t* data, std::size_t size,
                std::size_t maxSize);

}  // namespace fuzz

#endif  // VOK_FUZZ_MUTATION_H_
