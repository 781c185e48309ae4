"""The reference of Converter, from the XML that Doxygen makes of its header."""

import textwrap
import xml.etree.ElementTree as ElementTree

from markupsafe import Markup, escape

INLINE = {"ref": "code", "computeroutput": "code", "ulink": "span"}
BLOCKS = {"itemizedlist": "ul", "orderedlist": "ol", "listitem": "li", "verbatim": "pre"}


def element(tag, content):
    return Markup(f"<{tag}>{content}</{tag}>")


def paragraphs(para):
    """A paragraph as HTML, cut where a list or an example stands in it."""
    parts, text = [], escape(para.text or "")
    for child in para:
        if child.tag in BLOCKS:
            parts += [element("p", text)] * bool(text.strip()) + [block(child)]
            text = Markup()
        else:
            text += element(INLINE[child.tag], inline(child))
        text += escape(child.tail or "")
    return Markup().join(parts + [element("p", text)] * bool(text.strip()))


def inline(node):
    return escape("".join(node.itertext()))


def block(node):
    if node.tag == "verbatim":
        return Markup('<pre tabindex="0">{}</pre>').format(textwrap.dedent(node.text.strip("\n")))
    return element(BLOCKS[node.tag], Markup().join(
        block(child) if child.tag in BLOCKS else paragraphs(child) for child in node))


def description(node):
    return Markup().join(paragraphs(para) for para in node.iterfind("detaileddescription/para"))


def type_of(parameter):
    return "".join(parameter.find("type").itertext())


def function(member):
    name = member.findtext("name")
    types = [type_of(parameter) for parameter in member.iterfind("param")]
    plain = [kind.removeprefix("const ").removesuffix(" &") for kind in types]
    return {
        "anchor": "-".join([name, *plain]).replace("::", "-"),
        "short": f"{name}({', '.join(plain)})",
        "signature": member.findtext("definition").replace("vok::rulecheck::Converter::", "")
                     + member.findtext("argsstring"),
        "description": description(member)}


def reference(folder):
    """What the header says of itself, of the class and of each function."""
    header = ElementTree.parse(folder / "Converter_8h.xml").find("compounddef")
    converter = ElementTree.parse(
        folder / "classvok_1_1rulecheck_1_1Converter.xml").find("compounddef")
    return {"header": description(header), "about": description(converter),
            "functions": [function(member) for member in converter.iter("memberdef")]}
