"""Makes the example and its picture anew, examples/vibration.ods and docs/spreadsheet.png:

    /usr/bin/python3 calc/make_example.py

It needs the packages of packages-calc.txt, poppler-utils and the extension in build/release/calc/extension
(cmake --preset release -DMATRIX_CALC=ON, target oxt). LibreOffice's profile is made in a directory
that goes afterwards."""

import os
import shutil
import subprocess
import sys
import tempfile

ROOT = os.path.dirname(os.path.dirname(os.path.abspath(__file__)))
GREY, HEAD = 0xEEEEEE, 0x1F4E79


def fill(sheet):
    """A chain of five masses between two walls, free and damped."""
    def put(place, content, colour=None, number=None):
        cell = sheet.getCellRangeByName(place)
        if isinstance(content, str) and content.startswith("{="):
            cell.setArrayFormula(content[1:-1])
        elif isinstance(content, str):
            cell.getCellByPosition(0, 0).setFormula(content)
        else:
            cell.getCellByPosition(0, 0).setValue(content)
        if colour:
            cell.CellBackColor = colour
        if number:
            cell.NumberFormat = number
        return cell

    put("A1", "A chain of five equal masses between two walls").CharHeight = 14
    for row, (name, value, unit) in enumerate([("stiffness k", 4000, "N/m"), ("mass m", 0.1, "kg"), ("damping b", 0.001, "s")], 3):
        put(f"A{row}", name), put(f"B{row}", value, GREY), put(f"C{row}", unit)
    headings = {
        "A7": "K/m in 1/s²", "H7": "mode shapes  {=MATRIX.EIGENVECS(A8:E12)}",
        "A14": "w² in 1/s²", "C14": "f in Hz", "E14": "2√(k/m) sin(πj/12) / 2π, sorted",
        "A21": "state matrix of x'' = -K/m x - b K/m x'", "L21": "its eigenvalues: re, im, abs", "P21": "damping ratio",
        "A33": "without a word for complex results:", "A34": "is the chain stable?",
    }
    for place, text in headings.items():
        put(place, text).CharColor = HEAD
        sheet.getCellRangeByName(place).CharWeight = 150.0
    for row in range(8, 13):
        for column in "ABCDE":
            put(f"{column}{row}", "=IF(ROW()-7=COLUMN();2;-(ABS(ROW()-7-COLUMN())=1))*$B$3/$B$4")
    put("H8:L12", "{=MATRIX.EIGENVECS(A8:E12)}", number=4)
    put("A15:A19", "{=MATRIX.EIGENVALS(A8:E12)}", number=4)
    put("C15:C19", "{=SQRT(A15:A19)/(2*PI())}", number=4)
    put("E15:E19", "{=SQRT(B3/B4)*SIN(PI()*(ROW(E15:E19)-14)/12)/PI()}", number=4)
    put("A22:J31", "{=MATRIX.STACK(MATRIX.AUGMENT(0*MUNIT(5);MUNIT(5));MATRIX.AUGMENT(-A8:E12;-B5*A8:E12))}")
    for column, form in zip("LMN", ("re", "im", "abs")):
        put(f"{column}22:{column}31", f'{{=MATRIX.EIGENVALS(A22:J31;"{form}")}}', number=4)
    put("P22:P31", "{=-L22:L31/N22:N31}", number=4)
    put("E33", '=PACK.MESSAGE("eigenvals";A22:J31)')
    put("E34", '=IF(MAX(L22:L31)<0;"yes: all real parts are negative";"no")')


def main():
    work = tempfile.mkdtemp()
    os.chdir(work)
    sys.path.insert(0, f"{ROOT}/calc")
    from office import Office, property_of  # It looks where it is: in `work`.
    os.mkdir("extensions")
    shutil.copytree(f"{ROOT}/build/release/calc/extension", "extensions/matrix-pack")
    os.environ["WORKSHEET_CATALOGUE"] = f"{work}/none.json"
    try:
        with Office(f"-env:BUNDLED_EXTENSIONS=file://{work}/extensions") as office:
            document = office.open()
            fill(document.Sheets.getByIndex(0))
            page = document.StyleFamilies.getByName("PageStyles").getByName("Default")
            page.IsLandscape, page.Width, page.Height = True, 42000, 20500
            page.HeaderIsOn = page.FooterIsOn = False
            page.ScaleToPages = 1
            document.storeToURL(f"file://{ROOT}/examples/vibration.ods", (property_of("FilterName", "calc8"),))
            document.storeToURL(f"file://{work}/page.pdf", (property_of("FilterName", "calc_pdf_Export"),))
            document.close(True)
        subprocess.run(["pdftoppm", "-png", "-r", "64", "-singlefile", "page.pdf", f"{ROOT}/docs/spreadsheet"], check=True)
    finally:
        shutil.rmtree(work)


if __name__ == "__main__":
    main()
