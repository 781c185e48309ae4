// Numbers that are the same on each run, on any machine.

#ifndef VOK_BENCHMARKS_DATA_RANDOM_H_
#define VOK_BENCHMARKS_DATA_RANDOM_H_

#include <cstddef>
#include <cstdint>

namespace benchmarks {

// The generator SplitMix64.
class Random {
 public:
  explicit Random(std::uint64_t seed) : state_(seed) {}

  std::uint64_t next() {
    state_ += 0x9e3779b97f4a7c15U;
    std::uint64_t mixed = state_;
    mixed = (mixed ^ (mixed >> 30)) * 0xbf58476d1ce4e5b9U;
    mixed = (mixed ^ (mixed >> 27)) * 0x94d049bb133111ebU;
    return mixed ^ (mixed >> 31);
  }

  // A number from 0 to end - 1.
  int below(int end) { return static_cast<int>(next() % static_cast<std::uint64_t>(end)); }

  template <std::size_t size>
  const char* pick(const char* const (&words)[size]) {
    return words[next() % size];
  }

 private:
  std::uint64_t state_;
};

}  // namespace benchmarks

#endif  // VOK_BENCHMARKS_DATA_RANDOM_H_
