// SPDX-License-Identifier: Apache-2.0

// A program that knows nothing of the library and loads what it is told to. See
// usage().

#include <dlfcn.h>

#include <cstdio>
#include <cstdlib>
#include <cstring>
#include <stdexcept>
#include <string>

#include "plugin.h"

namespace {

int usage() {
  std::fprintf(stderr,
               "usage: host load TIMES LIBRARY    loads and closes it; it stays mapped\n"
               "       host use TIMES PLUGIN      loads, uses and closes it; it goes away\n"
               "       host exchange FIRST SECOND passes a message from plugin to plugin\n"
               "       host both FIRST SECOND     loads both libraries\n");
  return 2;
}

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

  const Plugin& plugin() const {
    const auto* plugin = static_cast<const Plugin*>(dlsym(handle_, "plugin"));
    if (plugin == nullptr) {
      throw std::runtime_error(dlerror());
    }
    return *plugin;
  }

 private:
  void* handle_;
};

bool isMapped(const char* path) {
  void* const handle = dlopen(path, RTLD_NOW | RTLD_NOLOAD);
  if (handle == nullptr) {
    return false;
  }
  dlclose(handle);
  return true;
}

void require(bool holds, const char* what) {
  if (!holds) {
    throw std::runtime_error(std::string("not true: ") + what);
  }
}

void load(int times, const char* path) {
  for (int i = 0; i < times; ++i) {
    (void)Library(path);
    require(isMapped(path), "the library stays mapped");
  }
}

void use(int times, const char* path) {
  for (int i = 0; i < times; ++i) {
    require(Library(path).plugin().use(), "the plugin can use the library");
    require(!isMapped(path), "the plugin goes away");
  }
}

void exchange(const char* one, const char* other) {
  const Library first(one);
  const Library second(other);
  void* const message = first.plugin().make();
  require(second.plugin().change(message), "the second plugin can read the message");
  require(first.plugin().changed(message), "the first plugin sees what the second one changed");
  second.plugin().destroy(message);
}

bool run(const std::string& command, const char* second, const char* third) {
  if (command == "load") {
    load(std::atoi(second), third);
  } else if (command == "use") {
    use(std::atoi(second), third);
  } else if (command == "exchange") {
    exchange(second, third);
  } else if (command == "both") {
    const Library one(second);
    const Library other(third);
  } else {
    return false;
  }
  return true;
}

}  // namespace

int main(int argc, char** argv) {
  try {
    if (argc != 4 || !run(argv[1], argv[2], argv[3])) {
      return usage();
    }
  } catch (const std::exception& failure) {
    std::fprintf(stderr, "%s\n", failure.what());
    return 1;
  }
  std::puts("done");
}
