"""The worker of the extension for Calc, as the extension sees it but without Calc:

    worker_test.py PROGRAM LIBMATRIX DIRECTORY_OF_TINY_PACKS

Packs that end, abort or hang it, while they are loaded and in a call; what asks for too much memory; and
that it ends when the process ends that started it."""

import os
import signal
import sys
import time
from array import array

sys.path.insert(0, os.path.dirname(__file__) + "/../../calc/extension/pythonpath")
import matrix_pack_worker
from matrix_pack_worker import Worker, WorkerError

PROGRAM, MATRIX, TINY = sys.argv[1:]
matrix_pack_worker.LOAD_SECONDS = 1


def tiny(fault):
    return f"{TINY}/tiny_{fault}.so"


def ask(worker, pack, function, numbers, seconds=20.0):
    """The answer to a call with one row of numbers, or why there is none."""
    shape = {"rows": 1, "cols": len(numbers), "complex": False}
    request = {"pack": pack, "function": function, "context": {}, "arguments": [shape], "part": 0}
    try:
        text, answer = worker.ask(request, array("d", numbers), seconds)
        return text.get("error", list(answer))
    except WorkerError as error:
        return str(error)


def expect(found, wanted):
    assert found == wanted, f"{found}, not {wanted}"


def try_loading():
    faults = {"exits": "the pack ended its process", "aborts": "the pack ended its process",
              "spins": "it took too long"}
    packs = [tiny(f"{fault}_when_loaded") for fault in faults]
    worker = Worker([PROGRAM, *packs, MATRIX, tiny("none")])
    worker.start()
    expect(dict(worker.failures), {path: f"{why}, while it was loaded" for path, why in zip(packs, faults.values())})
    expect([pack["pack"] for pack in worker.packs], [MATRIX, tiny("none")])
    # Who is left out once stays out, and nobody waits for it again.
    before, begin = worker.process.pid, time.monotonic()
    os.kill(before, signal.SIGKILL)
    time.sleep(0.1)
    expect(ask(worker, MATRIX, "max", [1, -7, 2]), [2])
    assert worker.process.pid != before and time.monotonic() - begin < 0.8
    worker.stop()


def try_calls():
    faults = {"crashes": "the pack ended its process", "exits": "the pack ended its process",
              "throws": "twice: the pack let an exception escape", "spins": "stopped after 0.3 s"}
    worker = Worker([PROGRAM, MATRIX, *map(tiny, faults)])
    for fault, why in faults.items():
        expect(ask(worker, tiny(fault), "twice", [1, 2], 0.3), why)
        expect(ask(worker, MATRIX, "max", [1, -7, 2]), [2])
    # One that does not even read what is sent.
    os.kill(worker.process.pid, signal.SIGSTOP)
    expect(ask(worker, MATRIX, "max", [1] * 100000, 0.3), "stopped after 0.3 s")
    worker.stop()


def try_memory():
    """The first would fit into the records of values, but not into what the process may have."""
    worker = Worker([PROGRAM, MATRIX])
    for rows, why in [(23170, "memory exhausted"), (4100, "the result is too large")]:
        expect(ask(worker, MATRIX, "identity", [rows]), why)
        expect(ask(worker, MATRIX, "max", [1, -7, 2]), [2])
    worker.stop()


def try_the_end(pack, function):
    """The process that started it is killed: it ends, idle, in a call, or while it loads a pack."""
    parent = os.fork()
    if parent == 0:
        worker = Worker([PROGRAM, pack])
        matrix_pack_worker.LOAD_SECONDS = 60
        ask(worker, pack, function, [1, 2])
        time.sleep(60)
    time.sleep(0.5)
    program = open(f"/proc/{parent}/task/{parent}/children").read().strip()
    os.kill(parent, signal.SIGKILL)
    os.waitpid(parent, 0)
    end = time.monotonic() + 2
    while os.path.exists(f"/proc/{program}") and open(f"/proc/{program}/stat").read().split()[2] != "Z":
        assert time.monotonic() < end, f"the worker with {pack} outlives who started it"
        time.sleep(0.01)


begin = time.monotonic()
try_loading()
try_calls()
try_memory()
for pack, function in [(MATRIX, "max"), (tiny("spins"), "twice"), (tiny("spins_when_loaded"), "twice")]:
    try_the_end(pack, function)
print(f"The worker stands its packs ({time.monotonic() - begin:.1f} s)")
