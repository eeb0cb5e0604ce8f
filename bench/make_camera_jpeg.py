#!/usr/bin/env python3
"""Lays a JPEG out as cameras do: the main image, then a large preview stored as the second
image of a multi-picture (MPF) file, named by an APP2 "MPF" segment right after SOI.

Usage: make_camera_jpeg.py MAIN.jpg PREVIEW.jpg OUT.jpg
       make_camera_jpeg.py --split CAMERA.jpg MAIN.jpg PREVIEW.jpg   (takes one made so apart)
"""
import struct
import sys


def mpf_segment(main_length, preview_length, preview_offset):
    entries_offset = 8 + 2 + 3 * 12 + 4
    tiff = b"II*\x00" + struct.pack("<I", 8) + struct.pack("<H", 3)
    tiff += struct.pack("<HHI4s", 0xB000, 7, 4, b"0100")
    tiff += struct.pack("<HHII", 0xB001, 4, 1, 2)
    tiff += struct.pack("<HHII", 0xB002, 7, 32, entries_offset)
    tiff += struct.pack("<I", 0)
    tiff += struct.pack("<IIIHH", 0x20030000, main_length, 0, 0, 0)
    tiff += struct.pack("<IIIHH", 0x00010002, preview_length, preview_offset, 0, 0)
    body = b"MPF\x00" + tiff
    return b"\xFF\xE2" + struct.pack(">H", len(body) + 2) + body


def split(camera_path, main_path, preview_path):
    data = open(camera_path, "rb").read()
    segment_length = len(mpf_segment(0, 0, 0))
    total_main = struct.unpack_from("<I", data, 2 + segment_length - 2 * 16 + 4)[0]
    open(main_path, "wb").write(data[:2] + data[2 + segment_length:total_main])
    open(preview_path, "wb").write(data[total_main:])


def main():
    if sys.argv[1] == "--split":
        split(sys.argv[2], sys.argv[3], sys.argv[4])
        return
    main_bytes = open(sys.argv[1], "rb").read()
    preview = open(sys.argv[2], "rb").read()
    segment_length = len(mpf_segment(0, 0, 0))
    mp_start = 2 + 8  # SOI, marker and length, "MPF\0"
    total_main = len(main_bytes) + segment_length
    out = main_bytes[:2] + mpf_segment(total_main, len(preview), total_main - mp_start) + main_bytes[2:] + preview
    open(sys.argv[3], "wb").write(out)


if __name__ == "__main__":
    main()
