"""Draws the symbols and the program's icon as SVG files.

Every symbol lies on a grid of 24 with one stroke weight of 1.5 and round ends. A file has up to
three groups, painted in this order:

    base    what stands back, in the lower opacity
    cut     what is cut out of the base; invisible by itself
    glyph   what stands in front

The group "mark" takes the place of "glyph" on a filled shape: it stands in front of the dimmed
shape, or is cut out of it where the symbol is drawn in one opacity.

Symbols of the tray also come in variants whose straight edges lie on whole pixels, one for each
common icon size.

Usage: tools/draw-symbols [FOLDER]      (default: the source tree)
"""

import math
import pathlib
import sys

from .places import ROOT

GRID = 24
STROKE = 1.5
SIZES = (16, 22, 24, 32, 48, 64)


def num(value):
    return f"{value:.3f}".rstrip("0").rstrip(".") or "0"


def points(pairs):
    return " ".join(f"{num(x)},{num(y)}" for x, y in pairs)


def path(d):
    return f'<path d="{d}"/>'


def filled(d):
    return f'<path d="{d}" fill="#000" stroke="none"/>'


def solid(d):
    """A filled shape whose corners are rounded by the stroke."""
    return f'<path d="{d}" fill="#000"/>'


def circle(cx, cy, r):
    return f'<circle cx="{num(cx)}" cy="{num(cy)}" r="{num(r)}"/>'


def dot(cx, cy, r):
    return f'<circle cx="{num(cx)}" cy="{num(cy)}" r="{num(r)}" fill="#000" stroke="none"/>'


def rect(x, y, w, h, r):
    return (f'<rect x="{num(x)}" y="{num(y)}" width="{num(w)}" height="{num(h)}"'
            f' rx="{num(r)}" ry="{num(r)}"/>')


def bar(x, y, w, h):
    """A bar with round ends, as a filled shape, so that it can lie on whole pixels."""
    return (f'<rect x="{num(x)}" y="{num(y)}" width="{num(w)}" height="{num(h)}"'
            f' rx="{num(w / 2)}" ry="{num(w / 2)}" fill="#000" stroke="none"/>')


def polar(cx, cy, r, degrees):
    a = math.radians(degrees)
    return cx + r * math.cos(a), cy + r * math.sin(a)


def arc(cx, cy, r, start, end):
    """A clockwise arc; angles from three o'clock, downwards."""
    x0, y0 = polar(cx, cy, r, start)
    x1, y1 = polar(cx, cy, r, end)
    large = 1 if (end - start) % 360 > 180 else 0
    return path(f"M{num(x0)} {num(y0)}A{num(r)} {num(r)} 0 {large} 1 {num(x1)} {num(y1)}")


DISC = dot(12, 12, 9.75)
RING = circle(12, 12, 9)


class Symbol:
    def __init__(self, glyph="", base="", cut="", mark="", grid=GRID, weight=None):
        self.groups = [("base", base), ("cut", cut), ("glyph", glyph), ("mark", mark)]
        self.grid = grid
        self.weight = weight or STROKE * grid / GRID

    def svg(self):
        opacity = {"base": ' opacity="0.55"', "cut": ' opacity="0"'}
        body = "".join(f'  <g id="{name}"{opacity.get(name, "")}>{content}</g>\n'
                       for name, content in self.groups if content)
        return (f'<svg xmlns="http://www.w3.org/2000/svg" width="{self.grid}" height="{self.grid}"'
                f' viewBox="0 0 {self.grid} {self.grid}" fill="none" stroke="#000"'
                f' stroke-width="{num(self.weight)}" stroke-linecap="round"'
                ' stroke-linejoin="round">\n'
                f"{body}</svg>\n")


def weight_in_tray(grid):
    """One pixel is too thin for the small icons of a tray."""
    return max(2, round(STROKE * grid / GRID))


def bars(grid, heights, pitch, hinted):
    """Upright bars around the middle; heights and pitch on the grid of 24."""
    scale = grid / GRID
    width, step = STROKE * scale, pitch * scale
    if hinted:
        width = weight_in_tray(grid)
        step = max(width + 1, round(step))
    left = (grid - (step * (len(heights) - 1) + width)) / 2
    result = ""
    for index, height in enumerate(heights):
        h, x = height * scale, left + index * step
        if hinted:
            x = math.floor(left) + index * step
            # The height's parity is the grid's, so that both ends lie on pixels.
            h = max(2, 2 * round((h - grid % 2) / 2) + grid % 2)
        result += bar(x, (grid - h) / 2, width, h)
    return result


def waveform(grid=GRID, hinted=False):
    return Symbol(glyph=bars(grid, (7, 14, 20, 10, 5), 4, hinted), grid=grid)


