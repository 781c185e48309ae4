// SPDX-License-Identifier: Apache-2.0

// Texts that are too long: longer than the memory that is left, or than what a
// string can hold. An exception comes out, at once, and nothing is leaked or
// changed. The lengths are such that 32 bits would not do, or 63.

#include <gtest/gtest.h>
#include <vok/rulecheck/Converter.h>

#include <new>
#include <stdexcept>
#include <string>

#include "huge_text.h"
#include "support/allocations.h"

namespace {

using vok::rulecheck::Arg;
using vok::rulecheck::Converter;
using vok::rulecheck::Link;
using vok::rulecheck::Reference;
using vok::rulecheck::RefList;
using vok::rulecheck::Resource;
using vok::rulecheck::Scalar;

constexpr std::size_t fourGiB = std::size_t{1} << 32;

// What came out of a call with 64 MiB of memory left.
template <typename Render>
std::string outcome(Render render) {
  const tests::AllocationLimit scope(std::size_t{1} << 26);
  try {
    return std::to_string(render().size()) + " bytes";
  } catch (const std::bad_alloc&) {
    return "bad_alloc";
  } catch (const std::length_error&) {
    return "length_error";
  }
}

template <typename Render>
void expectOutOfMemory(Render render) {
  const auto outstanding = tests::outstandingAllocations();
  EXPECT_EQ(outcome(render), "bad_alloc");
  EXPECT_EQ(tests::outstandingAllocations(), outstanding);
}

// Lengths whose lower 32 bits are those of a short text.
const std::size_t lengths[] = {fourGiB - 2, fourGiB, fourGiB + 5, fourGiB * 16 + 5};

TEST(Length, OfAScalarThatDoesNotFitIntoMemory) {
  for (const std::size_t length : lengths) {
    SCOPED_TRACE(length);
    Scalar scalar;
    *scalar.mutable_string_val() = tests::hugeText(length);
    expectOutOfMemory([&] { return Converter::toString(scalar); });
    EXPECT_EQ(scalar.string_val().size(), length);
  }
}

TEST(Length, OfAReferenceThatDoesNotFitIntoMemory) {
  for (const std::size_t length : lengths) {
    SCOPED_TRACE(length);
    Reference reference;
    *reference.mutable_uuid() = tests::hugeText(length);
    expectOutOfMemory([&] { return Converter::toString(reference); });
    expectOutOfMemory([&] { return Converter::toHtml(reference); });
    EXPECT_EQ(reference.uuid().size(), length);
  }
}

TEST(Length, OfAnAnchorThatDoesNotFitIntoMemory) {
  for (const std::size_t length : lengths) {
    SCOPED_TRACE(length);
    Link link;
    link.mutable_url()->set_scheme(Resource::FILE);
    *link.mutable_url()->mutable_path() = tests::hugeText(length);
    expectOutOfMemory([&] { return Converter::href(link.url()); });
    expectOutOfMemory([&] { return Converter::toHtml(link.url(), "text"); });
    expectOutOfMemory([&] { return Converter::toHtml(link); });
    link.mutable_url()->clear_path();
    *link.mutable_link_text() = tests::hugeText(length);
    expectOutOfMemory([&] { return Converter::toHtml(link.url(), link.link_text()); });
    expectOutOfMemory([&] { return Converter::toHtml(link); });
    EXPECT_EQ(link.link_text().size(), length);
  }
}

TEST(Length, OfAListThatDoesNotFitIntoMemory) {
  Arg argument;
  for (int i = 0; i < 2; ++i) {
    *argument.mutable_refs()->add_ref()->mutable_name() = tests::hugeText(fourGiB / 2);
  }
  expectOutOfMemory([&] { return Converter::toHtml(argument); });
  EXPECT_EQ(argument.refs().ref_size(), 2);
}

// A list that has one reference many times. No address space has room for as many
// different ones as it takes to exceed what a string can hold.
class RepeatedReference {
 public:
  RepeatedReference(Reference* reference, int count) : list_(argument_.mutable_refs()) {
    for (int i = 0; i < count; ++i) {
      list_->mutable_ref()->UnsafeArenaAddAllocated(reference);
    }
  }
  ~RepeatedReference() {
    while (list_->ref_size() > 0) {
      list_->mutable_ref()->UnsafeArenaReleaseLast();
    }
  }
  RepeatedReference(const RepeatedReference&) = delete;
  RepeatedReference& operator=(const RepeatedReference&) = delete;

  const Arg& argument() const { return argument_; }

 private:
  Arg argument_;
  RefList* list_;
};

TEST(Length, OfAListThatDoesNotFitIntoAString) {
  const std::size_t length = std::size_t{1} << 45;
  // std::string::max_size() is 2^63 - 1 from C++20 on, and less before.
  const std::size_t count = (std::size_t{1} << 63) / length + 1;
  Reference reference;
  try {
    *reference.mutable_name() = tests::hugeText(length);
  } catch (const std::bad_alloc&) {
    GTEST_SKIP() << "ThreadSanitizer leaves no room for so long a text";
  }
  const RepeatedReference list(&reference, static_cast<int>(count));
  const auto outstanding = tests::outstandingAllocations();
  EXPECT_EQ(outcome([&] { return Converter::toHtml(list.argument()); }), "length_error");
  EXPECT_EQ(tests::outstandingAllocations(), outstanding);
  EXPECT_EQ(reference.name().size(), length);
}

}  // namespace
