// SPDX-License-Identifier: Apache-2.0

// Many threads that do something at once.

#ifndef VOK_TESTS_LIBRARY_THREADS_RUN_AT_ONCE_H_
#define VOK_TESTS_LIBRARY_THREADS_RUN_AT_ONCE_H_

#include <exception>
#include <functional>
#include <future>
#include <string>
#include <vector>

namespace tests {

// Calls act(0), act(1), ... each in a thread of its own, all of them at once, and
// returns the messages of the exceptions.
inline std::vector<std::string> runAtOnce(int threads, const std::function<void(int)>& act) {
  std::promise<void> start;
  const auto started = start.get_future().share();
  std::vector<std::future<void>> ends;
  for (int i = 0; i < threads; ++i) {
    ends.push_back(std::async(std::launch::async, [&act, started, i] {
      started.wait();
      act(i);
    }));
  }
  start.set_value();
  std::vector<std::string> failures;
  for (auto& end : ends) {
    try {
      end.get();
    } catch (const std::exception& failure) {
      failures.emplace_back(failure.what());
    }
  }
  return failures;
}

}  // namespace tests

#endif  // VOK_TESTS_LIBRARY_THREADS_RUN_AT_ONCE_H_
