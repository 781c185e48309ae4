#include "malformed_input/page.h"

#include <fstream>

namespace tests {

std::vector<std::string> linesOfSection(const std::string& heading) {
  std::ifstream page(PAGE_ON_PROTOCOL);
  std::vector<std::string> lines;
  bool isInside = false;
  for (std::string line; std::getline(page, line);) {
    if (line.rfind("## ", 0) == 0) {
      isInside = line == "## " + heading;
    } else if (isInside) {
      lines.push_back(line);
    }
  }
  return lines;
}

}  // namespace tests
