// SPDX-License-Identifier: Apache-2.0

#ifndef VOK_APPS_COMMON_DESCRIPTOR_H_
#define VOK_APPS_COMMON_DESCRIPTOR_H_

#include <unistd.h>

#include <utility>

namespace apps {

// Owns a file descriptor; -1 is none.
class Descriptor {
 public:
  explicit Descriptor(int number = -1) : number_(number) {}
  Descriptor(Descriptor&& other) noexcept : number_(other.release()) {}
  Descriptor(const Descriptor&) = delete;
  Descriptor& operator=(const Descriptor&) = delete;
  Descriptor& operator=(Descriptor&& other) noexcept {
    std::swap(number_, other.number_);
    return *this;
  }
  ~Descriptor() {
    if (number_ >= 0) {
      close(number_);
    }
  }
  bool isOpen() const { return number_ >= 0; }
  int number() const { return number_; }
  int release() { return std::exchange(number_, -1); }

 private:
  int number_;
};

}  // namespace apps

#endif  // VOK_APPS_COMMON_DESCRIPTOR_H_
