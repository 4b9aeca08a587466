"""Installs pack.oxt into a LibreOffice of its own and tries it: every function has its texts; the
answers are those of the worksheet application, bit for bit, before and after a document was saved;
packs that crash, hang or are missing, and a worker that is killed, stopped or gone, cost an error
and nothing else; and how long it takes. Prints what is wrong, and the times."""

import json
import math
import os
import random
import signal
import subprocess
import sys
import time

from office import Office, PROFILE, property_of

HERE = os.getcwd()
CATALOGUE = f"{HERE}/packs.json"
os.environ["WORKSHEET_CATALOGUE"] = CATALOGUE
FUNCTIONS = ["lu", "cholesky", "qr", "rref", "rank", "svds", "svd", "norm1", "norm2", "cond2", "eigenvals", "eigenvecs"]
wrong = []


def expect(good, what):
    if not good:
        wrong.append(what)


def limit(office, seconds):
    node = property_of("nodepath", "/matrixpack.Calc/Worker")
    provider = office.service("com.sun.star.configuration.ConfigurationProvider")
    options = provider.createInstanceWithArguments("com.sun.star.configuration.ConfigurationUpdateAccess", (node,))
    options.TimeLimit = float(seconds)
    options.commitChanges()


def worker(office):
    """The process of the worker: the only child of the office that runs the program."""
    found = subprocess.run(["pgrep", "--session", str(office.process.pid), "pack_worker"], capture_output=True, text=True)
    return int(found.stdout.split()[-1])


def block(sheet, row, col, rows, cols):
    return sheet.getCellRangeByPosition(col, row, col + cols - 1, row + rows - 1)


def value_of(sheet, formula, row=0, col=900, rows=1, cols=1):
    """The cells of an array formula; a message where it has an error."""
    cells = block(sheet, row, col, rows, cols)
    cells.setArrayFormula(formula)
    error = cells.getCellByPosition(0, 0).getString() if cells.getCellByPosition(0, 0).getError() else None
    result = error or cells.getDataArray()
    cells.setArrayFormula("")
    return result


def matrices():
    """Twelve, from 1 x 1 to 8 x 8: regular, singular, symmetric, of one row or column. A document
    keeps 15 digits of a number."""
    numbers = random.Random(7)
    rows = [(1, 1), (2, 2), (3, 3), (8, 8), (5, 5), (4, 2), (2, 4), (6, 1), (1, 6)]
    result = [[[numbers.randint(-64, 64) / 16 for _ in range(n)] for _ in range(m)] for m, n in rows]
    result.append([[1.0, 2.0], [2.0, 4.0]])
    result.append([[min(i, j) + 1.0 for j in range(5)] for i in range(5)])
    result.append([[0.0] * 3 for _ in range(3)])
    return result


def answers(calls):
    """What the application says to each call."""
    with open("calls.ws", "w") as sheet:
        for name, matrix in calls:
            text = "; ".join(", ".join(repr(x) for x in row) for row in matrix)
            sheet.write(f"{name}([{text}])\n")
    run = subprocess.run(["./worksheet", "--pack", f"{HERE}/libmatrix.so.0", "--json", "--all", "calls.ws"], capture_output=True, text=True)
    return [json.loads(line)["value"] for line in run.stdout.splitlines()]


def compare_answers(office):
    """All functions on all matrices, in one document that is saved, closed and opened again."""
    document = office.open()
    sheet = document.Sheets.getByIndex(0)
    calls = [(name, matrix) for matrix in matrices() for name in FUNCTIONS]
    wanted, places = answers(calls), []
    expect(len(wanted) == len(calls), "the application does not answer every call")
    for k, ((name, matrix), answer) in enumerate(zip(calls, wanted)):
        row, m, n = 20 * k, len(matrix), len(matrix[0])
        data = block(sheet, row, 0, m, n)
        data.setDataArray(tuple(map(tuple, matrix)))
        reference = data.AbsoluteName.split(".")[1]
        rows, cols = answer.get("rows", 1), answer.get("cols", 1)
        for part, form in enumerate(["re", "im"]):
            place = block(sheet, row, 10 + 30 * part, rows, cols)
            place.setArrayFormula(f'=MATRIX.{name.upper()}({reference};"{form}")')
            places.append((place.AbsoluteName, answer, form))
        message = block(sheet, row, 80, 1, 1).getCellByPosition(0, 0)
        message.setFormula(f'=PACK.MESSAGE("{name}";{reference};"re")')
        places.append((message.AbsoluteName, answer, "message"))
    url = f"file://{HERE}/answers.ods"
    compare_places(sheet, places, "new")
    document.storeToURL(url, (property_of("FilterName", "calc8"),))
    document.close(True)
    document = office.open(url)
    document.calculateAll()
    compare_places(document.Sheets.getByIndex(0), places, "opened again")
    document.close(True)
    print(f"{len(calls)} answers are those of the application")


