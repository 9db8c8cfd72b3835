# SPDX-License-Identifier: GPL-3.0-or-later
"""Lines over something, as SVG that reads on light and dark paper."""

WIDTH, HEIGHT, LEFT, BOTTOM, TOP = 640, 220, 64, 36, 30
COLOURS = ("#2f6fb0", "#c2571a", "#3a8f4d")


def lines(title, across, series):
    """An SVG of {name: [(x, y), ...]}; each line has a scale of its own, from 0, named by its highest value."""
    out = [f'<svg xmlns="http://www.w3.org/2000/svg" width="{WIDTH}" height="{HEIGHT}" font-family="sans-serif" font-size="12">',
           '<!-- SPDX-License-Identifier: GPL-3.0-or-later -->',
           f'<rect width="{WIDTH}" height="{HEIGHT}" fill="#ffffff"/>', f'<text x="8" y="18" font-size="13">{title}</text>',
           f'<path d="M{LEFT} {TOP}V{HEIGHT - BOTTOM}H{WIDTH - 8}" fill="none" stroke="#666"/>']
    right = max(x for points in series.values() for x, _ in points) or 1
    out.append(f'<text x="{WIDTH - 8}" y="{HEIGHT - 20}" text-anchor="end" fill="#444">{right:,.0f} {across}</text>')
    for index, (name, points) in enumerate(series.items()):
        colour, top = COLOURS[index % len(COLOURS)], max(y for _, y in points) or 1
        path = "L".join(f"{LEFT + (WIDTH - 8 - LEFT) * x / right:.1f} "
                        f"{HEIGHT - BOTTOM - (HEIGHT - BOTTOM - TOP - 6 * index) * y / (top * 1.02):.1f}" for x, y in points)
        out.append(f'<path d="M{path}" fill="none" stroke="{colour}" stroke-width="1.5"/>')
        out.append(f'<text x="{LEFT + 150 * index}" y="{HEIGHT - 6}" fill="{colour}">{name} (to {top:,.0f})</text>')
    return "\n".join([*out, "</svg>"]) + "\n"
