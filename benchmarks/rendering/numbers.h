#ifndef VOK_BENCHMARKS_RENDERING_NUMBERS_H_
#define VOK_BENCHMARKS_RENDERING_NUMBERS_H_

namespace benchmarks {

// Doubles, against snprintf.
void registerNumbers();

}  // namespace benchmarks

#endif  // VOK_BENCHMARKS_RENDERING_NUMBERS_H_
