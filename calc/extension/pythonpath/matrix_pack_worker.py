"""The worker process that holds the packs, seen from the spreadsheet: calc/message.hpp has what goes
through its pipes."""

import json
import os
import select
import struct
import subprocess
import threading
import time
from array import array

HEADER = struct.Struct("=II")
MOST_TEXT = MOST_NUMBERS = 16 << 20
LOAD_SECONDS = 10  # For all packs together.
OUT_OF_MEMORY = "memory exhausted"  # The worker's words, and those of packs.


class WorkerError(Exception):
    """Why there is no answer, in words for the user."""


class TooSlow(WorkerError):
    """The answer did not come in time."""


class Worker:
    """Starts the program when it is needed, and again when a pack has ended it."""

    def __init__(self, command):
        self.command = command
        self.process = None
        self.packs = []  # The message about each pack that is loaded.
        self.failures = []  # (path, reason) of each that is not.
        self.without = {}  # The path of each pack that ended the worker when it was loaded, and how.
        self.lock = threading.Lock()

    def start(self):
        """Starts the program if it does not run, and reads what it says of the packs."""
        if self.process is not None and self.process.poll() is not None:
            self.stop()
        while self.process is None:
            command = self.command + [word for path in self.without for word in ("--without", path)]
            try:
                self.process = subprocess.Popen(
                    command, stdin=subprocess.PIPE, stdout=subprocess.PIPE, bufsize=0)
            except OSError as error:
                raise WorkerError(f"the worker does not start: {command[0]}: {error.strerror}") from None
            os.set_blocking(self.process.stdin.fileno(), False)
            self._load()

    def _load(self):
        """Reads what the program says until it is ready. A pack that keeps it from that is left out from
        now on, and the program stopped."""
        self.packs, self.failures = [], list(self.without.items())
        loading = None
        end = time.monotonic() + LOAD_SECONDS
        try:
            while True:
                text = self._read(end)[0]
                if "ready" in text:
                    return
                loading = text.get("loading", loading)
                if "pack" in text:
                    self.packs.append(text)
                elif "failed" in text:
                    self.failures.append((text["failed"], text["reason"]))
        except WorkerError as error:
            self.stop()
            if loading is None or loading in self.without:
                raise
            self.without[loading] = f"{error}, while it was loaded"

    def stop(self):
        process, self.process = self.process, None
        if process is not None:
            process.kill()
            process.stdin.close()
            process.stdout.close()
            process.wait()

    def ask(self, text, numbers, seconds):
        """The answer's text and numbers. Raises WorkerError when the worker ends or is too slow."""
        data = json.dumps(text).encode()
        if len(numbers) > MOST_NUMBERS or len(data) > MOST_TEXT:
            raise WorkerError("the arguments are too large")
        message = HEADER.pack(len(data), len(numbers)) + data + numbers.tobytes()
        with self.lock:
            self.start()
            end = time.monotonic() + seconds
            try:
                self._write(message, end)
                text, numbers = self._read(end)
            except TooSlow:
                self.stop()
                raise TooSlow(f"stopped after {seconds:g} s") from None
            except WorkerError:
                self.stop()
                raise
            if text.get("error") == OUT_OF_MEMORY:
                self.stop()  # A pack may have lost what it took.
            return text, numbers

    def _wait(self, pipe, event, end):
        poll = select.poll()
        poll.register(pipe, event)
        if not poll.poll(max(0, end - time.monotonic()) * 1000):
            raise TooSlow("it took too long")

    def _write(self, data, end):
        pipe = self.process.stdin.fileno()
        data = memoryview(data)
        while data:
            self._wait(pipe, select.POLLOUT, end)
            try:
                data = data[os.write(pipe, data):]
            except BrokenPipeError:
                raise WorkerError("the pack ended its process") from None

    def _read(self, end):
        """The next message: its text, read as JSON, and its numbers."""
        text_size, count = HEADER.unpack(self._bytes(HEADER.size, end))
        if text_size > MOST_TEXT or count > MOST_NUMBERS:
            raise WorkerError("the pack spoiled what its process says")
        text, numbers = self._bytes(text_size, end), self._bytes(count * 8, end)
        try:
            return json.loads(text), array("d", numbers)
        except ValueError:
            raise WorkerError("the pack spoiled what its process says") from None

    def _bytes(self, size, end):
        pipe, data = self.process.stdout.fileno(), bytearray()
        while len(data) < size:
            self._wait(pipe, select.POLLIN, end)
            piece = os.read(pipe, min(size - len(data), 1 << 20))
            if not piece:
                raise WorkerError("the pack ended its process")
            data += piece
        return bytes(data)
