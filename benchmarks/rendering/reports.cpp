#include <vok/rulecheck/Converter.h>

#include <memory>
#include <string>

#include "rendering/calls.h"
#include "rendering/renderers.h"
#include "support/measure.h"

namespace benchmarks {

using vok::rulecheck::Converter;
using vok::rulecheck::Violation;

namespace {

constexpr std::size_t hotFindings = 100;

const auto keepText = [](std::string text) { benchmark::DoNotOptimize(text); };

template <typename Renderer>
void renderFirst(const Findings& findings, std::size_t count) {
  for (std::size_t i = 0; i < count; ++i) {
    render<Renderer>(*findings[i], keepText);
  }
}

// Findings one after the other, in a circle. All benchmarks share the position,
// so that a finding comes up again only after all the others.
class Circle {
 public:
  explicit Circle(const Findings& findings) : findings_(findings) {}

  const Violation& next() {
    position_ = (position_ + 1) % findings_.size();
    return *findings_[position_];
  }

 private:
  const Findings& findings_;
  std::size_t position_ = 0;
};

template <typename Renderer>
void registerRenderer(const std::string& who, const Findings& findings,
                      const std::shared_ptr<Circle>& scattered) {
  measure("findings, hot/" + who, {hotFindings},
          [&findings] { renderFirst<Renderer>(findings, hotFindings); });
  measure("findings, in order/" + who, {findings.size()},
          [&findings] { renderFirst<Renderer>(findings, findings.size()); });
  measure("findings, cold/" + who, {1},
          [scattered] { render<Renderer>(scattered->next(), keepText); });
}

// The least that rendering can cost: an allocation and a copy for each text.
void registerFloor(const Findings& findings) {
  std::vector<std::string> texts;
  for (std::size_t i = 0; i < hotFindings; ++i) {
    render<Converter>(*findings[i], [&texts](std::string text) { texts.push_back(text); });
  }
  measure("findings, hot/one copy", {hotFindings}, [texts] {
    for (const std::string& text : texts) {
      keepText(std::string(text.data(), text.size()));
    }
  });
}

}  // namespace

void registerReports(const Findings& findings, const Findings& scattered) {
  const auto circle = std::make_shared<Circle>(scattered);
  registerRenderer<Converter>("Converter", findings, circle);
  registerRenderer<Format>("{fmt}", findings, circle);
  registerRenderer<Concatenation>("concatenation", findings, circle);
  registerRenderer<Streams>("string streams", findings, circle);
  registerFloor(findings);
}

}  // namespace benchmarks
