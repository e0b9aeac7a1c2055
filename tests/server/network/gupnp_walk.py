#!/usr/bin/python3
"""Walks the media server with GUPnP and GUPnP-AV, and waits for a change of its SystemUpdateID.

usage: gupnp_walk.py INTERFACE
"""

import sys

import gi

gi.require_version("GUPnP", "1.6")
gi.require_version("GUPnPAV", "1.0")
from gi.repository import GLib, GUPnP, GUPnPAV  # noqa: E402

DIRECTORY = "urn:schemas-upnp-org:service:ContentDirectory:1"
loop = GLib.MainLoop()
kept = []


def say(*words):
    print(*words, flush=True)


def browse(service, container):
    action = GUPnP.ServiceProxyAction.new_from_list(
        "Browse", ["ObjectID", "BrowseFlag", "Filter", "StartingIndex", "RequestedCount",
                   "SortCriteria"], [container, "BrowseDirectChildren", "*", 0, 0, ""])
    service.call_action(action, None)
    _, values = action.get_result_list(["Result"], [str])
    containers = []

    def take(_, entry):
        say("object", entry.get_title())
        if isinstance(entry, GUPnPAV.DIDLLiteContainer):
            containers.append(entry.get_id())

    parser = GUPnPAV.DIDLLiteParser.new()
    parser.connect("object-available", take)
    try:
        parser.parse_didl(values[0])
    except GLib.Error as problem:  # an empty list is one for it
        if "No 'DIDL-Lite' node" not in str(problem) and "empty" not in str(problem).lower():
            raise
    for inner in containers:
        browse(service, inner)


def notified(_, variable, value):
    say("changed", value)


def available(_, service):
    kept.append(service)
    service.add_notify("SystemUpdateID", int, lambda _, name, value, *rest: notified(_, name, value))
    service.set_subscribed(True)
    browse(service, "0")
    say("walked")


context = GUPnP.Context.new_full(sys.argv[1], None, 0, 0) if hasattr(GUPnP.Context, "new_full") \
    else GUPnP.Context.new(sys.argv[1], 0)
point = GUPnP.ControlPoint.new(context, DIRECTORY)
point.connect("service-proxy-available", available)
point.set_active(True)
GLib.timeout_add_seconds(40, loop.quit)
loop.run()
