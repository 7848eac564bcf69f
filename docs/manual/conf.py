# The manual: sphinx-build docs/manual OUTPUT, or the target "manual" of the build.
import os
import sys

sys.path.insert(0, os.path.abspath("_ext"))

project = "Xfm"
author = "the Xfm developers"
copyright = author
release = "6.1"
extensions = ["xfm_header", "sphinx.ext.mathjax", "sphinx.ext.autodoc"]
html_theme = "alabaster"
html_theme_options = {"fixed_sidebar": True, "page_width": "1100px", "description": "Short signal transforms"}
html_show_sourcelink = False
html_copy_source = False
# The header and the pictures are made by the build; see docs/manual/CMakeLists.txt.
xfm_header = os.environ.get("XFM_HEADER", "")
html_static_path = [p for p in [os.environ.get("XFM_MANUAL_FIGURES", "")] if p]
mathjax_path = os.environ.get("XFM_MATHJAX", "https://cdn.jsdelivr.net/npm/mathjax@3/es5/tex-mml-chtml.js")
