#!/usr/bin/env python3
"""The media server on a network of its own: discovered, walked, followed, and attacked.

usage: network_test.py ORXSERVE SAMPLE_CARD [TEST...]
"""

import hashlib
import os
import pathlib
import re
import shutil
import signal
import socket
import subprocess
import sys
import tempfile
import time
import unittest
import urllib.parse

sys.path.insert(0, str(pathlib.Path(__file__).parent))

import network
from control_point import DC, DIDL, UPNP, Device, Listener, Subscriber, discover, discover6

PROGRAM, CARD = None, None
HERE = pathlib.Path(__file__).parent


def setUpModule():
    global net
    net = network.Network()


def tearDownModule():
    net.close()


def jpeg(width=320, height=240):
    """The smallest picture that the library takes: a frame header and an EXIF block with a date."""
    date = b"2026:05:06 07:08:09\0"
    tiff = (b"MM\0*\0\0\0\x08\0\x01\x01\x32\0\x02\0\0\0\x14\0\0\0\x1a\0\0\0\0" + date)
    exif = b"Exif\0\0" + tiff
    frame = bytes([8, height >> 8, height & 255, width >> 8, width & 255, 1, 1, 0x11, 0])
    segments = b"\xff\xe1" + (len(exif) + 2).to_bytes(2, "big") + exif
    segments += b"\xff\xc0" + (len(frame) + 2).to_bytes(2, "big") + frame
    return b"\xff\xd8" + segments + b"\xff\xda\0\x08\1\1\0\0\x3f\0" + b"\0" * 64 + b"\xff\xd9"


class ServerTest(unittest.TestCase):
    options = ()

    def setUp(self):
        self.dir = tempfile.mkdtemp(prefix="orxserve-")
        self.card = os.path.join(self.dir, "card")
        shutil.copytree(CARD, self.card)
        self.start()

    def start(self):
        self.server = network.Server(net, PROGRAM, self.card, os.path.join(self.dir, "state"),
                                     *self.options)
        self.server.wait_for("serving ", self.server.said().count("serving ") + 2)
        self.server.wait_for("reached at")
        port = re.findall(r"on port (\d+)", self.server.said())[-1]
        self.device = Device(f"http://{network.SERVER}:{port}/device.xml")

    def tearDown(self):
        if self.server.process.poll() is None:
            self.server.stop()
        shutil.rmtree(self.dir)

    def all_items(self):
        return [element for element in self.device.walk("1") if element.tag == DIDL + "item"]

    def items(self):
        """By title; of several that have the same, the last one."""
        return {element.findtext(DC + "title"): element for element in self.all_items()}

    def files(self):
        return {hashlib.sha256(path.read_bytes()).hexdigest(): path
                for path in pathlib.Path(self.card).rglob("*") if path.is_file()}


