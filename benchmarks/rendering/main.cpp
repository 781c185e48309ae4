// SPDX-License-Identifier: Apache-2.0

// Benchmarks Converter against other styles of rendering: single calls, and the texts of findings.

#include <google/protobuf/text_format.h>
#include <vok/rulecheck/Converter.h>

#include <algorithm>
#include <cfenv>
#include <cstdio>
#include <cstdlib>
#include <random>
#include <string>
#include <vector>

#include "measure.h"
#include "messages.h"
#include "rendering/styles.h"
#include "support/plain_rendering.h"

namespace benchmarks {

using namespace vok::rulecheck;

namespace {

constexpr std::size_t hotFindings = 100;

const auto keepText = [](std::string text) { benchmark::DoNotOptimize(text); };

template <typename Message>
Message parse(const std::string& text) {
  Message message;
  require(google::protobuf::TextFormat::ParseFromString(text, &message), text);
  return message;
}

const std::string fileText =
    "scheme: FILE path: '/proj/soc/rtl/crossbar/crossbar_12.v' fragment: 'L1207' ";
const std::string pageText =
    "scheme: HTTP host: 'docs.example' path: '/rules/TIMING-104.html' fragment: 'arbiter' ";
const std::string linkText = "link_text: 'Design rules' url { " + pageText + "} ";
const std::string portText = "type: PORT name: 'crossbar_12/wr_data' url { " + fileText + "} ";
const std::string member = "ref { " + portText + "} ";

struct Samples {
  Resource file = parse<Resource>(fileText);
  Resource page = parse<Resource>(pageText);
  Link link = parse<Link>(linkText);
  Reference reference = parse<Reference>(portText);
  Arg toReference = parse<Arg>(member);
  Arg toLink = parse<Arg>("uri { " + linkText + "}");
  Arg toList = parse<Arg>("refs { " + member + member + member + member + "}");
  Scalar integer = parse<Scalar>("int_val: 1024 units: 'bits'");
  Scalar number = parse<Scalar>("double_val: 350.25 units: 'MHz'");
};

// Calls add(name, call) for each of the calls.
template <typename Renderer, typename Add>
void forEachCall(Add add) {
  static const Samples s;
  add("toHtml(Arg) of a reference", [] { return Renderer::toHtml(s.toReference); });
  add("toHtml(Arg) of a link", [] { return Renderer::toHtml(s.toLink); });
  add("toHtml(Arg) of four references", [] { return Renderer::toHtml(s.toList); });
  add("toHtml(Link)", [] { return Renderer::toHtml(s.link); });
  add("toHtml(Reference)", [] { return Renderer::toHtml(s.reference); });
  add("toHtml(Resource)", [] { return Renderer::toHtml(s.file, s.link.link_text()); });
  add("href of a file", [] { return Renderer::href(s.file); });
  add("href of a page", [] { return Renderer::href(s.page); });
  add("toString(Scalar) of an integer", [] { return Renderer::toString(s.integer); });
  add("toString(Scalar) of a double", [] { return Renderer::toString(s.number); });
}

// Calls use(text) for each of the ten texts that a report shows of a finding.
template <typename Renderer, typename Use>
void render(const Violation& finding, Use use) {
  const auto& arguments = finding.details().args().arg();
  const Link& page = arguments.Get(1).uri();
  use(Renderer::toString(finding.severity()));
  use(Renderer::toString(finding.actual_value()));
  use(Renderer::toString(finding.threshold_value()));
  use(Renderer::toString(arguments.Get(0).ref()));
  use(Renderer::href(page.url()));
  use(Renderer::toHtml(page.url(), finding.rule_key()));
  use(Renderer::toHtml(page));
  for (const Arg& argument : arguments) {
    use(Renderer::toHtml(argument));
  }
}

template <typename Renderer>
std::vector<std::string> textsOf(const Findings& findings) {
  std::vector<std::string> texts;
  forEachCall<Renderer>([&texts](const char*, auto call) { texts.push_back(call()); });
  for (const auto& finding : findings) {
    render<Renderer>(*finding, [&texts](std::string text) { texts.push_back(std::move(text)); });
  }
  return texts;
}

template <typename Renderer>
void renderFirst(const Findings& findings, std::size_t count) {
  for (std::size_t i = 0; i < count; ++i) {
    render<Renderer>(*findings[i], keepText);
  }
}

// More findings than fit into any cache, in random order. All benchmarks share the position, so a
// finding is used again only after all the others.
const Violation& nextColdFinding() {
  static const Findings findings = [] {
    Findings made = makeFindings(150000);
    std::shuffle(made.begin(), made.end(), std::mt19937(4));
    return made;
  }();
  static std::size_t position = 0;
  position = (position + 1) % findings.size();
  return *findings[position];
}

template <typename Renderer>
void registerRenderer(const std::string& who, const Findings& findings,
                      const std::vector<std::string>& expected) {
  require(textsOf<Renderer>(findings) == expected, who + " renders other texts");
  forEachCall<Renderer>([&who](const std::string& name, auto call) {
    measure(name + "/" + who, {1}, [call] { keepText(call()); });
  });
  measure("findings, hot/" + who, {hotFindings},
          [&findings] { renderFirst<Renderer>(findings, hotFindings); });
  measure("findings, in order/" + who, {findings.size()},
          [&findings] { renderFirst<Renderer>(findings, findings.size()); });
  measure("findings, cold/" + who, {1}, [] { render<Renderer>(nextColdFinding(), keepText); });
}

// The least that rendering can cost: an allocation and a copy for each text.
void registerFloor(const Findings& findings) {
  const auto copy = [](const std::string& text) { keepText({text.data(), text.size()}); };
  forEachCall<Converter>([copy](const std::string& name, auto call) {
    measure(name + "/one copy", {1}, [copy, text = call()] { copy(text); });
  });
  std::vector<std::string> texts;
  for (std::size_t i = 0; i < hotFindings; ++i) {
    render<Converter>(*findings[i], [&texts](std::string text) { texts.push_back(text); });
  }
  measure("findings, hot/one copy", {hotFindings},
          [copy, texts] { std::for_each(texts.begin(), texts.end(), copy); });
}

std::string printed(double number) {
  char text[400];
  const int length = std::snprintf(text, sizeof text, "%f", number);
  return std::string(text, static_cast<std::size_t>(length));
}

// Doubles, against snprintf. In other rounding modes than the usual one the C library formats them.
void registerDoubles() {
  for (const char* const digits : {"0.5", "1.234567", "350.25", "1e20", "1e300", "5e-324"}) {
    const std::string name = std::string("double ") + digits;
    const double number = std::strtod(digits, nullptr);
    Scalar scalar;
    scalar.set_double_val(number);
    require(Converter::toString(scalar) == printed(number),
            name + " is not printed as by snprintf");
    const auto render = [scalar] { keepText(Converter::toString(scalar)); };
    measure(name + "/Converter", {1}, render);
    measure(name + "/snprintf", {1}, [number]() mutable {
      benchmark::DoNotOptimize(number);
      keepText(printed(number));
    });
    benchmark::RegisterBenchmark((name + ", rounding upward/Converter").c_str(),
                                 [render](benchmark::State& state) {
                                   std::fesetround(FE_UPWARD);
                                   for (auto _ : state) {
                                     render();
                                   }
                                   std::fesetround(FE_TONEAREST);
                                   state.counters["items"] = 1;
                                 });
  }
}

}  // namespace
}  // namespace benchmarks

int main(int count, char** arguments) {
  using namespace benchmarks;
  const Findings findings = makeFindings(10000);
  nextColdFinding();  // makes them
  return runBenchmarks(count, arguments, [&findings] {
    const std::vector<std::string> expected = textsOf<Converter>(findings);
    registerRenderer<Converter>("Converter", findings, expected);
    registerRenderer<plain::Rendering<plain::Concatenation>>("concatenation", findings, expected);
    registerRenderer<plain::Rendering<Format>>("{fmt}", findings, expected);
    registerRenderer<plain::Rendering<Streams>>("string streams", findings, expected);
    registerFloor(findings);
    registerDoubles();
  });
}
