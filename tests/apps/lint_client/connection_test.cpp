// Requests and responses as bytes.

#include "lint_client/connection.h"

#include <gmock/gmock.h>
#include <gtest/gtest.h>

#include <stdexcept>
#include <string>

#include "common/framing.h"
#include "support/messages.h"

namespace {

using lint_client::Connection;
using vok::rulecheck::Request;
using vok::rulecheck::Response;

const char* const kGetVersion = "type: GET_VERSION get_version { }";

rule_server::Server serverWithoutSurroundings() {
  return rule_server::Server(rule_server::Environment());
}

TEST(Connections, CarryBytes) {
  auto server = serverWithoutSurroundings();
  std::string sent;
  std::string received;
  Connection connection(lint_client::framed([&](const std::string& bytes) {
    sent = bytes;
    received = lint_client::serve(server, bytes);
    return received;
  }));
  const Response response = connection.call(tests::parse<Request>(kGetVersion));
  EXPECT_EQ(4u, response.version().minor());
  EXPECT_EQ("04 08 07 42 00", tests::toHex(sent));
  EXPECT_EQ("0a 08 05 3a 06 08 01 10 04 18 00", tests::toHex(received));
  connection.call(tests::parse<Request>(kGetVersion));
  EXPECT_EQ(2u, connection.requests());
  EXPECT_EQ(10u, connection.bytesSent());
  EXPECT_EQ(22u, connection.bytesReceived());
}

TEST(Connections, FailWithTheServersError) {
  auto server = serverWithoutSurroundings();
  Connection connection(lint_client::framed(
      [&server](const std::string& bytes) { return lint_client::serve(server, bytes); }));
  try {
    connection.call(tests::parse<Request>("type: GET_SESSION get_session { session_uuid: 'x' }"));
    FAIL();
  } catch (const std::runtime_error& error) {
    EXPECT_STREQ("the server answered: there is no session \"x\"", error.what());
  }
}

TEST(Connections, FailOnIncompleteRequests) {
  Connection connection([](const Request&) -> lint_client::Exchange {
    ADD_FAILURE() << "the request was sent";
    return {};
  });
  EXPECT_THROW(connection.call(Request()), std::runtime_error);
}

TEST(Connections, FailOnAnswersThatAreNotOneResponse) {
  std::string version;
  ASSERT_TRUE(apps::appendFramed(
      tests::parse<Response>("type: VERSION version { major: 1 minor: 4 patch: 0 }"), &version));
  for (const std::string& answer :
       {std::string(), version.substr(0, version.size() - 1), version + version, version + "x",
        std::string("\x02\x08\x63", 3), std::string("\x01\xff", 2)}) {
    Connection connection(lint_client::framed([&answer](const std::string&) { return answer; }));
    EXPECT_THROW(connection.call(tests::parse<Request>(kGetVersion)), std::runtime_error)
        << tests::toHex(answer);
  }
}

TEST(Servers, AnswerEachRequestOfAStream) {
  auto server = serverWithoutSurroundings();
  std::string requests;
  for (int i = 0; i < 3; ++i) {
    ASSERT_TRUE(apps::appendFramed(tests::parse<Request>(kGetVersion), &requests));
  }
  const std::string responses = lint_client::serve(server, requests);
  std::size_t position = 0;
  for (int i = 0; i < 3; ++i) {
    Response response;
    ASSERT_TRUE(apps::readFramed(responses, &position, &response));
    EXPECT_EQ(Response::VERSION, response.type());
  }
  EXPECT_EQ(responses.size(), position);
  EXPECT_EQ("", lint_client::serve(server, ""));
}

TEST(Servers, RefuseOtherBytes) {
  auto server = serverWithoutSurroundings();
  for (const std::string& bytes : {std::string("\x05", 1), std::string("\x01\x08", 2),
                                   std::string("\x00", 1), std::string(20, '\xff')}) {
    EXPECT_THROW(lint_client::serve(server, bytes), std::runtime_error) << tests::toHex(bytes);
  }
}

TEST(Servers, TakeRequestsOfOneMebibyteAndNoLongerOnes) {
  auto server = serverWithoutSurroundings();
  auto request = tests::parse<Request>("type: GET_SESSION get_session { session_uuid: '' }");
  // Two bytes are the type, and four each the tag and the length of the body and the uuid.
  for (const bool tooLong : {false, true}) {
    SCOPED_TRACE(tooLong);
    const std::size_t size = rule_server::kMaxRequestBytes + (tooLong ? 1 : 0);
    request.mutable_get_session()->set_session_uuid(std::string(size - 10, 'u'));
    ASSERT_EQ(size, request.ByteSizeLong());
    std::string bytes;
    ASSERT_TRUE(apps::appendFramed(request, &bytes));
    if (tooLong) {
      EXPECT_THROW(lint_client::serve(server, bytes), std::runtime_error);
    } else {
      EXPECT_NE("", lint_client::serve(server, bytes));
    }
  }
}

}  // namespace
