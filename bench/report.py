"""The bench's results as a table, as a page of the documentation and as a plot."""

import os
import re

HEADINGS = ("Figure", "Gateway", "Floor", "Ratio", "Limit", "Within")


def number(value, unit):
    if value is None:
        return "-"
    digits = 0 if value >= 100 else 1 if value >= 10 else 2
    return f"{value:,.{digits}f} {unit}"


def cells(row):
    ratio = row["ratio"]
    limit = f"{row['limit']:.2f}" if ratio is not None else number(row["limit"], row["unit"])
    return (row["figure"], number(row["value"], row["unit"]), number(row["floor"], row["unit"]),
            "-" if ratio is None else f"{ratio:.2f}", limit, "yes" if row["within"] else "NO")


WIDTHS = (62, 17, 17, 6, 12, 6)


def plain_row(row):
    return "  ".join(cell.ljust(width) for cell, width in
                     zip(cells(row), WIDTHS, strict=True)).rstrip()


def plain_table(rows):
    heading = "  ".join(cell.ljust(width) for cell, width in zip(HEADINGS, WIDTHS, strict=True))
    within = sum(row["within"] for row in rows)
    return "\n".join(["", heading.rstrip(), *map(plain_row, rows),
                      f"{within} of {len(rows)} within their limits"])


def markdown_table(headings, rows):
    lines = [headings, ["---"] * len(headings), *rows]
    return "\n".join("| " + " | ".join(str(cell) for cell in line) + " |" for line in lines)


def straight_line(points):
    """(slope, value at 0) of the straight line with the least squares."""
    count = len(points)
    mean_x = sum(x for x, _ in points) / count
    mean_y = sum(y for _, y in points) / count
    spread = sum((x - mean_x) ** 2 for x, _ in points)
    slope = sum((x - mean_x) * (y - mean_y) for x, y in points) / spread
    return slope, mean_y - slope * mean_x


def straightness(points):
    """How much of the differences the straight line explains, 1 at most."""
    slope, start = straight_line(points)
    mean_y = sum(y for _, y in points) / len(points)
    left = sum((y - start - slope * x) ** 2 for x, y in points)
    return 1 - left / sum((y - mean_y) ** 2 for _, y in points)


# --- The plot ---------------------------------------------------------------------------------------

PANEL_WIDTH, PANEL_HEIGHT, MARGIN_LEFT, MARGIN_BOTTOM, MARGIN_TOP = 320, 210, 56, 44, 34


def panel(series, left, top):
    points = series["points"]
    slope, start = straight_line(points)
    width = PANEL_WIDTH - MARGIN_LEFT - 20
    height = PANEL_HEIGHT - MARGIN_TOP - MARGIN_BOTTOM
    x_most = max(x for x, _ in points)
    y_most = max(max(y for _, y in points), start + slope * x_most) * 1.1
    x_at = lambda x: left + MARGIN_LEFT + width * x / x_most
    y_at = lambda y: top + MARGIN_TOP + height * (1 - y / y_most)
    parts = [f'<text x="{left + MARGIN_LEFT}" y="{top + 18}" class="name">{series["name"]}</text>',
             f'<path d="M{x_at(0):.1f} {y_at(y_most):.1f}V{y_at(0):.1f}H{x_at(x_most):.1f}" '
             'class="axis"/>']
    for share in (0, 0.5, 1):
        x, y = x_most * share, y_most / 1.1 * share
        parts.append(f'<text x="{x_at(x):.1f}" y="{y_at(0) + 16:.1f}" class="middle">{x:g}</text>')
        parts.append(f'<text x="{x_at(0) - 6:.1f}" y="{y_at(y) + 4:.1f}" class="end">'
                     f'{y:.3g}</text>')
    parts.append(f'<text x="{x_at(x_most / 2):.1f}" y="{y_at(0) + 32:.1f}" class="middle">'
                 f'{series["x"]}</text>')
    parts.append(f'<text x="{left + 6}" y="{top + 18}">ms</text>')
    parts.append(f'<path d="M{x_at(0):.1f} {y_at(start):.1f}L{x_at(x_most):.1f} '
                 f'{y_at(start + slope * x_most):.1f}" class="line"/>')
    parts += [f'<circle cx="{x_at(x):.1f}" cy="{y_at(y):.1f}" r="3.5"/>' for x, y in points]
    return parts


def plot(all_series):
    columns = 3
    rows = -(-len(all_series) // columns)
    parts = [f'<svg xmlns="http://www.w3.org/2000/svg" width="{columns * PANEL_WIDTH}" '
             f'height="{rows * PANEL_HEIGHT}" font-family="sans-serif" font-size="12">',
             "<style>.name{font-weight:bold}.middle{text-anchor:middle}.end{text-anchor:end}"
             ".axis{fill:none;stroke:#777}.line{stroke:#c60;stroke-width:1.5}circle{fill:#036}"
             "</style>",
             '<rect width="100%" height="100%" fill="#fff"/>']
    for place, series in enumerate(all_series):
        parts += panel(series, place % columns * PANEL_WIDTH, place // columns * PANEL_HEIGHT)
    return "\n".join([*parts, "</svg>", ""])


# --- The page ---------------------------------------------------------------------------------------

def replace_between(text, name, content):
    begin, end = f"<!-- {name}: written by scripts/bench -->", f"<!-- end of {name} -->"
    pattern = re.compile(re.escape(begin) + ".*?" + re.escape(end), re.DOTALL)
    if not pattern.search(text):
        raise ValueError(f"docs/performance.md has no place for {name}")
    return pattern.sub(lambda _: f"{begin}\n\n{content}\n\n{end}", text)


def per_step(series):
    milliseconds = straight_line(series["points"])[0]
    number = f"{milliseconds:.3g} ms" if milliseconds >= 1 else f"{1000 * milliseconds:.3g} µs"
    return f"{number} a {series['x'].removesuffix('s')}"


def write_documents(found, folder):
    page = os.path.join(folder, "performance.md")
    with open(page, encoding="utf-8") as file:
        text = file.read()
    text = replace_between(text, "table", markdown_table(HEADINGS, map(cells, found["rows"])))
    text = replace_between(text, "growth", markdown_table(
        ("Time against", "Each", "Explained by a straight line"),
        ((series["name"], per_step(series), f"{100 * series['straightness']:.1f} %")
         for series in found["growth"])))
    text = replace_between(text, "sections", markdown_table(
        ("Model", "Section", "Shell lines", "Microcontroller commands", "Pauses (s)",
         "Programs started"), found["sections"]))
    with open(page, "w", encoding="utf-8") as file:
        file.write(text)
    with open(os.path.join(folder, "performance-growth.svg"), "w", encoding="utf-8") as file:
        file.write(plot(found["growth"]))
