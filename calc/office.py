"""A LibreOffice without windows, with a profile of its own in this directory, for scripts. Run with
/usr/bin/python3, which has the module uno."""

import os
import signal
import subprocess
import time

import uno
from com.sun.star.beans import PropertyValue

PROFILE = f"-env:UserInstallation=file://{os.getcwd()}/profile"
PIPE = f"pipe,name=matrix_pack_{os.getpid()};urp;"


def property_of(name, value):
    return PropertyValue(name, 0, value, 0)


class Office:
    """A LibreOffice, for as long as the block lasts."""

    def __init__(self, *options, profile=PROFILE):
        self.options = (profile, *options)

    def __enter__(self):
        self.process = subprocess.Popen(
            ["soffice", *self.options, "--headless", "--norestore", "--nologo", f"--accept={PIPE}"],
            start_new_session=True, stderr=subprocess.DEVNULL)
        context = uno.getComponentContext()
        resolver = context.ServiceManager.createInstanceWithContext("com.sun.star.bridge.UnoUrlResolver", context)
        for _ in range(150):
            try:
                self.context = resolver.resolve(f"uno:{PIPE}StarOffice.ComponentContext")
                break
            except Exception:  # Not there yet.
                time.sleep(0.2)
        self.desktop = self.service("com.sun.star.frame.Desktop")
        return self

    def __exit__(self, *_):
        try:
            self.desktop.terminate()
            self.process.wait(10)
        except Exception:  # It does not want to.
            pass
        try:
            os.killpg(self.process.pid, signal.SIGKILL)
        except ProcessLookupError:
            pass

    def service(self, name, *arguments):
        manager = self.context.ServiceManager
        return manager.createInstanceWithArgumentsAndContext(name, arguments, self.context)

    def open(self, url="private:factory/scalc"):
        return self.desktop.loadComponentFromURL(url, "_blank", 0, (property_of("Hidden", True),))
