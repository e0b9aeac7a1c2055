#!/usr/bin/env python3
"""Finds media servers with libvlc, walks them, and plays a sound.

usage: vlc_walk.py INTERFACE

Prints "title", "art" and "played" lines.  Ends with 77 when there is no libvlc.
"""

import ctypes
import sys
import time

TITLE, ART = 0, 15
PARSE_NETWORK, FETCH_NETWORK = 1, 4
PARSED_DONE = 4
PLAYING, ENDED, ERROR = 3, 6, 7

try:
    vlc = ctypes.CDLL("libvlc.so.5")
except OSError:
    sys.exit(77)
for name in ("libvlc_new", "libvlc_media_discoverer_new", "libvlc_media_discoverer_media_list",
             "libvlc_media_list_item_at_index", "libvlc_media_get_meta", "libvlc_media_subitems",
             "libvlc_media_player_new_from_media", "libvlc_media_get_mrl"):
    getattr(vlc, name).restype = ctypes.c_void_p


def pointer(value):
    return ctypes.c_void_p(value)


def text(value):
    return ctypes.string_at(value).decode() if value else ""


def wait(condition, seconds=15):
    deadline = time.monotonic() + seconds
    while not condition():
        if time.monotonic() > deadline:
            return False
        time.sleep(0.05)
    return True


def items(media_list):
    if not media_list:
        return []
    vlc.libvlc_media_list_lock(pointer(media_list))
    found = [vlc.libvlc_media_list_item_at_index(pointer(media_list), i)
             for i in range(vlc.libvlc_media_list_count(pointer(media_list)))]
    vlc.libvlc_media_list_unlock(pointer(media_list))
    return found


def walk(media, depth=0):
    """Yields the media that have no others in them."""
    print("title", text(vlc.libvlc_media_get_meta(pointer(media), TITLE)), flush=True)
    art = text(vlc.libvlc_media_get_meta(pointer(media), ART))
    if art:
        print("art", art, flush=True)
    mrl = text(vlc.libvlc_media_get_mrl(pointer(media)))
    if not mrl.startswith("upnp") and depth > 0:
        yield media, mrl
        return
    vlc.libvlc_media_parse_with_options(pointer(media), PARSE_NETWORK | FETCH_NETWORK, 10000)
    wait(lambda: vlc.libvlc_media_get_parsed_status(pointer(media)) == PARSED_DONE)
    for inner in items(vlc.libvlc_media_subitems(pointer(media))):
        yield from walk(inner, depth + 1)


arguments = [b"--no-audio", b"--vout=dummy", b"--no-video", b"--quiet",
             b"--miface=" + sys.argv[1].encode()]
instance = vlc.libvlc_new(len(arguments), (ctypes.c_char_p * len(arguments))(*arguments))
discoverer = vlc.libvlc_media_discoverer_new(pointer(instance), b"upnp")
if not discoverer:
    sys.exit(77)
vlc.libvlc_media_discoverer_start(pointer(discoverer))
servers = vlc.libvlc_media_discoverer_media_list(pointer(discoverer))
if not wait(lambda: items(servers)):
    sys.exit("no server was found")
sounds = [media for media, mrl in walk(items(servers)[0]) if mrl.endswith(".m4a")]
player = vlc.libvlc_media_player_new_from_media(pointer(sounds[0]))
vlc.libvlc_media_player_play(pointer(player))
state = lambda: vlc.libvlc_media_player_get_state(pointer(player))  # noqa: E731
wait(lambda: state() in (ENDED, ERROR))
print("played" if state() == ENDED else f"state {state()}", flush=True)
