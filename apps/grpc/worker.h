// SPDX-License-Identifier: Apache-2.0

// A thread for requests that take long, so that short ones don't wait for them.

#ifndef VOK_APPS_GRPC_WORKER_H_
#define VOK_APPS_GRPC_WORKER_H_

#include <condition_variable>
#include <cstddef>
#include <deque>
#include <functional>
#include <mutex>
#include <thread>

namespace rule_grpc {

// Performs one task at a time.
class Worker {
 public:
  explicit Worker(std::size_t mostWaiting);
  // Performs the tasks that still wait.
  ~Worker();
  Worker(const Worker&) = delete;
  Worker& operator=(const Worker&) = delete;

  // Returns false, and does not call work, if too many tasks wait. work must not throw.
  bool add(std::function<void()> work);

 private:
  void run();

  const std::size_t mostWaiting_;
  std::mutex mutex_;
  std::condition_variable changed_;
  std::deque<std::function<void()>> waiting_;
  bool ends_ = false;
  std::thread thread_;
};

}  // namespace rule_grpc

#endif  // VOK_APPS_GRPC_WORKER_H_
