# The manual: sphinx-build docs/manual OUTPUT, or the target "manual" of the build.
import os
import pathlib
import sys

sys.path[:0] = [os.path.abspath("_ext"), os.path.abspath("..")]
import speed_data  # noqa: E402

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
rst_prolog = f".. |processor| replace:: {speed_data.times(pathlib.Path('../data').resolve())[1]}\n"
