"""Pictures of the screen as portable pixmaps, compared."""

import re


def size_and_pixels(picture):
    """(width, height, the pixels' bytes) of a pixmap with one byte for each colour."""
    heading = re.match(rb"P6\s+(\d+)\s+(\d+)\s+255\s", picture)
    return int(heading[1]), int(heading[2]), picture[heading.end():]


def pixmap(width, height, stride, pixels):
    """The picture of pixels that are blue, green, red and something else, each a byte."""
    colours = bytearray(3 * width * height)
    for y in range(height):
        row = pixels[y * stride:y * stride + 4 * width]
        for colour in range(3):
            colours[3 * width * y + colour:3 * width * (y + 1):3] = row[2 - colour::4]
    return b"P6\n%d %d\n255\n" % (width, height) + bytes(colours)


def difference(first, second):
    """The smallest place (x, y, width, height) that holds all pixels in which the pictures differ,
    or None if they are the same."""
    width, height, before = size_and_pixels(first)
    if size_and_pixels(second)[:2] != (width, height):
        raise ValueError("the pictures have different sizes")
    after = size_and_pixels(second)[2]
    row = 3 * width
    rows = [y for y in range(height)
            if before[y * row:(y + 1) * row] != after[y * row:(y + 1) * row]]
    if not rows:
        return None
    columns = [x for x in range(width)
               if any(before[y * row + 3 * x:y * row + 3 * x + 3]
                      != after[y * row + 3 * x:y * row + 3 * x + 3] for y in rows)]
    return columns[0], rows[0], columns[-1] - columns[0] + 1, rows[-1] - rows[0] + 1
