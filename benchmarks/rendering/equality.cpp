#include "rendering/equality.h"

#include <vok/rulecheck/Converter.h>

#include <limits>
#include <string>

#include "rendering/renderers.h"
#include "support/measure.h"

namespace benchmarks {

using namespace vok::rulecheck;

namespace {

// One bit of a set of choices.
bool chosen(int choices, int bit) {
  return (choices >> bit & 1) != 0;
}

std::vector<Scalar> unusualScalars() {
  std::vector<Scalar> scalars;
  for (int choices = 0; choices < 32; ++choices) {
    Scalar& scalar = scalars.emplace_back();
    if (chosen(choices, 0)) {
      scalar.set_int_val(std::numeric_limits<std::int64_t>::min());
    }
    if (chosen(choices, 1)) {
      scalar.set_double_val(-1.5);
    }
    if (chosen(choices, 2)) {
      scalar.set_string_val("");
    }
    if (chosen(choices, 3)) {
      scalar.set_address("0x10");
    }
    if (chosen(choices, 4)) {
      scalar.set_units(std::string("\0ns", 3));
    }
  }
  using Limits = std::numeric_limits<double>;
  for (const double number :
       {0.0, -0.0, 0.5, 0.0000005, 2.5e-7, 1.234567, 350.25, 999999.9999995, 1e15,
        9007199254740993.0, 1e20, -1e300, Limits::max(), Limits::min(), 5e-324, Limits::infinity(),
        -Limits::infinity(), Limits::quiet_NaN(), -Limits::quiet_NaN()}) {
    scalars.emplace_back().set_double_val(number);
  }
  return scalars;
}

void setHierarchy(int choices, Resource* resource) {
  const char* const paths[] = {"", "x/y", "/x/y"};
  if (chosen(choices, 0)) {
    resource->set_host("h.example");
  }
  if (chosen(choices, 1)) {
    resource->set_port(0);
  }
  if (chosen(choices, 2)) {
    resource->set_query("");
  }
  if (chosen(choices, 3)) {
    resource->set_fragment("L\"7");
  }
  const int path = choices >> 4 & 3;
  if (path < 3) {
    resource->set_path(paths[path]);
  }
}

void setData(int choices, Resource* resource) {
  const char* const types[] = {"", "text/html", "text/plain"};
  if (chosen(choices, 0)) {
    resource->set_encoding("base64");
  }
  if (chosen(choices, 1)) {
    resource->set_data(std::string("<b>\0</b>", 8));
  }
  const int type = choices >> 2 & 3;
  if (type < 3) {
    resource->set_media_type(types[type]);
  }
}

std::vector<Resource> unusualResources() {
  std::vector<Resource> resources;
  for (int scheme = -1; scheme <= Resource::Scheme_MAX; ++scheme) {
    for (int choices = 0; choices < 1 << 10; ++choices) {
      Resource& resource = resources.emplace_back();
      if (scheme >= 0) {
        resource.set_scheme(static_cast<Resource_Scheme>(scheme));
      }
      setHierarchy(choices, &resource);
      setData(choices >> 6, &resource);
    }
  }
  return resources;
}

std::vector<Link> unusualLinks(const std::vector<Resource>& resources) {
  std::vector<Link> links(2);
  links[1].set_link_text("T&");
  for (const Resource& resource : resources) {
    for (const Link& unlinked : {links[0], links[1]}) {
      Link& link = links.emplace_back(unlinked);
      *link.mutable_url() = resource;
    }
  }
  return links;
}

std::vector<Reference> unusualReferences(const std::vector<Resource>& resources) {
  std::vector<Reference> references;
  for (int choices = 0; choices < 32; ++choices) {
    Reference& reference = references.emplace_back();
    if (chosen(choices, 0)) {
      reference.set_type(Reference::READ_OP);
    }
    if (chosen(choices, 1)) {
      reference.set_name("");
    }
    if (chosen(choices, 2)) {
      reference.set_id(-1);
    }
    if (chosen(choices, 3)) {
      reference.set_uuid("ab-12");
    }
    if (chosen(choices, 4)) {
      *reference.mutable_url() = resources[static_cast<std::size_t>(choices) * 64];
    }
  }
  return references;
}

void setLists(int choices, const Reference& reference, const Link& link, Arg* arg) {
  if (chosen(choices, 2)) {
    arg->mutable_refs();
    for (int i = 0; i < choices % 3; ++i) {
      *arg->mutable_refs()->add_ref() = reference;
    }
  }
  if (chosen(choices, 3)) {
    arg->mutable_uris()->add_uri()->mutable_url()->set_path("nothing is shown");
    *arg->mutable_uris()->add_uri() = link;
  }
}

std::vector<Arg> unusualArgs(const std::vector<Scalar>& scalars,
                             const std::vector<Reference>& references,
                             const std::vector<Link>& links) {
  std::vector<Arg> args;
  for (int choices = 0; choices < 64 * 64; ++choices) {
    const auto index = static_cast<std::size_t>(choices);
    const Reference& reference = references[index % references.size()];
    const Link& link = links[index * 7 % links.size()];
    Arg& arg = args.emplace_back();
    if (chosen(choices, 0)) {
      *arg.mutable_ref() = reference;
    }
    if (chosen(choices, 1)) {
      *arg.mutable_uri() = link;
    }
    setLists(choices, reference, link, &arg);
    if (chosen(choices, 4)) {
      arg.set_string_val("");
    }
    if (chosen(choices, 5)) {
      *arg.mutable_scalar() = scalars[index / 64 % scalars.size()];
    }
  }
  return args;
}

struct Unusual {
  std::vector<Scalar> scalars = unusualScalars();
  std::vector<Resource> resources = unusualResources();
  std::vector<Link> links = unusualLinks(resources);
  std::vector<Reference> references = unusualReferences(resources);
  std::vector<Arg> args = unusualArgs(scalars, references, links);
};

template <typename Renderer>
std::vector<std::string> textsOf(const Unusual& unusual, const Findings& findings) {
  std::vector<std::string> texts;
  for (int number = -2; number < 40; ++number) {
    texts.push_back(Renderer::toString(static_cast<Resource_Scheme>(number)));
    texts.push_back(Renderer::toString(static_cast<Reference_RefType>(number)));
    texts.push_back(Renderer::toString(static_cast<Violation_Severity>(number)));
  }
  for (const Scalar& scalar : unusual.scalars) {
    texts.push_back(Renderer::toString(scalar));
  }
  for (const Resource& resource : unusual.resources) {
    texts.push_back(Renderer::href(resource));
    texts.push_back(Renderer::toHtml(resource, "T<"));
  }
  for (const Link& link : unusual.links) {
    texts.push_back(Renderer::toHtml(link));
  }
  for (const Reference& reference : unusual.references) {
    texts.push_back(Renderer::toString(reference));
    texts.push_back(Renderer::toHtml(reference));
  }
  for (const Arg& arg : unusual.args) {
    texts.push_back(Renderer::toHtml(arg));
  }
  for (const auto& finding : findings) {
    render<Renderer>(*finding, [&texts](std::string text) { texts.push_back(std::move(text)); });
  }
  return texts;
}

template <typename Renderer>
void requireEqual(const char* name, const Unusual& unusual, const Findings& findings) {
  const std::vector<std::string> expected = textsOf<Converter>(unusual, findings);
  const std::vector<std::string> texts = textsOf<Renderer>(unusual, findings);
  require(texts.size() == expected.size(), std::string(name) + " renders another number of texts");
  for (std::size_t i = 0; i < texts.size(); ++i) {
    require(texts[i] == expected[i],
            std::string(name) + " renders \"" + texts[i] + "\" for \"" + expected[i] + "\"");
  }
}

}  // namespace

void requireEqualTexts(const Findings& findings) {
  const Unusual unusual;
  requireEqual<Streams>("Streams", unusual, findings);
  requireEqual<Concatenation>("Concatenation", unusual, findings);
  requireEqual<Format>("Format", unusual, findings);
}

}  // namespace benchmarks
