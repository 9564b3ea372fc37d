#!/usr/bin/python3
# SPDX-License-Identifier: GPL-3.0-or-later
"""Makes a PDF of Markdown chapters: title page, contents with page numbers, bookmarks, links.

A book is a book.ini (title, subtitle, subject, keywords; "layout = continuous" lets chapters begin within a page) and
the chapters in the order of the command line; each begins with one first-level heading. Nothing is fetched from a network. A missing image, a link that leads nowhere, an image
without a text and a chapter without a heading end the run with an error and leave no PDF.
"""

import argparse
import configparser
import datetime
import html
import logging
import os
import pathlib
import re
import sys
import tempfile
import urllib.parse
from xml.etree import ElementTree

import markdown
import PIL.Image
import weasyprint

SHORT_TABLE_ROWS = 5  # a table of up to so many rows stays on one page
SHORT_NAME = 24  # a name of up to so many characters in a first column stays on one line
TEXT_WIDTH_MM = 166.0  # of manual.css: the page less its margins
SCREEN_DPI = 96.0  # of a picture that says nothing
PIXEL_MM = TEXT_WIDTH_MM / 1000  # printed size of one pixel of the windows at 100 %: a view of 1000 fills the width
MARKDOWN_EXTENSIONS = ["tables", "fenced_code", "attr_list", "def_list", "admonition", "sane_lists", "smarty", "toc"]
EXTERNAL = ("http:", "https:", "mailto:")


class BookError(Exception):
    """What is wrong with the sources; the text is for their author."""


class Chapter:
    """One Markdown file as an HTML tree, whose identifiers and links are unique within the book."""

    def __init__(self, path: pathlib.Path):
        self.path = path
        self.images = set()
        self.key = re.sub(r"^\d+-", "", path.stem)
        converter = markdown.Markdown(
            extensions=MARKDOWN_EXTENSIONS, output_format="xhtml",
            extension_configs={"toc": {"slugify": lambda text, _: f"{self.key}--{slug(text)}"},
                               "smarty": {"smart_dashes": False, "smart_ellipses": False}})
        body = converter.convert(path.read_text(encoding="utf-8"))
        try:
            self.root = ElementTree.fromstring(f'<section class="chapter">{named_to_numeric(body)}</section>')
        except ElementTree.ParseError as error:
            raise BookError(f"{path.name}: not well-formed: {error}") from error
        headings = self.root.findall("h1")
        if len(headings) != 1 or self.root[0] is not headings[0]:
            raise BookError(f"{path.name}: a chapter begins with its one first-level heading")
        self.title = text_of(headings[0])
        headings[0].set("id", self.key)
        for table in self.root.iter("table"):
            mark_table(table)

    def sections(self):
        """(identifier, title) of the second-level headings."""
        return [(heading.get("id"), text_of(heading)) for heading in self.root.findall("h2")]

    def place_images(self):
        """Gives every picture its address and its printed width, and a caption from its text."""
        for parent in list(self.root.iter()):
            for image in list(parent):
                if image.tag == "img":
                    self._place_image(image)
                    if parent.tag == "p" and len(parent) == 1 and not (parent.text or "").strip():
                        make_figure(parent, image)

    def _place_image(self, image):
        source = image.get("src", "")
        file = (self.path.parent / source).resolve()
        if not file.is_file():
            raise BookError(f"{self.path.name}: the image {source} does not exist")
        if not image.get("alt"):
            raise BookError(f"{self.path.name}: the image {source} has no text")
        with PIL.Image.open(file) as picture:
            dpi = picture.info.get("dpi", (SCREEN_DPI, SCREEN_DPI))[0] or SCREEN_DPI
            width = picture.width * SCREEN_DPI / dpi * PIXEL_MM
        self.images.add(file)
        image.set("src", file.as_uri())
        image.set("style", f"width: {min(width, TEXT_WIDTH_MM):.1f}mm")

    def resolve_links(self, chapters: dict):
        """Links to other chapters become links within the book."""
        own = identifiers_of(self.root)
        for link in self.root.iter("a"):
            target = link.get("href", "")
            if target.startswith(EXTERNAL):
                continue
            file, _, fragment = target.partition("#")
            chapter = chapters.get(file) if file else self
            if chapter is None:
                raise BookError(f"{self.path.name}: the link {target} names no chapter")
            identifier = f"{chapter.key}--{urllib.parse.unquote(fragment)}" if fragment else chapter.key
            known = own if chapter is self else identifiers_of(chapter.root)
            if identifier not in known:
                raise BookError(f"{self.path.name}: the link {target} leads nowhere")
            link.set("href", f"#{identifier}")


