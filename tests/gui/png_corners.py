#!/usr/bin/env python3
"""Checks a PNG's size and its four corner colours (top left, top right, bottom left, bottom right).

    png_corners.py FILE WIDTH HEIGHT RRGGBB RRGGBB RRGGBB RRGGBB
Reads 8-bit RGB and RGBA pictures without interlace, the kinds Qt writes. Exit 1 on a difference.
"""
import struct
import sys
import zlib


def read_png(path):
    data = open(path, "rb").read()
    if data[:8] != b"\x89PNG\r\n\x1a\n":
        sys.exit(f"{path}: not a PNG")
    pos, idat, width = 8, b"", 0
    while pos < len(data):
        length, kind = struct.unpack(">I4s", data[pos:pos + 8])
        body = data[pos + 8:pos + 8 + length]
        if kind == b"IHDR":
            width, height, depth, colour, _, _, interlace = struct.unpack(">IIBBBBB", body)
            if depth != 8 or colour not in (2, 6) or interlace:
                sys.exit(f"{path}: depth {depth}, colour type {colour}, interlace {interlace} not read here")
            channels = 3 if colour == 2 else 4
        elif kind == b"IDAT":
            idat += body
        pos += 12 + length
    raw = zlib.decompress(idat)
    stride = width * channels
    rows, prev = [], bytearray(stride)
    for y in range(height):
        kind, line = raw[y * (stride + 1)], bytearray(raw[y * (stride + 1) + 1:(y + 1) * (stride + 1)])
        for i in range(stride):
            a = line[i - channels] if i >= channels else 0
            b = prev[i]
            c = prev[i - channels] if i >= channels else 0
            if kind == 1:
                line[i] = (line[i] + a) & 255
            elif kind == 2:
                line[i] = (line[i] + b) & 255
            elif kind == 3:
                line[i] = (line[i] + (a + b) // 2) & 255
            elif kind == 4:
                p = a + b - c
                pa, pb, pc = abs(p - a), abs(p - b), abs(p - c)
                line[i] = (line[i] + (a if pa <= pb and pa <= pc else b if pb <= pc else c)) & 255
        rows.append(line)
        prev = line
    return width, height, lambda x, y: "%02x%02x%02x" % tuple(rows[y][x * channels:x * channels + 3])


def main():
    path, w, h, *colours = sys.argv[1:]
    width, height, pixel = read_png(path)
    if (width, height) != (int(w), int(h)):
        sys.exit(f"{path}: {width}x{height}, not {w}x{h}")
    corners = [(0, 0), (width - 1, 0), (0, height - 1), (width - 1, height - 1)]
    for (x, y), want in zip(corners, colours):
        if pixel(x, y) != want.lower():
            sys.exit(f"{path}: pixel {x},{y} is {pixel(x, y)}, not {want}")


if __name__ == "__main__":
    main()
