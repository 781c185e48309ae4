// The page on the protocol, as the tests of its promises read it.

#ifndef VOK_TESTS_LIBRARY_MALFORMED_INPUT_PAGE_H_
#define VOK_TESTS_LIBRARY_MALFORMED_INPUT_PAGE_H_

#include <string>
#include <vector>

namespace tests {

// The lines between a heading of the second level and the next one.
std::vector<std::string> linesOfSection(const std::string& heading);

}  // namespace tests

#endif  // VOK_TESTS_LIBRARY_MALFORMED_INPUT_PAGE_H_
