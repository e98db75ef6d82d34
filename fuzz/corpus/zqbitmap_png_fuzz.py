#!/usr/bin/env python3
"""Writes the seed inputs of zqbitmap_png_fuzz: tiny PNGs of the colour types and bit depths the reader
converts to RGBA8 (grey, grey+alpha, RGB, RGBA, palette with transparency, 16 bit, Adam7 interlaced).
Deterministic; run from the repository root: python3 fuzz/corpus/zqbitmap_png_fuzz.py"""
import struct
import zlib
from pathlib import Path


def chunk(kind, data):
    return struct.pack(">I", len(data)) + kind + data + struct.pack(">I", zlib.crc32(kind + data))


def png(width, height, depth, colour, rows, interlace=0, extra=b""):
    header = struct.pack(">IIBBBBB", width, height, depth, colour, 0, 0, interlace)
    raw = b"".join(b"\x00" + row for row in rows)
    return (b"\x89PNG\r\n\x1a\n" + chunk(b"IHDR", header) + extra +
            chunk(b"IDAT", zlib.compress(raw, 9)) + chunk(b"IEND", b""))


def main():
    out = Path("fuzz/corpus/zqbitmap_png_fuzz")
    out.mkdir(parents=True, exist_ok=True)
    seeds = {
        "grey-1x1": png(1, 1, 8, 0, [b"\x80"]),
        "grey-alpha-2x1": png(2, 1, 8, 4, [b"\x10\xff\xf0\x00"]),
        "rgb-2x2": png(2, 2, 8, 2, [b"\xff\x00\x00\x00\xff\x00", b"\x00\x00\xff\xff\xff\xff"]),
        "rgba-3x1": png(3, 1, 8, 6, [b"\x01\x02\x03\x04\x05\x06\x07\x08\x09\x0a\x0b\x0c"]),
        "palette-trns-4x1": png(4, 1, 2, 3, [b"\x1b"],
                                extra=chunk(b"PLTE", b"\x00\x00\x00\xff\xff\xff\xff\x00\x00\x00\xff\x00") +
                                chunk(b"tRNS", b"\x00\x80")),
        "rgb16-1x2": png(1, 2, 16, 2, [b"\xff\xff\x00\x00\x80\x00", b"\x00\x01\x00\x02\x00\x03"]),
    }
    # An interlaced image stores its seven passes one after the other, each row with a filter byte.
    passes = [(0, 0, 8, 8), (4, 0, 8, 8), (0, 4, 4, 8), (2, 0, 4, 4), (0, 2, 2, 4), (1, 0, 2, 2), (0, 1, 1, 2)]
    width = height = 3
    pixel = lambda x, y: bytes([x * 80, y * 80, 40, 255])
    raw = b""
    for x0, y0, dx, dy in passes:
        xs, ys = range(x0, width, dx), range(y0, height, dy)
        if xs and ys:
            for y in ys:
                raw += b"\x00" + b"".join(pixel(x, y) for x in xs)
    header = struct.pack(">IIBBBBB", width, height, 8, 6, 0, 0, 1)
    seeds["interlaced-rgba-3x3"] = (b"\x89PNG\r\n\x1a\n" + chunk(b"IHDR", header) +
                                    chunk(b"IDAT", zlib.compress(raw, 9)) + chunk(b"IEND", b""))
    for name, data in seeds.items():
        (out / name).write_bytes(data)


if __name__ == "__main__":
    main()
