// Which messages are complete, written by hand from the meaning of the messages.
// Descriptors are not asked what is required.

#ifndef VOK_TESTS_SUPPORT_COMPLETENESS_H_
#define VOK_TESTS_SUPPORT_COMPLETENESS_H_

#include <google/protobuf/message.h>

namespace tests {

// Whether all required fields are set in a message of the protocol and in the
// messages inside it.
bool isComplete(const google::protobuf::Message& message);

}  // namespace tests

#endif  // VOK_TESTS_SUPPORT_COMPLETENESS_H_
