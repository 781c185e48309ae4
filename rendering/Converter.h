// Copyright 2026 The vok_rulecheck authors
// SPDX-License-Identifier: Apache-2.0
//
// Display words, plain text, addresses and HTML fragments for protocol values.
//
//   Violation_Severity  --> "critical warning"                     toString
//   Scalar              --> "350.250000 MHz"                       toString
//   Reference           --> "kernel #4"                            toString
//   Resource            --> "https://host.example:8443/report"     href
//   Link, Reference     --> "<a href="file:///top.v">top.v</a>"    toHtml
//   Arg                 --> whichever of these it holds            toHtml
//
// NOTHING IS ESCAPED, quoted or trimmed, by any function. A double quote in an
// address ends the href attribute early, and markup in a name stays markup:
//
//   Reference r;  r.set_name("<script>");
//   Converter::toHtml(r)                     // "<script>"
//
// Before text of unknown origin goes into a page, the caller must
//   1. work on a copy of the message,
//   2. replace & < > " ' in every string of the copy, including those inside
//      resources, with character references, and
//   3. drop or rewrite resources whose scheme the page must not link to
//      (Resource::FTP, IRC, MAILTO and unlisted schemes have no prefix, so their
//      host begins the address: a host "javascript:..." is a script),
// and render the copy, as apps/rulecheck does.
//
// Rules that hold for every function:
//   * A field counts as set when its presence test says so, never by content: a
//     string set to "" and a number set to 0 are set. Unset fields are skipped.
//   * Every input is accepted, including incomplete messages and unlisted enum
//     numbers. Parsing never stores an unlisted number, so a message holds one
//     only if a program has set it, and generated setters assert that the number
//     is listed: resource.set_scheme(static_cast<Resource_Scheme>(7)) aborts in
//     a program compiled without NDEBUG and stores 7 in one compiled with it.
//   * Errors: none, except that std::bad_alloc and std::length_error of the
//     string library pass through; nothing is leaked or changed then.
//   * Strings are copied by length, byte for byte, zero bytes included.
//   * Integers are plain decimal digits under every locale. Doubles are what
//     printf's "%f" gives in the calling thread at the moment of the call: six
//     digits after the decimal point of the current numeric locale (setlocale
//     and uselocale), rounded in the current rounding mode.
//   * A call allocates memory at most once, and not at all where the result fits
//     into a string object itself (15 bytes with libstdc++).
//   * No function keeps state. Any number of threads may call any of them at
//     once, even on one message, provided that no thread modifies that message
//     meanwhile and, if it holds a double, none calls setlocale, which POSIX leaves
//     undefined. Threads may call uselocale at any time.

#ifndef VOK_RULECHECK_CONVERTER_H_
#define VOK_RULECHECK_CONVERTER_H_

#include <string>

#include <vok/rulecheck/RuleService.pb.h>

namespace vok {
namespace rulecheck {

// All functions are static. The rules at the top of this file hold for each.
class Converter {
 public:
  // Returns the display word of a scheme: "data", "file", "ftp", "http",
  // "https", "irc" or "mailto"; "unknown" for any number that is not listed.
  //
  //   toString(Resource::HTTPS)                        "https"
  //   toString(static_cast<Resource_Scheme>(-1))       "unknown"
  static std::string toString(Resource_Scheme scheme);

  // Returns the display word of a kind of design object; "<undefined>" for any
  // number that is not listed. Words, not value names: some are two words, some
  // are upper-case.
  //
  //   toString(Reference::DATAMOVER)                   "data mover"
  //   toString(Reference::READ_OP)                     "READ OP"
  //   toString(static_cast<Reference_RefType>(29))     "<undefined>"
  static std::string toString(Reference_RefType type);

  // Returns the display word of a severity; "<undefined>" for any number that
  // is not listed and for SEV_UNKNOWN, which has no word of its own.
  //
  //   toString(Violation::SEV_CRITICAL_WARNING)        "critical warning"
  //   toString(Violation::SEV_UNKNOWN)                 "<undefined>"
  static std::string toString(Violation_Severity severity);

