#!/usr/bin/env python3
"""Draws the program's pictures: the window icon, the three action marks of the trees and the
panel picture used when a collection brings no logo of its own.

Plain python3 (no imaging library): every shape is a distance function, and a pixel takes as
much of a shape's colour as the shape covers of it, which gives smooth edges at any size.
Run it from anywhere; it writes next to itself. The output is the same on every run."""

import math
import os
import struct
import zlib

HERE = os.path.dirname(os.path.abspath(__file__))


def write_png(path, width, height, pixels):
    """pixels: rows of (r, g, b, a) floats in 0..1."""
    raw = bytearray()
    for row in pixels:
        raw.append(0)
        for r, g, b, a in row:
            raw += bytes(max(0, min(255, round(c * 255))) for c in (r, g, b, a))

    def chunk(kind, data):
        body = kind + data
        return struct.pack(">I", len(data)) + body + struct.pack(">I", zlib.crc32(body) & 0xFFFFFFFF)

    png = b"\x89PNG\r\n\x1a\n"
    png += chunk(b"IHDR", struct.pack(">IIBBBBB", width, height, 8, 6, 0, 0, 0))
    png += chunk(b"IDAT", zlib.compress(bytes(raw), 9))
    png += chunk(b"IEND", b"")
    with open(path, "wb") as out:
        out.write(png)


def hex_colour(text, alpha=1.0):
    text = text.lstrip("#")
    return tuple(int(text[i:i + 2], 16) / 255 for i in (0, 2, 4)) + (alpha,)


def mix(a, b, t):
    return tuple(x + (y - x) * t for x, y in zip(a, b))


def over(dst, src, coverage):
    """src over dst, src's alpha scaled by coverage (premultiplication done here)."""
    sa = src[3] * coverage
    if sa <= 0:
        return dst
    da = dst[3]
    oa = sa + da * (1 - sa)
    if oa <= 0:
        return (0, 0, 0, 0)
    rgb = tuple((s * sa + d * da * (1 - sa)) / oa for s, d in zip(src[:3], dst[:3]))
    return rgb + (oa,)


def cover(distance):
    """Coverage of a pixel whose centre lies `distance` pixels outside a shape's edge."""
    return max(0.0, min(1.0, 0.5 - distance))


# Signed distances: negative inside.
def d_circle(x, y, cx, cy, r):
    return math.hypot(x - cx, y - cy) - r


def d_round_rect(x, y, x0, y0, x1, y1, r):
    cx, cy = (x0 + x1) / 2, (y0 + y1) / 2
    hx, hy = (x1 - x0) / 2 - r, (y1 - y0) / 2 - r
    qx, qy = abs(x - cx) - hx, abs(y - cy) - hy
    outside = math.hypot(max(qx, 0), max(qy, 0))
    return outside + min(max(qx, qy), 0) - r


def d_segment(x, y, ax, ay, bx, by, half_width):
    px, py, vx, vy = x - ax, y - ay, bx - ax, by - ay
    t = max(0.0, min(1.0, (px * vx + py * vy) / (vx * vx + vy * vy)))
    return math.hypot(px - vx * t, py - vy * t) - half_width


def d_polygon(x, y, points):
    """Distance to a convex or concave polygon (even-odd inside test)."""
    best = float("inf")
    inside = False
    n = len(points)
    for i in range(n):
        ax, ay = points[i]
        bx, by = points[(i + 1) % n]
        best = min(best, d_segment(x, y, ax, ay, bx, by, 0))
        if (ay > y) != (by > y) and x < (bx - ax) * (y - ay) / (by - ay) + ax:
            inside = not inside
    return -best if inside else best


def render(width, height, paint):
    rows = []
    for j in range(height):
        row = []
        for i in range(width):
            row.append(paint(i + 0.5, j + 0.5))
        rows.append(row)
    return rows


def round_badge(size, top, bottom, glyph):
    """A round coloured mark with a white glyph, for the tree rows."""
    c = size / 2
    r = size / 2 - 0.6

    def paint(x, y):
        px = (0, 0, 0, 0)
        px = over(px, mix(hex_colour(bottom), hex_colour("#000000"), 0.25), cover(d_circle(x, y, c, c, r)))
        px = over(px, mix(hex_colour(top), hex_colour(bottom), y / size), cover(d_circle(x, y, c, c, r - 1)))
        return over(px, hex_colour("#ffffff"), cover(glyph(x, y)))

    return render(size, size, paint)


def add_icon():
    s = 16
    return round_badge(s, "#5cc45a", "#2e8b2e",
                       lambda x, y: min(d_segment(x, y, 4.5, 8, 11.5, 8, 1.2), d_segment(x, y, 8, 4.5, 8, 11.5, 1.2)))


def remove_icon():
    s = 16
    return round_badge(s, "#ef6b5b", "#b8322a", lambda x, y: d_segment(x, y, 4.5, 8, 11.5, 8, 1.3))


