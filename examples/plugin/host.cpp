// Loads the plugin, uses it and unloads it, twice.
//
// usage: host PLUGIN

#include <dlfcn.h>

#include <cstdio>

namespace {

using SeverityWord = int (*)(const void*, std::size_t, char*, std::size_t);

const char violation[] = "\x08\x07\x10\x02";  // id: 7 severity: SEV_CRITICAL_WARNING

bool isLoaded(const char* path) {
  void* handle = dlopen(path, RTLD_NOW | RTLD_NOLOAD);
  if (handle != nullptr) {
    dlclose(handle);
  }
  return handle != nullptr;
}

bool use(const char* path) {
  void* handle = dlopen(path, RTLD_NOW | RTLD_LOCAL);
  if (handle == nullptr) {
    std::printf("%s\n", dlerror());
    return false;
  }
  const auto severityWord = reinterpret_cast<SeverityWord>(dlsym(handle, "severityWord"));
  char word[32] = "";
  char small[4] = "";
  const bool good = severityWord(violation, 4, word, sizeof word) == 0;
  const bool incomplete = severityWord(violation, 2, word, sizeof word) != 0;
  const bool malformed = severityWord(violation, 3, word, sizeof word) != 0;
  const bool full = severityWord(violation, 4, small, sizeof small) != 0;
  dlclose(handle);
  std::printf("%s%s\n", word, isLoaded(path) ? ", and the plugin stays" : "");
  return good && incomplete && malformed && full;
}

}  // namespace

int main(int argc, char** argv) {
  return argc == 2 && use(argv[1]) && use(argv[1]) ? 0 : 1;
}
