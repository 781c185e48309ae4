// SPDX-License-Identifier: Apache-2.0

#include "grpc/worker.h"

#include <utility>

namespace rule_grpc {

Worker::Worker(std::size_t mostWaiting) : mostWaiting_(mostWaiting), thread_([this] { run(); }) {}

Worker::~Worker() {
  {
    const std::lock_guard<std::mutex> lock(mutex_);
    ends_ = true;
  }
  changed_.notify_one();
  thread_.join();
}

bool Worker::add(std::function<void()> work) {
  {
    const std::lock_guard<std::mutex> lock(mutex_);
    if (waiting_.size() >= mostWaiting_) {
      return false;
    }
    waiting_.push_back(std::move(work));
  }
  changed_.notify_one();
  return true;
}

void Worker::run() {
  std::unique_lock<std::mutex> lock(mutex_);
  for (;;) {
    changed_.wait(lock, [this] { return ends_ || !waiting_.empty(); });
    if (waiting_.empty()) {
      return;
    }
    const std::function<void()> work = std::move(waiting_.front());
    waiting_.pop_front();
    lock.unlock();
    work();
    lock.lock();
  }
}

}  // namespace rule_grpc
