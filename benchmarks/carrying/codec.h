// The benchmarks of messages, to be registered by main(). A name is "what, operation/who".

#ifndef VOK_BENCHMARKS_CARRYING_CODEC_H_
#define VOK_BENCHMARKS_CARRYING_CODEC_H_

#include <memory>
#include <string>
#include <vector>

#include "measure.h"
#include "messages.h"

namespace benchmarks {

// The library's messages; and the same for results of other sizes.
void registerMessages();
void registerGrowth();

// Alternatives.
void registerProtobufC();
void registerProtozero();
void registerRapidJson();

template <typename Codec>
std::shared_ptr<Codec> parseAndCompare(const std::string& who, const std::string& source,
                                       const google::protobuf::Message& message) {
  auto parsed = std::make_shared<Codec>(source);
  typename Codec::Buffer written;
  parsed->write(&written);
  require(Codec::wireBytes(written) == bytesOf(message), who + " changes the content of a message");
  return parsed;
}

// Registers the benchmarks of a codec, which is a class template for a type of messages. A Codec
// has source(message), the input of its constructor, which parses. It writes itself into a Buffer,
// and wireBytes(buffer) are the bytes of the message that was written.
template <template <typename> class Codec>
void registerCodec(const std::string& who) {
  using Result = Codec<vok::rulecheck::SessionResult>;
  using Request = Codec<vok::rulecheck::Request>;

  const auto message = makeResult(resultViolations);
  const auto source = std::make_shared<std::string>(Result::source(message));
  measure("result, parse/" + who, {resultViolations}, [source] { const Result parsed(*source); });
  measure("result, serialize/" + who, {resultViolations},
          [result = parseAndCompare<Result>(who, *source, message)] {
            typename Result::Buffer written;
            result->write(&written);
          });

  const auto sources = std::make_shared<std::vector<std::string>>();
  const auto requests = std::make_shared<std::vector<std::shared_ptr<Request>>>();
  for (const auto& request : makeRequests()) {
    sources->push_back(Request::source(request));
    requests->push_back(parseAndCompare<Request>(who, sources->back(), request));
  }
  measure("requests, parse/" + who, {sources->size()}, [sources] {
    for (const std::string& each : *sources) {
      const Request parsed(each);
    }
  });
  measure("requests, serialize/" + who, {requests->size()},
          [requests, written = std::make_shared<typename Request::Buffer>()] {
            for (const auto& request : *requests) {
              request->write(written.get());
            }
          });
}

}  // namespace benchmarks

#endif  // VOK_BENCHMARKS_CARRYING_CODEC_H_
