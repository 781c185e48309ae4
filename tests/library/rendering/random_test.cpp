// SPDX-License-Identifier: Apache-2.0

// Random arguments: lists are their members joined, and every call keeps the
// promise on allocations.

#include <gtest/gtest.h>

#include <cmath>
#include <cstdint>
#include <random>
#include <string>

#include "rendering/counted_converter.h"
#include "support/messages.h"

namespace {

using Converter = tests::CountedConverter;
using namespace vok::rulecheck;

class RandomMessages {
 public:
  void fill(Arg* arg) {
    if (oneIn(3))
      fill(arg->mutable_ref());
    if (oneIn(3))
      fill(arg->mutable_uri());
    if (oneIn(2))
      fill(arg->mutable_refs());
    if (oneIn(2))
      fill(arg->mutable_uris());
    if (oneIn(3))
      fill(arg->mutable_scalar());
    if (oneIn(3))
      arg->set_string_val(text());
  }

  void fill(RefList* list) {
    for (unsigned count = below(6); count > 0; --count)
      fill(list->add_ref());
  }

  void fill(Links* list) {
    for (unsigned count = below(6); count > 0; --count)
      fill(list->add_uri());
  }

  void fill(Reference* reference) {
    if (oneIn(2))
      reference->set_type(static_cast<Reference_RefType>(below(29)));
    if (oneIn(3))
      reference->set_name(text());
    if (oneIn(2))
      reference->set_id(static_cast<int>(random_()) >> below(32));
    if (oneIn(3))
      reference->set_uuid(text());
    if (oneIn(2))
      fill(reference->mutable_url());
  }

  void fill(Link* link) {
    if (oneIn(2))
      link->set_link_text(text());
    if (oneIn(2))
      fill(link->mutable_url());
  }

  void fill(Resource* resource) {
    if (!oneIn(8))
      resource->set_scheme(static_cast<Resource_Scheme>(below(7)));
    if (oneIn(2))
      resource->set_host(text());
    if (oneIn(2))
      resource->set_port(static_cast<int>(random_()) >> below(32));
    if (oneIn(2))
      resource->set_path(text());
    if (oneIn(2))
      resource->set_query(text());
    if (oneIn(2))
      resource->set_fragment(text());
    if (oneIn(2))
      resource->set_media_type(oneIn(2) ? "text/html" : text());
    if (oneIn(2))
      resource->set_encoding(text());
    if (oneIn(2))
      resource->set_data(text());
  }

  void fill(Scalar* scalar) {
    if (oneIn(3))
      scalar->set_string_val(text());
    if (oneIn(3))
      scalar->set_int_val(static_cast<std::int64_t>(random_()) >> below(64));
    if (oneIn(3))
      scalar->set_double_val(std::ldexp(static_cast<double>(random_()), -40));
    if (oneIn(3))
      scalar->set_address(text());
    if (oneIn(2))
      scalar->set_units(text());
  }

 private:
  unsigned below(unsigned limit) { return static_cast<unsigned>(random_() % limit); }
  bool oneIn(unsigned chances) { return below(chances) == 0; }

  std::string text() {
    std::string text(oneIn(20) ? below(1000) : below(40), ' ');
    for (char& c : text)
      c = static_cast<char>(' ' + below(95));
    return text;
  }

  std::mt19937_64 random_{20260106};
};

template <typename List>
std::string joined(const List& list) {
  std::string html;
  for (const auto& member : list)
    html += (&member == &*list.begin() ? "" : ",") + Converter::toHtml(member);
  return html;
}

std::string htmlOfFirstField(const Arg& arg) {
  if (arg.has_ref())
    return Converter::toHtml(arg.ref());
  if (arg.has_uri())
    return Converter::toHtml(arg.uri());
  if (arg.has_refs())
    return joined(arg.refs().ref());
  if (arg.has_uris())
    return joined(arg.uris().uri());
  if (arg.has_string_val())
    return arg.string_val();
  Arg scalar;
  *scalar.mutable_scalar() = arg.scalar();
  return Converter::toHtml(scalar);
}

TEST(RandomArguments, AreTheirFirstFieldWithListsJoined) {
  RandomMessages random;
  for (int i = 0; i < 20000 && !HasFailure(); ++i) {
    Arg arg;
    random.fill(&arg);
    EXPECT_EQ(Converter::toHtml(arg), htmlOfFirstField(arg)) << tests::textOf(arg);
    (void)Converter::toString(arg.scalar());
    (void)Converter::toString(arg.ref());
  }
}

TEST(RandomReferences, AreAnchorsAroundTheirText) {
  RandomMessages random;
  for (int i = 0; i < 20000 && !HasFailure(); ++i) {
    Reference reference;
    random.fill(&reference);
    const std::string text = Converter::toString(reference);
    EXPECT_EQ(Converter::toHtml(reference),
              reference.has_url() ? Converter::toHtml(reference.url(), text) : text)
        << tests::textOf(reference);
  }
}

TEST(Pieces, OfEveryLengthAreCopiedWhole) {
  std::string piece;
  for (int length = 0; length < 300; ++length, piece += static_cast<char>('a' + length % 26)) {
    Link link;
    link.set_link_text(piece);
    link.mutable_url()->set_scheme(Resource::HTTP);
    link.mutable_url()->set_host(piece);
    EXPECT_EQ(Converter::toHtml(link), "<a href=\"http://" + piece + "\">" + piece + "</a>");
  }
}

}  // namespace
