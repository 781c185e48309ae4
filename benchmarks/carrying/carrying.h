// SPDX-License-Identifier: Apache-2.0

// The benchmarks of messages, to be registered by main(). A name is "what, operation/who".

#ifndef VOK_BENCHMARKS_CARRYING_CARRYING_H_
#define VOK_BENCHMARKS_CARRYING_CARRYING_H_

#include "measure.h"
#include "messages.h"

namespace benchmarks {

// The library's messages; and the same for results of other sizes.
void registerMessages();
void registerGrowth();

// Alternatives.
void registerProtozero();
void registerRapidJson();

}  // namespace benchmarks

#endif  // VOK_BENCHMARKS_CARRYING_CARRYING_H_
