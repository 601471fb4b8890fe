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


def accent_rows(path, x0, y0, w, h, tolerance=40):
    """Per row of the rectangle, one byte per pixel: 1 where it is accent blue.
    Each colour channel is cut out of the row and looked up in a table, so
    that a monitor's worth of pixels takes a fraction of a second even on a
    busy machine."""
    data = open(path, "rb").read()
    header = struct.unpack(">25I", data[:100])
    header_size, byte_order, bits_per_pixel, bytes_per_line = header[0], header[7], header[11], header[12]
    if bits_per_pixel not in (24, 32):
        raise SystemExit(f"xshot: {bits_per_pixel} bits per pixel not supported")
    step = bits_per_pixel // 8
    pixels = data[header_size + 12 * header[19]:]
    channels = []
    for mask, want in zip(header[14:17], ACCENT):
        shift = (mask & -mask).bit_length() - 1
        if mask >> shift != 0xFF or shift % 8:
            raise SystemExit(f"xshot: colour mask {mask:#x} not supported")
        byte = shift // 8 if byte_order == 0 else step - 1 - shift // 8
        channels.append((byte, bytes(abs(v - want) <= tolerance for v in range(256))))
    rows = []
    for y in range(y0, y0 + h):
        start = y * bytes_per_line + step * x0
        line = pixels[start:start + step * w]
        flags = -1
        for byte, table in channels:
            flags &= int.from_bytes(line[byte::step].translate(table), "big")
        rows.append(flags.to_bytes(w, "big"))
    return rows


def blue_things(rows, x0, y0, w, h):
    """Bounding boxes (left, top, right, bottom) of the accent-blue things: the
    capsule is where the long runs of blue are, the text is the rest."""
    runs = [(y0 + y, x0 + run.start(), x0 + run.end() - 1)
            for y, flags in enumerate(rows) for run in re.finditer(b"\x01+", flags)]

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
        quarter = (last - first) // 4
        return last - first + 1 >= 30 and all(
            column_height(x, y) >= 12 for x in (first + quarter, first + 2 * quarter, last - quarter))

    capsule = merge(*[(first, y, last, y) for y, first, last in runs if filled(y, first, last)])
    # Runs at the capsule's top and bottom are its rounded ends.
    text = merge(*[(first, y, last, y) for y, first, last in runs
                   if not (capsule and first <= capsule[2] + 4 and last >= capsule[0] - 4
                           and capsule[1] - 8 <= y <= capsule[3] + 8) and not filled(y, first, last)])
    return capsule, text


def merge(*boxes):
    if not boxes:
        return None
    lefts, tops, rights, bottoms = zip(*boxes)
    return min(lefts), min(tops), max(rights), max(bottoms)


def main(argv):
    if len(argv) != 6 or argv[0] != "blue":
        print(__doc__, file=sys.stderr)
        return 2
    x0, y0, w, h = (int(v) for v in argv[2:6])
    for name, box in zip(("capsule", "text"), blue_things(accent_rows(argv[1], x0, y0, w, h), x0, y0, w, h)):
        if box:
            l, t, r, b = box
            print(f"{name} {(l + r) // 2} {(t + b) // 2} {r - l + 1} {b - t + 1}")
    return 0


if __name__ == "__main__":
    sys.exit(main(sys.argv[1:]))
