// SPDX-License-Identifier: Apache-2.0

#include "common/held_signals.h"

#include <initializer_list>

namespace apps {

HeldSignals::HeldSignals() {
  sigemptyset(&held_);
  for (const int signal : {SIGHUP, SIGINT, SIGQUIT, SIGTERM}) {
    struct sigaction action = {};
    sigaction(signal, nullptr, &action);
    // A blocked signal is pending even if it is ignored.
    if (action.sa_handler != SIG_IGN) {
      sigaddset(&held_, signal);
    }
  }
  pthread_sigmask(SIG_BLOCK, &held_, &before_);
}

HeldSignals::~HeldSignals() {
  pthread_sigmask(SIG_SETMASK, &before_, nullptr);
}

}  // namespace apps
