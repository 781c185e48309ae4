// SPDX-License-Identifier: Apache-2.0

// usage: host load TIMES LIBRARY      loads and closes it; it stays mapped
//        host use TIMES PLUGIN        loads, uses and closes it; it goes away
//        host exchange FIRST SECOND   passes a message from plugin to plugin
//        host both FIRST SECOND       loads both libraries
//
// A program that knows nothing of the library.

#include <dlfcn.h>

#include <cstdio>
#include <cstdlib>
#include <exception>
#include <stdexcept>
#include <string>

#include "plugin.h"

namespace {

class Library {
 public:
  explicit Library(const char* path) : handle_(dlopen(path, RTLD_NOW | RTLD_LOCAL)) {
    if (handle_ == nullptr) {
      throw std::runtime_error(dlerror());
    }
  }
  ~Library() { dlclose(handle_); }
  Library(const Library&) = delete;
  Library& operator=(const Library&) = delete;

  const Plugin& plugin() const { return *static_cast<const Plugin*>(dlsym(handle_, "plugin")); }

 private:
  void* handle_;
};

bool isMapped(const char* path) {
  void* const handle = dlopen(path, RTLD_NOW | RTLD_NOLOAD);
  return handle != nullptr && dlclose(handle) == 0;
}

void loadOften(bool use, int times, const char* path) {
  for (int i = 0; i < times; ++i) {
    {
      const Library library(path);
      if (use) {
        library.plugin().use();
      }
    }
    if (isMapped(path) == use) {
      throw std::runtime_error(use ? "the plugin stays mapped" : "the library goes away");
    }
  }
}

void loadBoth(bool exchange, const char* one, const char* other) {
  const Library first(one);
  const Library second(other);
  if (exchange) {
    void* const message = first.plugin().make();
    second.plugin().change(message);
    first.plugin().destroy(message);
  }
}

}  // namespace

int main(int argc, char** argv) {
  if (argc != 4) {
    return 2;
  }
  const std::string command = argv[1];
  try {
    if (command == "load" || command == "use") {
      loadOften(command == "use", std::atoi(argv[2]), argv[3]);
    } else {
      loadBoth(command == "exchange", argv[2], argv[3]);
    }
  } catch (const std::exception& failure) {
    std::fprintf(stderr, "%s\n", failure.what());
    return 1;
  }
  std::puts("done");
}
