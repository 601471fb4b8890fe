#!/usr/bin/env python3
"""Reads X screenshots (xwd -root) with the standard library only.

  xshot.py blue SHOT.xwd X Y W H           the blue things in a rectangle, one
                                           line each: "capsule|text CX CY W H"

The break screen draws two things in its accent blue: the "Skip" capsule (a
filled area) and the underlined "Water Reminder" line with its chevron. Both
are found by colour, so the tests can click them where a user would.
"""
import re
import struct
import sys

ACCENT = (0x0A, 0x7A, 0xFF)


class Shot:
    def __init__(self, path):
        data = open(path, "rb").read()
        header = struct.unpack(">25I", data[:100])
        (header_size, _version, _format, _depth, self.width, self.height, _xoffset, byte_order,
         _unit, _bit_order, _pad, bits_per_pixel, self.bytes_per_line) = header[:13]
        red_mask, green_mask, blue_mask = header[14:17]
        ncolors = header[19]
        if bits_per_pixel not in (24, 32):
            raise SystemExit(f"xshot: {bits_per_pixel} bits per pixel not supported")
        self.step = bits_per_pixel // 8
        self.little = byte_order == 0
        self.masks = (red_mask, green_mask, blue_mask)
        self.pixels = data[header_size + 12 * ncolors:]


def accent_rows(shot, x0, y0, w, h, tolerance=40):
    """Per row of the rectangle, one byte per pixel: 1 where it is accent blue.
    Each colour channel is cut out of the row and looked up in a table, so
    that a monitor's worth of pixels takes a fraction of a second even on a
    busy machine."""
    channels = []
    for mask, want in zip(shot.masks, ACCENT):
        shift = (mask & -mask).bit_length() - 1
        if mask >> shift != 0xFF or shift % 8:
            raise SystemExit(f"xshot: colour mask {mask:#x} not supported")
        byte = shift // 8 if shot.little else shot.step - 1 - shift // 8
        table = bytes(1 if abs(v - want) <= tolerance else 0 for v in range(256))
        channels.append((byte, table))
    rows = []
    for y in range(y0, y0 + h):
        start = y * shot.bytes_per_line + shot.step * x0
        line = shot.pixels[start:start + shot.step * w]
        flags = -1
        for byte, table in channels:
            plane = line[byte::shot.step].translate(table)
            flags &= int.from_bytes(plane, "big")
        rows.append(flags.to_bytes(w, "big"))
    return rows


def blue_things(shot, x0, y0, w, h):
    """Bounding boxes (left, top, right, bottom) of the accent-blue things: the
    capsule is where the long runs of blue are, the text is the rest."""
    rows = accent_rows(shot, x0, y0, w, h)
    runs = []  # (y, first x, last x)
    for y, flags in enumerate(rows):
        for run in re.finditer(b"\x01+", flags):
            runs.append((y0 + y, x0 + run.start(), x0 + run.end() - 1))

    def column_height(x, y):
        top = bottom = y - y0
        while top - 1 >= 0 and rows[top - 1][x - x0]:
            top -= 1
        while bottom + 1 < h and rows[bottom + 1][x - x0]:
            bottom += 1
        return bottom - top + 1

    def filled(y, first, last):
        # A long run that is blue a good way up or down across its width: the
        # capsule, not the underline of "Water Reminder" with letters on it.
        if last - first + 1 < 30:
            return False
        quarter = (last - first) // 4
        return all(column_height(x, y) >= 12 for x in (first + quarter, first + 2 * quarter,
                                                       last - quarter))

    capsule = None
    for y, first, last in runs:
        if filled(y, first, last):
            capsule = merge(capsule, (first, y, last, y))
    text = None
    for y, first, last in runs:
        # Runs at the capsule's top and bottom are its rounded ends.
        if capsule and first <= capsule[2] + 4 and last >= capsule[0] - 4 \
                and capsule[1] - 8 <= y <= capsule[3] + 8:
            continue
        if not filled(y, first, last):
            text = merge(text, (first, y, last, y))
    return capsule, text


def merge(a, b):
    if a is None:
        return b
    return (min(a[0], b[0]), min(a[1], b[1]), max(a[2], b[2]), max(a[3], b[3]))


def main(argv):
    if len(argv) == 6 and argv[0] == "blue":
        shot = Shot(argv[1])
        x0, y0, w, h = (int(v) for v in argv[2:6])
        capsule, text = blue_things(shot, x0, y0, w, h)
        for name, box in (("capsule", capsule), ("text", text)):
            if box:
                l, t, r, b = box
                print(f"{name} {(l + r) // 2} {(t + b) // 2} {r - l + 1} {b - t + 1}")
        return 0
    print(__doc__, file=sys.stderr)
    return 2


if __name__ == "__main__":
    sys.exit(main(sys.argv[1:]))
