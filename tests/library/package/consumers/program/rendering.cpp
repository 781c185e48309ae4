// The ten functions of the converter.

#include <vok/rulecheck/Converter.h>

#include <string>

#include "check.h"

using namespace vok::rulecheck;

void checkRendering() {
  Resource resource;
  resource.set_scheme(Resource::FILE);
  resource.set_path("/t.v");
  Link link;
  *link.mutable_url() = resource;
  Reference reference;
  reference.set_type(Reference::KERNEL);
  reference.set_id(4);
  Scalar scalar;
  scalar.set_double_val(1.5);
  scalar.set_units("ns");
  Arg argument;
  *argument.mutable_ref() = reference;

  CHECK(Converter::toString(Resource::FILE) == "file");
  CHECK(Converter::toString(Reference::DATAMOVER) == "data mover");
  CHECK(Converter::toString(Violation::SEV_CRITICAL_WARNING) == "critical warning");
  CHECK(Converter::toString(scalar) == "1.500000 ns");
  CHECK(Converter::toString(reference) == "kernel #4");
  CHECK(Converter::href(resource) == "file:///t.v");
  CHECK(Converter::toHtml(resource, "t") == "<a href=\"file:///t.v\">t</a>");
  CHECK(Converter::toHtml(link) == "<a href=\"file:///t.v\">link</a>");
  CHECK(Converter::toHtml(reference) == "kernel #4");
  CHECK(Converter::toHtml(argument) == "kernel #4");
}
