"""Sphinx's settings for the manual. build.py lays out the sources and passes the version and the tool."""

import sys
from pathlib import Path

sys.path.insert(0, str(Path(__file__).parent))

project = "Vorel32"
author = "the Vorel32 project"
extensions = ["myst_parser", "sphinx_copybutton", "shown"]
exclude_patterns = ["_static", "include", "docs/manual"]
myst_enable_extensions = ["colon_fence", "deflist"]
myst_heading_anchors = 4
suppress_warnings = ["myst.header"]
add_function_parentheses = False
highlight_language = "text"
copybutton_prompt_text = r">>> |\.\.\. |\$ "
copybutton_prompt_is_regexp = True

html_theme = "furo"
html_title = "Vorel32"
html_static_path = ["static"]
html_css_files = ["manual.css"]
html_favicon = "static/mark.svg"
html_copy_source = False
html_show_sourcelink = False
html_show_sphinx = False
html_show_copyright = False
html_domain_indices = False
html_permalinks_icon = "#"
pygments_style = "friendly"
pygments_dark_style = "github-dark"
html_theme_options = {
    "light_logo": "mark.svg",
    "dark_logo": "mark.svg",
    "top_of_page_button": None,
    "light_css_variables": {
        "color-brand-primary": "#0b6b63",
        "color-brand-content": "#0b6b63",
        "color-foreground-primary": "#1c2726",
        "color-foreground-secondary": "#4d5b59",
        "color-foreground-muted": "#65736f",
        "color-background-primary": "#ffffff",
        "color-background-secondary": "#f5f8f6",
        "color-background-hover": "#e8efec",
        "color-background-border": "#dfe7e3",
        "color-highlight-on-target": "#fff4d6",
        "font-stack": "system-ui, -apple-system, 'Segoe UI', Roboto, 'Noto Sans', 'DejaVu Sans', sans-serif",
        "font-stack--monospace": "ui-monospace, 'SF Mono', Consolas, 'DejaVu Sans Mono', monospace",
    },
    "dark_css_variables": {
        "color-brand-primary": "#66cfc2",
        "color-brand-content": "#66cfc2",
        "color-background-primary": "#131a1a",
        "color-background-secondary": "#192222",
        "color-foreground-primary": "#e6ecea",
        "color-foreground-secondary": "#a9b8b4",
        "color-foreground-muted": "#8b9a96",
        "color-background-hover": "#223030",
        "color-background-border": "#2b3a39",
        "color-highlight-on-target": "#3a3413",
    },
}
