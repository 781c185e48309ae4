// SPDX-License-Identifier: Apache-2.0

// The benchmarks of alternatives, to be registered by main(). A name is "what, operation/who".

#ifndef VOK_BENCHMARKS_CARRYING_CARRYING_H_
#define VOK_BENCHMARKS_CARRYING_CARRYING_H_

#include "measure.h"
#include "messages.h"

namespace benchmarks {

void registerProtozero();
void registerRapidJson();

}  // namespace benchmarks

#endif  // VOK_BENCHMARKS_CARRYING_CARRYING_H_