class Discovery(ServerTest):
    def test_answers_a_search_for_everything_six_times(self):
        answers = discover("ssdp:all")
        self.assertEqual(len({answer["USN"] for answer in answers}), 6)
        for answer in answers:
            self.assertEqual(answer["LOCATION"], self.device.location)
            self.assertIn("EXT", answer)
            self.assertEqual(answer["CACHE-CONTROL"], "max-age=1800")

    def test_answers_for_what_it_is_alone(self):
        self.assertEqual(len(discover("urn:schemas-upnp-org:device:MediaServer:1")), 1)
        self.assertEqual(discover("urn:schemas-upnp-org:device:MediaRenderer:1"), [])

    def test_is_reached_by_its_link_address(self):
        answers = discover6()
        self.assertEqual(len(answers), 6)
        url = urllib.parse.urlsplit(answers[0]["LOCATION"])
        self.assertTrue(url.hostname.startswith("fe80::"))
        device = Device(f"http://[{url.hostname}%client0]:{url.port}/device.xml")
        self.assertEqual(device.text("UDN"), self.device.text("UDN"))
        items, _ = device.browse("9", count=1)
        self.assertTrue(items[0].findtext(DIDL + "res").startswith(f"http://[{url.hostname}]:"))

    def test_says_alive_at_its_start_and_byebye_at_its_end(self):
        self.server.stop()
        listener = Listener()
        self.start()
        alive = listener.hear(1.5)
        self.assertGreaterEqual(sum(n["NTS"] == "ssdp:alive" for n in alive), 12)
        self.assertEqual(len({n["USN"] for n in alive}), 6)
        listener = Listener()
        status, seconds = self.server.stop()
        gone = listener.hear(0.5)
        self.assertEqual(status, 0)
        self.assertLess(seconds, 1)
        self.assertEqual(len({n["USN"] for n in gone if n["NTS"] == "ssdp:byebye"}), 6)

    def test_follows_addresses_that_come(self):
        net.on_server("ip", "addr", "add", "10.78.0.1/24", "dev", "server0")
        try:
            self.server.wait_for("http://10.78.0.1:")
        finally:
            net.on_server("ip", "addr", "del", "10.78.0.1/24", "dev", "server0")

    def test_answers_a_flood_of_searches_within_its_limit(self):
        answers = discover("ssdp:all", seconds=4, times=10000)
        self.assertLessEqual(len(answers), 6)
        start = time.monotonic()
        self.device.browse("0")
        self.assertLess(time.monotonic() - start, 1)


class Walk(ServerTest):
    def test_offers_every_file_with_its_bytes(self):
        files = self.files()
        served = set()
        for element in self.all_items():
            resources = element.findall(DIDL + "res")
            status, headers, body = self.device.get(urllib.parse.urlsplit(resources[0].text).path)
            self.assertEqual(status, 200)
            self.assertEqual(len(body), int(resources[0].get("size")))
            path = files[hashlib.sha256(body).hexdigest()]
            served.add(path.name)
            self.assertIn(headers["contentFeatures.dlna.org"], resources[0].get("protocolInfo"))
            for resource in resources[1:]:
                status, _, piece = self.device.get(urllib.parse.urlsplit(resource.text).path)
                self.assertEqual((status, piece[:2]), (200, b"\xff\xd8"))
                self.assertIn(piece, body)
                self.assertEqual(len(piece), int(resource.get("size")))
        self.assertEqual(served, {"ORXA0001.JPG", "ORXA0002.JPG", "ORXA0003.JPG", "ORXA0004.MPO",
                                  "ORXA0001.MP4", "ORXA0002.MP4", "ORXA0003.3GP", "TRACK01.M4A",
                                  "VOICE01.AAC"})

    def test_leads_through_every_view_to_the_same_files(self):
        seen = {}
        for element in self.device.walk():
            self.assertNotIn(element.get("id"), seen)
            seen[element.get("id")] = element
            if element.get("refID"):
                self.assertIn(element.get("refID"), {e.get("id") for e in self.device.walk("1")})
            metadata, _ = self.device.browse(element.get("id"), "BrowseMetadata")
            self.assertEqual(metadata[0].get("parentID"), element.get("parentID"))
        self.assertGreater(len(seen), 40)

    def test_tells_the_union_of_what_it_sends(self):
        answer = self.device.act("GetProtocolInfo", "/control/cm",
                                 "urn:schemas-upnp-org:service:ConnectionManager:1")
        source = set(answer["Source"].split(","))
        for element in self.items().values():
            for resource in element.findall(DIDL + "res"):
                self.assertIn(resource.get("protocolInfo"), source)

    def test_plays_in_a_real_player(self):
        if not shutil.which("ffprobe"):
            self.skipTest("no ffprobe")
        for element in self.items().values():
            kind = element.findtext(UPNP + "class")
            if "imageItem" in kind:
                continue
            url = element.findtext(DIDL + "res")
            probe = subprocess.run(["ffprobe", "-v", "error", "-show_entries", "stream=codec_name",
                                    "-of", "csv=p=0", url], capture_output=True, text=True)
            self.assertEqual(probe.returncode, 0, probe.stderr)
            self.assertIn("aac", probe.stdout)

    def test_keeps_a_folder_whole_whatever_a_name_holds(self):
        for name in (b"bad\xff\x01.JPG", b"<&>'.JPG", "höhe 한.JPG".encode()):
            with open(os.path.join(os.fsencode(self.card), name), "wb") as file:
                file.write(jpeg())
        self.server.rescan()
        items = self.items()
        for title in ("bad\ufffd\ufffd", "<&>'", "höhe 한"):
            url = urllib.parse.urlsplit(items[title].findtext(DIDL + "res")).path
            self.assertEqual(self.device.get(url)[2], jpeg())

    def test_searches_for_films(self):
        found = self.device.search('upnp:class derivedfrom "object.item.videoItem"')
        self.assertEqual(len(found), 3)


