#include "run_at_once.h"

#include <condition_variable>
#include <exception>
#include <mutex>
#include <thread>

namespace tests {
namespace {

// Lets nobody through until all have come.
class Gate {
 public:
  explicit Gate(int expected) : expected_(expected) {}

  void pass() {
    std::unique_lock<std::mutex> lock(mutex_);
    if (--expected_ == 0) {
      open_.notify_all();
    }
    open_.wait(lock, [this] { return expected_ == 0; });
  }

 private:
  std::mutex mutex_;
  std::condition_variable open_;
  int expected_;
};

}  // namespace

std::vector<std::string> runAtOnce(int threads, const std::function<void(int)>& act) {
  Gate gate(threads);
  std::mutex mutex;
  std::vector<std::string> failures;
  std::vector<std::thread> members;
  for (int i = 0; i < threads; ++i) {
    members.emplace_back([&, i] {
      gate.pass();
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
