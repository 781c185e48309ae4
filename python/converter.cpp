// SPDX-License-Identifier: Apache-2.0

// The Python module vok_rulecheck.converter: the functions of Converter.

#include <google/protobuf/message.h>
#include <pybind11/pybind11.h>
#include <vok/rulecheck/Converter.h>

#include <climits>
#include <cstddef>
#include <exception>
#include <stdexcept>
#include <string>
#include <typeinfo>
#include <unordered_map>

// The part of Python's runtime that is used here, as declared in its proto_api.h, which is not
// installed. Exported, since otherwise the compiler assumes that nothing overrides the function.
namespace google::protobuf::python {
struct PYBIND11_EXPORT PyProto_API {
  virtual ~PyProto_API() = default;
  virtual const Message* GetMessagePointer(PyObject* message) const = 0;
};
}  // namespace google::protobuf::python

namespace py = pybind11;
using google::protobuf::python::PyProto_API;
using namespace vok::rulecheck;

namespace {

// Shorter messages are rendered in less time than it takes to hand over the GIL.
const std::size_t bytesWorthHandingOver = 2048;

// --- Messages

const PyProto_API* runtime = nullptr;  // set once, when the module is imported

// Null unless the proto_api.h of the runtime's release begins with the declarations above.
const PyProto_API* findRuntime() {
#if GOOGLE_PROTOBUF_VERSION / 1000 == 3021
  const auto version =
      py::module_::import("google.protobuf").attr("__version__").cast<std::string>();
  const auto implementation = py::module_::import("google.protobuf.internal.api_implementation")
                                  .attr("Type")()
                                  .cast<std::string>();
  if (version.find(".21.") == 1 && implementation == "cpp") {
    void* const found = PyCapsule_Import("google.protobuf.pyext._message.proto_API", 0);
    PyErr_Clear();
    return static_cast<const PyProto_API*>(found);
  }
#endif
  return nullptr;
}

// Returns the message itself if it is an object of the generated class. Returns null for messages
// of the pure Python implementation, and of classes that were created before this library was
// loaded.
template <typename Message>
const Message* inPlace(py::handle value) {
  if (runtime == nullptr) {
    return nullptr;
  }
  const google::protobuf::Message* const message = runtime->GetMessagePointer(value.ptr());
  PyErr_Clear();
  return message != nullptr && typeid(*message) == typeid(Message)
             ? static_cast<const Message*>(message)
             : nullptr;
}

template <typename Message>
void parse(const py::bytes& bytes, Message* message) {
  const Py_ssize_t size = PyBytes_GET_SIZE(bytes.ptr());
  if (size > INT_MAX ||
      !message->ParsePartialFromArray(PyBytes_AS_STRING(bytes.ptr()), static_cast<int>(size))) {
    throw py::value_error("malformed message");
  }
}

// The name of the type of a message or an enumeration; empty for anything else.
std::string nameOf(py::handle type) {
  const py::object descriptor = py::getattr(type, "DESCRIPTOR", py::none());
  const py::object name = py::getattr(descriptor, "full_name", py::none());
  return py::isinstance<py::str>(name) ? name.cast<std::string>() : std::string();
}

enum class Type { None, Arg, Link, Reference, Resource, Scalar };

Type typeOf(py::handle value) {
  static const std::unordered_map<std::string, Type> names = {
      {"vok.rulecheck.Arg", Type::Arg},
      {"vok.rulecheck.Link", Type::Link},
      {"vok.rulecheck.Reference", Type::Reference},
      {"vok.rulecheck.Resource", Type::Resource},
      {"vok.rulecheck.Scalar", Type::Scalar}};
  static std::unordered_map<PyTypeObject*, Type> known;  // a message may have several classes

  PyTypeObject* const type = Py_TYPE(value.ptr());
  const auto before = known.find(type);
  if (before != known.end()) {
    return before->second;
  }
  const auto found = names.find(nameOf(reinterpret_cast<PyObject*>(type)));
  if (found == names.end()) {
    return Type::None;
  }
  Py_INCREF(type);  // or another class might get its address
  known.emplace(type, found->second);
  return found->second;
}

[[noreturn]] void refuse(const char* expected, py::handle value) {
  throw py::type_error(std::string("expected ") + expected + ", not " +
                       Py_TYPE(value.ptr())->tp_name);
}

// --- Texts

py::str toPython(const std::string& text) {
  PyObject* const decoded =
      PyUnicode_DecodeUTF8(text.data(), static_cast<Py_ssize_t>(text.size()), "surrogateescape");
  if (decoded == nullptr) {
    throw py::error_already_set();
  }
  return py::reinterpret_steal<py::str>(decoded);
}

std::string fromPython(py::handle text) {
  PyObject* const encoded = PyUnicode_AsEncodedString(text.ptr(), "utf-8", "surrogateescape");
  if (encoded == nullptr) {
    throw py::error_already_set();
  }
  return py::reinterpret_steal<py::bytes>(encoded).cast<std::string>();
}

// A message that is not rendered in place is passed as bytes. Every implementation of the runtime
// can serialize, and no thread changes the bytes while the GIL is released.
template <typename Message, typename Render>
py::str rendered(py::handle value, Render render) {
  const auto* const original = inPlace<Message>(value);
  if (original != nullptr && original->ByteSizeLong() < bytesWorthHandingOver) {
    return toPython(render(*original));
  }
  const py::bytes bytes = value.attr("SerializePartialToString")();
  std::string text;
  const auto renderBytes = [&] {
    Message copy;
    parse(bytes, &copy);
    text = render(copy);
  };
  if (py::len(bytes) < bytesWorthHandingOver) {
    renderBytes();
  } else {
    const py::gil_scoped_release released;
    renderBytes();
  }
  return toPython(text);
}

const auto htmlOf = [](const auto& message) { return Converter::toHtml(message); };
const auto textOf = [](const auto& message) { return Converter::toString(message); };

std::string wordOf(const py::object& value, const py::object& enumeration) {
  const auto number = PyLong_AsLong(value.ptr());
  if (number == -1 && PyErr_Occurred() != nullptr) {
    throw py::error_already_set();
  }
  if (number < INT_MIN || number > INT_MAX) {
    throw std::overflow_error("an enumeration value has 32 bits");
  }
  const std::string name = nameOf(enumeration);
  if (name == "vok.rulecheck.Resource.Scheme") {
    return Converter::toString(static_cast<Resource_Scheme>(number));
  }
  if (name == "vok.rulecheck.Reference.RefType") {
    return Converter::toString(static_cast<Reference_RefType>(number));
  }
  if (name == "vok.rulecheck.Violation.Severity") {
    return Converter::toString(static_cast<Violation_Severity>(number));
  }
  throw py::type_error(
      "expected Resource.Scheme, Reference.RefType or Violation.Severity as the enumeration");
}

py::str toString(const py::object& value, const py::object& enumeration) {
  if (!enumeration.is_none()) {
    return toPython(wordOf(value, enumeration));
  }
  switch (typeOf(value)) {
    case Type::Scalar: return rendered<Scalar>(value, textOf);
    case Type::Reference: return rendered<Reference>(value, textOf);
    default: refuse("a Scalar, a Reference, or an int and its enumeration", value);
  }
}

py::str href(const py::object& value) {
  if (typeOf(value) != Type::Resource) {
    refuse("a Resource", value);
  }
  return rendered<Resource>(value, [](const Resource& r) { return Converter::href(r); });
}

py::str toHtml(py::handle value) {
  switch (typeOf(value)) {
    case Type::Arg: return rendered<Arg>(value, htmlOf);
    case Type::Link: return rendered<Link>(value, htmlOf);
    case Type::Reference: return rendered<Reference>(value, htmlOf);
    default: refuse("an Arg, a Link, a Reference, or a Resource and the text of its anchor", value);
  }
}

py::str toHtmlWithText(const py::object& value, const py::object& anchorText) {
  if (anchorText.is_none()) {
    return toHtml(value);
  }
  if (typeOf(value) != Type::Resource) {
    refuse("a Resource with the text of an anchor", value);
  }
  if (!py::isinstance<py::str>(anchorText)) {
    refuse("a str as the text of the anchor", anchorText);
  }
  const std::string text = fromPython(anchorText);
  return rendered<Resource>(value, [&](const Resource& r) { return Converter::toHtml(r, text); });
}

py::list toHtmlMany(const py::iterable& values) {
  py::list texts;
  for (const py::handle value : values) {
    texts.append(toHtml(value));
    if (texts.size() % 1024 == 0) {
      const py::gil_scoped_release turnOfOtherThreads;
    }
  }
  return texts;
}

// --- The module

const char* const moduleText =
    R"(Display words, plain text, addresses and HTML fragments for protocol values.

Nothing is escaped, quoted or trimmed. Each function accepts every message, incomplete ones
included; a field counts as set if its presence test says so. Bytes that are not UTF-8 become
lone surrogates, which text.encode(errors="surrogateescape") turns back into the bytes.

Any number of threads may call any function. Messages of 2 KiB or more are rendered without
the GIL.

>>> from vok_rulecheck import converter
>>> from vok_rulecheck.RuleService_pb2 import *
)";

