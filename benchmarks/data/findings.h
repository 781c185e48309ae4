// The parts that findings are made of, with lengths as in a real design.

#ifndef VOK_BENCHMARKS_DATA_FINDINGS_H_
#define VOK_BENCHMARKS_DATA_FINDINGS_H_

#include <vok/rulecheck/RuleService.pb.h>

#include <string>

#include "data/random.h"

namespace benchmarks {

std::string ruleKey(int number);
std::string sessionUuid();

// An object of the design, with the line of the file where it is.
void fillPlace(Random& random, vok::rulecheck::Reference* place);

// A link to a page on a server.
void fillPage(Random& random, vok::rulecheck::Link* link);

// A number with its unit; now and then an address or a word.
void fillValue(Random& random, vok::rulecheck::Scalar* value);

// About 480 bytes: values, a text with three arguments, a resolution, categories.
void fillViolation(Random& random, int id, vok::rulecheck::Violation* violation);

void fillAffirmation(Random& random, int id, vok::rulecheck::Affirmation* affirmation);

void fillRuleSpec(Random& random, int number, vok::rulecheck::RuleSpec* spec);

// About 260 bytes: values and three arguments.
void fillCreateViolation(Random& random, vok::rulecheck::CreateViolation* violation);

}  // namespace benchmarks

#endif  // VOK_BENCHMARKS_DATA_FINDINGS_H_
