"""A picture of time against size, on logarithmic axes, as SVG."""
import math
from xml.sax.saxutils import escape

HEIGHT = 560
PANEL, TOP, LEFT, GAP = 370, 60, 70, 70
BOTTOM = 500
COLOURS = ["#1b6ca8", "#c1440e", "#5b8c2a", "#7a4fa3", "#b8860b", "#008080", "#8b4557", "#606060",
           "#d36ba6"]
INK, PALE, OWN = "#222", "#ddd", ["#222", "#d81b60"]


def label(power):
    return "10<tspan dy='-5' font-size='9'>%d</tspan>" % power


def decades(values):
    """The powers of 10 around the values, which may lie a little above the upper one."""
    low, high = math.log10(min(values)), math.log10(max(values))
    return math.floor(low), max(math.floor(low) + 1, math.ceil(high - 0.03))


def styles(own, names):
    """Colour, dashes and whether to draw bold; versions of one method share their colour."""
    found, methods = {}, []
    for name in names:
        method = name.rsplit(" ", 1)[0]
        if name in own:
            found[name] = OWN[own.index(name) % len(OWN)], "", True
        elif method in methods:
            colour = COLOURS[methods.index(method) % len(COLOURS)]
            found[name] = colour, " stroke-dasharray='5 3'", False
        else:
            found[name] = COLOURS[len(methods) % len(COLOURS)], "", False
            methods.append(method)
    return found


def panel(out, left, title, series, across, up, style):
    def x(value):
        return left + (math.log10(value) - across[0]) / (across[1] - across[0]) * PANEL

    def y(value):
        return BOTTOM - (math.log10(value) - up[0]) / (up[1] - up[0]) * (BOTTOM - TOP)

    out.append("<text x='%d' y='%d' font-size='14' font-weight='bold'>%s</text>" %
               (left, TOP - 18, escape(title)))
    for power in range(across[0], across[1] + 1):
        at = x(10.0**power)
        out.append("<path d='M%.1f %d V%d' stroke='%s'/>" % (at, TOP, BOTTOM, PALE))
        out.append("<text x='%.1f' y='%d' text-anchor='middle'>%s</text>" %
                   (at, BOTTOM + 20, label(power)))
    for power in range(up[0], up[1] + 1):
        at = y(10.0**power)
        out.append("<path d='M%d %.1f H%d' stroke='%s'/>" % (left, at, left + PANEL, PALE))
        out.append("<text x='%d' y='%.1f' text-anchor='end'>%s</text>" %
                   (left - 8, at + 4, label(power)))
    out.append("<text x='%d' y='%d' text-anchor='middle'>links</text>" %
               (left + PANEL // 2, BOTTOM + 42))
    for name, points in series:
        colour, dash, bold = style[name]
        path = " ".join("%s%.1f %.1f" % ("L" if i else "M", x(links), y(seconds))
                        for i, (links, seconds) in enumerate(points))
        out.append("<path d='%s' fill='none' stroke='%s' stroke-width='%s'%s/>" %
                   (path, colour, 3 if bold else 1.5, dash))
        for links, seconds in points:
            out.append("<circle cx='%.1f' cy='%.1f' r='%s' fill='%s'/>" %
                       (x(links), y(seconds), 4 if bold else 2.5, colour))


def legend(out, left, style):
    for index, (name, (colour, dash, bold)) in enumerate(style.items()):
        at = TOP + 10 + 22 * index
        out.append("<path d='M%d %d h22' stroke='%s' stroke-width='%s'%s/>" %
                   (left, at - 4, colour, 3 if bold else 2, dash))
        out.append("<text x='%d' y='%d'%s>%s</text>" %
                   (left + 28, at, " font-weight='bold'" if bold else "", escape(name)))


def draw(own, panels):
    """The text of the picture.

    `panels` is a list of titles with series, and a series is a list of names with points of links
    and seconds. All panels share their axes. The names in `own` are drawn bold.
    """
    points = [point for _, series in panels for _, line in series for point in line]
    if not points:
        return None
    across = decades([links for links, _ in points])
    up = decades([seconds for _, seconds in points])
    style = styles(own, [name for name, _ in panels[0][1]])
    width = LEFT + len(panels) * (PANEL + GAP) + 230
    out = ["<svg xmlns='http://www.w3.org/2000/svg' viewBox='0 0 %d %d' font-size='12' "
           "font-family='sans-serif' fill='%s'>" % (width, HEIGHT, INK),
           "<rect width='%d' height='%d' fill='white'/>" % (width, HEIGHT),
           "<text x='20' y='%d' transform='rotate(-90 20 %d)' text-anchor='middle'>seconds</text>" %
           ((TOP + BOTTOM) // 2, (TOP + BOTTOM) // 2)]
    for index, (title, series) in enumerate(panels):
        panel(out, LEFT + index * (PANEL + GAP), title, series, across, up,
              style)
    legend(out, LEFT + len(panels) * (PANEL + GAP) - 30, style)
    out.append("</svg>")
    return "\n".join(out) + "\n"
