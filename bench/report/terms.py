# SPDX-FileCopyrightText: 2026 The NQP2ParserU authors
# SPDX-License-Identifier: MIT
"""Figures, and the lines that compare one with another."""

from statistics import median
from typing import NamedTuple, Optional, Union

# In the base unit of their kind: nanoseconds, bytes, calls.
UNITS = {"s": 1e9, "ms": 1e6, "us": 1e3, "ns": 1.0, "MB": 1e6, "bytes": 1.0, "calls": 1.0}


class NoFigure(NamedTuple):
    """Why a figure is not there: the machine cannot give it, or measuring has failed."""

    reason: str
    failed: bool


Figures = dict[str, Union[float, NoFigure]]


class Missing(Exception):
    def __init__(self, why: NoFigure):
        super().__init__(why.reason)
        self.why = why


class Term:
    """A sum of figures with factors and of a fixed amount."""

    def __init__(self, factors: dict[str, float], fixed: float = 0.0):
        self.factors = factors
        self.fixed = fixed

    def __add__(self, other: "Term") -> "Term":
        names = self.factors.keys() | other.factors.keys()
        return Term({name: self.factors.get(name, 0.0) + other.factors.get(name, 0.0)
                     for name in names}, self.fixed + other.fixed)

    def __sub__(self, other: "Term") -> "Term":
        return self + other / -1

    def __truediv__(self, number: float) -> "Term":
        return Term({name: factor / number for name, factor in self.factors.items()},
                    self.fixed / number)

    def value(self, figures: Figures) -> float:
        """Raises Missing for a figure that could not be had and KeyError for one nobody made."""
        total = self.fixed
        for name in sorted(self.factors):
            figure = figures[name]
            if isinstance(figure, NoFigure):
                raise Missing(figure)
            total += self.factors[name] * figure
        return total


def figure(name: str) -> Term:
    return Term({name: 1.0})


def fixed(amount: float, unit: str) -> Term:
    return Term({}, amount * UNITS[unit])


class Line(NamedTuple):
    """What is measured, what it is compared with, and how many times that it may be."""

    name: str
    unit: str
    ours: Term
    floor: Term
    goal: Optional[float] = None  # None: for information only

    @property
    def figures(self) -> set[str]:
        return self.ours.factors.keys() | self.floor.factors.keys()


class Row(NamedTuple):
    """A line with what came out."""

    line: Line
    ours: float = 0.0
    floor: float = 0.0
    ratio: float = 0.0
    lowest: float = 0.0
    highest: float = 0.0
    lacks: Optional[NoFigure] = None

    @property
    def state(self) -> str:
        if self.lacks:
            return "FAILED" if self.lacks.failed else "not measured"
        if self.line.goal is None:
            return ""
        return "holds" if self.ratio <= self.line.goal else "OVER"

    @property
    def holds(self) -> bool:
        return self.state not in ("OVER", "FAILED")


def row_of(line: Line, rounds: list[Figures]) -> Row:
    """The median of the ratios of each round, in which ours and the floor ran side by side."""
    try:
        pairs = [(line.ours.value(figures), line.floor.value(figures)) for figures in rounds]
    except Missing as missing:
        return Row(line, lacks=missing.why)
    if any(floor <= 0 for _, floor in pairs):
        return Row(line, lacks=NoFigure("the floor is nothing", True))
    ratios = [ours / floor for ours, floor in pairs]
    return Row(line, median(ours for ours, _ in pairs), median(floor for _, floor in pairs),
               median(ratios), min(ratios), max(ratios))
