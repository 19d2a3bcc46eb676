# SPDX-FileCopyrightText: 2026 The NQP2ParserU authors
# SPDX-License-Identifier: MIT
"""The pictures on the sample clips' icons, each a function of a pixel's place."""

import math

from card.icons import (WIDTH, add, box, clamp, crag, disc, edge, ellipse, gradient, mix, ridge,
                        smooth, speck, triangle)

BLACK, WHITE = (0.0, 0.0, 0.0), (1.0, 1.0, 1.0)
BAR_COLOURS = ((.75, .75, .75), (.75, .75, 0), (0, .75, .75), (0, .75, 0),
               (.75, 0, .75), (.75, 0, 0), (0, 0, .75))


def colour_bars(x, y):
    bars = BAR_COLOURS
    column = int(x * 7 / WIDTH)
    if y < 40:
        return bars[column]
    if y < 45:
        return BLACK if column % 2 else bars[6 - column]
    return (x / WIDTH,) * 3


def sunset_sea(x, y):
    horizon, sun_x, sun_y = 36, 46, 29
    sky = ((0, (.16, .12, .38)), (18, (.66, .24, .42)), (30, (.98, .52, .24)), (36, (1, .8, .42)))
    if y < horizon:
        colour = gradient(sky, y)
        glow = math.exp(-math.hypot(x - sun_x, (y - sun_y) * 1.3) / 11)
        colour = add(colour, (.5, .32, .1), glow)
        cloud = smooth(.25, .8, math.sin(x * .13 + y * .9) * math.sin(y * .55 + x * .045 + 1))
        colour = mix(colour, (.5, .2, .36), .55 * cloud * smooth(26, 8, y))
        return mix(colour, (1, .95, .72), disc(x, y, sun_x, sun_y, 6.5))
    depth = (y - horizon) / 24
    water = mix((.62, .32, .36), (.07, .09, .25), math.sqrt(depth))
    ripple = math.sin((y - horizon) ** 0.8 * 3.1 + math.sin(x * .35 + y) * 1.2)
    path = math.exp(-((x - sun_x) / (3 + 9 * depth)) ** 2)
    return add(water, (.9, .55, .2), path * (.45 + .45 * ripple) + .05 * ripple)


def interview(x, y):
    colour = gradient(((0, (.10, .13, .20)), (60, (.05, .06, .10))), y)
    for index in range(9):
        cx, cy = 70 * speck(index, 1) + 5, 34 * speck(index, 2) + 4
        hue = ((1, .72, .38), (.45, .75, 1), (1, .5, .5))[index % 3]
        colour = add(colour, hue, .32 * disc(x, y, cx, cy, 3 + 3 * speck(index, 3)))
    light = clamp(.9 - (x - 30) / 40)
    body = max(ellipse(x, y, 44, 66, 21, 22), box(x, y, 39, 34, 49, 48))
    colour = mix(colour, mix((.09, .12, .19), (.25, .33, .5), light), body)
    colour = mix(colour, mix((.35, .22, .17), (.95, .74, .6), light), box(x, y, 40, 34, 48, 45))
    colour = mix(colour, mix((.42, .26, .2), (1, .8, .66), light),
                 ellipse(x, y, 44, 27, 9, 11.5))
    hair = ellipse(x, y, 45, 22, 10.5, 9.5) * edge(y - 20.5 - .35 * (x - 34))
    return mix(colour, (.17, .1, .07), hair)


def green_hills(x, y):
    colour = gradient(((0, (.25, .55, .92)), (38, (.8, .92, 1))), y)
    colour = mix(colour, (1, .97, .75), disc(x, y, 62, 12, 6))
    colour = add(colour, (.3, .25, .1), math.exp(-math.hypot(x - 62, y - 12) / 9))
    for cx, cy, size in ((18, 12, 5), (24, 10, 6.5), (31, 13, 5), (45, 22, 3.4), (50, 21, 4.2)):
        colour = mix(colour, WHITE, .8 * ellipse(x, y, cx, cy, size * 1.5, size * .7))
    layers = ((34, 5, .4, (.5, .72, .6)), (41, 6, 2.2, (.36, .66, .34)), (50, 5, 4.4, (.2, .5, .2)))
    for level, height, phase, hue in layers:
        top = ridge(x, level, height, phase)
        shade = mix(hue, BLACK, .35 * smooth(0, 18, y - top))
        colour = mix(colour, shade, edge(top - y))
    colour = mix(colour, (.3, .2, .12), box(x, y, 15, 38, 17, 50))
    for cx, cy, size in ((16, 34, 7), (12, 38, 5), (20.5, 38, 5)):
        leaf = (.12, .38 + .16 * clamp((cy + 4 - y) / 8), .14)
        colour = mix(colour, leaf, disc(x, y, cx, cy, size))
    return colour