class Change(ServerTest):
    def add(self, name="NEW.JPG"):
        with open(os.path.join(self.card, name), "wb") as file:
            file.write(jpeg())

    def test_keeps_ids_over_rescans_and_restarts(self):
        before = {title: element.get("id") for title, element in self.items().items()}
        update = self.device.act("GetSystemUpdateID")["Id"]
        udn = self.device.text("UDN")
        self.server.rescan()
        self.assertEqual(before, {t: e.get("id") for t, e in self.items().items()})
        self.server.stop()
        self.start()
        self.assertEqual(before, {t: e.get("id") for t, e in self.items().items()})
        self.assertEqual(update, self.device.act("GetSystemUpdateID")["Id"])
        self.assertEqual(udn, self.device.text("UDN"))

    def test_keeps_ids_when_the_database_is_lost(self):
        before = {title: element.get("id") for title, element in self.items().items()}
        self.server.stop()
        for file in pathlib.Path(self.dir, "state").glob("media.db*"):
            file.unlink()
        self.start()
        self.assertEqual(before, {t: e.get("id") for t, e in self.items().items()})

    def test_gives_a_new_file_a_new_id(self):
        ids = {element.get("id") for element in self.items().values()}
        self.add()
        self.server.rescan()
        self.assertNotIn(self.items()["NEW"].get("id"), ids)

    def test_tells_subscribers_of_a_change_once(self):
        subscriber = Subscriber(self.device)
        self.assertEqual(subscriber.status, 200)
        sequence, first = subscriber.events.get(timeout=5)
        self.assertEqual(sequence, 0)
        self.assertEqual(set(first), {"SystemUpdateID", "ContainerUpdateIDs"})
        self.server.rescan()  # nothing changed
        self.add()
        self.server.rescan()
        sequence, second = subscriber.events.get(timeout=8)
        self.assertEqual(sequence, 1)
        self.assertEqual(int(second["SystemUpdateID"]), int(first["SystemUpdateID"]) + 1)
        self.assertIn("9,", second["ContainerUpdateIDs"])
        self.add("NEWER.JPG")
        self.server.rescan()
        start = time.monotonic()
        subscriber.events.get(timeout=8)
        self.assertGreater(time.monotonic() - start, 3)  # five seconds behind the one before
        subscriber.close()

    def test_follows_a_film_that_was_changed(self):
        id = self.items()["ORXA0002"].get("id")
        path = pathlib.Path(self.card, "DCIM/101ORXSC/ORXA0002.MP4")
        path.write_bytes(path.read_bytes() + b"\0" * 8)
        self.assertEqual(self.device.get(f"/o/{id}.mp4")[0], 404)
        path.unlink()
        self.assertEqual(self.device.get(f"/o/{id}.mp4")[0], 404)


