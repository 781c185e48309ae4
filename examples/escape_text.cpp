// Renders a link whose text format is the argument as a fragment of a page.
//
// usage: escape_text LINK

// Shown in docs/recipes.md: begin
#include <vok/rulecheck/Converter.h>

#include <string>

#include "make_safe.h"

using namespace vok::rulecheck;

// The copy is made safe, and the message stays as it is.
std::string linkHtml(Link link) {
  makeSafe(&link);
  return Converter::toHtml(link);
}
// Shown in docs/recipes.md: end

#include <google/protobuf/text_format.h>

#include <iostream>

int main(int argc, char** argv) {
  Link link;
  if (argc != 2 || !google::protobuf::TextFormat::ParseFromString(argv[1], &link)) {
    std::cout << "no link\n";
    return 1;
  }
  std::cout << linkHtml(link) << "\n";
}