def update_icon():
    s = 16
    arrow = [(8, 3.6), (12.2, 8), (9.5, 8), (9.5, 12), (6.5, 12), (6.5, 8), (3.8, 8)]
    return round_badge(s, "#5ea4ea", "#2463b0", lambda x, y: d_polygon(x, y, arrow))


def picture_frame(x, y, x0, y0, x1, y1, paint_inside, frame, px):
    """A framed landscape: a sun over two hills, the motif of a gallery of pictures."""
    w = x1 - x0
    h = y1 - y0
    px = over(px, frame, cover(d_round_rect(x, y, x0, y0, x1, y1, w * 0.08)))
    ix0, iy0, ix1, iy1 = x0 + w * 0.1, y0 + h * 0.12, x1 - w * 0.1, y1 - h * 0.12
    inner = d_round_rect(x, y, ix0, iy0, ix1, iy1, w * 0.03)
    iw, ih = ix1 - ix0, iy1 - iy0
    sky = mix(hex_colour("#bfe0ff"), hex_colour("#eaf5ff"), (y - iy0) / ih)
    px = over(px, sky, cover(inner))
    if paint_inside:
        sun = d_circle(x, y, ix0 + iw * 0.72, iy0 + ih * 0.3, ih * 0.16)
        px = over(px, hex_colour("#ffc93c"), cover(max(sun, inner)))
        far = d_polygon(x, y, [(ix0 - 1, iy1 + 1), (ix0 + iw * 0.35, iy0 + ih * 0.38), (ix0 + iw * 0.8, iy1 + 1)])
        px = over(px, hex_colour("#5aa469"), cover(max(far, inner)))
        near = d_polygon(x, y, [(ix0 + iw * 0.3, iy1 + 1), (ix0 + iw * 0.7, iy0 + ih * 0.55), (ix1 + 1, iy0 + ih * 0.8),
                                (ix1 + 1, iy1 + 1)])
        px = over(px, hex_colour("#3b7f4a"), cover(max(near, inner)))
    return px


def program_icon():
    s = 64

    def paint(x, y):
        px = (0, 0, 0, 0)
        body = d_round_rect(x, y, 2, 2, 62, 62, 12)
        px = over(px, hex_colour("#000000", 0.25), cover(d_round_rect(x, y, 2, 3.5, 62, 63.5, 12)))
        px = over(px, mix(hex_colour("#3a7fd0"), hex_colour("#1d4f91"), y / s), cover(body))
        # A second picture behind the first: a gallery holds many.
        px = over(px, hex_colour("#ffffff", 0.45), cover(d_round_rect(x, y, 19, 10, 55, 38, 3)))
        px = picture_frame(x, y, 9, 20, 47, 50, True, hex_colour("#ffffff"), px)
        # The tool's mark: a round "add" badge at the corner.
        px = over(px, hex_colour("#1d4f91"), cover(d_circle(x, y, 48, 48, 11)))
        px = over(px, hex_colour("#5cc45a"), cover(d_circle(x, y, 48, 48, 9)))
        plus = min(d_segment(x, y, 43, 48, 53, 48, 1.8), d_segment(x, y, 48, 43, 48, 53, 1.8))
        return over(px, hex_colour("#ffffff"), cover(plus))

    return render(s, s, paint)


def panel_picture():
    """The panel behind a collection's name and text: a calm band of framed pictures at the
    left, and a light field at the right that the text sits on."""
    w, h = 420, 250
    band = 150

    def paint(x, y):
        t = y / h
        field = mix(hex_colour("#ffffff"), hex_colour("#e8f0fa"), t)
        px = field
        left = mix(hex_colour("#2f6fc0"), hex_colour("#173f75"), t)
        edge = x - band
        px = over(px, left, cover(edge))
        # A soft seam between the band and the field.
        px = over(px, hex_colour("#9fc2ea"), cover(abs(edge) - 1.5) * 0.8)
        px = picture_frame(x, y, 28, 34, 122, 104, True, hex_colour("#ffffff"), px)
        px = picture_frame(x, y, 40, 128, 112, 182, True, hex_colour("#ffffff", 0.8), px)
        px = picture_frame(x, y, 22, 200, 76, 240, False, hex_colour("#ffffff", 0.5), px)
        px = picture_frame(x, y, 86, 196, 130, 230, False, hex_colour("#ffffff", 0.4), px)
        return px

    return render(w, h, paint)


def main():
    pictures = {
        "curatool.png": program_icon,
        "add.png": add_icon,
        "update.png": update_icon,
        "remove.png": remove_icon,
        "LeftImageDummy.png": panel_picture,
    }
    for name, draw in pictures.items():
        rows = draw()
        write_png(os.path.join(HERE, name), len(rows[0]), len(rows), rows)


if __name__ == "__main__":
    main()
