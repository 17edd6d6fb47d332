# SPDX-FileCopyrightText: 2026 The ZOR Network Manager developers
# SPDX-License-Identifier: MIT
"""Writes pictures of the screen."""
import struct
import zlib


def write_png(path, width, height, pixels):
    """Writes pixels of blue, green, red and an unused byte as a picture file."""
    colours = bytearray(3 * width * height)
    for target, source in ((0, 2), (1, 1), (2, 0)):
        colours[target::3] = pixels[source::4]
    rows = b"".join(b"\0" + colours[row * 3 * width:(row + 1) * 3 * width]
                    for row in range(height))

    def chunk(kind, data):
        return (struct.pack(">I", len(data)) + kind + data
                + struct.pack(">I", zlib.crc32(kind + data)))

    with open(path, "wb") as file:
        file.write(b"\x89PNG\r\n\x1a\n"
                   + chunk(b"IHDR", struct.pack(">IIBBBBB", width, height, 8, 2, 0, 0, 0))
                   + chunk(b"IDAT", zlib.compress(rows, 9)) + chunk(b"IEND", b""))
