// The renderers return what Converter returns.

#ifndef VOK_BENCHMARKS_RENDERING_EQUALITY_H_
#define VOK_BENCHMARKS_RENDERING_EQUALITY_H_

#include "rendering/findings.h"

namespace benchmarks {

// Compares all texts of the findings and of many unusual messages. Throws at
// the first difference.
void requireEqualTexts(const Findings& findings);

}  // namespace benchmarks

#endif  // VOK_BENCHMARKS_RENDERING_EQUALITY_H_
