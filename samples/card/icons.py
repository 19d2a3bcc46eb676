# SPDX-FileCopyrightText: 2026 The NQP2ParserU authors
# SPDX-License-Identifier: MIT
"""Draws clip icons: a painter asks a scene for the colour of each pixel and writes a BMP."""

import math
import struct

WIDTH, HEIGHT = 80, 60
BMP_HEADER_SIZE = 54


def bmp(scene, height: int = HEIGHT) -> bytes:
    """A 24-bit BMP of a scene, a function of (x, y) in pixels that gives (r, g, b) from 0 to 1."""
    rows = bytearray()
    for y in reversed(range(height)):  # rows run from the bottom; 240 bytes need no padding
        for x in range(WIDTH):
            red, green, blue = scene(x + 0.5, y + 0.5)
            rows += bytes((_byte(blue), _byte(green), _byte(red)))
    file_header = struct.pack("<2sIHHI", b"BM", BMP_HEADER_SIZE + len(rows), 0, 0, BMP_HEADER_SIZE)
    info = struct.pack("<IiiHHIIiiII", 40, WIDTH, height, 1, 24, 0, len(rows), 2835, 2835, 0, 0)
    return file_header + info + bytes(rows)


def _byte(value: float) -> int:
    return round(255 * clamp(value))


def clamp(value: float) -> float:
    return min(1.0, max(0.0, value))


def smooth(low: float, high: float, value: float) -> float:
    """0 below `low`, 1 above `high`, an S curve between."""
    t = clamp((value - low) / (high - low))
    return t * t * (3 - 2 * t)


def mix(first, second, share: float):
    """`share` of the second colour over the first."""
    if share <= 0.0:
        return first
    if share >= 1.0:
        return second
    return (first[0] + (second[0] - first[0]) * share,
            first[1] + (second[1] - first[1]) * share,
            first[2] + (second[2] - first[2]) * share)


def add(base, light, amount: float):
    return (base[0] + light[0] * amount, base[1] + light[1] * amount, base[2] + light[2] * amount)


def gradient(stops, value: float):
    """Colour at `value` of a list of (position, colour) in rising order."""
    for (low, first), (high, second) in zip(stops, stops[1:]):
        if value <= high:
            return mix(first, second, (value - low) / (high - low))
    return stops[-1][1]


def edge(distance: float) -> float:
    """Coverage of a pixel at a signed distance from an outline, negative inside."""
    return clamp(0.5 - distance)


def disc(x: float, y: float, cx: float, cy: float, radius: float) -> float:
    return edge(math.hypot(x - cx, y - cy) - radius)


def ellipse(x, y, cx, cy, rx, ry) -> float:
    return edge((math.hypot((x - cx) / rx, (y - cy) / ry) - 1) * min(rx, ry))


def box(x, y, left, top, right, bottom) -> float:
    return edge(max(left - x, x - right)) * edge(max(top - y, y - bottom))


def triangle(x, y, apex_x, apex_y, base_y, half_width) -> float:
    """An upright triangle with a level base."""
    slope = (y - apex_y) / (base_y - apex_y) * half_width
    return edge(abs(x - apex_x) - slope) * edge(apex_y - y) * edge(y - base_y)


def ridge(x: float, level: float, height: float, phase: float) -> float:
    """Height of a rolling skyline at x."""
    waves = (math.sin(x * 0.07 + phase) + 0.5 * math.sin(x * 0.17 + 2.1 * phase)
             + 0.25 * math.sin(x * 0.41 + 3.7 * phase))
    return level - height * waves / 1.75


def crag(x: float, level: float, height: float, phase: float) -> float:
    """Height of a jagged skyline at x: folded waves of three sizes."""
    value = 0.0
    for step, (pitch, size) in enumerate(((31.0, 1.0), (13.0, 0.4), (5.0, 0.14))):
        t = (x / pitch + phase * (step + 1)) % 1.0
        value += size * (1 - abs(2 * t - 1))
    return level - height * value / 1.54


def speck(x: int, y: int, seed: int = 0) -> float:
    """A fixed pseudo-random number from 0 to 1 for a cell."""
    value = (x * 374761393 + y * 668265263 + seed * 2147483647) & 0xFFFFFFFF
    value = ((value ^ (value >> 13)) * 1274126177) & 0xFFFFFFFF
    return ((value ^ (value >> 16)) & 0xFFFF) / 0xFFFF
