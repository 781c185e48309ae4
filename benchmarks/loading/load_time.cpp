// Prints the nanoseconds of CPU time that loading a library takes, when the
// library that it depends on is loaded already:
//
//   load_time RUNTIME LIBRARY

#include <dlfcn.h>
#include <time.h>

#include <cstdio>

namespace {

long long cpuTime() {
  timespec time;
  clock_gettime(CLOCK_THREAD_CPUTIME_ID, &time);
  return time.tv_sec * 1000000000LL + time.tv_nsec;
}

bool load(const char* path) {
  if (dlopen(path, RTLD_NOW) == nullptr) {
    std::fprintf(stderr, "load_time: %s\n", dlerror());
    return false;
  }
  return true;
}

}  // namespace

int main(int count, char** arguments) {
  if (count != 3) {
    std::fputs("Usage: load_time RUNTIME LIBRARY\n", stderr);
    return 2;
  }
  if (!load(arguments[1])) {
    return 1;
  }
  const long long start = cpuTime();
  if (!load(arguments[2])) {
    return 1;
  }
  std::printf("%lld\n", cpuTime() - start);
  return 0;
}
