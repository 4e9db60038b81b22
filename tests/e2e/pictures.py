"""Pictures as arrays: a reader of PNG files, and where a value lies in a panel."""

import struct
import zlib

import numpy as np

GAP = 0xE8E8E8  # the ground where data are missing
# Line colours, after Okabe and Ito.
BLUE, VERMILLION, GREEN = 0x0072B2, 0xD55E00, 0x009E73


def read_png(data):
    """The pixels of a PNG with 8 bits a channel, as 0xRRGGBB, rows by columns."""
    assert data[:8] == b"\x89PNG\r\n\x1a\n"
    at, body, header = 8, b"", None
    while at < len(data):
        (length,), kind = struct.unpack(">I", data[at : at + 4]), data[at + 4 : at + 8]
        chunk = data[at + 8 : at + 8 + length]
        assert zlib.crc32(kind + chunk) == struct.unpack(">I", data[at + 8 + length : at + 12 + length])[0]
        if kind == b"IHDR":
            header = struct.unpack(">IIBBBBB", chunk)
        elif kind == b"IDAT":
            body += chunk
        at += 12 + length
    width, height, depth, colour, _, _, interlace = header
    assert (depth, interlace) == (8, 0) and colour in (2, 6)
    pixels = unfilter(zlib.decompress(body), width, height, 3 if colour == 2 else 4)
    return (pixels[..., 0] << 16) | (pixels[..., 1] << 8) | pixels[..., 2]


def unfilter(raw, width, height, channels):
    """Undoes the five filters of rows."""
    stride = width * channels
    rows = np.zeros((height, stride), np.uint8)
    above = bytes(stride)
    for y in range(height):
        kind = raw[y * (stride + 1)]
        row = bytearray(raw[y * (stride + 1) + 1 : (y + 1) * (stride + 1)])
        if kind == 2:
            row = bytearray((np.frombuffer(row, np.uint8) + np.frombuffer(above, np.uint8)).astype(np.uint8))
        elif kind != 0:
            undo_row(kind, row, above, channels)
        rows[y] = row
        above = bytes(row)
    return rows.reshape(height, width, channels).astype(np.int64)


def undo_row(kind, row, above, channels):
    for i in range(len(row)):
        left = row[i - channels] if i >= channels else 0
        corner = above[i - channels] if i >= channels else 0
        if kind == 1:
            guess = left
        elif kind == 3:
            guess = (left + above[i]) // 2
        else:
            p = left + above[i] - corner
            guess = min((abs(p - left), 0, left), (abs(p - above[i]), 1, above[i]), (abs(p - corner), 2, corner))[2]
        row[i] = (row[i] + guess) & 255


def brightness(pixels):
    """Grows along the colour map of spectrograms."""
    return 0.2126 * (pixels >> 16) + 0.7152 * ((pixels >> 8) & 255) + 0.0722 * (pixels & 255)


class Panel:
    """One panel of a picture: its pixels, and the places of values in them."""

    def __init__(self, pixels, entry):
        self.entry = entry
        self.box = entry["plot"]
        x, y, width, height = (self.box[key] for key in ("x", "y", "width", "height"))
        self.pixels = pixels[y : y + height, x : x + width]

    def column(self, value):
        axis = self.entry["x_axis"]
        return (value - axis["low"]) / (axis["high"] - axis["low"]) * self.box["width"] - 0.5

    def row(self, value):
        axis = self.entry["y_axis"]
        return (axis["high"] - value) / (axis["high"] - axis["low"]) * self.box["height"] - 0.5

    def ink(self):
        """How much of a line's colour each pixel has; paper, grid and gaps have none. Lines are smoothed, so
        that few of their pixels have the very colour."""
        channels = np.stack([self.pixels >> 16, (self.pixels >> 8) & 255, self.pixels & 255])
        return channels.max(axis=0) - channels.min(axis=0)

    def middle(self, column):
        """The row of the middle of what is drawn in a column; not a number where there is nothing."""
        ink = self.ink()[:, column].astype(float)
        return float((ink * np.arange(len(ink))).sum() / ink.sum()) if ink.any() else np.nan

    def columns_of(self, colour):
        """Columns that have a pixel of this colour."""
        return np.flatnonzero((self.pixels == colour).any(axis=0))

    def rows_of(self, colour):
        return np.flatnonzero((self.pixels == colour).any(axis=1))
