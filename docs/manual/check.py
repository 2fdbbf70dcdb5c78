"""What must hold of the finished site: no dead link, titles, a page per function with every field."""

import re
from urllib.parse import unquote, urlsplit

from bs4 import BeautifulSoup

FIELDS = ["Result", "Errors", "Ownership"]


def faults_of_styles(html):
    """Files that style sheets name and that are not there."""
    for sheet in sorted(html.rglob("*.css")):
        for address in re.findall(r"url\(['\"]?(?!data:)([^'\")]+)", sheet.read_text()):
            if address.startswith("/") or not (sheet.parent / address).is_file():
                yield f"{sheet.relative_to(html)}: no {address}"


def faults(html, reference):
    pages = {path.relative_to(html).as_posix(): BeautifulSoup(path.read_text(), "lxml") for path in sorted(html.rglob("*.html"))}
    anchors = {name: {tag["id"] for tag in page.find_all(id=True)} for name, page in pages.items()}
    found = list(faults_of_styles(html))
    for name, page in pages.items():
        title, heading = page.find("title"), page.find("h1")
        if not (title and title.get_text().strip() and (heading and heading.get_text().strip() or name == "search.html")):
            found.append(f"{name}: no title")
        for tag in page.find_all(["a", "img", "link", "script"]):
            address = tag.get("href") or tag.get("src")
            parts = urlsplit(address or "#")
            if parts.scheme in ("http", "https") and tag.name != "a":
                found.append(f"{name}: loads {address}")
            if parts.scheme or not address or address == "#":
                continue
            target = (html / name).parent / unquote(parts.path) if parts.path else html / name
            target = target.resolve()
            if not target.is_file():
                found.append(f"{name}: no {address}")
            elif parts.fragment and target.suffix == ".html":
                other = target.relative_to(html.resolve()).as_posix()
                if unquote(parts.fragment) not in anchors[other]:
                    found.append(f"{name}: no anchor {address}")
    for function in reference.functions.values():
        page = pages.get(f"reference/{function.name}.html")
        if page is None:
            found.append(f"{function.name}: no page")
            continue
        sections = {heading.get_text().rstrip("#¶").strip(): heading.parent for heading in page.find_all("h2")}
        exported = function.builds != "linux"
        for field in FIELDS + ["Parameters"] * bool(function.parameters) + ["Example", "In other languages"] * exported:
            if field not in sections or len(sections[field].get_text().split()) <= len(field.split()):
                found.append(f"{function.name}: no {field.lower()} on its page")
        terms = [tag.get_text() for tag in sections["Parameters"].find_all("dt")] if "Parameters" in sections else []
        found += [f"{function.name}: {name} is not explained" for _, name in function.parameters if not any(t.startswith(name) for t in terms)]
    return found
