"""A control point of our own: discovery, control and eventing with nothing but Python."""

import http.client
import http.server
import queue
import re
import socket
import struct
import threading
import time
import urllib.parse
import xml.etree.ElementTree as xml
from xml.sax.saxutils import escape

DIRECTORY = "urn:schemas-upnp-org:service:ContentDirectory:1"
DIDL = "{urn:schemas-upnp-org:metadata-1-0/DIDL-Lite/}"
DC = "{http://purl.org/dc/elements/1.1/}"
UPNP = "{urn:schemas-upnp-org:metadata-1-0/upnp/}"


def search_text(target, wait=1):
    return (f"M-SEARCH * HTTP/1.1\r\nHOST: 239.255.255.250:1900\r\nMAN: \"ssdp:discover\"\r\n"
            f"MX: {wait}\r\nST: {target}\r\n\r\n").encode()


def discover(target="ssdp:all", address="10.77.0.2", seconds=1.6, times=1):
    """The answers to a search, each as a dictionary of its headers."""
    sender = socket.socket(socket.AF_INET, socket.SOCK_DGRAM)
    sender.bind((address, 0))
    sender.setsockopt(socket.IPPROTO_IP, socket.IP_MULTICAST_IF, socket.inet_aton(address))
    for _ in range(times):
        sender.sendto(search_text(target), ("239.255.255.250", 1900))
    return collect(sender, seconds)


def discover6(interface="client0", target="ssdp:all", seconds=1.6):
    sender = socket.socket(socket.AF_INET6, socket.SOCK_DGRAM)
    index = socket.if_nametoindex(interface)
    sender.setsockopt(socket.IPPROTO_IPV6, socket.IPV6_MULTICAST_IF, index)
    sender.sendto(search_text(target), ("ff02::c", 1900, 0, index))
    return collect(sender, seconds)


def collect(receiver, seconds):
    answers = []
    deadline = time.monotonic() + seconds
    while (left := deadline - time.monotonic()) > 0:
        receiver.settimeout(left)
        try:
            answers.append(headers_of(receiver.recv(4096)))
        except TimeoutError:
            break
    receiver.close()
    return answers


def headers_of(datagram):
    first, *lines = datagram.decode().split("\r\n")
    headers = {name.strip().upper(): value.strip()
               for name, _, value in (line.partition(":") for line in lines if line)}
    headers[""] = first
    return headers


class Listener:
    """Hears the notices that the server sends by multicast."""

    def __init__(self, address="10.77.0.2"):
        self.socket = socket.socket(socket.AF_INET, socket.SOCK_DGRAM)
        self.socket.setsockopt(socket.SOL_SOCKET, socket.SO_REUSEADDR, 1)
        self.socket.bind(("239.255.255.250", 1900))
        self.socket.setsockopt(socket.IPPROTO_IP, socket.IP_ADD_MEMBERSHIP, struct.pack(
            "4s4s", socket.inet_aton("239.255.255.250"), socket.inet_aton(address)))

    def hear(self, seconds):
        return [notice for notice in collect(self.socket, seconds)
                if notice[""].startswith("NOTIFY")]


class Device:
    def __init__(self, location):
        self.location = location
        parts = urllib.parse.urlsplit(location)
        self.host, self.port = parts.hostname, parts.port
        self.description = xml.fromstring(self.get(parts.path)[2])

    def text(self, name):
        return self.description.find(f".//{{urn:schemas-upnp-org:device-1-0}}{name}").text

    def request(self, method, path, headers=None, body=None):
        """Status, headers and body."""
        connection = http.client.HTTPConnection(self.host, self.port, timeout=10)
        connection.request(method, path, body, headers or {})
        answer = connection.getresponse()
        result = answer.status, dict(answer.getheaders()), answer.read()
        connection.close()
        return result

    def get(self, path, **headers):
        return self.request("GET", path, headers)

    def act(self, action, path="/control/cd", service=DIRECTORY, **arguments):
        """The arguments of the response; the number of the error as an exception."""
        body = "".join(f"<{name}>{escape(str(value))}</{name}>" for name, value in arguments.items())
        status, _, answer = self.request(
            "POST", path, {"Content-Type": "text/xml; charset=\"utf-8\"",
                           "SOAPACTION": f"\"{service}#{action}\""},
            "<?xml version=\"1.0\"?><s:Envelope xmlns:s=\"http://schemas.xmlsoap.org/soap/envelope/\" "
            "s:encodingStyle=\"http://schemas.xmlsoap.org/soap/encoding/\"><s:Body>"
            f"<u:{action} xmlns:u=\"{service}\">{body}</u:{action}></s:Body></s:Envelope>")
        if status != 200:
            raise RuntimeError(int(re.search(rb"<errorCode>(\d+)", answer).group(1)))
        response = xml.fromstring(answer)[0][0]
        return {element.tag: element.text or "" for element in response}

    def browse(self, container, flag="BrowseDirectChildren", start=0, count=0, sort="", filter="*"):
        answer = self.act("Browse", ObjectID=container, BrowseFlag=flag, Filter=filter,
                          StartingIndex=start, RequestedCount=count, SortCriteria=sort)
        return list(xml.fromstring(answer["Result"])), answer

    def search(self, criteria, container="0"):
        answer = self.act("Search", ContainerID=container, SearchCriteria=criteria, Filter="*",
                          StartingIndex=0, RequestedCount=0, SortCriteria="")
        return list(xml.fromstring(answer["Result"]))

    def walk(self, container="0", page=3):
        """Every object below the container, page by page."""
        start = 0
        while True:
            objects, answer = self.browse(container, start=start, count=page)
            yield from objects
            for element in objects:
                if element.tag == DIDL + "container":
                    yield from self.walk(element.get("id"), page)
            start += len(objects)
            if start >= int(answer["TotalMatches"]):
                return


class Subscriber:
    """Takes events; `events` gets (sequence, variables)."""

    def __init__(self, device, path="/event/cd", address="10.77.0.2"):
        events = self.events = queue.Queue()

        class Handler(http.server.BaseHTTPRequestHandler):
            def do_NOTIFY(self):
                body = self.rfile.read(int(self.headers["Content-Length"]))
                variables = {element[0].tag: element[0].text for element in xml.fromstring(body)}
                self.send_response(200)
                self.send_header("Content-Length", "0")
                self.end_headers()
                events.put((int(self.headers["SEQ"]), variables))

            def log_message(self, *_):
                pass

        self.server = http.server.ThreadingHTTPServer((address, 0), Handler)
        threading.Thread(target=self.server.serve_forever, daemon=True).start()
        self.status, self.headers, _ = device.request("SUBSCRIBE", path, {
            "CALLBACK": f"<http://{address}:{self.server.server_port}/events>",
            "NT": "upnp:event", "TIMEOUT": "Second-300"})

    def close(self):
        self.server.shutdown()
        self.server.server_close()
