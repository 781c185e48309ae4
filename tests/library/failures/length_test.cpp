// SPDX-License-Identifier: Apache-2.0

// Texts that are longer than 4 GiB, than the memory that is left, or than what a string
// can hold: an exception at once, and nothing is leaked or changed.

#include <gtest/gtest.h>
#include <sys/mman.h>
#include <unistd.h>
#include <vok/rulecheck/Converter.h>

#include <functional>
#include <new>
#include <stdexcept>
#include <string>

#include "support/allocations.h"

namespace {

using namespace vok::rulecheck;

constexpr std::size_t fourGiB = std::size_t{1} << 32;

// That many zero bytes, at least 1 GiB of them. They take no memory until they are
// written to, since the kernel gives pages that are zero when they are read.
std::string hugeText(std::size_t size) {
  std::string text;
  text.resize_and_overwrite(size, [](char* start, std::size_t length) {
    return madvise(start, length, MADV_DONTNEED) == 0 ? length : 0;
  });
  if (text.size() != size) {
    throw std::bad_alloc();
  }
  return text;
}

#ifndef LARGE_TEXT

// With 64 MiB of memory left.
std::string outcome(const std::function<std::string()>& render) {
  const auto outstanding = tests::outstandingAllocations();
  const char* thrown = nullptr;
  {
    const tests::AllocationLimit scope(std::size_t{1} << 26);
    try {
      return std::to_string(render().size()) + " bytes";
    } catch (const std::bad_alloc&) {
      thrown = "bad_alloc";
    } catch (const std::length_error&) {
      thrown = "length_error";
    }
  }
  EXPECT_EQ(tests::outstandingAllocations(), outstanding);
  return thrown;
}

// The lower 32 bits are those of a short text.
class Length : public testing::TestWithParam<std::size_t> {};

TEST_P(Length, BeyondFreeMemoryThrows) {
  Arg arg;
  Scalar& scalar = *arg.mutable_scalar();
  Reference reference;
  Link link;
  std::string text = hugeText(GetParam());
  scalar.mutable_string_val()->swap(text);
  EXPECT_EQ(outcome([&] { return Converter::toString(scalar); }), "bad_alloc");
  EXPECT_EQ(outcome([&] { return Converter::toHtml(arg); }), "bad_alloc");
  reference.mutable_uuid()->swap(*scalar.mutable_string_val());
  EXPECT_EQ(outcome([&] { return Converter::toString(reference); }), "bad_alloc");
  EXPECT_EQ(outcome([&] { return Converter::toHtml(reference); }), "bad_alloc");
  link.mutable_url()->set_scheme(Resource::FILE);
  link.mutable_link_text()->swap(*reference.mutable_uuid());
  EXPECT_EQ(outcome([&] { return Converter::toHtml(link.url(), link.link_text()); }), "bad_alloc");
  EXPECT_EQ(outcome([&] { return Converter::toHtml(link); }), "bad_alloc");
  link.mutable_url()->mutable_path()->swap(*link.mutable_link_text());
  EXPECT_EQ(outcome([&] { return Converter::href(link.url()); }), "bad_alloc");
  EXPECT_EQ(link.url().path().size(), GetParam());
}

INSTANTIATE_TEST_SUITE_P(Of, Length,
                         testing::Values(fourGiB - 2, fourGiB, fourGiB + 5, fourGiB * 16 + 5));

// No address space has room for as many different references as it takes to exceed what a
// string can hold, so the list has one of them many times.
TEST(Length, BeyondTheLimitOfAStringThrows) {
  Reference reference;
  try {
    *reference.mutable_name() = hugeText(std::size_t{1} << 45);
  } catch (const std::bad_alloc&) {
    GTEST_SKIP() << "ThreadSanitizer leaves no room for so long a text";
  }
  Arg arg;
  auto& list = *arg.mutable_refs()->mutable_ref();
  // std::string::max_size() is 2^63 - 1 from C++20 on, and less before.
  for (int i = 0; i <= 1 << 18; ++i) {
    list.UnsafeArenaAddAllocated(&reference);
  }
  EXPECT_EQ(outcome([&] { return Converter::toHtml(arg); }), "length_error");
  while (!list.empty()) {
    list.UnsafeArenaReleaseLast();
  }
}

#else

// Takes as much memory, and seconds.
TEST(LargeText, Over4GiBIsComplete) {
  if (sysconf(_SC_AVPHYS_PAGES) * sysconf(_SC_PAGESIZE) < long{9} << 30) {
    GTEST_SKIP() << "9 GiB of memory are needed";
  }
  // Zero bytes with a letter here and there, which shows if a part is missing.
  std::string text = hugeText(fourGiB + 12345);
  for (std::size_t i = 0; i < text.size(); i += (std::size_t{1} << 27) + 1) {
    text[i] = static_cast<char>('a' + i % 26);
  }
  text.back() = 'z';

  Link link;
  link.mutable_url()->set_scheme(Resource::FILE);
  link.mutable_url()->mutable_path()->swap(text);
  const std::string html = Converter::toHtml(link);
  const std::string start = "<a href=\"file:///";
  const std::string end = "\">link</a>";
  const std::string& path = link.url().path();
  ASSERT_EQ(html.size(), start.size() + path.size() + end.size());
  EXPECT_EQ(html.substr(0, start.size()), start);
  EXPECT_EQ(html.substr(html.size() - end.size()), end);
  // Not EXPECT_EQ, which would print the texts.
  EXPECT_TRUE(html.compare(start.size(), path.size(), path) == 0);
}

#endif

}  // namespace
