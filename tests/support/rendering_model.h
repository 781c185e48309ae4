// SPDX-License-Identifier: Apache-2.0

// Compares what Converter returns with what a model of it does. render() calls a function of
// Converter, which is its argument, and returns the text.

#ifndef VOK_TESTS_SUPPORT_RENDERING_MODEL_H_
#define VOK_TESTS_SUPPORT_RENDERING_MODEL_H_

#include <gtest/gtest.h>
#include <vok/rulecheck/Converter.h>

#include <string>

#include "support/plain_rendering.h"

namespace tests {

using Model = plain::Rendering<plain::Concatenation>;
using namespace vok::rulecheck;

template <typename Render>
void expectAsInModel(const Resource& resource, const std::string& anchorText, Render render) {
  EXPECT_EQ(render([&] { return Converter::href(resource); }), Model::href(resource));
  EXPECT_EQ(render([&] { return Converter::toHtml(resource, anchorText); }),
            Model::toHtml(resource, anchorText));
}

template <typename Render>
void expectAsInModel(const Link& link, const std::string& anchorText, Render render) {
  EXPECT_EQ(render([&] { return Converter::toHtml(link); }), Model::toHtml(link));
  expectAsInModel(link.url(), anchorText, render);
}

template <typename Render>
void expectAsInModel(const Scalar& scalar, Render render) {
  EXPECT_EQ(render([&] { return Converter::toString(scalar); }), Model::toString(scalar));
}

template <typename Render>
void expectAsInModel(const Reference& reference, const std::string& anchorText, Render render) {
  EXPECT_EQ(render([&] { return Converter::toString(reference); }), Model::toString(reference));
  EXPECT_EQ(render([&] { return Converter::toHtml(reference); }), Model::toHtml(reference));
  expectAsInModel(reference.value(), render);
  expectAsInModel(reference.url(), anchorText, render);
}

// An argument, and each value in it, whether the argument shows it or not.
template <typename Render>
void expectAsInModel(const Arg& arg, Render render) {
  EXPECT_EQ(render([&] { return Converter::toHtml(arg); }), Model::toHtml(arg));
  expectAsInModel(arg.scalar(), render);
  expectAsInModel(arg.ref(), arg.string_val(), render);
  expectAsInModel(arg.uri(), arg.string_val(), render);
  for (const Reference& reference : arg.refs().ref()) {
    expectAsInModel(reference, arg.string_val(), render);
  }
  for (const Link& link : arg.uris().uri()) {
    expectAsInModel(link, arg.string_val(), render);
  }
}

}  // namespace tests

#endif  // VOK_TESTS_SUPPORT_RENDERING_MODEL_H_
