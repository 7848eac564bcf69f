# The manual: sphinx-build docs/manual OUTPUT, or the target "manual" of the build.
import os
import sys

sys.path.insert(0, os.path.abspath("_ext"))

project = "Xfm"
author = "the Xfm developers"
copyright = author
release = "6.1"
extensions = ["xfm_header", "sphinx.ext.autodoc"]
html_theme = "alabaster"
html_theme_options = {"fixed_sidebar": True, "page_width": "1100px", "description": "Short signal transforms"}
html_show_sourcelink = False
html_copy_source = False
# The header, the pictures and the tables of figures.py are made by the build; see docs/CMakeLists.txt.
xfm_header = os.environ.get("XFM_HEADER", "")
xfm_figures = os.environ.get("XFM_MANUAL_FIGURES", "")
