#include "rendering/calls.h"

#include <vok/rulecheck/Converter.h>

#include <string>

#include "rendering/renderers.h"
#include "support/measure.h"

namespace benchmarks {

using namespace vok::rulecheck;

namespace {

struct Samples {
  Samples();

  Resource file;
  Resource page;
  Link link;
  Reference reference;
  Arg toReference;
  Arg toLink;
  Arg toList;
  Scalar integer;
  Scalar number;
};

Samples::Samples() {
  file.set_scheme(Resource::FILE);
  file.set_path("/proj/soc/rtl/crossbar/crossbar_12.v");
  file.set_fragment("L1207");
  page.set_scheme(Resource::HTTP);
  page.set_host("docs.example");
  page.set_path("/rules/TIMING-104.html");
  page.set_fragment("arbiter");
  link.set_link_text("Design rules");
  *link.mutable_url() = page;
  reference.set_type(Reference::PORT);
  reference.set_name("crossbar_12/wr_data");
  *reference.mutable_url() = file;
  *toReference.mutable_ref() = reference;
  *toLink.mutable_uri() = link;
  for (int i = 0; i < 4; ++i) {
    *toList.mutable_refs()->add_ref() = reference;
  }
  integer.set_int_val(1024);
  integer.set_units("bits");
  number.set_double_val(350.25);
  number.set_units("MHz");
}

const Samples& samples() {
  static const Samples made;
  return made;
}

template <typename Call>
void measureCall(const std::string& name, Call call) {
  measure(name, {1}, [call] {
    std::string text = call();
    benchmark::DoNotOptimize(text);
  });
}

// The least that a call can cost: one allocation and one copy of its text.
void measureFloor(const std::string& name, const std::string& text) {
  measureCall(name, [text] { return std::string(text.data(), text.size()); });
}

// Calls add(name, call) for each of the calls.
template <typename Renderer, typename Add>
void forEachCall(Add add) {
  const Samples& s = samples();
  add("toHtml(Arg) of a reference", [&s] { return Renderer::toHtml(s.toReference); });
  add("toHtml(Arg) of a link", [&s] { return Renderer::toHtml(s.toLink); });
  add("toHtml(Arg) of four references", [&s] { return Renderer::toHtml(s.toList); });
  add("toHtml(Link)", [&s] { return Renderer::toHtml(s.link); });
  add("toHtml(Reference)", [&s] { return Renderer::toHtml(s.reference); });
  add("toHtml(Resource)", [&s] { return Renderer::toHtml(s.file, s.link.link_text()); });
  add("href of a file", [&s] { return Renderer::href(s.file); });
  add("href of a page", [&s] { return Renderer::href(s.page); });
  add("toString(Scalar) of an integer", [&s] { return Renderer::toString(s.integer); });
  add("toString(Scalar) of a double", [&s] { return Renderer::toString(s.number); });
  add("toString(Reference)", [&s] { return Renderer::toString(s.reference); });
  add("toString(Severity)", [] { return Renderer::toString(Violation::SEV_CRITICAL_WARNING); });
}

template <typename Renderer>
void registerRenderer(const std::string& who) {
  forEachCall<Renderer>(
      [&who](const std::string& name, auto call) { measureCall(name + "/" + who, call); });
}

}  // namespace

void registerCalls() {
  registerRenderer<Converter>("Converter");
  registerRenderer<Format>("{fmt}");
  registerRenderer<Concatenation>("concatenation");
  registerRenderer<Streams>("string streams");
  forEachCall<Converter>(
      [](const std::string& name, auto call) { measureFloor(name + "/one copy", call()); });
}

}  // namespace benchmarks