const char* const toStringText =
    R"(Return the plain text of a Scalar or a Reference, or the word of an enumeration value.

An enumeration value is an int in Python, so pass its enumeration too: Resource.Scheme,
Reference.RefType or Violation.Severity. The word of an unlisted number is "unknown" for a
scheme, "<undefined>" for the others.

>>> converter.to_string(Scalar(double_val=350.25, units="MHz"))
'350.250000 MHz'
>>> converter.to_string(Reference(type=Reference.KERNEL, id=4))
'kernel #4'
>>> converter.to_string(Violation.SEV_CRITICAL_WARNING, Violation.Severity)
'critical warning'
>>> converter.to_string(7, Resource.Scheme)
'unknown'
)";

const char* const hrefText = R"(Return the address of a Resource; '' if it has no scheme.

>>> converter.href(Resource(scheme=Resource.FILE, path="tmp/a", fragment="L7"))
'file:///tmp/a#L7'
)";

const char* const toHtmlText =
    R"(Return an Arg, a Link or a Reference as HTML, or an anchor to a Resource.

A Resource needs the text of its anchor. Nothing is escaped.

>>> url = Resource(scheme=Resource.FILE, path="/top.v")
>>> converter.to_html(Arg(ref=Reference(type=Reference.PORT, name="clk", url=url)))
'<a href="file:///top.v">clk</a>'
>>> converter.to_html(Link(url=url))
'<a href="file:///top.v">link</a>'
>>> converter.to_html(url, "top")
'<a href="file:///top.v">top</a>'
)";

