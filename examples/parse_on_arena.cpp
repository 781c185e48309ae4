// Counts the errors in results, each a file in binary format.
//
// usage: parse_on_arena FILE...

// Shown in docs/recipes.md: begin
#include <google/protobuf/arena.h>
#include <vok/rulecheck/RuleService.pb.h>

#include <cstddef>
#include <string>
#include <vector>

using namespace vok::rulecheck;

// Reads one result after the other on an arena that keeps its first block.
class ResultReader {
 public:
  ResultReader() : block_(1 << 20), arena_(options(&block_)) {}

  // Returns null if the bytes are malformed or incomplete. The result is valid until the next call.
  const SessionResult* read(const std::string& bytes) {
    arena_.Reset();
    SessionResult* result = SessionResult::default_instance().New(&arena_);
    const bool good = result->ParsePartialFromString(bytes) && result->IsInitialized();
    return good ? result : nullptr;
  }

 private:
  static google::protobuf::ArenaOptions options(std::vector<char>* block) {
    google::protobuf::ArenaOptions options;
    options.initial_block = block->data();
    options.initial_block_size = block->size();
    return options;
  }

  std::vector<char> block_;  // before the arena, so that it outlives it
  google::protobuf::Arena arena_;
};
// Shown in docs/recipes.md: end

#include <fstream>
#include <iostream>
#include <iterator>

int main(int argc, char** argv) {
  ResultReader reader;
  for (int i = 1; i < argc; ++i) {
    std::ifstream in(argv[i], std::ios::binary);
    const std::string bytes{std::istreambuf_iterator<char>(in), std::istreambuf_iterator<char>()};
    const SessionResult* result = reader.read(bytes);
    if (result == nullptr) {
      std::cout << "no result\n";
      return 1;
    }
    std::size_t errors = 0;
    for (const auto& entry : result->violations().hashmap()) {
      errors += entry.second.severity() == Violation::SEV_ERROR ? 1 : 0;
    }
    std::cout << result->session().name() << ": " << errors << " errors\n";
  }
}
