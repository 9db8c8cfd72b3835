# SPDX-License-Identifier: GPL-3.0-or-later
"""Figures as people read them: docs/performance.md, its pictures, and the same as JSON. A chapter that is measured again
replaces what stood there; the others stay."""

import json
import os
import platform
import time

ROOT = os.path.dirname(os.path.dirname(os.path.abspath(__file__)))
DOCS = os.path.join(ROOT, "docs")
FIGURES = os.path.join(DOCS, "performance.json")
PAGE = os.path.join(DOCS, "performance.md")
BEGIN, END = "<!-- figures: written by ./dev bench --publish -->", "<!-- end of figures -->"


def load():
    """What was published last."""
    try:
        with open(FIGURES, encoding="utf-8") as file:
            return json.load(file)
    except FileNotFoundError:
        return {}


def machine(load_average):
    """In what the figures were taken."""
    return {"day": time.strftime("%Y-%m-%d"), "processors": os.cpu_count(), "load": round(load_average, 1),
            "system": platform.freedesktop_os_release().get("PRETTY_NAME", platform.system()), "processor": platform.machine()}


def table(chapters):
    """Markdown of all chapters."""
    out = []
    for title, chapter in chapters.items():
        taken = chapter["taken"]
        out += ["", f"### {title}", "", f"{taken['day']}, {taken['system']}, {taken['processors']} processors "
                f"({taken['processor']}), load {taken['load']}.", "", "| what | measured | goal | best peer | floor |", "|---|---|---|---|---|"]
        out += [f"| {row['what']} | {row['value']} | {row['target']} | {row.get('peer', '')} | {row.get('floor', '')} |"
                for row in chapter["rows"]]
        out += [f"\n![{name}](images/{name}.svg)" for name in chapter.get("pictures", [])]
    return "\n".join(out) + "\n\n"


def publish(chapters, pictures, load_average):
    """Write `chapters` ({title: rows}) and `pictures` ({name: (title, SVG)})."""
    known = load()
    for title, rows in chapters.items():
        known[title] = {"taken": machine(load_average), "rows": rows,
                        "pictures": [name for name, (where, _) in pictures.items() if where == title]}
    for name, (_, text) in pictures.items():
        with open(os.path.join(DOCS, "images", f"{name}.svg"), "w", encoding="utf-8") as file:
            file.write(text)
    with open(FIGURES, "w", encoding="utf-8") as file:
        json.dump(known, file, indent=1, ensure_ascii=False)
        file.write("\n")
    with open(PAGE, encoding="utf-8") as file:
        page = file.read()
    before, _, rest = page.partition(BEGIN)
    with open(PAGE, "w", encoding="utf-8") as file:
        file.write(before + BEGIN + "\n" + table(known) + END + rest.partition(END)[2])
