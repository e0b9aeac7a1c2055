#!/usr/bin/env python3
"""The media server's page in a real browser, on a loopback interface of its own.

usage: page_test.py ORXSERVE SAMPLE_CARD SCREENSHOTS [TEST...]
"""

import os
import pathlib
import shutil
import sys
import tempfile
import time
import unittest

HERE = pathlib.Path(__file__).parent
sys.path[:0] = [str(HERE), str(HERE.parent.parent / "browser")]

import chromium
import network
from network_test import jpeg

PROGRAM, CARD, SHOTS = None, None, None
READY = "document.querySelectorAll('.item').length > 0"


class Loopback:
    """The server's machine is this one."""

    def __init__(self):
        network.ip("link", "set", "lo", "up")

    def command(self, *words):
        return list(words)


class PageTest(unittest.TestCase):
    @classmethod
    def setUpClass(cls):
        cls.net = Loopback()
        cls.dir = tempfile.mkdtemp(prefix="orxserve-page-")
        cls.card = os.path.join(cls.dir, "card")
        shutil.copytree(CARD, cls.card)
        cls.server = network.Server(cls.net, PROGRAM, cls.card, os.path.join(cls.dir, "state"),
                                    "--interface", "lo", "--name", "Sample card")
        cls.server.wait_for("serving ", 2)
        cls.address = "http://127.0.0.1:8200/"
        cls.browser = chromium.Browser()

    @classmethod
    def tearDownClass(cls):
        cls.browser.close()
        cls.server.stop()
        shutil.rmtree(cls.dir)

    def open(self, until=READY, **options):
        page = chromium.Page(self.browser, self.address, until=until, **options)
        self.addCleanup(page.close)
        return page

    def shot(self, page, name):
        os.makedirs(SHOTS, exist_ok=True)
        page.screenshot(os.path.join(SHOTS, name))

    def titles(self, page):
        return page.evaluate("[...document.querySelectorAll('.item b')].map(b => b.textContent)")

    def assert_quiet(self, page):
        self.assertEqual([e for e in page.complaints() if "url" not in str(e.get("params", {}).get(
            "request", "")) or not e["params"]["request"]["url"].startswith(self.address)], [])

    def test_shows_every_item_with_its_thumbnail(self):
        page = self.open()
        self.assertEqual(len(self.titles(page)), 9 + self.added())
        page.wait("[...document.querySelectorAll('.frame img')].every(i => i.naturalWidth > 0)")
        self.assertGreaterEqual(page.evaluate("document.querySelectorAll('.frame img').length"), 4)
        self.assertIn("pictures", page.evaluate("document.getElementById('summary').textContent"))
        self.shot(page, "serve.png")
        self.assert_quiet(page)

    def added(self):
        return int(os.path.exists(os.path.join(self.card, "NEW.JPG")))

    def test_filters_by_words_and_kind(self):
        page = self.open()
        page.evaluate("document.getElementById('search').focus()")
        page.type("keepers")
        page.wait("document.querySelectorAll('.item').length === 1")
        self.assertEqual(self.titles(page), ["TRACK01"])
        page.evaluate("document.getElementById('search').value = ''")
        page.evaluate("document.querySelector('input[value=\"3\"]').click()")
        page.wait("document.querySelectorAll('.item').length === 3")

    def test_shows_the_picture_large_with_its_original_one_click_away(self):
        page = self.open()
        page.evaluate("[...document.querySelectorAll('.item.kind-1')].find(i => "
                      "i.textContent.includes('ORXA0001')).click()")
        page.wait("(document.querySelector('#viewer-stage img') || {}).naturalWidth === 640")
        self.assertTrue(page.evaluate("document.getElementById('viewer-original').href")
                        .startswith(self.address + "o/"))
        title = "document.getElementById('viewer-title').textContent"
        first = page.evaluate(title)
        page.press("ArrowRight")
        self.assertNotEqual(page.evaluate(title), first)
        self.shot(page, "serve-viewer.png")
        page.press("Escape")
        page.wait("!document.getElementById('viewer').open")
        self.assertEqual(page.evaluate("document.activeElement.className"), "item kind-1")
        self.assert_quiet(page)

    def test_plays_sounds(self):
        page = self.open()
        page.evaluate("[...document.querySelectorAll('.item')].find(i => "
                      "i.textContent.includes('TRACK01')).click()")
        page.wait("document.querySelector('#viewer-stage audio') === null || "
                  "document.querySelector('#viewer-stage audio').readyState > 0")
        self.assertEqual(page.evaluate("document.querySelectorAll('#viewer-stage audio').length"), 1)

    def test_plays_films_as_far_as_the_browser_knows_them(self):
        page = self.open()
        page.evaluate("[...document.querySelectorAll('.item.kind-3')].find(i => "
                      "i.textContent.includes('ORXA0002')).click()")
        page.wait("document.querySelector('#viewer-stage p') !== null || "
                  "document.querySelector('#viewer-stage video').readyState > 0")

    def test_shows_a_file_that_appears(self):
        page = self.open()
        page.wait("document.querySelector('#live').classList.contains('on')")
        with open(os.path.join(self.card, "NEW.JPG"), "wb") as file:
            file.write(jpeg())
        self.server.rescan()
        page.wait("[...document.querySelectorAll('.item.new b')].some(b => b.textContent === 'NEW')")

    def test_fits_a_phone(self):
        page = self.open(width=390, height=800)
        self.assertLessEqual(page.evaluate("document.documentElement.scrollWidth"), 390)
        self.shot(page, "serve-phone.png")

    def test_is_dark_where_the_system_is(self):
        page = self.open(dark=True)
        self.assertEqual(page.evaluate("getComputedStyle(document.body).backgroundColor"),
                         "rgb(20, 21, 23)")
        self.shot(page, "serve-dark.png")

    def test_is_a_plain_list_without_scripts(self):
        page = self.open(until="document.querySelectorAll('.plain li').length >= 9", scripts=False)
        page.wait("document.querySelectorAll('.plain a[href^=\"/o/\"]').length >= 9")
        self.shot(page, "serve-plain.png")


if __name__ == "__main__":
    if "ORXSERVE_NETWORK_TESTS" not in os.environ:
        print("skipped: ORXSERVE_NETWORK_TESTS is not set; they need a quiet machine")
        sys.exit(77)
    if chromium.program() is None:
        print("skipped: there is no chromium")
        sys.exit(77)
    network.enter()
    PROGRAM, CARD, SHOTS = sys.argv[1:4]
    unittest.main(argv=[sys.argv[0], *sys.argv[4:]], verbosity=2)
