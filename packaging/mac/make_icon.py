#!/usr/bin/env python3
# SPDX-License-Identifier: MIT
"""Draws the application's icon and writes it as an icon set: make_icon.py OUTPUT.icns

Two key caps, one with the Latin A and one with the Hebrew alef, on a rounded tile. Everything is strokes and rounded
rectangles on a unit square, y downwards; only the standard library is used, so that the result is the same everywhere.
"""
import math
import struct
import sys
import zlib

# Each member of an icon set is a PNG under a type that says its size in pixels.
MEMBERS = ((b"icp4", 16), (b"icp5", 32), (b"icp6", 64), (b"ic07", 128), (b"ic08", 256), (b"ic09", 512), (b"ic10", 1024))

TILE = (0.5, 0.5, 0.44, 0.44, 0.20)
TILE_TOP, TILE_BOTTOM = (0x3A, 0x6E, 0xA5), (0x1F, 0x3F, 0x66)
CAPS = ((0.345, 0.40, 0.20, 0.20, 0.06), (0.655, 0.60, 0.20, 0.20, 0.06))
CAP_COLOR = (0xF6, 0xF4, 0xEE)
INK = (0x1F, 0x2B, 0x3A)
STROKE = 0.022
LATIN_A = ((0.245, 0.50, 0.345, 0.29), (0.345, 0.29, 0.445, 0.50), (0.283, 0.43, 0.407, 0.43))
ALEF = ((0.565, 0.49, 0.745, 0.71), (0.735, 0.49, 0.725, 0.56), (0.725, 0.56, 0.668, 0.61), (0.628, 0.57, 0.575, 0.64),
        (0.575, 0.64, 0.570, 0.71))


def box_distance(x, y, box):
    """Signed distance to a rounded rectangle: negative inside."""
    cx, cy, half_width, half_height, radius = box
    dx, dy = abs(x - cx) - half_width + radius, abs(y - cy) - half_height + radius
    return math.hypot(max(dx, 0.0), max(dy, 0.0)) + min(max(dx, dy), 0.0) - radius


def stroke_distance(x, y, stroke):
    x1, y1, x2, y2 = stroke
    dx, dy = x2 - x1, y2 - y1
    t = max(0.0, min(1.0, ((x - x1) * dx + (y - y1) * dy) / (dx * dx + dy * dy)))
    return math.hypot(x - x1 - t * dx, y - y1 - t * dy) - STROKE


def blend(under, over, coverage):
    return tuple(round(u + (o - u) * coverage) for u, o in zip(under, over))


def pixel(x, y, size):
    def coverage(distance):
        return max(0.0, min(1.0, 0.5 - distance * size))

    tile = coverage(box_distance(x, y, TILE))
    if tile == 0.0:
        return b"\0\0\0\0"
    color = blend(TILE_TOP, TILE_BOTTOM, max(0.0, min(1.0, (y - 0.06) / 0.88)))
    for cap, letter in zip(CAPS, (LATIN_A, ALEF)):
        distance = box_distance(x, y, cap)
        if distance * size < 0.5:
            color = blend(color, CAP_COLOR, coverage(distance))
            color = blend(color, INK, coverage(min(stroke_distance(x, y, stroke) for stroke in letter)))
    return bytes((*color, round(255 * tile)))


def png(size):
    rows = bytearray()
    for row in range(size):
        rows.append(0)
        for column in range(size):
            rows += pixel((column + 0.5) / size, (row + 0.5) / size, size)

    def chunk(kind, data):
        return struct.pack(">I", len(data)) + kind + data + struct.pack(">I", zlib.crc32(kind + data))

    head = struct.pack(">IIBBBBB", size, size, 8, 6, 0, 0, 0)
    return b"\x89PNG\r\n\x1a\n" + chunk(b"IHDR", head) + chunk(b"IDAT", zlib.compress(bytes(rows), 9)) + chunk(b"IEND", b"")


def icon_set():
    body = b""
    for kind, size in MEMBERS:
        data = png(size)
        body += kind + struct.pack(">I", len(data) + 8) + data
    return b"icns" + struct.pack(">I", len(body) + 8) + body


if __name__ == "__main__":
    if len(sys.argv) != 2:
        sys.exit(__doc__)
    with open(sys.argv[1], "wb") as output:
        output.write(icon_set())
