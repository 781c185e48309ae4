// Many threads that do something at once.

#ifndef VOK_TESTS_LIBRARY_THREADS_RUN_AT_ONCE_H_
#define VOK_TESTS_LIBRARY_THREADS_RUN_AT_ONCE_H_

#include <functional>
#include <string>
#include <vector>

namespace tests {

// Calls act(0), act(1), ... each in a thread of its own, all of them at once, and
// returns what the exceptions that came out said.
std::vector<std::string> runAtOnce(int threads, const std::function<void(int)>& act);

}  // namespace tests

#endif  // VOK_TESTS_LIBRARY_THREADS_RUN_AT_ONCE_H_
