"""Links to functions wherever they are named, and the directive "shown": it runs commands of the tool in the folder of pictures and
shows the commands, what they print and the pictures that they make.

```{shown}
:scale: 3
vorel rotate photo.png turned.png -12 --white
A caption. Lines that begin with "vorel" are commands, all others are the caption.
```
"""

import shlex
import subprocess
from pathlib import Path

from docutils import nodes
from docutils.parsers.rst import directives
from PIL import Image
from pygments.lexers import VbNetLexer
from sphinx.util.docutils import SphinxDirective


class Shown(SphinxDirective):
    has_content = True
    option_spec = {"scale": directives.positive_int, "with": directives.unchanged, "captions": directives.unchanged}

    def run(self):
        folder = Path(self.env.srcdir) / "pictures"
        commands = [line for line in self.content if line.startswith("vorel ")]
        caption = " ".join(line for line in self.content if not line.startswith("vorel "))
        before, printed = set(folder.iterdir()), ""
        for command in commands:
            words = shlex.split(command)
            done = subprocess.run([self.config.vorel, *words[1:]], cwd=folder, capture_output=True, text=True)
            if done.returncode not in ((0, 1) if words[1] == "compare" else (0,)):
                raise self.error(f"{command}: {done.stderr}")
            printed += done.stdout
        made = sorted((set(folder.iterdir()) - before), key=lambda path: path.stat().st_mtime_ns)
        names = self.options.get("with", "").split() + [path.name for path in made if path.suffix == ".png"]
        box = nodes.container(classes=["shown", "one"] if len(names) == 1 else ["shown"])
        pictures = nodes.container(classes=["pictures"])
        captions = [text.strip() for text in self.options["captions"].split("|")] if "captions" in self.options else names
        for name, title in zip(names, captions, strict=True):
            figure = nodes.figure()
            image = nodes.image(uri=f"/pictures/{name}", alt=title if title != name else caption or name)
            if scale := self.options.get("scale"):
                image["width"] = f"{Image.open(folder / name).width * scale}px"
                image["classes"].append("pixels")
            figure += image
            if len(names) > 1:
                figure += nodes.caption("", title)
            pictures += figure
        box += pictures
        if caption:
            text, messages = self.state.inline_text(caption, self.lineno)
            box += nodes.paragraph("", "", *text, classes=["says"])
        if commands:
            code = nodes.literal_block("\n".join(commands), "\n".join(commands))
            code["language"] = "text"
            box += code
        if printed:
            box += nodes.literal_block(printed, printed, language="text")
        return [box]


def link_functions(app, doctree, here):
    """Makes a link of every function named as code, except on its own page."""
    for literal in list(doctree.findall(nodes.literal)):
        name = literal.astext()
        page = f"reference/{name}"
        if name[:1].isupper() and page in app.env.found_docs and page != here and not isinstance(literal.parent, (nodes.reference, nodes.title)):
            link = nodes.reference("", "", literal.deepcopy(), internal=True, refuri=app.builder.get_relative_uri(here, page))
            literal.replace_self(link)


def setup(app):
    app.add_config_value("vorel", "vorel", "")
    app.add_directive("shown", Shown)
    app.add_lexer("vb", VbNetLexer)
    app.connect("doctree-resolved", link_functions)
    return {"parallel_read_safe": False}