const char* const toHtmlManyText =
    R"(Return the to_html of each message, in less time than a call for each takes.

>>> converter.to_html_many([Arg(string_val="a"), Link(link_text="b")])
['a', 'b']
)";

void define(py::module_ module) {
  runtime = findRuntime();
  py::options options;
  options.disable_function_signatures();
  module.def("to_string", toString, toStringText, py::arg("value"), py::arg("enum") = py::none());
  module.def("href", href, hrefText, py::arg("resource"));
  module.def("to_html", toHtmlWithText, toHtmlText, py::arg("value"),
             py::arg("anchor_text") = py::none());
  module.def("to_html_many", toHtmlMany, toHtmlManyText, py::arg("values"));
}

int execute(PyObject* module) {
  if (PyInterpreterState_Get() != PyInterpreterState_Main()) {
    PyErr_SetString(PyExc_ImportError, "vok_rulecheck cannot be imported in a subinterpreter");
    return -1;
  }
  try {
    define(py::reinterpret_borrow<py::module_>(module));
    return 0;
  } catch (py::error_already_set& error) {
    error.restore();
  } catch (const std::exception& error) {
    PyErr_SetString(PyExc_ImportError, error.what());
  }
  return -1;
}

PyModuleDef_Slot slots[] = {{Py_mod_exec, reinterpret_cast<void*>(execute)}, {0, nullptr}};
PyModuleDef definition = {
    PyModuleDef_HEAD_INIT, "converter", moduleText, 0, nullptr, slots, nullptr, nullptr, nullptr};

}  // namespace

// PYBIND11_MODULE would initialize in one phase: a subinterpreter would then get a copy of the
// module, and nothing could refuse it.
extern "C" PYBIND11_EXPORT PyObject* PyInit_converter() {
  return PyModuleDef_Init(&definition);
}
