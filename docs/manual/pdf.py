"""Makes one document of the site's pages, in the order of its navigation, and prints it as a PDF."""

import re
from html import escape
from pathlib import Path
from urllib.parse import unquote, urlsplit

import weasyprint
from bs4 import BeautifulSoup

SITE = "site:///"  # addresses of pictures become names in the PDF, which must not tell where it was made


def key(page):
    return re.sub(r"\W", "-", page.removesuffix(".html"))


def chapter(html, page, pages, depth):
    """The article of a page; identifiers get the page's name in front, links lead to places in the document."""
    article = BeautifulSoup((html / page).read_text(), "lxml").find("article")
    for tag in article.select(".headerlink, script, style, .actions, .cards, #in-other-languages, #see-also"):
        tag.decompose()
    for tag in article.find_all(id=True):
        tag["id"] = f"{key(page)}--{tag['id']}"
    for tag in article.find_all("a", href=True):
        parts = urlsplit(tag["href"])
        target = ((html / page).parent / unquote(parts.path)).resolve() if parts.path else (html / page).resolve()
        name = target.relative_to(html.resolve()).as_posix() if target.is_relative_to(html.resolve()) else ""
        if not parts.scheme and name in pages:
            tag["href"] = f"#{key(name)}--{unquote(parts.fragment)}" if parts.fragment else f"#{key(name)}"
        elif not parts.scheme:
            tag.unwrap()
    for tag in article.find_all("img"):
        tag["src"] = SITE + ((html / page).parent / tag["src"]).resolve().relative_to(html.resolve()).as_posix()
    return f'<section id="{key(page)}" class="depth{depth}">{article.decode_contents()}</section>'


def contents(html):
    """The pages with title and depth, as in the navigation of the start page."""
    tree = BeautifulSoup((html / "index.html").read_text(), "lxml").find(class_="sidebar-tree")
    for entry in tree.find_all(["a", "p"]):
        if entry.name == "p":
            yield None, entry.get_text().strip(), 0
        else:
            yield entry["href"], entry.get_text().strip(), len(entry.find_parents("ul"))


def write(html, path, version):
    entries = list(contents(html))
    pages = ["index.html"] + [page for page, _, _ in entries if page]
    table, body = [], [chapter(html, "index.html", pages, 1)]
    for page, title, depth in entries:
        if page is None:
            table.append(f'<p class="part">{escape(title)}</p>')
        else:
            table.append(f'<p class="level{depth}"><a href="#{key(page)}">{escape(title)}</a></p>')
            body.append(chapter(html, page, pages, depth))
    document = f"""<!DOCTYPE html><html lang="en"><head><meta charset="utf-8"><title>Vorel32 {version}</title></head><body>
<header><p class="name">Vorel32</p><p>Manual of version {version}</p></header><nav><h1>Contents</h1>{''.join(table)}</nav>{''.join(body)}</body></html>"""
    styles = [weasyprint.CSS(html / "_static/pygments.css"), weasyprint.CSS(Path(__file__).with_name("pdf.css"))]
    fetch = lambda address: {"file_obj": open(html / address.removeprefix(SITE), "rb")}
    weasyprint.HTML(string=document, base_url=SITE, url_fetcher=fetch).write_pdf(path, stylesheets=styles)
