// How much memory the program takes from the heap: operator new is replaced, and
// counts.

#ifndef VOK_TESTS_LIBRARY_MALFORMED_INPUT_HEAP_METER_H_
#define VOK_TESTS_LIBRARY_MALFORMED_INPUT_HEAP_METER_H_

#include <cstddef>

namespace tests {

// The most memory that was taken at once since the meter's construction, as the
// C library takes it: with its header, in multiples of 16 bytes. One meter at a
// time, in one thread.
class HeapMeter {
 public:
  HeapMeter();
  HeapMeter(const HeapMeter&) = delete;
  HeapMeter& operator=(const HeapMeter&) = delete;

  std::size_t peak() const;

 private:
  std::size_t before_;
};

}  // namespace tests

#endif  // VOK_TESTS_LIBRARY_MALFORMED_INPUT_HEAP_METER_H_
