# SPDX-FileCopyrightText: 2026 The NQP2ParserU authors
# SPDX-License-Identifier: MIT
"""Rows as a table for the terminal, as JSON, and as the tables of a page."""

import re
from pathlib import Path

from report.terms import UNITS, Row

HEAD = ("", "unit", "ours", "floor", "ratio", "goal", "")


def cells(row: Row) -> tuple[str, ...]:
    line = row.line
    if row.lacks:
        return (line.name, line.unit, "-", "-", "-", goal_text(row),
                f"{row.state}: {row.lacks.reason}")
    scale = UNITS[line.unit]
    return (line.name, line.unit, amount(row.ours / scale), amount(row.floor / scale),
            f"{row.ratio:.2f}", goal_text(row), row.state)


def amount(value: float) -> str:
    """Three digits that count, and all of a large number."""
    if abs(value) >= 100:
        return f"{value:,.0f}"
    return f"{value:.1f}" if abs(value) >= 10 else f"{value:.2f}"


def goal_text(row: Row) -> str:
    return "-" if row.line.goal is None else f"{row.line.goal:g}"


def table(rows: list[Row]) -> str:
    body = [cells(row) for row in rows]
    widths = [max(map(len, column)) for column in zip(HEAD, *body)]
    return "\n".join(
        "  ".join(cell.ljust(width) if place in (0, 1, 6) else cell.rjust(width)
                  for place, (cell, width) in enumerate(zip(line, widths))).rstrip()
        for line in (HEAD, *body))


def failures(rows: list[Row]) -> str:
    """A line for each row that does not hold."""
    lines = []
    for row in rows:
        if row.state == "OVER":
            lines.append(f"does not hold: {row.line.name}: {row.ratio:.2f}, goal {row.line.goal:g} "
                         f"({row.lowest:.2f} to {row.highest:.2f})")
        elif row.lacks:
            lines.append(f"{row.state}: {row.line.name}: {row.lacks.reason}")
    return "\n".join(lines)


def as_json(row: Row) -> dict:
    line = row.line
    scale = UNITS[line.unit]
    return {"name": line.name, "unit": line.unit, "goal": line.goal, "state": row.state,
            "ours": row.ours / scale, "floor": row.floor / scale, "ratio": row.ratio,
            "lowest": row.lowest, "highest": row.highest,
            "reason": row.lacks.reason if row.lacks else None}


def markdown(head: tuple[str, ...], body: list[tuple[str, ...]]) -> str:
    rule = ["---"] + ["---:"] * (len(head) - 1)
    return "\n".join("| " + " | ".join(line) + " |" for line in (head, rule, *body))


def section_markdown(rows: list[Row]) -> str:
    """The unit stands beside the figures, the state in a word."""
    body = []
    for row in rows:
        name, unit, ours, floor, ratio, goal, state = cells(row)
        shown = (f"{ours} {unit}", f"{floor} {unit}") if not row.lacks else ("-", "-")
        body.append((name, *shown, ratio, goal, state.lower() if state == "OVER" else state))
    return markdown(("ours / floor", "ours", "floor", "ratio", "goal", ""), body)


def replace_block(page: Path, name: str, content: str) -> None:
    """Puts the content between the page's marks of that name."""
    begin, end = f"<!-- {name}: written by scripts/bench -->", f"<!-- end of {name} -->"
    text = page.read_text(encoding="utf-8")
    pattern = re.compile(re.escape(begin) + ".*?" + re.escape(end), re.DOTALL)
    if len(pattern.findall(text)) != 1:
        raise RuntimeError(f"{page}: no place for {name}")
    page.write_text(pattern.sub(lambda _: f"{begin}\n\n{content}\n\n{end}", text),
                    encoding="utf-8")
