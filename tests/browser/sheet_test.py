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

# [text, contrast of its colour with what is behind it] of every visible text, and of the drawings.
CONTRASTS = r"""
(() => {
  const parse = (colour) => {
    const [r, g, b, alpha = 1] = colour.match(/[\d.]+/g).map(Number);
    return { rgb: [r, g, b], alpha };
  };
  const over = (front, back) => front.rgb.map((value, i) => value * front.alpha + back[i] * (1 - front.alpha));
  const luminance = (rgb) => {
    const [r, g, b] = rgb.map((value) => value / 255)
      .map((value) => value <= 0.04045 ? value / 12.92 : ((value + 0.055) / 1.055) ** 2.4);
    return 0.2126 * r + 0.7152 * g + 0.0722 * b;
  };
  const contrast = (one, other) => {
    const [dark, light] = [luminance(one), luminance(other)].sort((a, b) => a - b);
    return (light + 0.05) / (dark + 0.05);
  };
  const behind = (element) => {
    if (element === null) return [255, 255, 255];
    const colour = parse(getComputedStyle(element).backgroundColor);
    return colour.alpha === 1 ? colour.rgb : over(colour, behind(element.parentElement));
  };
  const measure = (element, colour) => {
    const back = behind(element);
    return contrast(over(parse(colour), back), back);
  };
  const found = [];
  const walker = document.createTreeWalker(document.body, NodeFilter.SHOW_TEXT);
  while (walker.nextNode()) {
    const element = walker.currentNode.parentElement;
    const text = walker.currentNode.data.trim();
    if (text === "" || element.closest("script, style, noscript, .quiet, .skip, legend, [disabled], option:not(:checked)")) continue;
    if (!element.checkVisibility()) continue;
    found.push([text, measure(element, getComputedStyle(element).color)]);
  }
  const search = document.getElementById("search");
  found.push(["the search's hint", measure(search, getComputedStyle(search, "::placeholder").color)]);
  const drawings = [...document.querySelectorAll(".placeholder")].map(
    (drawing) => ["drawing", measure(drawing.parentElement, getComputedStyle(drawing).stroke)]);
  return { texts: found, drawings };
})()
"""


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
        everything = self.shown(page)
        page.tab_to("element.type === 'radio'")
        page.press("ArrowRight")
        kind = page.evaluate("document.activeElement.value")
        table = {"picture": "ImageTable", "film": "VideoTable", "sound": "AudioTable"}[kind]
        count = select(self.database, f"SELECT count(*) FROM {table}")[0][0]
        page.wait(f"{self.SHOWN} === {count}")
        page.press("ArrowLeft")
        page.wait(f"{self.SHOWN} === {everything}")
        page.tab_to("element.id === 'filter-folder'")
        page.press("ArrowDown")
        page.wait(f"{self.SHOWN} === document.querySelectorAll('.item[data-folder=\"' + "
                  "document.getElementById('filter-folder').value + '\"]').length")
        self.assertLess(self.shown(page), everything)
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

    def changed_card(self):
        """A page that marks what a second scan found: a file more, one less, and another size."""
        card = os.path.join(self.work, "changing")
        shutil.rmtree(card, ignore_errors=True)
        shutil.copytree(CARD, card)
        folder = os.path.join(card, "DCIM", "100ORXSC")
        before, after = (os.path.join(self.work, f"{name}.db") for name in ("before", "after"))
        for database in (before, after):
            if os.path.exists(database):
                os.remove(database)
        subprocess.run([ORXSCAN, "scan", card, before, "--quiet"], check=True, timeout=60)
        shutil.copy(before, after)
        shutil.copy(os.path.join(folder, "ORXA0001.JPG"), os.path.join(folder, "ORXA0007.JPG"))
        os.remove(os.path.join(card, "DCIM", "101ORXSC", "ORXA0001.MP4"))
        with open(os.path.join(folder, "ORXA0002.JPG"), "ab") as file:
            file.write(b"more")
        subprocess.run([ORXSCAN, "scan", card, after, "--quiet"], check=True, timeout=60)
        return self.sheet(after, "changed.html", "--before", before)

    def test_marks_what_a_rescan_changed(self):
        page = self.open(self.changed_card(), height=6000)
        page.wait("document.querySelectorAll('.item.built').length === "
                  "document.querySelectorAll('.item').length")
        marked = dict(page.evaluate(
            "[...document.querySelectorAll('.item')].filter(item => item.querySelector('.mark'))"
            ".map(item => [item.querySelector('.number').textContent, "
            "[...item.querySelectorAll('.mark')].map(mark => mark.textContent).join(', ')])"))
        self.assertEqual(marked, {"100-0007JPG": "added", "101-0001MP4": "removed, file gone",
                                  "100-0002JPG": "changed"})
        page.tab_to("element.id === 'filter-mark'")
        for words, number in (("added (1)", "100-0007"), ("removed (1)", "101-0001"),
                              ("changed (1)", "100-0002")):
            page.press("ArrowDown")
            page.wait(self.SHOWN + " === 1")
            self.assertEqual(page.evaluate("document.activeElement.selectedOptions[0].textContent"),
                             words)
            page.wait("document.querySelector('.folder:not([hidden]) .item:not([hidden])')"
                      f".textContent.includes('{number}')")
        self.assertEqual(page.complaints(), [])

    def test_fetches_thumbnails_beside_the_page_when_they_come_near(self):
        card = os.path.join(self.work, "many")
        for folder in ("100MANYS", "101MANYS"):
            os.makedirs(os.path.join(card, "DCIM", folder))
            for number in range(1, 121):
                shutil.copy(os.path.join(CARD, "DCIM", "100ORXSC", f"ORXA000{number % 3 + 1}.JPG"),
                            os.path.join(card, "DCIM", folder, f"ORXA{number:04}.JPG"))
        database = os.path.join(self.work, "many.db")
        subprocess.run([ORXSCAN, "scan", card, database, "--quiet"], check=True, timeout=60)
        recorded = {str(id): size for id, size in select(
            database, "SELECT id, ThumbnailWidth || 'x' || ThumbnailHeight FROM ImageTable")}
        self.assertEqual(len(recorded), 240)
        page = self.open(self.sheet(database, "many.html", "--thumbnails-beside"))
        complete = "[...document.images].every(image => image.complete && image.naturalWidth > 0)"
        page.wait(f"document.images.length > 0 && {complete}")
        fetched = lambda: len({event["params"]["request"]["url"]
                               for event in page.events("Network.requestWillBeSent")
                               if "many_thumbnails" in event["params"]["request"]["url"]})
        self.assertLess(fetched(), 120)
        page.evaluate("window.scrollTo(0, document.documentElement.scrollHeight)")
        page.wait("document.querySelector('#item-240 img')?.naturalWidth > 0")
        self.assertLess(fetched(), 240)
        page.press("/")
        page.type("101-0042")
        page.wait(self.SHOWN + " === 1")
        page.wait("document.querySelector('.folder:not([hidden]) .item:not([hidden]) img')"
                  "?.naturalWidth > 0")
        page.press("Escape")
        page.wait(f"{self.SHOWN} === 240")
        for number in range(0, 240, 4):  # through the whole page
            page.evaluate(f"document.getElementById('item-{number + 1}').scrollIntoView()")
            page.wait(f"document.querySelector('#item-{number + 4} img')?.naturalWidth > 0")
        page.wait(f"document.images.length === 240 && {complete}")
        decoded = dict(page.evaluate(
            "[...document.images].map(image => [image.closest('.item').dataset.id, "
            "`${image.naturalWidth}x${image.naturalHeight}`])"))
        self.assertEqual(decoded, recorded)
        self.assertEqual(fetched(), 240)
        self.assertEqual(page.complaints(), [])

    def test_has_readable_colours(self):
        path = self.changed_card()
        for dark in (False, True):
            page = self.open(path, height=6000, dark=dark)
            page.wait("document.querySelectorAll('.item.built').length === "
                      "document.querySelectorAll('.item').length")
            page.evaluate("document.querySelectorAll('details').forEach(d => d.open = true)")
            page.wait("document.querySelectorAll('details dl').length === "
                      "document.querySelectorAll('details').length")
            for theme in ("as the system", "light", "dark"):
                with self.subTest(system="dark" if dark else "light", theme=theme):
                    found = page.evaluate(CONTRASTS)
                    self.assertGreater(len(found["texts"]), 100)
                    self.assertEqual([text for text in found["texts"] if text[1] < 4.5], [])
                    self.assertEqual([drawing for drawing in found["drawings"] if drawing[1] < 3], [])
                page.evaluate("document.getElementById('theme').click()")

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
