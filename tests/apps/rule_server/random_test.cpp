// Requests with anything in them: each has exactly one well-formed answer.

#include <google/protobuf/unknown_field_set.h>
#include <gtest/gtest.h>

#include <limits>
#include <random>
#include <string>
#include <vector>

#include "support/messages.h"
#include "test_server.h"

namespace tests {
namespace {

using google::protobuf::FieldDescriptor;
using google::protobuf::Message;
using google::protobuf::Reflection;
using vok::rulecheck::Request;

// Fills messages at random, from a fixed seed.
class Filler {
 public:
  // One field in so many is left out.
  Filler(unsigned seed, int leaveOutOneIn) : random_(seed), leaveOutOneIn_(leaveOutOneIn) {}

  Request request() {
    Request request;
    const int type = between(0, 15);
    if (type != 0) {
      request.set_type(static_cast<Request::RequestType>(type));
    }
    const int body = type == Request::STOP_SERVER ? Request::kExchangeTokenFieldNumber : type + 1;
    if (type != 0 && !oneIn(20)) {
      fillField(&request, Request::descriptor()->FindFieldByNumber(body));
    }
    if (oneIn(20)) {
      fillField(&request, Request::descriptor()->FindFieldByNumber(between(2, 15)));
    }
    return request;
  }

 private:
  int between(int low, int high) { return std::uniform_int_distribution<int>(low, high)(random_); }
  bool oneIn(int count) { return between(1, count) == 1; }

  // Mostly words that mean something to the server.
  std::string text() {
    static const std::vector<std::string> words = {
        "s", "W",     "P",        "R",      "secret", "waiver",    "2",      "1",  "-2147483648",
        "",  "r.txt", "out.pb",   "o.json", "o.txt",  "/broken",   "*",      "?",  "W*",
        "[", "(a|b)", "\xff\xfe", "%1%%%2", "a\nb",   "../../etc", "(a*)*b", "^$", "\\"};
    if (oneIn(50)) {
      return std::string(100000, static_cast<char>(between(0, 255)));
    }
    return words[static_cast<std::size_t>(between(0, static_cast<int>(words.size()) - 1))];
  }

  void fill(Message* message) {
    const auto* descriptor = message->GetDescriptor();
    for (int i = 0; i < descriptor->field_count(); ++i) {
      if (!oneIn(leaveOutOneIn_)) {
        fillField(message, descriptor->field(i));
      }
    }
    if (oneIn(20)) {
      message->GetReflection()->MutableUnknownFields(message)->AddVarint(between(1, 30), 99);
    }
  }

  void fillField(Message* message, const FieldDescriptor* field) {
    if (!field->is_repeated()) {
      setField(message, field);
      return;
    }
    for (int count = between(0, 3); count > 0; --count) {
      addField(message, field);
    }
  }

  void setField(Message* message, const FieldDescriptor* field) {
    const Reflection* reflection = message->GetReflection();
    switch (field->cpp_type()) {
      case FieldDescriptor::CPPTYPE_MESSAGE:
        fill(reflection->MutableMessage(message, field));
        return;
      case FieldDescriptor::CPPTYPE_STRING: reflection->SetString(message, field, text()); return;
      case FieldDescriptor::CPPTYPE_INT32: reflection->SetInt32(message, field, number()); return;
      case FieldDescriptor::CPPTYPE_INT64:
        reflection->SetInt64(message, field, -4000000000 * number());
        return;
      case FieldDescriptor::CPPTYPE_UINT32:
        reflection->SetUInt32(message, field, static_cast<unsigned>(number()));
        return;
      case FieldDescriptor::CPPTYPE_DOUBLE:
        reflection->SetDouble(
            message, field, oneIn(3) ? std::numeric_limits<double>::quiet_NaN() : number() * 1e300);
        return;
      case FieldDescriptor::CPPTYPE_BOOL: reflection->SetBool(message, field, oneIn(2)); return;
      case FieldDescriptor::CPPTYPE_ENUM:
        reflection->SetEnum(
            message, field,
            field->enum_type()->value(between(0, field->enum_type()->value_count() - 1)));
        return;
      default: FAIL() << "no such field in the protocol";
    }
  }

  void addField(Message* message, const FieldDescriptor* field) {
    const Reflection* reflection = message->GetReflection();
    if (field->cpp_type() == FieldDescriptor::CPPTYPE_STRING) {
      reflection->AddString(message, field, text());
    } else {
      fill(reflection->AddMessage(message, field));
    }
  }

  int number() { return oneIn(2) ? between(-3, 3) : between(-2147483647, 2147483647); }

  std::mt19937 random_;
  int leaveOutOneIn_;
};

// What a transport would do with the request: nothing is lost on the way.
Request overTheWire(const Request& request) {
  Request received;
  EXPECT_TRUE(received.ParsePartialFromString(bytesOf(request)));
  return received;
}

void sendMany(unsigned seed, int leaveOutOneIn) {
  SCOPED_TRACE("seed " + std::to_string(seed));
  TestServer server;
  server.files.contents["r.txt"] = "hashmap { key: 'X' value { key: 'X' full_name: 'f' } }";
  server.prepare({kStart, kRule, kPlannedRule, kReadOnlyRule});
  Filler filler(seed, leaveOutOneIn);
  for (int i = 0; i < 500 && !server.server.stopped(); ++i) {
    server.ask(overTheWire(filler.request()));
    if (testing::Test::HasFailure()) {
      FAIL() << "request " << i;
    }
  }
  if (!server.server.stopped()) {
    server.result();
  }
}

TEST(RandomRequests, HaveOneWellFormedAnswer) {
  for (unsigned seed = 1; seed <= 20; ++seed) {
    sendMany(seed, 2);
  }
}

TEST(RandomRequests, ThatAreAlmostCompleteHaveOneWellFormedAnswer) {
  for (unsigned seed = 101; seed <= 120; ++seed) {
    sendMany(seed, 1000);
  }
}

// The random requests are of use only if a good part of them gets through.
TEST(RandomRequests, ReachEachKindOfResponse) {
  TestServer server;
  server.prepare({kStart, kRule});
  Filler filler(7, 1000);
  std::vector<int> counts(7);
  for (int i = 0; i < 5000; ++i) {
    Request request = filler.request();
    if (request.type() != Request::STOP_SERVER) {
      ++counts[static_cast<std::size_t>(server.ask(overTheWire(request)).type())];
    }
  }
  for (std::size_t type = 0; type < counts.size(); ++type) {
    EXPECT_GT(counts[type], 0) << "responses of type " << type;
  }
}

TEST(RandomRequests, MayBeAnyBytes) {
  std::mt19937 random(1);
  TestServer server;
  server.prepare({kStart, kRule});
  std::uniform_int_distribution<int> byte(0, 255);
  std::uniform_int_distribution<int> length(0, 40);
  for (int i = 0; i < 2000; ++i) {
    std::string bytes(static_cast<std::size_t>(length(random)), ' ');
    for (char& c : bytes) {
      c = static_cast<char>(byte(random));
    }
    Request request;
    static_cast<void>(request.ParsePartialFromString(bytes));
    server.ask(request);
  }
}

}  // namespace
}  // namespace tests