def waveform_circle_fill(grid=GRID, hinted=False):
    heights = (5, 11, 7) if hinted and grid <= 24 else (4, 8, 12, 7, 4)
    return Symbol(base=dot(grid / 2, grid / 2, 9.75 * grid / GRID),
                  mark=bars(grid, heights, 4 if len(heights) == 3 else 2.75, hinted), grid=grid)


def ellipsis_circle_fill(grid=GRID, hinted=False):
    scale = grid / GRID
    r, step = 1.4 * scale, 4.5 * scale
    if hinted:
        step = round(step)
        if abs(r - round(r)) <= 0.2:
            r = round(r)
    dots = "".join(dot(grid / 2 + k * step, grid / 2, r) for k in (-1, 0, 1))
    return Symbol(base=dot(grid / 2, grid / 2, 9.75 * scale), mark=dots, grid=grid)


def checkmark_circle_fill(grid=GRID, hinted=False):
    s = grid / GRID
    d = (f"M{num(7.75 * s)} {num(12.4 * s)}L{num(10.75 * s)} {num(15.4 * s)}"
         f"L{num(16.25 * s)} {num(8.9 * s)}")
    return Symbol(base=dot(grid / 2, grid / 2, 9.75 * s), mark=path(d), grid=grid,
                  weight=weight_in_tray(grid) if hinted else None)


TRAY = {
    "waveform": waveform,
    "waveform.circle.fill": waveform_circle_fill,
    "ellipsis.circle.fill": ellipsis_circle_fill,
    "checkmark.circle.fill": checkmark_circle_fill,
}


def gear():
    teeth, outer, root = 8, 9.6, 7.3
    corners = []
    for tooth in range(teeth):
        middle = 360 / teeth * tooth - 90
        for offset, r in ((-14, root), (-8.5, outer), (8.5, outer), (14, root)):
            corners.append(polar(12, 12, r, middle + offset))
    return Symbol(glyph=f'<polygon points="{points(corners)}"/>', base=circle(12, 12, 3))


def seal():
    lobes, r = 10, 8.6
    d = ""
    for k in range(lobes + 1):
        x, y = polar(12, 12, r, 360 / lobes * (k - 0.5) - 90)
        d += f"M{num(x)} {num(y)}" if k == 0 else f"A3 3 0 0 1 {num(x)} {num(y)}"
    return Symbol(base=path(d + "Z"), glyph=path("M8.25 12.25L11 15L15.75 9.25"))


def star_points(tips, cx, cy, outer, inner):
    return [polar(cx, cy, outer if k % 2 == 0 else inner, 180 / tips * k - 90)
            for k in range(2 * tips)]


def sparkle(cx, cy, r):
    k = r * 0.16
    return solid(f"M{num(cx)} {num(cy - r)}Q{num(cx + k)} {num(cy - k)} {num(cx + r)} {num(cy)}"
                 f"Q{num(cx + k)} {num(cy + k)} {num(cx)} {num(cy + r)}"
                 f"Q{num(cx - k)} {num(cy + k)} {num(cx - r)} {num(cy)}"
                 f"Q{num(cx - k)} {num(cy - k)} {num(cx)} {num(cy - r)}Z")


STAR = points(star_points(5, 12, 12.75, 9.5, 4.2))
SHIELD = "M12 2.75L19.25 5.5V11C19.25 16 16.3 19.5 12 21.25C7.7 19.5 4.75 16 4.75 11V5.5Z"
ARROW_DOWN = path("M12 7.25V16.25M8.25 12.75L12 16.5L15.75 12.75")
CLOCK_HANDS = path("M12 6.75V12L15.25 14")
SLASH = path("M4.25 3.75L20 20.25")
SLASH_CUT = ('<path d="M5.9 3.2L21.4 19.4" stroke-width="2"/>')
WIFI = (arc(12, 18, 12.5, 228, 312) + arc(12, 18, 8.25, 228, 312) + arc(12, 18, 4, 228, 312)
        + dot(12, 18, 1.25))

