#include <cstring>
#include <memory>
#include <string>
#include <vector>

#include "carrying/carriers.h"
#include "data/messages.h"
#include "support/measure.h"

namespace benchmarks {

// The bytes are copied, and that is all.
void registerMemory() {
  const std::string& result = resultBytes(resultViolations);
  const std::vector<std::string>& stream = requestBytes();
  const auto buffer = std::make_shared<std::vector<char>>(result.size());
  measure("result, parse/memcpy", {resultViolations}, [&result, buffer] {
    std::memcpy(buffer->data(), result.data(), result.size());
    benchmark::ClobberMemory();
  });
  measure("requests, parse/memcpy", {stream.size()}, [&stream, buffer] {
    for (const std::string& bytes : stream) {
      std::memcpy(buffer->data(), bytes.data(), bytes.size());
      benchmark::ClobberMemory();
    }
  });
}

}  // namespace benchmarks