class Watching(Change):
    options = ("--watch",)
    test_keeps_ids_over_rescans_and_restarts = None
    test_keeps_ids_when_the_database_is_lost = None
    test_gives_a_new_file_a_new_id = None
    test_tells_subscribers_of_a_change_once = None
    test_follows_a_film_that_was_changed = None

    def test_finds_a_file_some_seconds_after_it_came(self):
        self.add()
        deadline = time.monotonic() + 10
        while "NEW" not in self.items():
            self.assertLess(time.monotonic(), deadline)
            time.sleep(0.2)


class Card(ServerTest):
    options = ("--card", "2")

    def test_shares_what_the_mode_shares_in_the_cameras_order(self):
        names = [element.findtext(DC + "title") for element in self.device.walk("1")
                 if element.tag == DIDL + "item"]
        self.assertEqual(names, ["ORXA0001", "ORXA0002", "ORXA0003", "ORXA0001", "ORXA0002",
                                 "ORXA0003", "ORXA0004"])
        for element in self.device.walk("1"):
            if element.tag == DIDL + "item":
                url = urllib.parse.urlsplit(element.findtext(DIDL + "res"))
                self.assertEqual(self.device.get(url.path)[0], 200)


class Strangers(ServerTest):
    """Control points that others wrote."""

    def script(self, *words):
        return subprocess.run(words, capture_output=True, text=True, timeout=60)

    def need(self, check, what):
        if self.script(*check).returncode != 0:
            self.skipTest(f"no {what}")

    def test_miniupnpc_finds_it(self):
        if not shutil.which("upnpc"):
            self.skipTest("no upnpc")
        said = self.script("upnpc", "-m", "client0", "-l").stdout
        self.assertIn(f"desc: {self.device.location}", said)

    def test_net_upnp_walks_it(self):
        self.need(("perl", "-MNet::UPnP::AV::MediaServer", "-e", "1"), "Net::UPnP")
        said = self.script("perl", str(HERE / "net_upnp.pl"))
        self.assertEqual(said.returncode, 0, said.stderr)
        titles = set(said.stdout.split("\n"))
        for title in ("Folders", "DCIM", "100ORXSC", "ORXA0003", "TRACK01"):
            self.assertIn(title, titles)

    def test_vlc_walks_it_and_plays(self):
        said = self.script(sys.executable, str(HERE / "vlc_walk.py"), "client0")
        if said.returncode == 77:
            self.skipTest("no libvlc")
        lines = set(said.stdout.split("\n"))
        for line in ("title DCIM", "title 100ORXSC", "title ORXA0003", "title TRACK01", "played"):
            self.assertIn(line, lines, said.stderr)
        # It takes the address that it hears of first.
        self.assertRegex(said.stdout, r"art http://(10\.77\.0\.1|\[fe80::[0-9a-f:]+\]):\d+/t/")

    def test_gupnp_walks_it_and_hears_its_events(self):
        self.need(("/usr/bin/python3", "-c", "import gi; gi.require_version('GUPnPAV', '1.0'); "
                   "from gi.repository import GUPnPAV"), "GUPnP-AV")
        walker = subprocess.Popen(["/usr/bin/python3", str(HERE / "gupnp_walk.py"), "client0"],
                                  stdout=subprocess.PIPE, text=True)
        said = []
        for line in walker.stdout:
            said.append(line.strip())
            if line.startswith("walked"):
                with open(os.path.join(self.card, "NEW.JPG"), "wb") as file:
                    file.write(jpeg())
                self.server.rescan()
            if line.startswith("changed 2"):
                break
        walker.kill()
        walker.wait()
        walker.stdout.close()
        titles = [line[7:] for line in said if line.startswith("object ")]
        self.assertIn("ORXA0004", titles)
        self.assertIn("changed 2", said)


