// Checks that a program and its plugin see the library's objects, and the same.
//
// usage: program PLUGIN

#include <dlfcn.h>

#include <cstdio>

#include "client.h"

static const ClientView* viewOfPlugin(const char* path) {
  void* plugin = dlopen(path, RTLD_NOW | RTLD_LOCAL);
  if (plugin == nullptr) {
    std::printf("%s\n", dlerror());
    return nullptr;
  }
  return reinterpret_cast<decltype(&clientView)>(dlsym(plugin, "clientView"))("the plugin");
}

int main(int argc, char** argv) {
  if (argc != 2) {
    return 2;
  }
  const ClientView* own = clientView("the program");
  const ClientView* other = viewOfPlugin(argv[1]);
  if (own == nullptr || other == nullptr) {
    return 1;
  }
  int types = 0;
  for (; own->default_instance != nullptr; ++own, ++other, ++types) {
    if (own->default_instance != other->default_instance || own->descriptor != other->descriptor) {
      std::printf("the program and the plugin see different objects of type %d\n", types);
      return 1;
    }
  }
  std::printf("%d types\n", types);
  return 0;
}