def compare_places(sheet, places, when):
    for name, answer, form in places:
        cells = sheet.getCellRangeByName(name)
        error = answer["kind"] == "error"
        first = cells.getCellByPosition(0, 0)
        expect(first.FormulaLocal.strip("{").startswith(("=MATRIX.", "=PACK.")), f"{when}: {first.FormulaLocal}")
        if form == "message":
            at = f" (argument {answer['arg']})" if error and answer["arg"] else ""
            expect(first.getString() == (answer["message"] + at if error else ""), f"{when}: {first.getFormula()}: {first.getString()}")
        elif error:
            expect(first.getString() == "#VALUE!", f"{when}: {first.getFormula()}: {first.getString()}")
        else:
            rows, numbers = answer.get("rows", 1), answer[form]
            if not isinstance(numbers, list):
                numbers = [numbers or 0.0] * rows * answer.get("cols", 1)
            found = cells.getDataArray()
            same = all(found[k % rows][k // rows] == x for k, x in enumerate(numbers))
            expect(same, f"{when}: {first.getFormula()}: {found}")


def try_conventions(office):
    document = office.open()
    sheet = document.Sheets.getByIndex(0)
    sheet.getCellRangeByName("A1:B2").setDataArray(((0.0, -1.0), (1.0, 0.0)))
    sheet.getCellRangeByName("C1:D2").setDataArray((("1+2i", "word"), (3.0, "-i")))
    for formula, shape, wanted in [
        ("=MATRIX.EIGENVALS(A1:B2)", (2, 1), "#VALUE!"),
        ('=MATRIX.EIGENVALS(A1:B2;"complex")', (2, 1), (("i",), ("-i",))),
        ('=MATRIX.EIGENVALS(A1:B2;1E-6;"abs")', (2, 1), ((1.0,), (1.0,))),
        ('=PACK.MESSAGE("eigenvals";A1:B2)', (1, 1), (('2 complex values: add "re", "im", "abs" or "complex"',),)),
        ('=PACK.MESSAGE("MATRIX.MAX";C1:D1)', (1, 1), (("argument 1, row 1, column 2: text, not a number: word",),)),
        ('=PACK.MESSAGE("max";A1:A3)', (1, 1), (("argument 1, row 3, column 1: the cell is empty",),)),
        ('=PACK.MESSAGE("lsolve";A1:B2)', (1, 1), (("argument 2 is missing",),)),
        ('=PACK.MESSAGE("lu";A1:B2;4)', (1, 1), (("the result has 3 parts, not 4",),)),
        ('=PACK.MESSAGE("no such";A1)', (1, 1), (("no pack has a function no such",),)),
        ('=PACK.MESSAGE("max";A1:B2;"real")', (1, 1), (('"real" is none of "re", "im", "abs" and "complex"',),)),
        ('=MATRIX.TR(C1:D2;"complex")', (1, 1), "#VALUE!"),
        ('=MATRIX.STACK(C1;D2;"complex")', (2, 1), (("1+2i",), ("-i",))),
        ("=MATRIX.LU(A1:B2;3)", (2, 2), ((1.0, 0.0), (0.0, -1.0))),
        ("=MATRIX.IDENTITY(A2)", (1, 1), ((1.0,),)),
        ("=MATRIX.LAST(A1:A2)", (1, 1), ((2.0,),)),
        ("=MATRIX.LAST(A1:A2;0)", (1, 1), ((1.0,),)),
        ("=MATRIX.SUBMATRIX(A1:B2;2;2;1;2)", (1, 2), ((1.0, 0.0),)),
        ("=SUM(MATRIX.LSOLVE({4;1|2;3};{1|2}))", (1, 1), ((0.7,),)),
    ]:
        found = value_of(sheet, formula, rows=shape[0], cols=shape[1])
        expect(found == wanted, f"{formula}: {found}, not {wanted}")
    functions = office.service("com.sun.star.sheet.FunctionDescriptions")
    texts = [{p.Name: p.Value for p in functions.getByIndex(k)} for k in range(functions.Count)]
    ours = {t["Name"]: t for t in texts if t["Name"].startswith("MATRIX.")}
    expect(len(ours) == 38, f"the Function Wizard has {len(ours)} functions of the pack")
    expect(all(t["Description"] and t["Arguments"] for t in ours.values()), "a function without its texts")
    solve = ours.get("MATRIX.LSOLVE", {"Arguments": []})
    expect([a.Name for a in solve["Arguments"]][:2] == ["M", "v"], f"lsolve's arguments: {[a.Name for a in solve['Arguments']]}")
    document.close(True)


def try_example(office):
    document = office.open(f"file://{HERE}/vibration.ods")
    document.calculateAll()
    sheet = document.Sheets.getByIndex(0)
    found, wanted = (sorted(x for x, in sheet.getCellRangeByName(place).getDataArray()) for place in ("C15:C19", "E15:E19"))
    expect(all(math.isclose(x, y, rel_tol=1e-12) for x, y in zip(found, wanted)), f"the example: {found}, not {wanted}")
    expect(sheet.getCellRangeByName("E34").getCellByPosition(0, 0).getString().startswith("yes"), "the example's chain is not stable")
    document.close(True)


def try_trouble(office):
    """Packs and workers that fail; each time the next call is answered again."""
    document = office.open()
    sheet = document.Sheets.getByIndex(0)
    packs = {row[0]: row[2] for row in value_of(sheet, "=PACK.LIST()", rows=6, cols=3)}
    expect(packs.get(f"{HERE}/libmatrix.so.0") == "38 functions", f"PACK.LIST: {packs}")
    expect("no such file" in packs.get(f"{HERE}/gone.so", ""), f"PACK.LIST: {packs}")

    def expect_message(call, words, most_seconds):
        begin = time.monotonic()
        found = value_of(sheet, f"=PACK.MESSAGE({call})")[0][0]
        took = time.monotonic() - begin
        expect(found == words and took < most_seconds, f"{call}: {found} after {took:.2f} s")
        sum_of = value_of(sheet, "=MATRIX.NORM1({1;2|3;4})")
        expect(sum_of == ((6.0,),), f"after {call}: {sum_of}")

    limit(office, 1)
    expect_message('"tinynone.twice";2', "", 1)
    expect_message('"tinycrashes.twice";2', "the pack ended its process", 1)
    expect_message('"tinyspins.twice";2', "stopped after 1 s", 3)
    expect_message('"tinyspins.twice";2', "stopped after 1 s", 0.5)  # Known to be slow.
    os.kill(worker(office), signal.SIGSTOP)
    expect_message('"norm1";2', "stopped after 1 s", 3)
    before = worker(office)
    os.kill(before, signal.SIGKILL)
    time.sleep(0.1)
    begin = time.monotonic()
    expect(value_of(sheet, "=MATRIX.NORM1({1;2|3;4})") == ((6.0,),), "no answer after the worker was killed")
    print(f"restart and answer: {1000 * (time.monotonic() - begin):.0f} ms")
    expect(worker(office) != before, "there is no new worker")
    limit(office, 30)
    document.close(True)


def take_times(office):
    document = office.open()
    sheet = document.Sheets.getByIndex(0)
    numbers = random.Random(3)
    size = 500
    sheet.getCellRangeByPosition(0, 0, size - 1, size - 1).setDataArray(
        tuple(tuple(numbers.uniform(-1, 1) for _ in range(size)) for _ in range(size)))
    begin = time.monotonic()
    for k in range(1000):
        block(sheet, 600 + k, 0, 1, 1).getCellByPosition(0, 0).setFormula(f"=MATRIX.NORM1(A{k % 400 + 1}:J{k % 400 + 10})")
    entered = time.monotonic()
    document.calculateAll()
    print(f"1000 formulas of 10 x 10: entered in {entered - begin:.2f} s, calculated again in {time.monotonic() - entered:.2f} s")
    corner = sheet.getCellRangeByName("A1:SF500").AbsoluteName.split(".")[1]
    found = {}
    for name, formula in [("the pack's", f"=MATRIX.INVERSE({corner})"), ("Calc's own", f"=MINVERSE({corner})")]:
        begin = time.monotonic()
        found[name] = value_of(sheet, formula, row=2000, col=0, rows=size, cols=size)
        print(f"inverse of 500 x 500, {name}: {time.monotonic() - begin:.2f} s")
    ours, theirs = found.values()
    expect(not isinstance(ours, str) and not isinstance(theirs, str) and all(math.isclose(x, y, rel_tol=1e-6, abs_tol=1e-9) for a, b in zip(ours, theirs) for x, y in zip(a, b)), "the inverses differ")
    document.close(True)


def try_without_worker():
    program = subprocess.run(["find", f"{HERE}/profile", "-name", "pack_worker"], capture_output=True, text=True).stdout.strip()
    os.rename(program, program + ".gone")
    with Office() as office:
        document = office.open()
        packs = value_of(document.Sheets.getByIndex(0), "=PACK.LIST()", rows=2, cols=3)
        expect("the worker does not start" in packs[1][2], f"without the worker: {packs}")
        document.close(True)
    os.rename(program + ".gone", program)


def main():
    paths = [f"{HERE}/{name}" for name in ("libmatrix.so.0", "tiny_none.so", "tiny_crashes.so", "tiny_spins.so", "gone.so")]
    entries = [{"id": f"{{00000000-0000-0000-0000-00000000000{k}}}", "path": path} for k, path in enumerate(paths)]
    with open(CATALOGUE, "w") as file:
        json.dump({"format": 1, "packs": entries}, file)
    subprocess.run(["unopkg", "add", "-f", PROFILE, f"{HERE}/pack.oxt"], check=True, timeout=60, stderr=subprocess.DEVNULL)
    with Office() as office:
        for part in (try_conventions, compare_answers, try_example, try_trouble, take_times):
            part(office)
    try_without_worker()
    for what in wrong[:20]:
        print(what)
    return 1 if wrong else 0


if __name__ == "__main__":
    sys.exit(main())
