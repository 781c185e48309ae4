#include "failing_printf.h"

#include <cerrno>
#include <cstdarg>
#include <cstddef>
#include <cstdio>

namespace {

constexpr int never = -1;

int beforeFailure = never;
bool failed = false;
int longWidth = 0;

int printWide(char* text, std::size_t size, const char* format, ...) {
  std::va_list values;
  va_start(values, format);
  const int length = std::vsnprintf(text, size, format, values);
  va_end(values);
  return length;
}

int print(char* text, std::size_t size, const char* format, std::va_list values) {
  if (longWidth > 0) {
    return printWide(text, size, "%0*d", longWidth, 0);
  }
  if (beforeFailure == 0) {
    beforeFailure = never;
    failed = true;
    errno = ENOMEM;
    return -1;
  }
  if (beforeFailure > 0) {
    --beforeFailure;
  }
  return std::vsnprintf(text, size, format, values);
}

}  // namespace

extern "C" {

int snprintf(char* text, std::size_t size, const char* format, ...) noexcept {
  std::va_list values;
  va_start(values, format);
  const int length = print(text, size, format, values);
  va_end(values);
  return length;
}

// What a hardened library calls.
int __snprintf_chk(char* text, std::size_t size, int flag, std::size_t room, const char* format,
                   ...);
int __snprintf_chk(char* text, std::size_t size, int, std::size_t, const char* format, ...) {
  std::va_list values;
  va_start(values, format);
  const int length = print(text, size, format, values);
  va_end(values);
  return length;
}

}  // extern "C"

namespace tests {

FailingPrintf::FailingPrintf(int number) {
  ::failed = false;
  beforeFailure = number;
}

FailingPrintf::~FailingPrintf() {
  beforeFailure = never;
}

bool FailingPrintf::failed() const {
  return ::failed;
}

LongPrintf::LongPrintf(int width) {
  longWidth = width;
}

LongPrintf::~LongPrintf() {
  longWidth = 0;
}

}  // namespace tests
