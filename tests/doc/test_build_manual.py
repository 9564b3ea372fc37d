#!/usr/bin/python3
# SPDX-License-Identifier: GPL-3.0-or-later
"""Tests tools/manual/build_manual.py: what it makes, and that it refuses what would be broken in the document."""

import os
import pathlib
import re
import subprocess
import sys
import tempfile
import unittest

import PIL.Image
import pypdf

TOOL = pathlib.Path(__file__).resolve().parents[2] / "tools" / "manual" / "build_manual.py"
CSS_PIXEL_MM = 25.4 / 96
BOOK = """[book]
program = Sample
title = Manual
subtitle = For a test
subject = Subject of the test
keywords = one, two
"""


class BuildManual(unittest.TestCase):
    def setUp(self):
        folder = tempfile.TemporaryDirectory(prefix="manual with blanks ")
        self.addCleanup(folder.cleanup)
        self.folder = pathlib.Path(folder.name)
        self.output = self.folder / "out" / "book.pdf"
        (self.folder / "book.ini").write_text(BOOK, encoding="utf-8")

    def write(self, name: str, text: str) -> pathlib.Path:
        file = self.folder / name
        file.write_text(text, encoding="utf-8")
        return file

    def write_picture(self, name: str, width: int = 200):
        PIL.Image.new("RGB", (width, 100), "white").save(self.folder / name, dpi=(192, 192))

    def build(self, *chapters, **environment):
        command = [sys.executable, "-B", TOOL, "--book", self.folder / "book.ini", "--output", self.output,
                   "--version", "v9.8.7", "--depfile", self.folder / "book.d", *chapters]
        return subprocess.run(command, capture_output=True, text=True, env={**os.environ, **environment}, check=False)

    def assert_refused(self, result, text: str):
        self.assertEqual(result.returncode, 1, result.stderr)
        self.assertIn(text, result.stderr)
        self.assertFalse(self.output.exists())

    def test_makes_a_document_with_title_page_contents_and_bookmarks(self):
        one = self.write("10-one.md", "# First\n\nText.\n\n## Part of the first\n\nSee [second](20-two.md#inside).\n")
        two = self.write("20-two.md", "# Second & last\n\n## Inside\n\n[back](10-one.md)\n")
        result = self.build(one, two, SOURCE_DATE_EPOCH="1000000000")
        self.assertEqual(result.returncode, 0, result.stderr)
        reader = pypdf.PdfReader(self.output)
        self.assertEqual(len(reader.pages), 4)
        first_page = reader.pages[0].extract_text()
        self.assertIn("v9.8.7", first_page)
        self.assertIn("9 September 2001", first_page)
        self.assertEqual(reader.metadata.title, "Sample Manual")
        self.assertEqual(reader.metadata.subject, "Subject of the test")
        self.assertEqual([entry.title for entry in reader.outline if not isinstance(entry, list)],
                         ["First", "Second & last"])
        self.assertEqual([entry.title for entry in reader.outline[1]], ["Part of the first"])

    def test_prints_a_picture_at_the_size_of_its_density(self):
        self.write_picture("narrow.png")
        chapter = self.write("10-one.md", "# One\n\n![A picture](narrow.png)\n")
        self.assertEqual(self.build(chapter).returncode, 0)
        page = pypdf.PdfReader(self.output).pages[2]
        self.assertEqual(len(page["/Resources"]["/XObject"]), 1)
        self.assertIn("A picture", page.extract_text())
        # 200 pixels at double density are 100 pixels of a window, a tenth of the text's width: 16.6 mm.
        widths = [float(scale) for scale in re.findall(rb"([\d.]+) 0 0 -?[\d.]+ [-\d.]+ [-\d.]+ cm\s+/\S+ Do",
                                                       page.get_contents().get_data())]
        self.assertEqual(len(widths), 1)
        self.assertAlmostEqual(widths[0] * CSS_PIXEL_MM, 16.6, delta=0.1)

    def test_tells_the_build_system_what_it_read(self):
        self.write_picture("a picture.png")
        chapter = self.write("10-one.md", "# One\n\n![A picture](<a picture.png>)\n")
        self.assertEqual(self.build(chapter).returncode, 0)
        depfile = (self.folder / "book.d").read_text(encoding="utf-8")
        for name in ("book.pdf:", "10-one.md", "book.ini", "manual.css", "a\\ picture.png"):
            self.assertIn(name, depfile)

    def test_refuses_a_missing_image(self):
        chapter = self.write("10-one.md", "# One\n\n![A picture](gone.png)\n")
        self.assert_refused(self.build(chapter), "10-one.md: the image gone.png does not exist")

    def test_refuses_an_image_without_a_text(self):
        self.write_picture("p.png")
        chapter = self.write("10-one.md", "# One\n\n![](p.png)\n")
        self.assert_refused(self.build(chapter), "the image p.png has no text")

    def test_refuses_an_image_from_a_network(self):
        chapter = self.write("10-one.md", "# One\n\n![A picture](http://127.0.0.1/p.png)\n")
        self.assert_refused(self.build(chapter), "does not exist")

    def test_refuses_a_link_to_no_chapter(self):
        chapter = self.write("10-one.md", "# One\n\n[there](20-two.md)\n")
        self.assert_refused(self.build(chapter), "the link 20-two.md names no chapter")

    def test_refuses_a_link_to_no_section(self):
        chapter = self.write("10-one.md", "# One\n\n## Part\n\n[there](#other)\n")
        self.assert_refused(self.build(chapter), "the link #other leads nowhere")

    def test_refuses_a_chapter_without_its_heading(self):
        for text in ("Text only.\n", "Text.\n\n# Late\n", "# One\n\n# Two\n", ""):
            with self.subTest(text=text):
                self.assert_refused(self.build(self.write("10-one.md", text)), "one first-level heading")

    def test_refuses_markup_that_is_not_closed(self):
        chapter = self.write("10-one.md", "# One\n\nA <kbd>key.\n")
        self.assert_refused(self.build(chapter), "not well-formed")

    def test_refuses_a_book_that_lacks_something(self):
        chapter = self.write("10-one.md", "# One\n")
        self.write("book.ini", BOOK.replace("title = Manual\n", ""))
        self.assert_refused(self.build(chapter), "lacks title")
        (self.folder / "book.ini").unlink()
        self.assert_refused(self.build(chapter), "book.ini cannot be read")

    def test_takes_an_old_document_away_when_it_fails(self):
        chapter = self.write("10-one.md", "# One\n")
        self.assertEqual(self.build(chapter).returncode, 0)
        self.write("10-one.md", "# One\n\n![A picture](gone.png)\n")
        self.assert_refused(self.build(chapter), "gone.png")


if __name__ == "__main__":
    unittest.main()
