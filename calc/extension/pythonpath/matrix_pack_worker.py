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
        while self.process is None:
            loading = None
            command = list(self.command)
            for path in self.without:
                command += ["--without", path]
            try:
                self.process = subprocess.Popen(
                    command, stdin=subprocess.PIPE, stdout=subprocess.PIPE, bufsize=0)
            except OSError as error:
                raise WorkerError(f"the worker does not start: {command[0]}: {error.strerror}") from None
            os.set_blocking(self.process.stdin.fileno(), False)
            self.packs, self.failures = [], list(self.without.items())
            try:
                end = time.monotonic() + LOAD_SECONDS
                while True:
                    text = json.loads(self._read(end)[0])
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
                text, answer = self._read(end)
                return json.loads(text), answer
            except TooSlow:
                self.stop()
                raise TooSlow(f"stopped after {seconds:g} s") from None
            except (WorkerError, ValueError):
                self.stop()
                raise

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
        text_size, count = HEADER.unpack(self._bytes(HEADER.size, end))
        if text_size > MOST_TEXT or count > MOST_NUMBERS:
            raise WorkerError("the pack spoiled what its process says")
        return self._bytes(text_size, end), array("d", self._bytes(count * 8, end))

    def _bytes(self, size, end):
        pipe, data = self.process.stdout.fileno(), bytearray()
        while len(data) < size:
            self._wait(pipe, select.POLLIN, end)
            piece = os.read(pipe, min(size - len(data), 1 << 20))
            if not piece:
                raise WorkerError("the pack ended its process")
            data += piece
        return bytes(data)
