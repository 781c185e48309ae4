// SPDX-License-Identifier: Apache-2.0

// The list of all message types, in declaration order, for templates.

#ifndef VOK_TESTS_SUPPORT_MESSAGE_TYPES_H_
#define VOK_TESTS_SUPPORT_MESSAGE_TYPES_H_

#include <vok/rulecheck/RuleService.pb.h>

namespace tests {

template <typename... Types>
struct TypeList {};

using MessageTypes = TypeList<
    vok::rulecheck::Resource, vok::rulecheck::Link, vok::rulecheck::Links, vok::rulecheck::Scalar,
    vok::rulecheck::Reference, vok::rulecheck::RefList, vok::rulecheck::StringList,
    vok::rulecheck::Arg, vok::rulecheck::ArgList, vok::rulecheck::MsgInst,
    vok::rulecheck::Affirmation, vok::rulecheck::AffirmationMap, vok::rulecheck::Violation,
    vok::rulecheck::ViolationMap, vok::rulecheck::RuleSpec, vok::rulecheck::RuleSpecMap,
    vok::rulecheck::Session, vok::rulecheck::SessionResult, vok::rulecheck::Version,
    vok::rulecheck::ErrorResponse, vok::rulecheck::StatusResponse, vok::rulecheck::EmptyMessage,
    vok::rulecheck::CreateAffirmation, vok::rulecheck::CreateViolation,
    vok::rulecheck::ExchangeToken, vok::rulecheck::GetSession, vok::rulecheck::GetRuleSpecs,
    vok::rulecheck::GetSessionResult, vok::rulecheck::GetVersion, vok::rulecheck::LoadRuleDataFile,
    vok::rulecheck::DumpRules, vok::rulecheck::ResetSession, vok::rulecheck::StartSession,
    vok::rulecheck::StopSession, vok::rulecheck::UpsertRuleSpec, vok::rulecheck::WriteReport,
    vok::rulecheck::Request, vok::rulecheck::Response>;

}  // namespace tests

#endif  // VOK_TESTS_SUPPORT_MESSAGE_TYPES_H_
