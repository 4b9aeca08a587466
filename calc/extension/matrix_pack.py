"""The functions of all packs as functions of LibreOffice Calc.

The component asks its worker what packs there are, writes an interface with a method for each of
their functions, and hands that to LibreOffice, which reads it as if it had been there when
LibreOffice was built. Calc then finds the methods as it finds those of any add-in.
"""

import hashlib
import os
import re
import tempfile
import zlib
from array import array

import uno
import unohelper
from com.sun.star.beans import PropertyValue
from com.sun.star.lang import Locale, XServiceInfo, XServiceName
from com.sun.star.sheet import LocalizedName, XAddIn, XCompatibilityNames
from com.sun.star.uno import RuntimeException

from matrix_pack_cells import CellError, Matrix, cells_of, matrix_of
from matrix_pack_worker import TooSlow, Worker, WorkerError

SERVICE = "matrixpack.calc.Functions"
ADD_IN = "com.sun.star.sheet.AddIn"
NAME = re.compile(r"[A-Za-z_][A-Za-z0-9_]*")
FORMS = ("re", "im", "abs", "complex")
# Values that follow the arguments where they are not given.
CONTEXT = {"ORIGIN": 1.0, "TOL": 1e-9}
ABOUT = {
    "ORIGIN": "The index of the first element: 1 unless given.",
    "TOL": "The tolerance: 1E-9 unless given.",
    "part": "Which part of a result of several parts, from 1: all of them unless given.",
    "form": 'What is shown of complex results: "re", "im", "abs" or "complex".',
}
# The functions that are ours: name, description and parameters.
FIXED = {
    "packMessage": ("PACK.MESSAGE", "Why a call gives an error; an empty text where it gives none.",
                    [("function", "Its name, with or without its prefix."),
                     ("value", "What the call has between its parentheses.")]),
    "packList": ("PACK.LIST", "The packs, and what became of them.", []),
}
MOST_SLOW = 100  # Calls that are remembered for being too slow.


class Function:
    """A function of a pack, as Calc knows it."""

    def __init__(self, pack, prefix, row):
        self.pack, self.name, self.count = pack, row["name"], row["arguments"]
        self.context, self.summary = row["context"], row["summary"]
        # Names of methods have no underscores.
        self.method = prefix.lower() + "".join(w[:1].upper() + w[1:] for w in self.name.split("_"))
        self.display = f"{prefix}.{self.name}".upper()
        heading = re.search(rf"\b{re.escape(self.name)}\(([^()]*)\)", row["heading"])
        names = heading[1].split(", ") if heading else []
        if len(names) != self.count or set(names) <= {"any", "number", "matrix"}:
            names = [chr(ord("A") + k) for k in range(self.count)]
        self.parameters = names + self.context + ["part", "form"]

    def about(self, k):
        return "An array or a number." if k < self.count else ABOUT.get(self.parameters[k], "")


