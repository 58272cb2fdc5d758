#!/usr/bin/env python3
"""Compares the decoded pixels of two PNG files (8-bit, not interlaced, as the image encoder writes them):
the compressed bytes may differ between builds while the picture is the same.

    tools/png-pixels.py a.png b.png    # exit 0 when both have the same size, channels and pixels
"""
import struct
import sys
import zlib

CHANNELS = {0: 1, 2: 3, 4: 2, 6: 4}


def paeth(a, b, c):
    p = a + b - c
    pa, pb, pc = abs(p - a), abs(p - b), abs(p - c)
    return a if pa <= pb and pa <= pc else (b if pb <= pc else c)


def unfilter(kind, row, previous, step):
    out = bytearray(row)
    for i in range(len(out)):
        left = out[i - step] if i >= step else 0
        up = previous[i]
        corner = previous[i - step] if i >= step else 0
        predictor = (0, left, up, (left + up) // 2, paeth(left, up, corner))[kind]
        out[i] = (out[i] + predictor) & 0xFF
    return out


def decode(path):
    with open(path, "rb") as file:
        data = file.read()
    if data[:8] != b"\x89PNG\r\n\x1a\n":
        sys.exit(f"png-pixels: {path} is not a PNG file")
    at, compressed, header = 8, b"", None
    while at < len(data):
        length, kind = struct.unpack(">I4s", data[at:at + 8])
        body = data[at + 8:at + 8 + length]
        if kind == b"IHDR":
            header = struct.unpack(">IIBBBBB", body)
        elif kind == b"IDAT":
            compressed += body
        at += 12 + length
    width, height, depth, color, _, _, interlace = header
    if depth != 8 or color not in CHANNELS or interlace:
        sys.exit(f"png-pixels: {path}: only 8-bit, non-interlaced grey, RGB and RGBA images are read")
    step = CHANNELS[color]
    raw, stride = zlib.decompress(compressed), width * step
    rows, previous = [], bytearray(stride)
    for y in range(height):
        start = y * (stride + 1)
        previous = unfilter(raw[start], raw[start + 1:start + 1 + stride], previous, step)
        rows.append(bytes(previous))
    return (width, height, step), b"".join(rows)


def main():
    if len(sys.argv) != 3:
        sys.exit(__doc__)
    (shape_a, pixels_a), (shape_b, pixels_b) = decode(sys.argv[1]), decode(sys.argv[2])
    if shape_a != shape_b:
        sys.exit(f"png-pixels: the images differ in size or channels: {shape_a} and {shape_b}")
    differing = sum(1 for a, b in zip(pixels_a, pixels_b) if a != b)
    if differing:
        sys.exit(f"png-pixels: {differing} of {len(pixels_a)} samples differ")
    print(f"png-pixels: same pixels ({shape_a[0]}x{shape_a[1]}, {shape_a[2]} channels)")


main()
