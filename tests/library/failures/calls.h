// Calls of all functions of the converter: what the tests of faults let fail.

#ifndef VOK_TESTS_LIBRARY_FAILURES_CALLS_H_
#define VOK_TESTS_LIBRARY_FAILURES_CALLS_H_

#include <google/protobuf/message.h>

#include <functional>
#include <memory>
#include <string>
#include <vector>

namespace tests {

struct Call {
  std::string name;
  std::shared_ptr<const google::protobuf::Message> message;  // null for a number
  std::function<std::string()> render;
};

// Calls with short and long texts, lists and numbers of every kind.
std::vector<Call> callsOfEveryFunction();

// Calls that render a double, as a part of a text or alone.
std::vector<Call> callsWithDoubles();

}  // namespace tests

#endif  // VOK_TESTS_LIBRARY_FAILURES_CALLS_H_
