// SPDX-License-Identifier: Apache-2.0

// The inputs of stream_fuzzer that a fuzzer makes of others.

#include <vok/rulecheck/RuleService.pb.h>

#include <string>
#include <vector>

#include "mutation.h"
#include "stream_input.h"

namespace {

using fuzz::Mutation;
using vok::rulecheck::Request;
using vok::rulecheck::RuleSpecMap;

// Most of them mean something to the server, or to what surrounds it.
const fuzz::Words words = {
    {"", {"", "a", "%1 %% %2", "a\nb", "\xff", std::string("\0", 1), "unprintable"}},
    {"DynamicCategoryValuesEntry.key", {"waiver", "waiver", "waiver", "2", "2", "3", "1", "x"}},
    {"host", {"", "localhost", "h"}},
    {"key", {"W", "W", "R", "V", "", std::string(256, 'k')}},
    {"path",
     {"out.pb", "out.json", "out.txt", "rules.pb", "rules.json", "rules.txtpb", "/broken.pb", "a"}},
    {"pattern", {"", "*", "?", "W", "W*"}},
    {"regex", {"", ".", "W|R", "[", "(a*)*b"}},
    {"rule_key", {"W", "W", "W", "R", "R", "V", ""}},
    {"session_uuid", {"s", "s", "s", "s", "t", "uuid-1", ""}},
    {"token", {"secret", "secret", "", "other"}},
    {"uuid", {"s", "s", "s", "s", "t", "uuid-1", ""}},
};

std::vector<std::string> framesOf(const std::string& stream) {
  std::vector<std::string> frames;
  std::size_t position = 0;
  while (position < stream.size()) {
    const auto frame = fuzz::readFrame(stream, &position);
    if (!frame) {
      break;
    }
    frames.push_back(*frame);
  }
  return frames;
}

std::string streamOf(const std::vector<std::string>& frames) {
  std::string stream;
  for (const std::string& frame : frames) {
    fuzz::appendFrame(frame, &stream);
  }
  return stream;
}

std::string newRequest(Mutation* mutation) {
  Request request;
  const int type = 1 + static_cast<int>(mutation->below(15));
  request.set_type(static_cast<Request::RequestType>(type));
  const int number = type == Request::STOP_SERVER ? Request::kExchangeTokenFieldNumber : type + 1;
  auto* body = request.GetReflection()->MutableMessage(
      &request, Request::descriptor()->FindFieldByNumber(number));
  mutation->fill(body);
  mutation->complete(&request);
  return request.SerializePartialAsString();
}

// Leaves bytes that are no such message to the mutation of bytes.
template <typename Message>
void changeMessage(std::string* bytes, Mutation* mutation) {
  Message message;
  if (mutation->oneIn(10) || !message.ParsePartialFromString(*bytes)) {
    mutation->change(bytes);
    return;
  }
  mutation->change(&message);
  if (!mutation->oneIn(10)) {
    mutation->complete(&message);
  }
  *bytes = message.SerializePartialAsString();
}

void changeFrames(std::vector<std::string>* frames, Mutation* mutation) {
  if (frames->empty()) {
    frames->emplace_back();
  }
  const std::size_t index = mutation->below(frames->size());
  const auto at = frames->begin() + static_cast<std::ptrdiff_t>(index);
  switch (mutation->below(8)) {
    case 0: frames->erase(at); return;
    case 1: frames->insert(at, std::string(*at)); return;
    case 2: std::swap(*at, frames->back()); return;
    case 3:
    case 4: frames->insert(at + 1, newRequest(mutation)); return;
    default: break;
  }
  if (index == 0) {
    changeMessage<RuleSpecMap>(&*at, mutation);
  } else {
    changeMessage<Request>(&*at, mutation);
  }
}

}  // namespace

extern "C" std::size_t LLVMFuzzerCustomMutator(std::uint8_t* data, std::size_t size,
                                               std::size_t maxSize, unsigned seed) {
  Mutation mutation(seed, words);
  if (mutation.oneIn(20)) {
    return LLVMFuzzerMutate(data, size, maxSize);
  }
  auto frames = framesOf(std::string(reinterpret_cast<const char*>(data), size));
  changeFrames(&frames, &mutation);
  return fuzz::put(streamOf(frames), data, size, maxSize);
}
