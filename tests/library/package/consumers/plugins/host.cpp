// Loads plugins, and the library itself, again and again.
//
// usage: program FIRST SECOND LIBRARY

#include <dlfcn.h>

#include <cstdio>
#include <cstdlib>

using Entry = const void* (*)();

static void* load(const char* path) {
  void* handle = dlopen(path, RTLD_NOW | RTLD_LOCAL);
  if (handle == nullptr) {
    std::printf("%s\n", dlerror());
    std::exit(1);
  }
  return handle;
}

static const void* call(void* handle) {
  const auto entry = reinterpret_cast<Entry>(dlsym(handle, "entry"));
  const void* result = entry == nullptr ? nullptr : entry();
  if (result == nullptr) {
    std::printf("a plugin failed\n");
    std::exit(1);
  }
  return result;
}

int main(int argc, char** argv) {
  if (argc != 4) {
    return 2;
  }
  dlclose(load(argv[3]));
  dlclose(load(argv[3]));

  void* first = load(argv[1]);
  void* second = load(argv[2]);
  const void* descriptor = call(first);
  if (call(second) != descriptor) {
    std::printf("two plugins see two libraries\n");
    return 1;
  }
  dlclose(first);
  dlclose(second);

  first = load(argv[1]);
  if (call(first) != descriptor) {
    std::printf("a plugin that is loaded again sees another library\n");
    return 1;
  }
  dlclose(first);
  return 0;
}
