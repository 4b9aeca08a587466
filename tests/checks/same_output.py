#!/usr/bin/env python3
"""Compares the output of two programs, file by file: same_output.py HERE THERE.

Words are the same. Numbers are, too, but for the last digits of what a C library computes (powers,
moduli, elementary functions): 1e-12 of the number, or of 1. Numbers in formulas of a report, whose
digits are markup, are not looked at. Prints how many files are the same byte by byte.
"""
import pathlib
import re
import sys

NUMBER = re.compile(r"(?<![\w.])[-+\u2212]?\d+(?:\.\d+)?(?:e[-+]?\d+)?")
SHOWN_DIGITS = 2e-6  # What is rounded for people may be rounded the other way.


def pieces(path):
    text = path.read_text()
    text = re.sub(r"<math.*?</math>", "<math/>", text, flags=re.S)
    numbers = [float(n.replace("\u2212", "-")) for n in NUMBER.findall(text)]
    return NUMBER.sub("#", text), numbers


def near(a, b, tolerance):
    return a == b or abs(a - b) <= 1e-12 + tolerance * max(abs(a), abs(b))


def same(a, b):
    words_a, numbers_a = pieces(a)
    words_b, numbers_b = pieces(b)
    tolerance = 1e-12 if ".json" in a.name else SHOWN_DIGITS
    return words_a == words_b and all(
        near(x, y, tolerance) for x, y in zip(numbers_a, numbers_b, strict=True))


def main():
    here, there = (pathlib.Path(name) for name in sys.argv[1:])
    names = sorted(path.name for path in here.iterdir() if path.is_file())
    others = sorted(path.name for path in there.iterdir() if path.is_file())
    if names != others:
        sys.exit(f"other files: {sorted(set(names) ^ set(others))}")
    exact = 0
    for name in names:
        if (here / name).read_bytes() == (there / name).read_bytes():
            exact += 1
        elif not same(here / name, there / name):
            sys.exit(f"{name} differs:\n{(here / name).read_text()}\n--- there:\n{(there / name).read_text()}")
    print(f"{len(names)} files, {exact} of them the same byte by byte")
    if exact < len(names) * 0.8:
        sys.exit("too few")


main()
