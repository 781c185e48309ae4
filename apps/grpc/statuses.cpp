// SPDX-License-Identifier: Apache-2.0

#include "grpc/statuses.h"

#include <cstddef>

#include "rule_server/errors.h"

namespace rule_grpc {
namespace {

using grpc::StatusCode;
using rule_server::ErrorCode;

StatusCode codeFor(ErrorCode code) {
  switch (code) {
    case ErrorCode::ServerStopped: return StatusCode::UNAVAILABLE;
    case ErrorCode::TokenRefused: return StatusCode::UNAUTHENTICATED;
    case ErrorCode::SessionUnknown:
    case ErrorCode::RuleUnknown: return StatusCode::NOT_FOUND;
    case ErrorCode::SessionExists: return StatusCode::ALREADY_EXISTS;
    case ErrorCode::SessionStopped:
    case ErrorCode::RulePlanned:
    case ErrorCode::RuleReadOnly:
    case ErrorCode::FileAccess: return StatusCode::FAILED_PRECONDITION;
    case ErrorCode::LimitExceeded: return StatusCode::RESOURCE_EXHAUSTED;
    case ErrorCode::BodyIncomplete:
    case ErrorCode::RuleInvalid:
    case ErrorCode::CategoryRefused:
    case ErrorCode::FileAddress:
    case ErrorCode::FileFormat:
    case ErrorCode::SelectionInvalid: return StatusCode::INVALID_ARGUMENT;
    // A method has made the envelope: what is wrong with it is the method's fault.
    case ErrorCode::TypeMissing:
    case ErrorCode::BodyMismatch:
    case ErrorCode::BodyMissing:
    case ErrorCode::Internal: return StatusCode::INTERNAL;
  }
  return StatusCode::INTERNAL;
}

}  // namespace

grpc::Status refusal(StatusCode code, const std::string& text) {
  constexpr std::size_t kLongest = 1000;
  return {code, text.size() > kLongest ? text.substr(0, kLongest) + "..." : text};
}

grpc::Status statusOf(const vok::rulecheck::ErrorResponse& error) {
  return refusal(codeFor(static_cast<ErrorCode>(error.code())), error.msg());
}

}  // namespace rule_grpc
