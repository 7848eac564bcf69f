"""The reference of the C interface, read from the public header.

``.. xfm-header::`` becomes the text of the header's comments and the declarations below each. Of the kernels of a family,
which differ in their length only, the first is shown and the range of lengths told.
"""

import os
import re

from docutils import nodes
from docutils.statemachine import StringList
from sphinx.errors import ExtensionError
from sphinx.util.docutils import SphinxDirective

COMMENT = re.compile(r"/\*\n(.*?)\*/\n", re.S)
ENUM_OR_STRUCT = re.compile(r"^(?:enum|typedef struct)\s*\{.*?\}[^;]*;\n", re.S | re.M)
DECLARATION = re.compile(r"^(?:/\* (?P<doc>.*?) \*/\n)?(?P<text>(?:XfmStatus|const XfmLibraryVersion\*) (?P<name>xfmg\w+)\(.*?\);)\n", re.M)
KERNEL = re.compile(r"^(xfmg\w+?)_(\d+)_(32fc|64fc|32f|64f)$")


def comment_text(comment):
    """The lines of a block comment without its margin of stars."""
    return [re.sub(r"^ \* ?", "", line) for line in comment.rstrip().split("\n")]


def literal(text):
    return [".. code-block:: c", "", *("   " + line for line in text.rstrip().split("\n")), ""]


def section(lines):
    """A comment: its first line is the title, indented lines are formulas and tables as they stand."""
    out, title = [], lines[0].strip()
    out += [title, "-" * len(title), ""]
    for line in lines[1:]:
        indented = line.startswith("  ")
        if indented and (not out or not out[-1].startswith("   ")):
            out += ["", "::", ""]
        if not indented and out and out[-1].startswith("   "):
            out.append("")
        out.append("   " + line[1:] if indented else line.replace("*", "\\*"))
    return out + [""]


def functions(text):
    """Declarations, the kernels of one family and type together."""
    out, kernels = [], {}
    for match in DECLARATION.finditer(text):
        kernel = KERNEL.match(match["name"])
        if kernel:
            kernels.setdefault(kernel.group(1, 3), []).append((int(kernel[2]), match["text"]))
            continue
        out += [".. c:function:: " + match["text"].rstrip(";"), "", "   " + (match["doc"] or ""), ""]
    for (family, element), members in kernels.items():
        # A family that changes its arguments on the way is shown once for each.
        shown = {}
        for n, text in members:
            shown.setdefault(re.sub(r"_\d+_", "_N_", text), []).append(n)
        for i, (signature, lengths) in enumerate(shown.items()):
            lengths_name = signature.replace("_N_", "_M_") if i else signature
            out += [".. c:function:: " + lengths_name.rstrip(";"), "", f"   One kernel for each number from {lengths[0]} to {lengths[-1]}.", ""]
    return out


def reference(header):
    """The header as lines of reStructuredText."""
    out, start = [], 0
    for match in COMMENT.finditer(header):
        out += declared(header[start:match.start()])
        out += section(comment_text(match[1]))
        start = match.end()
    return out + declared(header[start:])


def declared(text):
    out = []
    for match in ENUM_OR_STRUCT.finditer(text):
        out += literal(match[0])
    return out + functions(ENUM_OR_STRUCT.sub("", text))


class XfmHeader(SphinxDirective):
    def run(self):
        path = self.config.xfm_header
        if not path:
            raise ExtensionError("XFM_HEADER names no header")
        self.env.note_dependency(path)
        with open(path, encoding="utf-8") as file:
            lines = reference(file.read())
        node = nodes.section()
        node.document = self.state.document
        self.state.nested_parse(StringList(lines, path), self.content_offset, node, match_titles=True)
        return node.children


def place_figures(app, name, source):
    folder = os.path.dirname(app.env.doc2path(name))
    source[0] = source[0].replace("@figures@", os.path.relpath(app.config.xfm_figures, folder))


def setup(app):
    app.add_config_value("xfm_header", "", "env")
    app.add_config_value("xfm_figures", "", "env")
    app.connect("source-read", place_figures)
    app.add_directive("xfm-header", XfmHeader)
    return {"parallel_read_safe": True}