class Packs:
    """What all packs have to offer, and the calls of it."""

    def __init__(self, worker):
        self.worker = worker
        self.functions = {}  # By method.
        self.left_out = {}  # The names of functions that Calc cannot take, by pack.
        self.slow = set()
        try:
            worker.start()
        except WorkerError as error:
            self.worker.failures.append((worker.command[0], str(error)))
        for pack in worker.packs:
            for row in pack["functions"]:
                function = Function(pack["pack"], prefix_of(pack["pack"]), row)
                taken = function.method in self.functions or function.method in FIXED
                if NAME.fullmatch(function.name) and not taken:
                    self.functions[function.method] = function
                else:
                    self.left_out.setdefault(pack["pack"], []).append(function.name)

    def find(self, name):
        """The function of that name, with or without its prefix."""
        for function in self.functions.values():
            if name.lower() in (function.name.lower(), function.display.lower()):
                return function
        raise CellError(f"no pack has a function {name}")

    def call(self, function, values, seconds):
        """The cells that show the result. Raises CellError or WorkerError."""
        matrices = []
        for k, value in enumerate(values[:function.count], 1):
            if value is None:
                raise CellError(f"argument {k} is missing")
            matrices.append(matrix_of(value, k))
        if len(matrices) < function.count:
            raise CellError(f"argument {len(matrices) + 1} is missing")
        context, part, form = options_of(function, values[function.count:])
        numbers = array("d")
        for matrix in matrices:
            numbers += matrix.numbers
        request = {"pack": function.pack, "function": function.name, "context": context,
                   "arguments": [matrix.shape() for matrix in matrices], "part": part}
        text, numbers = self.ask(request, numbers, seconds)
        if "error" in text:
            at = f" (argument {text['argument']})" if text["argument"] else ""
            raise CellError(text["error"] + at)
        if "text" in text:
            return ((text["text"],),)
        return cells_of(Matrix(text["rows"], text["cols"], numbers, text["complex"]), form)

    def ask(self, request, numbers, seconds):
        """The worker's answer. A call that was too slow is not made again: Calc would wait for each
        formula that repeats it, at each recalculation."""
        key = hashlib.sha256(repr((request, seconds)).encode() + numbers.tobytes()).digest()
        if key in self.slow:
            raise TooSlow(f"stopped after {seconds:g} s")
        try:
            return self.worker.ask(request, numbers, seconds)
        except TooSlow:
            if len(self.slow) < MOST_SLOW:
                self.slow.add(key)
            raise

    def table(self):
        """The packs, and what became of them."""
        rows = [("pack", "functions", "state")]
        for pack in self.worker.packs:
            missing = self.left_out.get(pack["pack"], [])
            state = f"{len(pack['functions']) - len(missing)} functions"
            if missing:
                state += f"; left out, for their names: {', '.join(missing[:5])}"
            rows.append((pack["pack"], prefix_of(pack["pack"]) + ".…", state))
        rows += [(path, "", f"not loaded: {reason}") for path, reason in self.worker.failures]
        return tuple(rows)


def prefix_of(path):
    """MATRIX for /usr/lib/libmatrix.so.0"""
    stem = os.path.basename(path).split(".so")[0]
    stem = re.sub(r"[^A-Za-z0-9]", "", stem[3:] if stem.startswith("lib") else stem)
    return stem.upper() if NAME.fullmatch(stem) else "PACK"


def options_of(function, values):
    """What follows the arguments: texts are forms, wherever they stand; the others have an order."""
    values = [x[0][0] if isinstance(x, tuple) else x for x in values]
    form = None
    for text in [x for x in values if isinstance(x, str) and x]:
        if text not in FORMS:
            raise CellError(f'"{text[:40]}" is none of "re", "im", "abs" and "complex"')
        form = text
    given = [x for x in values if not isinstance(x, str)]
    context = {name: CONTEXT[name] for name in function.context if name in CONTEXT}
    for name, value in zip(function.context, given):
        if value is not None:
            context[name] = value
    rest = [x for x in given[len(function.context):] if x is not None]
    if len(rest) > 1:
        raise CellError(f"too many arguments: {function.name} takes {function.count}")
    part = rest[0] if rest else 0
    if part != int(part) or not 0 <= part <= 99:
        raise CellError(f"{part:g} is no number of a part")
    return context, int(part), form


def interface_of(functions):
    """The name of an interface with a method for each function, and its text."""
    methods = "".join(
        f"  sequence< sequence<any> > {f.method}({', '.join(f'[in] any a{k}' for k in range(len(f.parameters)))});\n"
        for f in functions)
    methods += ("  any packMessage([in] any name, [in] sequence<any> values);\n"
                "  sequence< sequence<any> > packList();\n")
    # Not twice the same name for different methods: LibreOffice never forgets an interface.
    name = f"XFunctions{zlib.crc32(methods.encode()):08x}"
    text = ("module matrixpack { module calc {\n"
            f"interface {name}: com::sun::star::uno::XInterface {{\n{methods}}};\n}}; }};\n")
    return f"matrixpack.calc.{name}", text