SYMBOLS = {name: draw() for name, draw in TRAY.items()} | {
    "accessibility": Symbol(
        base=RING,
        glyph=dot(12, 7.4, 1.5) + path("M7.5 10.25L12 11.25L16.5 10.25M12 11.25V13.75"
                                       "L9.75 17.75M12 13.75L14.25 17.75")),
    "arrow.down.circle": Symbol(glyph=RING + ARROW_DOWN),
    "arrow.down.circle.fill": Symbol(base=DISC, mark=ARROW_DOWN),
    "bolt": Symbol(glyph=path("M13.25 2.75L5 13.5H11.25L10.5 21.25L19 10.25H12.5Z")),
    "character.book.closed": Symbol(
        glyph=path("M5 18.75V5.5A2.75 2.75 0 0 1 7.75 2.75H18A1 1 0 0 1 19 3.75V21.25H7.5"
                   "A2.5 2.5 0 0 1 5 18.75")
        + path("M9.25 13.25L12 6.25L14.75 13.25M10.25 11H13.75"),
        base=path("M5.25 18A2.5 2.5 0 0 1 7.5 16.75H19")),
    "checkmark": Symbol(glyph=path("M5 12.75L9.75 17.5L19 6.75")),
    "checkmark.seal": seal(),
    "checkmark.shield.fill": Symbol(base=solid(SHIELD), mark=path("M8.5 12L11.25 14.75L15.75 9")),
    "chevron.down": Symbol(glyph=path("M6 9.25L12 15.25L18 9.25")),
    "chevron.right": Symbol(glyph=path("M9.25 6L15.25 12L9.25 18")),
    "chevron.up.chevron.down": Symbol(
        glyph=path("M7.75 9.5L12 5.25L16.25 9.5M7.75 14.5L12 18.75L16.25 14.5")),
    "clock": Symbol(base=RING, glyph=CLOCK_HANDS),
    "clock.arrow.circlepath": Symbol(
        base=arc(12, 12, 9, 205, 520), glyph=CLOCK_HANDS + path("M3 4.25L3.75 8.5L8 7.9")),
    "cpu": Symbol(
        glyph=rect(6, 6, 12, 12, 2),
        base=rect(9.75, 9.75, 4.5, 4.5, 0.75)
        + path("".join(f"M{v} 2.5V5.75M{v} 18.25V21.5M2.5 {v}H5.75M18.25 {v}H21.5"
                       for v in (8.25, 12, 15.75)))),
    "doc.on.doc": Symbol(
        base=path("M15.75 7.5V4.75A2 2 0 0 0 13.75 2.75H5.75A2 2 0 0 0 3.75 4.75V14.5"
                  "A2 2 0 0 0 5.75 16.5H8.25"),
        glyph=rect(8.25, 7.5, 12, 13.75, 2)),
    "exclamationmark.triangle": Symbol(
        glyph=path("M13.4 4.1L21 17.5A1.6 1.6 0 0 1 19.6 20H4.4A1.6 1.6 0 0 1 3 17.5L10.6 4.1"
                   "A1.6 1.6 0 0 1 13.4 4.1Z")
        + path("M12 9V13.25") + dot(12, 16.5, 1.05)),
    "eye.slash.fill": Symbol(
        base=solid("M2.5 12C4.75 8 8 6 12 6C16 6 19.25 8 21.5 12C19.25 16 16 18 12 18"
                   "C8 18 4.75 16 2.5 12Z"),
        cut=circle(12, 12, 3) + SLASH_CUT, glyph=SLASH),
    "folder": Symbol(
        glyph=path("M3 7.25A2 2 0 0 1 5 5.25H9L11.25 7.75H19A2 2 0 0 1 21 9.75V17"
                   "A2 2 0 0 1 19 19H5A2 2 0 0 1 3 17Z"),
        base=path("M3.5 11H20.5")),
    "gear": gear(),
    "hand.raised": Symbol(
        glyph=path("M8 13.75V6A1.4 1.4 0 0 1 10.8 6V4.2A1.4 1.4 0 0 1 13.6 4.2V5.25"
                   "A1.4 1.4 0 0 1 16.4 5.25V8A1.4 1.4 0 0 1 19.2 8V14.5"
                   "C19.2 18.75 16.75 21.25 13.25 21.25C10.5 21.25 9 20.25 7.5 18L4.4 13.5"
                   "A1.45 1.45 0 0 1 6.75 11.8L8 13.75"),
        base=path("M10.8 6V11.5M13.6 5.25V11.5M16.4 8V11.5")),
    "hare": Symbol(
        glyph=path("M15.5 10.5C14.25 7.25 11.75 4 8.25 3C8 6 9.75 8.75 12.5 10.25"
                   "C8 9.75 4.75 12 4 15.75C3.6 17.75 4.75 19.5 6.75 19.5H15.25"
                   "C15.25 18 14.25 17 12.75 17C14.75 17 16 16.5 16.75 15.5"
                   "C19 16 21 15 21.25 13.5C20.5 11.5 18.25 10.25 15.5 10.5Z"),
        base=dot(17.6, 13, 0.95) + path("M7.75 16.5C8 14.75 9.25 13.75 11 13.75")),
    "keyboard": Symbol(
        glyph=rect(2.25, 5.5, 19.5, 13, 2.5),
        base="".join(dot(6 + 3 * k, 9, 0.9) + dot(6 + 3 * k, 12, 0.9) for k in range(5))
        + path("M8.75 15.25H15.25")),
    "lock.shield": Symbol(
        base=path(SHIELD),
        glyph=solid("M9.25 11.5H14.75V15.25H9.25Z") + path("M10 11.25V9.5A2 2 0 0 1 14 9.5V11.25")),
    "mic.fill": Symbol(
        glyph=solid("M9.5 5.5A2.5 2.5 0 0 1 14.5 5.5V11.5A2.5 2.5 0 0 1 9.5 11.5Z"),
        base=path("M5.5 11V11.5A6.5 6.5 0 0 0 18.5 11.5V11M12 18V21.25M8.75 21.25H15.25")),
    "plus.circle.fill": Symbol(base=DISC, mark=path("M12 7.5V16.5M7.5 12H16.5")),
    "power": Symbol(base=arc(12, 12.75, 8.25, -55, 235), glyph=path("M12 2.75V11.25")),
    "record.circle": Symbol(base=RING, glyph=dot(12, 12, 4.5)),
    "recordingtape": Symbol(
        glyph=circle(6.5, 12, 4) + circle(17.5, 12, 4), base=path("M6.5 16H17.5")),
    "scalemass": Symbol(
        glyph=circle(12, 5.25, 2.5)
        + path("M8 7.75H16C17 7.75 17.75 8.25 18 9.25L20.5 18.75C20.9 20.1 20 21.25 18.75 21.25"
               "H5.25C4 21.25 3.1 20.1 3.5 18.75L6 9.25C6.25 8.25 7 7.75 8 7.75Z"),
        base=path("M9 17.25H15")),
    "sparkles": Symbol(
        glyph=sparkle(10, 13, 6.5), base=sparkle(18.5, 5.25, 2.75) + sparkle(18.75, 18.75, 2.1)),
    "star": Symbol(glyph=f'<polygon points="{STAR}"/>'),
    "star.fill": Symbol(glyph=f'<polygon points="{STAR}" fill="#000"/>'),
    "text.quote": Symbol(base=path("M4 5V19"),
                         glyph=path("M8.75 6.5H20.5M8.75 12H20.5M8.75 17.5H15.5")),
    "trash": Symbol(
        glyph=path("M4 6.25H20M6 6.25L6.9 19.1A2 2 0 0 0 8.9 21H15.1A2 2 0 0 0 17.1 19.1L18 6.25"
                   "M9 6.25V4.75A1.75 1.75 0 0 1 10.75 3H13.25A1.75 1.75 0 0 1 15 4.75V6.25"),
        base=path("M10 10.25V16.75M14 10.25V16.75")),
    "wifi.slash": Symbol(base=WIFI, cut=SLASH_CUT, glyph=SLASH),
    "xmark": Symbol(glyph=path("M6 6L18 18M18 6L6 18")),
}


