"""What an array formula over two cells gives in Calc, with the profile of the user who runs this:

    calc_formula.py FORMULA

The cells A1:B2 and D1:D2 hold the system 4 x + y = 1, 2 x + 3 y = 2. office.py lies beside this."""

import os
import sys

from office import Office

with Office(profile=f"-env:UserInstallation=file://{os.environ['HOME']}/.config/libreoffice/4") as office:
    document = office.open()
    sheet = document.Sheets.getByIndex(0)
    sheet.getCellRangeByName("A1:B2").setDataArray(((4.0, 1.0), (2.0, 3.0)))
    sheet.getCellRangeByName("D1:D2").setDataArray(((1.0,), (2.0,)))
    result = sheet.getCellRangeByName("F1:F2")
    result.setArrayFormula(sys.argv[1])
    print(*(result.getCellByPosition(0, row).getString() for row in range(2)))
    document.close(True)