def slug(text: str) -> str:
    return re.sub(r"[^a-z0-9]+", "-", text.lower()).strip("-")


def named_to_numeric(text: str) -> str:
    """XML knows few of HTML's named characters."""
    keep = {"amp", "lt", "gt", "quot", "apos"}
    return re.sub(r"&(\w+);", lambda m: m.group(0) if m.group(1) in keep else html.unescape(m.group(0)), text)


def text_of(element) -> str:
    return "".join(element.itertext()).strip()


def identifiers_of(root) -> set:
    return {element.get("id") for element in root.iter() if element.get("id")}


def mark_table(table):
    """Tells the style sheet which tables and names are short enough to be kept together."""
    rows = table.findall("tbody/tr")
    if len(rows) <= SHORT_TABLE_ROWS:
        table.set("class", "short")
    for row in rows:
        if len(text_of(row[0])) <= SHORT_NAME:
            row[0].set("class", "name")


def make_figure(paragraph, image):
    paragraph.tag = "figure"
    paragraph.text = None
    image.tail = None
    ElementTree.SubElement(paragraph, "figcaption").text = image.get("alt")


def title_page(book: dict, version: str, date: datetime.date):
    page = ElementTree.Element("section", {"class": "title-page"})
    running = ElementTree.SubElement(page, "p", {"class": "running-title"})
    running.text = f"{book['program']} {version} · {book['title']}"
    ElementTree.SubElement(page, "p", {"class": "book-program"}).text = book["program"]
    ElementTree.SubElement(page, "p", {"class": "book-title"}).text = book["title"]
    ElementTree.SubElement(page, "p", {"class": "book-subtitle"}).text = book["subtitle"]
    facts = ElementTree.SubElement(page, "p", {"class": "book-facts"})
    facts.text = f"Version {version}"
    # Not strftime's month, which follows the machine's language.
    month = ("January", "February", "March", "April", "May", "June", "July", "August", "September", "October",
             "November", "December")[date.month - 1]
    ElementTree.SubElement(facts, "br").tail = f"{date.day} {month} {date.year}"
    return page


def contents(chapters):
    page = ElementTree.Element("section", {"class": "contents"})
    ElementTree.SubElement(page, "p", {"class": "contents-title"}).text = "Contents"
    outer = ElementTree.SubElement(page, "ul")
    for chapter in chapters:
        item = ElementTree.SubElement(outer, "li", {"class": "contents-chapter"})
        ElementTree.SubElement(item, "a", {"href": f"#{chapter.key}"}).text = chapter.title
        sections = chapter.sections()
        inner = ElementTree.SubElement(item, "ul") if sections else None
        for identifier, text in sections:
            entry = ElementTree.SubElement(inner, "li")
            ElementTree.SubElement(entry, "a", {"href": f"#{identifier}"}).text = text
    return page


def read_book(file: pathlib.Path) -> dict:
    ini = configparser.ConfigParser()
    if not ini.read(file, encoding="utf-8") or "book" not in ini:
        raise BookError(f"{file} cannot be read")
    book = dict(ini["book"])
    missing = {"program", "title", "subtitle", "subject", "keywords"} - book.keys()
    if missing:
        raise BookError(f"{file} lacks {', '.join(sorted(missing))}")
    return book


def read_chapters(files) -> list:
    chapters = [Chapter(file) for file in files]
    by_file = {chapter.path.name: chapter for chapter in chapters}
    for chapter in chapters:
        chapter.place_images()
    for chapter in chapters:
        chapter.resolve_links(by_file)
    return chapters


