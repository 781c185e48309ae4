// SPDX-License-Identifier: Apache-2.0

// Many threads that do something at once.

#ifndef VOK_TESTS_LIBRARY_THREADS_RUN_AT_ONCE_H_
#define VOK_TESTS_LIBRARY_THREADS_RUN_AT_ONCE_H_

#include <condition_variable>
#include <exception>
#include <functional>
#include <mutex>
#include <string>
#include <thread>
#include <vector>

namespace tests {

// Calls act(0), act(1), ... each in a thread of its own, all of them at once, and
// returns the messages of the exceptions.
inline std::vector<std::string> runAtOnce(int threads, const std::function<void(int)>& act) {
  std::mutex mutex;
  std::condition_variable allStarted;
  int missing = threads;
  std::vector<std::string> failures;
  std::vector<std::thread> members;
  for (int i = 0; i < threads; ++i) {
    members.emplace_back([&, i] {
      {
        std::unique_lock<std::mutex> lock(mutex);
        if (--missing == 0) {
          allStarted.notify_all();
        }
        allStarted.wait(lock, [&] { return missing == 0; });
      }
      try {
        act(i);
      } catch (const std::exception& failure) {
        const std::lock_guard<std::mutex> lock(mutex);
        failures.push_back(failure.what());
      }
    });
  }
  for (std::thread& member : members) {
    member.join();
  }
  return failures;
}

}  // namespace tests

#endif  // VOK_TESTS_LIBRARY_THREADS_RUN_AT_ONCE_H_
