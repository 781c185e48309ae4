// SPDX-License-Identifier: Apache-2.0

// Signals that end a program, held back while it has something to clean up.

#ifndef VOK_APPS_COMMON_HELD_SIGNALS_H_
#define VOK_APPS_COMMON_HELD_SIGNALS_H_

#include <signal.h>

namespace apps {

// Blocks SIGHUP, SIGINT, SIGQUIT and SIGTERM in this thread and all that it starts,
// except those that the program ignores. One that arrives takes effect when the object
// is destroyed.
class HeldSignals {
 public:
  HeldSignals();
  ~HeldSignals();
  HeldSignals(const HeldSignals&) = delete;
  HeldSignals& operator=(const HeldSignals&) = delete;

  const sigset_t& held() const { return held_; }

 private:
  sigset_t held_;
  sigset_t before_;
};

}  // namespace apps

#endif  // VOK_APPS_COMMON_HELD_SIGNALS_H_
