#!/usr/bin/env python3
"""Opens pages of `orxscan sheet` in headless Chromium and uses them as a user does.

usage: sheet_test.py ORXSCAN CARD FOLDER [unittest's arguments]

CARD is scanned; FOLDER gets the screenshots.  Exit status 77 when there is no Chromium.
"""

import os
import shutil
import sqlite3
import subprocess
import sys
import tempfile
import time
import unittest

import chromium

ORXSCAN, CARD, FOLDER = "", "", ""

HOSTILE = ["<script>window.hacked = 1; alert(1)</script>",
           "<img src=x onerror='window.hacked = 1'>", "\"><svg onload=window.hacked=1>", "</bdi></h3></script><b>bold</b>",
           "two\nlines & 'more'",
           "\u202egnp.exe", "&lt;not an entity&gt;"]
LARGE = 10000


def execute(database, sql, rows=None):
    with sqlite3.connect(database) as connection:
        if rows is None:
            connection.executescript(sql)
        else:
            connection.executemany(sql, rows)
    connection.close()


def select(database, sql):
    connection = sqlite3.connect(database)
    rows = connection.execute(sql).fetchall()
    connection.close()
    return rows


class SheetInABrowser(unittest.TestCase):
    @classmethod
    def setUpClass(cls):
        cls.work = tempfile.mkdtemp(prefix="orxscan-sheet-")
        cls.database = os.path.join(cls.work, "card.db")
        subprocess.run([ORXSCAN, "scan", CARD, cls.database, "--quiet"], check=True, timeout=60)
        cls.page_path = cls.sheet(cls.database, "card.html")
        cls.browser = chromium.Browser()

    @classmethod
    def tearDownClass(cls):
        cls.browser.close()
        shutil.rmtree(cls.work)

    @classmethod
    def sheet(cls, database, name, *more):
        path = os.path.join(cls.work, name)
        subprocess.run([ORXSCAN, "sheet", database, path, *more], check=True, timeout=120,
                       stdout=subprocess.DEVNULL)
        return path

    def open(self, path=None, **how):
        page = chromium.Page(self.browser, path or self.page_path, **how)
        self.addCleanup(page.close)
        return page

    def copy(self, name):
        database = os.path.join(self.work, name)
        shutil.copy(self.database, database)
        return database

    SHOWN = "document.querySelectorAll('.folder:not([hidden]) .item:not([hidden])').length"

    def shown(self, page):
        return page.evaluate(self.SHOWN)

    def test_decodes_each_thumbnail_at_the_recorded_size(self):
        recorded = dict(select(self.database,
                               "SELECT id, ThumbnailWidth || 'x' || ThumbnailHeight FROM "
                               "ImageTable WHERE ThumbnailLength > 0"))
        self.assertGreater(len(recorded), 3)
        page = self.open(height=6000)  # all of them in view
        page.wait("[...document.images].every(image => image.complete && image.naturalWidth > 0)")
        decoded = dict(page.evaluate(
            "[...document.images].map(image => [image.closest('.item').dataset.id, "
            "`${image.naturalWidth}x${image.naturalHeight}`])"))
        self.assertEqual(decoded, {str(id): size for id, size in recorded.items()})
        self.assertEqual(page.complaints(), [])

    def test_searches_by_keyboard(self):
        page = self.open()
        everything = self.shown(page)
        page.press("/")
        self.assertEqual(page.evaluate("document.activeElement.id"), "search")
        page.type("voice01")
        page.wait(self.SHOWN + " === 1")
        self.assertIn("1 of", page.evaluate("document.querySelector('[role=status]').textContent"))
        page.press("Escape")
        page.wait(f"{self.SHOWN} === {everything}")
        page.type("nothing has this name")
        page.wait(self.SHOWN + " === 0")
        self.assertTrue(page.evaluate("document.getElementById('nothing').checkVisibility()"))
        page.tab_to("element.id === 'reset'")
        page.press("Enter")
        page.wait(f"{self.SHOWN} === {everything}")
        self.assertEqual(page.complaints(), [])

    def test_filters_by_keyboard(self):
        page = self.open()
        page.tab_to("element.type === 'radio'")
        page.press("ArrowRight")
        kind = page.evaluate("document.activeElement.value")
        table = {"picture": "ImageTable", "film": "VideoTable", "sound": "AudioTable"}[kind]
        count = select(self.database, f"SELECT count(*) FROM {table}")[0][0]
        page.wait(f"{self.SHOWN} === {count}")
        page.press("ArrowLeft")
        page.wait(f"{self.SHOWN} === document.querySelectorAll('.item').length")
        page.tab_to("element.id === 'filter-folder'")
        page.press("ArrowDown")
        page.wait(f"{self.SHOWN} === document.querySelectorAll('.item[data-folder=\"' + "
                  "document.getElementById('filter-folder').value + '\"]').length")
        self.assertLess(self.shown(page),
                        page.evaluate("document.querySelectorAll('.item').length"))
        self.assertEqual(page.complaints(), [])

    def test_opens_details_by_keyboard(self):
        page = self.open()
        page.tab_to("element.localName === 'summary'")
        page.press("Enter")
        page.wait("document.querySelector('details[open] dl') !== null")
        first = page.evaluate("document.activeElement.closest('.item').id")
        page.press("ArrowRight")
        self.assertNotEqual(page.evaluate("document.activeElement.closest('.item').id"), first)
        self.assertEqual(page.complaints(), [])

    def test_shows_hostile_titles_as_text(self):
        database = self.copy("hostile.db")
        media = [(table, id) for table in ("ImageTable", "VideoTable", "AudioTable")
                 for (id,) in select(database, f"SELECT id FROM {table} ORDER BY id")]
        for title, (table, id) in zip(HOSTILE, media):
            execute(database, f"UPDATE {table} SET Title = ? WHERE id = ?", [(title, id)])
        page = self.open(self.sheet(database, "hostile.html"))
        titles = page.evaluate("[...document.querySelectorAll('.item h3')].map(h => h.textContent)")
        self.assertEqual(len(media), len(titles))
        for title in HOSTILE:
            with self.subTest(title=title):
                if title.isprintable():  # others are made visible
                    self.assertIn(title, titles)
        self.assertIsNone(page.evaluate("window.hacked"))
        page.tab_to("element.localName === 'summary'")
        page.press("Enter")
        page.evaluate("document.querySelectorAll('details').forEach(d => d.open = true)")
        page.wait("document.querySelectorAll('details dl').length === "
                  "document.querySelectorAll('details').length")
        self.assertIsNone(page.evaluate("window.hacked"))
        foreign = "document.querySelectorAll('.item b, h3 svg, h3 img').length"
        self.assertEqual(page.evaluate(foreign), 0)
        self.assertEqual(page.complaints(), [])

    def test_lists_the_items_without_scripts(self):
        page = self.open(scripts=False)
        titles = [name for role, name in page.accessible()
                  if role == "heading" and name.startswith(("ORXA", "TRACK", "VOICE"))]
        self.assertEqual(len(titles), len(select(self.database, "SELECT id FROM ObjectTable WHERE class > 0")))

    def test_names_everything_for_assistive_programs(self):
        page = self.open(height=6000)
        nodes = page.accessible()
        for role in ("main", "search", "searchbox", "banner", "status"):
            self.assertTrue(any(found == role for found, _ in nodes), role)
        nameless = [node for node in nodes if not node[1] and node[0] in (
            "image", "img", "button", "link", "searchbox", "combobox", "radio", "heading",
            "DisclosureTriangle")]
        self.assertEqual(nameless, [])

    def test_fits_every_window(self):
        for name, how in {"wide": {"width": 1440, "height": 1000},
                          "phone": {"width": 390, "height": 844},
                          "narrow": {"width": 320, "height": 640},
                          "dark": {"width": 1440, "height": 1000, "dark": True}}.items():
            with self.subTest(name):
                page = self.open(**how)
                page.wait("[...document.querySelectorAll('img[src]')].every(i => i.complete)")
                time.sleep(0.2)  # the screenshot shows what was decoded last, too
                page.screenshot(os.path.join(FOLDER, f"{name}.png"))
                self.assertLessEqual(page.evaluate("document.documentElement.scrollWidth"),
                                     how["width"])
                self.assertEqual(page.complaints(), [])
        background = "getComputedStyle(document.body).backgroundColor + " \
                     "getComputedStyle(document.documentElement).backgroundColor"
        self.assertNotEqual(self.open().evaluate(background),
                            self.open(dark=True).evaluate(background))

    def test_opens_a_page_of_many_items(self):
        database = self.copy("large.db")
        columns = [row[1] for row in select(database, "PRAGMA table_info(ImageTable)")]
        others = ", ".join(column for column in columns if column != "id")
        one = "(SELECT min(CAST(id AS INTEGER)) FROM ImageTable)"
        numbers = ("WITH RECURSIVE n(i) AS "
                   f"(SELECT 100001 UNION ALL SELECT i + 1 FROM n LIMIT {LARGE})")
        execute(database,
                f"{numbers} INSERT INTO ObjectTable (id, class, date, parentID, FullPath) "
                f"SELECT n.i, 1, o.date, o.parentID, o.FullPath FROM n, ObjectTable AS o "
                f"WHERE o.id = {one};"
                f"{numbers} INSERT INTO ImageTable (id, {others}) SELECT n.i, "
                + ", ".join(f"m.{column}" for column in columns if column != "id") +
                f" FROM n, ImageTable AS m WHERE CAST(m.id AS INTEGER) = {one}")
        page = self.open(self.sheet(database, "large.html", "--thumbnails-beside"))
        loaded = page.seconds
        count = self.shown(page)
        self.assertGreaterEqual(count, LARGE)
        start = time.monotonic()
        page.press("/")
        page.type("voice01")
        page.wait(self.SHOWN + " === 1")
        print(f"{count} items: complete after {loaded:.2f} s, searched after "
              f"{time.monotonic() - start:.2f} s more")
        self.assertEqual(page.complaints(), [])


def main():
    global ORXSCAN, CARD, FOLDER
    if len(sys.argv) < 4:
        sys.exit(__doc__.strip())
    ORXSCAN, CARD, FOLDER = sys.argv[1:4]
    if chromium.program() is None:
        print("no Chromium here: the page is not tested in a browser")
        sys.exit(77)
    os.makedirs(FOLDER, exist_ok=True)
    unittest.main(argv=sys.argv[:1] + sys.argv[4:], verbosity=2)


if __name__ == "__main__":
    main()
