// Replaces the C library's snprintf by one that can be made to fail, or to give a text
// of any length.

#ifndef VOK_TESTS_LIBRARY_FAILURES_FAILING_PRINTF_H_
#define VOK_TESTS_LIBRARY_FAILURES_FAILING_PRINTF_H_

namespace tests {

// Makes one call of snprintf in a scope fail for lack of memory: the first one if
// number is 0.
class FailingPrintf {
 public:
  explicit FailingPrintf(int number);
  ~FailingPrintf();
  FailingPrintf(const FailingPrintf&) = delete;
  FailingPrintf& operator=(const FailingPrintf&) = delete;

  // Whether there was a call of that number.
  bool failed() const;
};

// In a scope, each call of snprintf gives a text of that many zeros, cut off where its
// buffer ends, as with a locale whose decimal point is very long.
class LongPrintf {
 public:
  explicit LongPrintf(int width);
  ~LongPrintf();
  LongPrintf(const LongPrintf&) = delete;
  LongPrintf& operator=(const LongPrintf&) = delete;
};

}  // namespace tests

#endif  // VOK_TESTS_LIBRARY_FAILURES_FAILING_PRINTF_H_