def snow_mountains(x, y):
    colour = gradient(((0, (.2, .24, .5)), (20, (.62, .5, .72)), (40, (1, .76, .62))), y)
    for level, height, phase, hue in ((42, 24, .35, (.5, .46, .66)), (50, 30, .02, (.3, .33, .5))):
        top = crag(x, level, height, phase)
        lit = crag(x + 1, level, height, phase) > top
        rock = mix(hue, (.12, .14, .26), smooth(0, 30, y - top))
        snow = mix((.7, .74, .9), (1, .9, .86), 1.0 if lit else .1)
        line = 9 + 3 * math.sin(x * 1.1) + 2 * math.sin(x * .43)
        colour = mix(colour, mix(rock, snow, smooth(line, line - 5, y - top)), edge(top - y))
    fog = smooth(44, 58, y + 2 * math.sin(x * .12))
    return mix(colour, (.93, .8, .82), .75 * fog)


def night_city(x, y):
    colour = gradient(((0, (.02, .03, .12)), (45, (.2, .13, .32)), (60, (.42, .2, .3))), y)
    if speck(int(x), int(y), 5) > .985 and y < 30:
        colour = add(colour, WHITE, .7)
    moon = disc(x, y, 64, 11, 6) * (1 - disc(x, y, 61.3, 9.4, 5.4))
    colour = mix(colour, (1, .96, .82), moon)
    for row, (width, low, high) in enumerate(((9, 26, 18), (11, 36, 17))):
        block = int((x + 4 * row) // width)
        top = low + high * (speck(block, row, 9) - .35)
        if y < top:
            continue
        colour = ((.09, .09, .2), (.04, .05, .11))[row]
        cell_x, cell_y = (x + 4 * row) % width, (y - top)
        lit = speck(int((x + 4 * row) // 2), int(cell_y // 3), 17 + row) > .52
        if lit and 1 < cell_x < width - 1 and cell_y % 3 > 1.2 and cell_y > 1.5:
            colour = ((.8, .6, .32), (1, .84, .48))[row]
    return colour


def harbour(x, y):
    horizon = 38
    if y > horizon:
        mirror = harbour(x + math.sin(y * 1.7) * .12 * (y - horizon), 2 * horizon - y)
        return mix(mirror, (.1, .22, .34), .32 + .012 * (y - horizon))
    colour = gradient(((0, (.35, .6, .78)), (24, (.98, .84, .72)), (38, (1, .68, .52))), y)
    colour = mix(colour, (.45, .52, .66), edge(ridge(x, 34, 4, 1.3) - y))
    for cx, size, hue in ((20, 1.0, WHITE), (46, 1.35, (.95, .3, .22)), (66, .7, (1, .9, .6))):
        mast = horizon - 24 * size
        colour = mix(colour, hue, triangle(x, y, cx + 3 * size, mast, 34.5, 8 * size)
                     * edge(cx + .8 - x))
        colour = mix(colour, mix(hue, WHITE, .5), triangle(x, y, cx, mast + 3, 34.5, 7 * size)
                     * edge(x - cx))
        colour = mix(colour, (.25, .18, .16), box(x, y, cx - .2, mast, cx + .7, 36))
        hull = edge(abs(x - cx) - (9 * size - (y - 35) * 1.2)) * box(x, y, 0, 35, 80, 39)
        colour = mix(colour, (.16, .2, .32), hull)
    return colour


def night_market(x, y):
    colour = gradient(((0, (.08, .03, .12)), (60, (.26, .08, .07))), y)
    for row in range(3):
        sag_y = 8 + 13 * row
        for index in range(7):
            cx = 6 + 12 * index + 4 * (row % 2)
            cy = sag_y + 5 * math.sin(math.pi * cx / WIDTH)
            size = 2.4 + 1.1 * row
            hue = ((1, .35, .2), (1, .72, .25), (.95, .45, .6))[(index + row) % 3]
            colour = add(colour, hue, .38 * math.exp(-math.hypot(x - cx, y - cy) / (size * 1.3)))
            lamp = ellipse(x, y, cx, cy, size, size * 1.15)
            colour = mix(colour, mix(hue, (1, .95, .7), .6 * disc(x, y, cx, cy, size * .6)), lamp)
    for index in range(11):
        cx, tall = 8 * index + 3 * speck(index, 4), 44 + 6 * speck(index, 6)
        person = max(disc(x, y, cx, tall, 2.6), ellipse(x, y, cx, tall + 11, 4.4, 9))
        colour = mix(colour, (.05, .02, .04), person)
    return colour


def running_track(x, y):
    horizon = 20
    if y < horizon:
        colour = gradient(((0, (.42, .68, .95)), (20, (.86, .93, 1))), y)
        stand = edge(ridge(x, 13, 1.5, .5) - y)
        crowd = ((.8, .3, .3), (.9, .9, .9), (.25, .35, .7), (.95, .8, .3))
        return mix(colour, mix(crowd[int(speck(int(x), int(y), 3) * 3.99)], (.2, .2, .3), .35),
                   stand)
    depth = (y - horizon + 1.5) / 40
    across = (x - 34) / (depth * 15)
    grain = .05 * (speck(int(x * 2), int(y * 2), 8) - .5)
    colour = add(mix((.6, .26, .18), (.8, .34, .22), depth), WHITE, grain)
    line = abs(across - round(across)) * depth * 15
    colour = mix(colour, WHITE, .95 * edge(line - .15 - .8 * depth) * edge(abs(across) - 3.1))
    grass = (.2, .5 + .06 * (int(y) // 3 % 2), .22)
    colour = mix(colour, grass, edge((3.1 - abs(across)) * depth * 15))
    for cx, cy, size, hue in ((28, 37, 1, (.1, .35, .85)), (41, 34, .8, (.95, .8, .1))):
        shadow = ellipse(x, y, cx + 4 * size, cy + 9.5 * size, 5 * size, 1.2 * size)
        colour = mix(colour, (.25, .08, .06), .6 * shadow)
        colour = mix(colour, (.85, .62, .48), disc(x, y, cx, cy - 8 * size, 2.4 * size))
        colour = mix(colour, hue, ellipse(x, y, cx, cy - size, 3.2 * size, 5 * size))
        for lean in (-.45, .5):
            leg = edge(abs(x - cx - lean * (y - cy)) - 1.1 * size)
            colour = mix(colour, (.8, .56, .42), leg * box(x, y, 0, cy + 3 * size, 80,
                                                          cy + 9.5 * size))
    return colour


def dunes(x, y):
    colour = gradient(((0, (.2, .48, .8)), (30, (.95, .88, .74))), y)
    for level, height, phase, tone in ((27, 3, 3.1, .88), (36, 7, .9, .95), (50, 8, 5.0, 1.0)):
        top = ridge(x * .8, level, height, phase)
        slope = ridge((x + 1) * .8, level, height, phase) - top
        sand = mix((.62, .34, .2), (1, .78, .48), .5 + 1.6 * slope)
        ripple = .05 * math.sin((y - top) * 2.2 + x * .35)
        sand = tuple(tone * channel + ripple for channel in sand)
        colour = mix(colour, sand, edge(top - y))
    for step in range(4):
        cx, cy = 16 + 6 * step, 33.2 + .5 * step
        colour = mix(colour, (.2, .12, .1), max(ellipse(x, y, cx, cy, 2, 1.4),
                                               box(x, y, cx - 1.4, cy, cx - .8, cy + 3.5),
                                               box(x, y, cx + .8, cy, cx + 1.4, cy + 3.5),
                                               disc(x, y, cx + 2.2, cy - 2, .9)))
    return colour


def forest(x, y):
    colour = gradient(((0, (.78, .92, .62)), (40, (.5, .72, .46)), (60, (.2, .36, .16))), y)
    for layer, (count, dark) in enumerate(((11, .35), (8, .62), (5, .9))):
        trunk = mix((.42, .56, .36), (.08, .07, .05), dark)
        for index in range(count):
            cx = WIDTH * (index + .25 + .5 * speck(index, layer, 21)) / count
            width = (1 + 1.1 * layer) * (.8 + .5 * speck(index, layer, 22))
            foot = 40 + 7 * layer
            flare = width + max(0.0, y - foot + 5) * .25
            colour = mix(colour, trunk, edge(abs(x - cx) - flare) * edge(y - foot - 3))
    ray = smooth(.2, 1, math.sin((x + y * .7) * .22)) * smooth(56, 6, y)
    colour = add(colour, (1, .95, .6), .3 * ray)
    fern = 51 + 3 * math.sin(x * .9) * math.sin(x * .23)
    return mix(colour, (.1, .3 + .2 * speck(int(x), int(y), 4), .08), smooth(fern, fern + 3, y))


def balloon(rise: float):
    """A balloon over hills, `rise` from 0 (low) to 1 (high)."""
    cx, cy = 24 + 26 * rise, 34 - 16 * rise

    def scene(x, y):
        colour = gradient(((0, (.3, .5, .85)), (30, (.98, .8, .7)), (60, (1, .9, .8))), y)
        for level, height, phase, hue in ((44, 5, 1.1, (.52, .5, .68)), (52, 5, 3.3, (.28, .3, .46))):
            colour = mix(colour, hue, edge(ridge(x, level, height, phase) - y))
        envelope = max(disc(x, y, cx, cy, 11), edge(abs(x - cx) - 9.2 + (y - cy - 6) * .8)
                       * box(x, y, 0, cy + 6, 80, cy + 15))
        stripe = math.cos(math.asin(clamp(abs(x - cx) / 11.5)) * 7)
        cloth = mix((.92, .22, .2), (1, .84, .25), smooth(-.3, .3, stripe))
        cloth = mix(cloth, BLACK, .35 * clamp((x - cx + 4) / 16))
        colour = mix(colour, cloth, envelope)
        ropes = edge(abs(abs(x - cx) - 1.6) - .1) * box(x, y, 0, cy + 15, 80, cy + 18)
        colour = mix(colour, (.3, .2, .15), .8 * ropes)
        return mix(colour, (.42, .26, .14), box(x, y, cx - 2, cy + 18, cx + 2, cy + 21))

    return scene


def lighthouse(turn: float):
    """A lighthouse at dusk whose beam points `turn` radians below the horizontal."""

    def scene(x, y):
        colour = gradient(((0, (.05, .08, .22)), (34, (.3, .3, .5)), (42, (.75, .46, .42))), y)
        if speck(int(x), int(y), 31) > .988 and y < 24:
            colour = add(colour, WHITE, .6)
        if y > 42:
            wave = .05 * math.sin(y * 2.6 + math.sin(x * .3 + y * .6) * 2)
            colour = add(mix((.32, .26, .36), (.05, .09, .2), (y - 42) / 14), WHITE, wave)
        for side in (-1, 1):
            dx, dy = side * (x - 56), y - 15 - (x - 56) * math.tan(turn)
            if dx > 0:
                beam = math.exp(-(dy / (1 + dx * .12)) ** 2) * math.exp(-dx / 38)
                colour = add(colour, (1, .95, .6), .75 * beam)
        rock = edge(47 - 5 * math.exp(-((x - 56) / 15) ** 2) + .8 * math.sin(x * .9) - y)
        colour = mix(colour, (.06, .07, .1), rock * smooth(30, 40, x))
        half = 3 + (y - 18) * .08
        tower = edge(abs(x - 56) - half) * box(x, y, 0, 18, 80, 44)
        paint = (.85, .2, .18) if int((y - 18) // 5.2) % 2 else (.92, .9, .86)
        colour = mix(colour, mix(paint, (.1, .1, .2), .5 * smooth(54, 59, x)), tower)
        colour = mix(colour, (.12, .12, .16), box(x, y, 52, 17, 60, 18.4))
        colour = mix(colour, (1, .97, .7), box(x, y, 54, 13, 58, 17))
        return mix(colour, (.7, .15, .14), triangle(x, y, 56, 9, 13, 3.4))

    return scene
