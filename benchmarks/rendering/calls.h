// The benchmarks of rendering, to be registered by main().

#ifndef VOK_BENCHMARKS_RENDERING_CALLS_H_
#define VOK_BENCHMARKS_RENDERING_CALLS_H_

#include "rendering/findings.h"

namespace benchmarks {

// Single calls, again and again with one message each.
void registerCalls();

// Fixed-point numbers beside snprintf.
void registerNumbers();

// All texts of findings: the first hundred again and again, all in order, and
// the scattered ones, which come from main memory.
void registerReports(const Findings& findings, const Findings& scattered);

}  // namespace benchmarks

#endif  // VOK_BENCHMARKS_RENDERING_CALLS_H_
