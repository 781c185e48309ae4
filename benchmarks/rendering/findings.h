// Findings to render, and what is rendered of each.

#ifndef VOK_BENCHMARKS_RENDERING_FINDINGS_H_
#define VOK_BENCHMARKS_RENDERING_FINDINGS_H_

#include <vok/rulecheck/RuleService.pb.h>

#include <cstddef>
#include <memory>
#include <vector>

namespace benchmarks {

using Findings = std::vector<std::unique_ptr<vok::rulecheck::Violation>>;

Findings makeFindings(std::size_t count);

// So many findings that they don't fit into any cache, in random order.
Findings makeScatteredFindings();

// Calls use(text) for each of the ten texts that a report shows of a finding:
// words, values, references, links, addresses, arguments.
template <typename Renderer, typename Use>
void render(const vok::rulecheck::Violation& finding, Use use) {
  const auto& arguments = finding.details().args().arg();
  const vok::rulecheck::Link& page = arguments.Get(1).uri();
  use(Renderer::toString(finding.severity()));
  use(Renderer::toString(finding.actual_value()));
  use(Renderer::toString(finding.threshold_value()));
  use(Renderer::toString(arguments.Get(0).ref()));
  use(Renderer::href(page.url()));
  use(Renderer::toHtml(page.url(), finding.rule_key()));
  use(Renderer::toHtml(page));
  for (const vok::rulecheck::Arg& argument : arguments) {
    use(Renderer::toHtml(argument));
  }
}

}  // namespace benchmarks

#endif  // VOK_BENCHMARKS_RENDERING_FINDINGS_H_
