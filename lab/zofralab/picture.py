# SPDX-License-Identifier: GPL-3.0-or-later
"""What a screen shows, as numbers: where a picture changed, and whether there is anything in a part of it."""

from collections import Counter, namedtuple


class Box(namedtuple("Box", "x y width height")):
    """A rectangle in pixels."""

    @property
    def centre(self):
        """The point in its middle."""
        return self.x + self.width // 2, self.y + self.height // 2

    @property
    def right(self):
        """The first column beyond it."""
        return self.x + self.width

    @property
    def bottom(self):
        """The first row below it."""
        return self.y + self.height

    def contains(self, other):
        """Whether the other one lies in it completely."""
        return (self.x <= other.x and self.y <= other.y and other.right <= self.right
                and other.bottom <= self.bottom)


class Picture:
    """Red, green and blue, a byte each, row by row."""

    def __init__(self, width, height, data):
        self.width = width
        self.height = height
        self.data = data

    @classmethod
    def from_ppm(cls, raw):
        """From the simplest of all formats, as `import` and `grim` write it."""
        kind, width, height, _depth = raw.split(None, 4)[:4]
        width, height = int(width), int(height)
        data = raw[-width * height * 3:]
        if kind != b"P6" or len(data) != width * height * 3:
            raise ValueError("not a picture of one byte for each colour")
        return cls(width, height, data)

    def save(self, path):
        """Write it as PPM, for whoever wants to look at it."""
        with open(path, "wb") as file:
            file.write(b"P6 %d %d 255\n" % (self.width, self.height) + self.data)

    def row(self, y):
        """The bytes of one row."""
        return self.data[y * self.width * 3:(y + 1) * self.width * 3]

    def crop(self, box):
        """A part of it."""
        return Picture(box.width, box.height, b"".join(
            self.row(y)[box.x * 3:box.right * 3] for y in range(box.y, box.bottom)))

    def colours(self):
        """How often each colour is in it, the most frequent first."""
        pixels = zip(self.data[0::3], self.data[1::3], self.data[2::3])
        return Counter(pixels).most_common()

    def drawn(self):
        """The share of its pixels that differ from the most frequent colour: 0 when it is empty."""
        return 1.0 - self.colours()[0][1] / (self.width * self.height)

    def difference(self, other, inside=None):
        """The smallest box around everything that differs from the other picture within a box, or None."""
        inside = inside or Box(0, 0, self.width, self.height)
        rows = [y for y in range(inside.y, inside.bottom)
                if self.row(y)[inside.x * 3:inside.right * 3] != other.row(y)[inside.x * 3:inside.right * 3]]
        if not rows:
            return None
        left, right = inside.right, inside.x
        for y in rows:
            mine, theirs = self.row(y), other.row(y)
            for x in range(inside.x, left):
                if mine[x * 3:x * 3 + 3] != theirs[x * 3:x * 3 + 3]:
                    left = x
                    break
            for x in range(inside.right - 1, right, -1):
                if mine[x * 3:x * 3 + 3] != theirs[x * 3:x * 3 + 3]:
                    right = x
                    break
        right = max(right, left)
        return Box(left, rows[0], right + 1 - left, rows[-1] + 1 - rows[0])