class Options(unittest.TestCase):
    def refuse(self, *options):
        said = subprocess.run([PROGRAM, *options], capture_output=True, text=True)
        self.assertEqual((said.returncode, said.stdout), (1, ""))
        return said.stderr

    def test_refuses_what_cannot_be_served(self):
        state = ("--state", tempfile.mkdtemp(prefix="orxserve-"))
        self.assertIn("DIR is required", self.refuse())
        self.assertIn("No such file or directory", self.refuse("/nowhere", *state))
        self.assertIn("is not a folder", self.refuse("/etc/passwd", *state))
        self.assertIn("no network interface", self.refuse(CARD, "--interface", "none9", *state))
        self.assertIn("no network such as", self.refuse(CARD, "--allow", "10.0.0.0/64", *state))
        self.assertIn("is no card", self.refuse("/etc", "--card", "2", *state))
        shutil.rmtree(state[1])

    def test_uses_a_state_alone(self):
        with tempfile.TemporaryDirectory() as folder:
            state = os.path.join(folder, "state")
            server = network.Server(net, PROGRAM, CARD, state)
            server.wait_for("serving ")
            self.assertIn("in use by another server", self.refuse(CARD, "--state", state))
            server.stop()


class Hostile(ServerTest):
    def connect(self, address=network.CLIENT):
        connection = socket.create_connection((network.SERVER, self.device.port), 5, (address, 0))
        connection.settimeout(5)
        return connection

    def answer(self, data):
        with self.connect() as connection:
            connection.sendall(data)
            return connection.recv(65536)

    def test_serves_twenty_four_connections_of_one_address(self):
        held = []
        time.sleep(0.5)  # until those that the test began with are gone
        for _ in range(40):
            try:
                held.append(self.connect())
            except OSError:
                break
        time.sleep(0.2)
        open_ones = 0
        for connection in held:
            connection.sendall(b"GET /device.xml HTTP/1.1\r\nHost: 10.77.0.1\r\n\r\n")
            try:
                open_ones += bool(connection.recv(1))
            except OSError:
                pass
        self.assertEqual(open_ones, 24)
        with self.connect(network.OTHER) as other:  # whom that does not concern
            other.sendall(b"GET /device.xml HTTP/1.1\r\nHost: 10.77.0.1\r\n\r\n")
            self.assertIn(b"200 OK", other.recv(4096))
        for connection in held:
            connection.close()

    def test_is_not_held_up_by_those_who_do_not_read(self):
        with open(os.path.join(self.card, "BIG.JPG"), "wb") as file:
            file.write(jpeg() + b"\0" * (64 << 20))
        self.server.rescan()
        url = urllib.parse.urlsplit(self.items()["BIG"].findtext(DIDL + "res")).path
        held = []
        before = self.server.memory()
        for _ in range(20):
            connection = self.connect(network.OTHER)
            connection.sendall(f"GET {url} HTTP/1.1\r\nHost: 10.77.0.1\r\n\r\n".encode())
            held.append(connection)
        start = time.monotonic()
        self.device.browse("1")
        self.assertLess(time.monotonic() - start, 0.5)
        self.assertLess(self.server.memory() - before, 3000)
        for connection in held:
            connection.close()

    def test_refuses_what_is_too_large(self):
        head = b"GET / HTTP/1.1\r\nHost: 10.77.0.1\r\nX: " + b"a" * 9000 + b"\r\n\r\n"
        self.assertIn(self.answer(head).split(b" ")[1], (b"431", b"413", b"414"))
        body = b"a" * 70000
        status, _, _ = self.device.request("POST", "/control/cd", {}, body)
        self.assertEqual(status, 413)

    def test_survives_malformed_requests(self):
        for data in (b"\0" * 100, b"GET\r\n\r\n", b"GET / HTTP/9.9\r\n\r\n",
                     b"POST /control/cd HTTP/1.1\r\nHost: 10.77.0.1\r\nContent-Length: -5\r\n\r\n",
                     b"GET /../../../etc/passwd HTTP/1.1\r\nHost: 10.77.0.1\r\n\r\n",
                     b"GET /o/%2e%2e/%2e%2e/etc/passwd HTTP/1.1\r\nHost: 10.77.0.1\r\n\r\n",
                     b"GET / HTTP/1.1\r\nHost: 10.77.0.1\r\nHost: evil\r\nContent-Length: 3\r\n"
                     b"Transfer-Encoding: chunked\r\n\r\n0\r\n\r\n",
                     b"POST /control/cd HTTP/1.1\r\nHost: 10.77.0.1\r\nTransfer-Encoding: chunked"
                     b"\r\n\r\nFFFFFFFFFFFFFFFF\r\nx"):
            try:
                self.assertNotIn(b"root:", self.answer(data))
            except OSError:
                pass
        self.assertIsNone(self.server.process.poll())
        self.device.browse("0")

    def test_refuses_foreign_names(self):
        status, _, _ = self.device.get("/device.xml", Host="rebound.example:8200")
        self.assertEqual(status, 403)

    def test_answers_its_own_network_alone(self):
        network.ip("addr", "add", "10.99.0.2/32", "dev", "client0")
        net.on_server("ip", "route", "add", "10.99.0.2/32", "dev", "server0")
        try:
            with self.assertRaises(OSError):
                with self.connect("10.99.0.2") as connection:
                    connection.sendall(b"GET / HTTP/1.1\r\nHost: 10.77.0.1\r\n\r\n")
                    if not connection.recv(1):
                        raise ConnectionResetError
        finally:
            network.ip("addr", "del", "10.99.0.2/32", "dev", "client0")
            net.on_server("ip", "route", "del", "10.99.0.2/32", "dev", "server0")

    def test_takes_eight_subscriptions_of_one_address_and_no_foreign_callbacks(self):
        def subscribe(callback):
            return self.device.request("SUBSCRIBE", "/event/cd",
                                       {"CALLBACK": callback, "NT": "upnp:event"})[0]
        self.assertEqual(subscribe("<http://8.8.8.8/>"), 412)
        self.assertEqual(subscribe("<http://localhost/>"), 412)
        statuses = [subscribe("<http://10.77.0.2:9/>") for _ in range(2000)]
        self.assertEqual(statuses.count(200), 8)
        self.assertEqual(statuses.count(503), 1992)

    def test_ends_a_connection_that_says_nothing(self):
        with self.connect() as connection:
            connection.settimeout(40)
            connection.sendall(b"GET / HT")
            start = time.monotonic()
            self.assertEqual(connection.recv(100)[:0], b"")
            self.assertLess(time.monotonic() - start, 35)

    def test_streams_to_a_hundred_without_growing(self):
        with open(os.path.join(self.card, "BIG.JPG"), "wb") as file:
            file.write(jpeg() + b"\0" * (8 << 20))
        self.server.rescan()
        url = urllib.parse.urlsplit(self.items()["BIG"].findtext(DIDL + "res")).path
        before = self.server.memory()
        streams = []
        for i in range(100):
            address = f"10.77.0.{100 + i // 20}"
            if i % 20 == 0:
                network.ip("addr", "add", f"{address}/24", "dev", "client0")
            connection = self.connect(address)
            connection.sendall(f"GET {url} HTTP/1.1\r\nHost: 10.77.0.1\r\n\r\n".encode())
            streams.append(connection)
        counts = []
        for connection in streams:
            counts.append(len(connection.recv(4096)))
        self.assertTrue(all(counts))
        self.assertLess(self.server.memory() - before, 8000)
        for connection in streams:
            connection.close()
        for i in range(5):
            network.ip("addr", "del", f"10.77.0.{100 + i}/24", "dev", "client0")


if __name__ == "__main__":
    if "ORXSERVE_NETWORK_TESTS" not in os.environ:
        print("skipped: ORXSERVE_NETWORK_TESTS is not set; they need a quiet machine")
        sys.exit(77)
    network.enter()
    PROGRAM, CARD = sys.argv[1], sys.argv[2]
    unittest.main(argv=[sys.argv[0], *sys.argv[3:]], verbosity=2)