def assemble(book: dict, chapters: list, version: str, date: datetime.date, style: pathlib.Path) -> str:
    root = ElementTree.Element("html", {"lang": "en"})
    head = ElementTree.SubElement(root, "head")
    ElementTree.SubElement(head, "meta", {"charset": "utf-8"})
    ElementTree.SubElement(head, "title").text = f"{book['program']} {book['title']}"
    for name, content in (("description", book["subject"]), ("keywords", book["keywords"]),
                          ("author", book["program"]), ("generator", f"{book['program']} {version}"),
                          ("dcterms.created", date.isoformat())):
        ElementTree.SubElement(head, "meta", {"name": name, "content": content})
    ElementTree.SubElement(head, "link", {"rel": "stylesheet", "href": style.resolve().as_uri()})
    body = ElementTree.SubElement(root, "body", {"class": book.get("layout", "chapters")})
    body.append(title_page(book, version, date))
    body.append(contents(chapters))
    body.extend(chapter.root for chapter in chapters)
    return "<!DOCTYPE html>\n" + ElementTree.tostring(root, encoding="unicode", method="html")


def fetch_local(url: str):
    """Whatever is not a file of this machine is refused, so that a build never depends on a network."""
    if not url.startswith("file:"):
        raise BookError(f"{url} is not a local file")
    return weasyprint.default_url_fetcher(url)


class Complaints(logging.Handler):
    """Keeps what the renderer complains about; it would go on without the picture or the link."""

    def __init__(self):
        super().__init__(logging.WARNING)
        self.texts = []

    def emit(self, record):
        self.texts.append(record.getMessage())


def write_pdf(document: str, output: pathlib.Path):
    complaints = Complaints()
    logger = logging.getLogger("weasyprint")
    logger.addHandler(complaints)
    pdf = weasyprint.HTML(string=document, url_fetcher=fetch_local).write_pdf()
    if complaints.texts:
        raise BookError("the renderer complains: " + "; ".join(complaints.texts))
    output.parent.mkdir(parents=True, exist_ok=True)
    descriptor, temporary = tempfile.mkstemp(dir=output.parent, suffix=".pdf")
    with os.fdopen(descriptor, "wb") as file:
        file.write(pdf)
    os.chmod(temporary, 0o644)
    os.replace(temporary, output)  # never half a document


def build_date() -> datetime.date:
    """Today, or what a reproducible build says."""
    epoch = os.environ.get("SOURCE_DATE_EPOCH")
    if epoch:
        return datetime.datetime.fromtimestamp(int(epoch), datetime.timezone.utc).date()
    return datetime.date.today()


def write_depfile(depfile: pathlib.Path, output: pathlib.Path, inputs):
    """What the document was made of, for the build system."""
    def escaped(path):
        return str(path).replace(" ", "\\ ")
    lines = " \\\n  ".join(escaped(path.resolve()) for path in inputs)
    depfile.write_text(f"{escaped(output.resolve())}: {lines}\n", encoding="utf-8")


def parse_arguments():
    parser = argparse.ArgumentParser(description="Makes a PDF of Markdown chapters.")
    parser.add_argument("--book", type=pathlib.Path, required=True, help="book.ini")
    parser.add_argument("--output", type=pathlib.Path, required=True, help="the PDF")
    parser.add_argument("--version", required=True, help="of the program, as shown on the title page")
    parser.add_argument("--style", type=pathlib.Path, default=pathlib.Path(__file__).with_name("manual.css"))
    parser.add_argument("--depfile", type=pathlib.Path, help="tells the build system what the PDF was made of")
    parser.add_argument("chapters", type=pathlib.Path, nargs="+", help="in their order")
    return parser.parse_args()


def main() -> int:
    arguments = parse_arguments()
    try:
        chapters = read_chapters(arguments.chapters)
        document = assemble(read_book(arguments.book), chapters, arguments.version, build_date(), arguments.style)
        write_pdf(document, arguments.output)
        if arguments.depfile:
            images = sorted(set().union(*(chapter.images for chapter in chapters)))
            write_depfile(arguments.depfile, arguments.output,
                          [arguments.book, arguments.style, *arguments.chapters, *images])
    except (BookError, OSError, configparser.Error) as error:
        print(f"{arguments.output.name}: error: {error}", file=sys.stderr)
        arguments.output.unlink(missing_ok=True)
        return 1
    return 0


if __name__ == "__main__":
    sys.exit(main())