def program_icon():
    heights = (7, 14, 20, 10, 5)
    opacities = (0.6, 1, 1, 1, 0.6)
    scale = 64 / GRID * 0.75
    width, pitch = STROKE * scale * 1.33, 4 * scale
    content = ""
    for index, (height, opacity) in enumerate(zip(heights, opacities)):
        x = 32 + (index - 2) * pitch - width / 2
        h = height * scale
        content += (f'  <rect x="{num(x)}" y="{num(32 - h / 2)}" width="{num(width)}"'
                    f' height="{num(h)}" rx="{num(width / 2)}" ry="{num(width / 2)}" fill="#fff"'
                    f' opacity="{opacity}"/>\n')
    return ('<svg xmlns="http://www.w3.org/2000/svg" width="64" height="64" viewBox="0 0 64 64">\n'
            '  <defs>\n'
            '    <linearGradient id="ground" x1="8" y1="4" x2="56" y2="60"'
            ' gradientUnits="userSpaceOnUse">\n'
            '      <stop offset="0" stop-color="#2f7df6"/>\n'
            '      <stop offset="1" stop-color="#8f4ce0"/>\n'
            '    </linearGradient>\n'
            '  </defs>\n'
            '  <rect x="4" y="4" width="56" height="56" rx="14" ry="14" fill="url(#ground)"/>\n'
            f"{content}</svg>\n")


def main():
    root = pathlib.Path(sys.argv[1]) if len(sys.argv) > 1 else ROOT
    symbols = root / "src/Views/Symbols"
    hinted = symbols / "Hinted"
    icons = root / "packaging/icons"
    for folder in (symbols, hinted, icons):
        folder.mkdir(parents=True, exist_ok=True)
    for name, symbol in SYMBOLS.items():
        (symbols / f"{name}.svg").write_text(symbol.svg())
    for name, draw in TRAY.items():
        for size in SIZES:
            (hinted / f"{name}-{size}.svg").write_text(draw(size, True).svg())
    (icons / "velloro.svg").write_text(program_icon())


if __name__ == "__main__":
    main()