  // Returns the value, the first set one of string_val, int_val, double_val and
  // address, followed by a space and the units if these are set and the address
  // is not: an address suppresses the units even if another value is shown.
  // Only units set: a space and the units. Nothing set: "".
  //
  //   {int_val: -42, units: "MHz"}                     "-42 MHz"
  //   {double_val: 1.5}                                "1.500000"
  //   {string_val: "", int_val: 7, units: "x"}         " x"
  //   {int_val: 3, address: "0x10", units: "B"}        "3"
  //   {units: "ns"}                                    " ns"
  static std::string toString(const Scalar& scalar);

  // Returns the name if set, and nothing else. Otherwise the kind word of the
  // type, followed by " #" and the id if set, or else by a space and the uuid if
  // set. An unset type reads as "array".
  //
  //   {type: LOOP, name: "main", id: 9}                "main"
  //   {type: KERNEL, id: 4, uuid: "ab-12"}             "kernel #4"
  //   {type: LOOP, uuid: "ab-12"}                      "loop ab-12"
  //   {}                                               "array"
  static std::string toString(const Reference& reference);

  // Returns the address of a resource: its scheme's prefix ("data:", "file://",
  // "http://", "https://", none for any other scheme) and then
  //   for DATA: media_type, ";" encoding, "," data, each if set; the ";" is
  //     written only between a media type and an encoding;
  //   for any other scheme: host, ":" port, path (with a "/" put before it if it
  //     has none), "?" query, "#" fragment, each if set; an empty path writes
  //     nothing, and a port is written even if it is 0 or the scheme's default.
  // Scheme unset: "", whatever else is set.
  //
  //   {scheme: HTTP, host: "h", port: 80, path: "x"}   "http://h:80/x"
  //   {scheme: FILE, path: "/tmp/a", fragment: "L7"}   "file:///tmp/a#L7"
  //   {scheme: MAILTO, host: "a@b.example"}            "a@b.example"
  //   {scheme: DATA, encoding: "base64", data: "aGk="} "data:base64,aGk="
  static std::string href(const Resource& resource);

  // Returns an anchor around anchorText that points to href(resource). A DATA
  // resource whose media_type is exactly "text/html" gives its data instead.
  // Scheme unset: "", and the text is dropped.
  //
  //   {scheme: FILE, path: "/a"}, "A"                  "<a href="file:///a">A</a>"
  //   {scheme: DATA, media_type: "text/html",
  //    data: "<b>hi</b>"}, "A"                         "<b>hi</b>"
  //   {host: "h"}, "A"                                 ""
  static std::string toHtml(const Resource& resource, const std::string& anchorText);

  // Returns the url as the function above renders it, around the link_text, or
  // else the url's media_type, or else "link". Url unset: the link_text alone;
  // link_text unset too: "<empty>". docgen_filename is ignored.
  //
  //   {link_text: "R", url: {scheme: FILE, path: "r"}} "<a href="file:///r">R</a>"
  //   {url: {scheme: FILE, path: "r"}}                 "<a href="file:///r">link</a>"
  //   {link_text: "R", url: {path: "r"}}               ""  (no scheme)
  //   {link_text: "R"}                                 "R"
  static std::string toHtml(const Link& link);

  // Returns toString(reference), inside the anchor of its url if that is set.
  //
  //   {type: PORT, name: "clk"}                        "clk"
  //   {type: PORT, name: "clk",
  //    url: {scheme: FILE, path: "/t.v"}}              "<a href="file:///t.v">clk</a>"
  static std::string toHtml(const Reference& reference);

  // Returns the first set field of ref, uri, refs, uris, string_val and scalar,
  // rendered: references and links as above, lists as their members joined by
  // "," (an empty list is ""), string_val as it is, and of the scalar the first
  // set value of int_val, double_val, string_val and address, without units
  // (toString(const Scalar&) has another order). Nothing set: "".
  //
  //   {refs: {ref: {type: PORT, name: "a"},
  //           ref: {type: LOOP, id: 2}}}               "a,loop #2"
  //   {string_val: "s", scalar: {int_val: 1}}          "s"
  //   {scalar: {int_val: -42, string_val: "s",
  //             units: "ns"}}                          "-42"
  static std::string toHtml(const Arg& arg);
};

}  // namespace rulecheck
}  // namespace vok

#endif  // VOK_RULECHECK_CONVERTER_H_
