"""Cells of a spreadsheet as matrices, and matrices as cells."""

import math
import re
from array import array
from itertools import chain

COMPLEX = re.compile(r"[-+0-9.eE]{0,99}[ij]")


class CellError(Exception):
    """What is wrong with the cells, in words for the user."""


class Matrix:
    """Elements by columns: all real parts, then the imaginary parts if there are any."""

    def __init__(self, rows, cols, numbers, is_complex):
        self.rows, self.cols, self.numbers, self.is_complex = rows, cols, numbers, is_complex

    def shape(self):
        return {"rows": self.rows, "cols": self.cols, "complex": self.is_complex}


def matrix_of(cells, place):
    """The matrix in a range of cells, or in one value. `place` is the argument's number."""
    rows = cells if isinstance(cells, tuple) else ((cells,),)
    height, width = len(rows), len(rows[0])
    try:
        return Matrix(height, width, array("d", chain.from_iterable(zip(*rows))), False)
    except TypeError:
        pass  # There are cells without a number.
    elements = [[number_of(x, place, i, j) for j, x in enumerate(row, 1)]
                for i, row in enumerate(rows, 1)]
    columns = list(chain.from_iterable(zip(*elements)))
    numbers = array("d", [z.real for z in columns] + [z.imag for z in columns])
    return Matrix(height, width, numbers, True)


def number_of(cell, place, row, col):
    """The number in a cell; a text may be a complex number as Calc writes it."""
    if isinstance(cell, (int, float)):
        return complex(cell)
    where = f"argument {place}, row {row}, column {col}"
    if cell is None or cell == "":
        raise CellError(f"{where}: the cell is empty")
    if COMPLEX.fullmatch(cell):
        try:
            return complex(cell[:-1] + "j")
        except ValueError:
            pass
    raise CellError(f"{where}: text, not a number: {cell[:40]}")


def cells_of(matrix, form):
    """The rows of cells that show a matrix in the form that was asked for."""
    count = matrix.rows * matrix.cols
    if count == 0:
        raise CellError(f"the result is empty: {matrix.rows} x {matrix.cols}")
    real, imaginary = matrix.numbers[:count], matrix.numbers[count:] or array("d", bytes(8 * count))
    is_complex = sum(1 for y in imaginary if y != 0)
    if form is None and is_complex:
        values = "value" if is_complex == 1 else "values"
        raise CellError(f'{is_complex} complex {values}: add "re", "im", "abs" or "complex"')
    if form == "im":
        real = imaginary
    elif form == "abs":
        real = [math.hypot(x, y) for x, y in zip(real, imaginary)]
    elif form == "complex" and is_complex:
        real = [complex_text(x, y) for x, y in zip(real, imaginary)]
    columns = [real[j:j + matrix.rows] for j in range(0, count, matrix.rows)]
    return tuple(zip(*columns))


def complex_text(x, y):
    """As Calc's own functions of complex numbers write and read it: 1+2i."""
    imaginary = {1.0: "i", -1.0: "-i"}.get(y, short(y) + "i")
    if y == 0 or x == 0:
        return short(x) if y == 0 else imaginary
    return short(x) + ("" if imaginary.startswith("-") else "+") + imaginary


def short(x):
    text = repr(x).upper()
    return text[:-2] if text.endswith(".0") else text