def declare(context, functions):
    """Makes LibreOffice know the interface, and gives its class."""
    name, text = interface_of(functions)
    types = context.getValueByName("/singletons/com.sun.star.reflection.theTypeDescriptionManager")
    if not types.hasByHierarchicalName(name):
        with tempfile.NamedTemporaryFile("w", suffix=".idl") as file:
            file.write(text)
            file.flush()
            types.insert(uno.systemPathToFileUrl(file.name))
    return uno.getClass(name)


class AddIn(unohelper.Base, XAddIn, XCompatibilityNames, XServiceName, XServiceInfo):
    """What Calc asks of an add-in. Names are those of methods."""

    def words(self, method):
        """The display name, the description and the parameters of a method."""
        if method in FIXED:
            return FIXED[method]
        f = self.packs.functions.get(method)
        if f is None:
            return "", "", []
        return f.display, f.summary, [(p, f.about(k)) for k, p in enumerate(f.parameters)]

    def parameter(self, method, k):
        parameters = self.words(method)[2]
        return parameters[min(k, len(parameters) - 1)] if parameters else ("", "")

    def seconds(self):
        return float(self.options.TimeLimit)

    def packMessage(self, name, values):
        try:
            self.packs.call(self.packs.find(str(name[0][0] if isinstance(name, tuple) else name)), values,
                            self.seconds())
        except (CellError, WorkerError) as error:
            return str(error)
        return ""

    def packList(self):
        return self.packs.table()

    def getProgrammaticFuntionName(self, display):
        methods = list(FIXED) + list(self.packs.functions)
        return next((m for m in methods if self.words(m)[0] == display.upper()), "")

    def getDisplayFunctionName(self, method):
        return self.words(method)[0]

    def getFunctionDescription(self, method):
        return self.words(method)[1]

    def getDisplayArgumentName(self, method, k):
        return self.parameter(method, k)[0]

    def getArgumentDescription(self, method, k):
        return self.parameter(method, k)[1]

    def getProgrammaticCategoryName(self, method):
        return "Add-In"

    def getDisplayCategoryName(self, method):
        return "Add-In"

    def getCompatibilityNames(self, method):
        return (LocalizedName(Locale("en", "US", ""), self.words(method)[0]),)

    def setLocale(self, locale):
        self.locale = locale

    def getLocale(self):
        return self.locale

    def getServiceName(self):
        return SERVICE

    def getImplementationName(self):
        return SERVICE

    def supportsService(self, name):
        return name in self.getSupportedServiceNames()

    def getSupportedServiceNames(self):
        return (ADD_IN, SERVICE)


def method_of(function):
    def method(self, *values):
        try:
            return self.packs.call(function, values, self.seconds())
        except (CellError, WorkerError) as error:
            raise RuntimeException(str(error), self) from None
    return method


def worker_command():
    """The program beside this file. Unpacking an extension does not keep that it may be run."""
    program = os.path.join(os.path.dirname(os.path.abspath(__file__)), "worker", "pack_worker")
    if os.path.exists(program) and not os.access(program, os.X_OK):
        os.chmod(program, 0o755)
    return [program]


def options(context):
    provider = context.ServiceManager.createInstanceWithContext(
        "com.sun.star.configuration.ConfigurationProvider", context)
    node = PropertyValue()
    node.Name, node.Value = "nodepath", "/matrixpack.Calc/Worker"
    return provider.createInstanceWithArguments(
        "com.sun.star.configuration.ConfigurationAccess", (node,))


def create(context):
    """The component: its class has a method for each function that there is now."""
    packs = Packs(Worker(worker_command()))
    methods = {f.method: method_of(f) for f in packs.functions.values()}
    interface = declare(context, packs.functions.values())
    component = type("Functions", (AddIn, interface), methods)()
    component.packs, component.options = packs, options(context)
    component.locale = Locale()
    return component


g_ImplementationHelper = unohelper.ImplementationHelper()
g_ImplementationHelper.addImplementation(create, SERVICE, (ADD_IN, SERVICE))
