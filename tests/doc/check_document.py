#!/usr/bin/python3
# SPDX-License-Identifier: GPL-3.0-or-later
"""Checks a built document against the chapters it was to be made of: pages, bookmarks, pictures, links, properties."""

import argparse
import configparser
import pathlib
import re
import sys

import pypdf


def chapter_titles(folder: pathlib.Path) -> list:
    titles = []
    for file in sorted(folder.glob("*.md")):
        heading = re.search(r"^# (.+)$", file.read_text(encoding="utf-8"), re.MULTILINE)
        titles.append(heading.group(1).strip())
    return titles


def pictures_wanted(folder: pathlib.Path) -> set:
    return {name for file in folder.glob("*.md")
            for name in re.findall(r"!\[[^\]]*\]\(([^)]+)\)", file.read_text(encoding="utf-8"))}


def top_bookmarks(reader: pypdf.PdfReader) -> list:
    return [(entry.title, reader.get_destination_page_number(entry)) for entry in reader.outline
            if not isinstance(entry, list)]


def picture_sizes(reader: pypdf.PdfReader) -> list:
    sizes = {}
    for page in reader.pages:
        objects = page["/Resources"].get("/XObject", {})
        for name in objects:
            picture = objects[name].get_object()
            if picture.get("/Subtype") == "/Image":
                sizes[objects.raw_get(name).idnum] = (picture["/Width"], picture["/Height"])
    return list(sizes.values())


def internal_links(reader: pypdf.PdfReader) -> list:
    links = []
    for page in reader.pages:
        for annotation in page.get("/Annots", []):
            link = annotation.get_object()
            if link.get("/Subtype") == "/Link" and "/Dest" in link:
                links.append(str(link["/Dest"]))
    return links


class Check:
    def __init__(self):
        self.failures = 0

    def __call__(self, holds: bool, text: str):
        if not holds:
            self.failures += 1
            print(f"failed: {text}")


def main() -> int:
    parser = argparse.ArgumentParser()
    parser.add_argument("document", type=pathlib.Path)
    parser.add_argument("folder", type=pathlib.Path)
    parser.add_argument("--pages", type=int, required=True, help="at least so many")
    parser.add_argument("--version", required=True)
    arguments = parser.parse_args()
    check = Check()

    check(arguments.document.is_file(), f"{arguments.document} was not built")
    if check.failures:
        return 1
    reader = pypdf.PdfReader(arguments.document)
    texts = [page.extract_text() for page in reader.pages]
    book = configparser.ConfigParser()
    book.read(arguments.folder / "book.ini", encoding="utf-8")

    check(len(reader.pages) >= arguments.pages, f"only {len(reader.pages)} pages")
    check(all(text.strip() for text in texts), "a page is empty")
    check(arguments.version in texts[0] and book["book"]["title"] in texts[0], "the first page is no title page")
    check(reader.metadata.title == f"{book['book']['program']} {book['book']['title']}",
          f"the title property is {reader.metadata.title}")
    check(reader.metadata.subject == book["book"]["subject"], "the subject property is missing")

    titles = chapter_titles(arguments.folder)
    bookmarks = top_bookmarks(reader)
    check([title for title, _ in bookmarks] == titles, f"bookmarks {bookmarks}, but chapters {titles}")
    for title, page in bookmarks:
        check(title in texts[page], f"the bookmark {title} leads to page {page + 1}, which does not bear it")
        check(re.search(rf"{re.escape(title)}[ .]*\n?{page + 1}(?!\d)", "\n".join(texts[1:4])) is not None,
              f"the contents do not lead to {title} on page {page + 1}")

    wanted = pictures_wanted(arguments.folder)
    sizes = picture_sizes(reader)
    check(len(sizes) == len(wanted), f"{len(sizes)} pictures in the document, {len(wanted)} in the chapters")
    check(all(width > 100 and height > 100 for width, height in sizes), f"a picture is too small: {sizes}")

    links = internal_links(reader)
    check(len(links) >= len(titles), "the contents have no links")
    check(all(link in reader.named_destinations for link in links), "a link leads nowhere")
    print(f"{arguments.document.name}: {len(texts)} pages, {len(titles)} chapters, {len(sizes)} pictures, "
          f"{len(links)} links, {check.failures} failures")
    return 1 if check.failures else 0


if __name__ == "__main__":
    sys.exit(main())
