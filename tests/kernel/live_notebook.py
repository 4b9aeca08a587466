"""A notebook in a browser, as its reader sees it: live_notebook.py NOTEBOOK

Starts a notebook server and a headless Chromium, runs all cells, and looks at the page. HOME must be a
directory of its own, with the kernel in it."""
import asyncio
import json
import os
import socket
import subprocess
import sys
import tempfile
import time
import urllib.request

from tornado.websocket import websocket_connect

READY = "window.Jupyter && Jupyter.notebook && Jupyter.notebook.kernel && Jupyter.notebook.kernel.is_connected()"
CLEAR_AND_RUN = "Jupyter.notebook.clear_all_output(), Jupyter.notebook.execute_all_cells(), true"
LOOK = """(() => {
  const all = s => Array.from(document.querySelectorAll('.output_area ' + s));
  const flat = all('math, svg').filter(e => e.getBoundingClientRect().height < 5);
  const wide = all('.worksheet').filter(e => e.scrollWidth > e.clientWidth + 1);
  return {formulas: all('math').length, pictures: all('svg').length, flat: flat.length, wide: wide.length,
          errors: all('.output_error, .output_stderr').length,
          font: all('math').length ? getComputedStyle(all('math')[0]).fontFamily : ''};
})()"""


def free_port():
    with socket.socket() as taken:
        taken.bind(("127.0.0.1", 0))
        return taken.getsockname()[1]


def started(path, seconds, read):
    """What `read` makes of the file, as soon as it is there."""
    end = time.time() + seconds
    while time.time() < end:
        try:
            return read(open(path, encoding="utf-8"))
        except (OSError, ValueError, IndexError):
            time.sleep(0.1)
    sys.exit("nothing has come of " + path)


async def in_page(port, url, wanted):
    with urllib.request.urlopen("http://127.0.0.1:%d/json" % port) as reply:
        page = next(t for t in json.load(reply) if t["type"] == "page")
    browser = await websocket_connect(page["webSocketDebuggerUrl"])
    count = 0

    async def ask(method, **parameters):
        nonlocal count
        count += 1
        await browser.write_message(json.dumps({"id": count, "method": method, "params": parameters}))
        while True:
            message = json.loads(await browser.read_message())
            if message.get("id") == count:
                return message.get("result", {}).get("result", {}).get("value")

    await ask("Page.navigate", url=url)
    end = time.time() + 60
    while not await ask("Runtime.evaluate", expression=READY):
        assert time.time() < end, "the notebook has no kernel"
        await asyncio.sleep(0.2)
    await ask("Runtime.evaluate", expression=CLEAR_AND_RUN)
    end = time.time() + 60  # Outputs come while cells run, and the last of them behind its cell.
    while True:
        found = await ask("Runtime.evaluate", expression=LOOK, returnByValue=True)
        if (found["formulas"], found["pictures"]) == wanted or time.time() > end:
            return found
        await asyncio.sleep(0.2)


def main():
    notebook = os.path.abspath(sys.argv[1])
    with open(notebook, encoding="utf-8") as file:
        outputs = [output for cell in json.load(file)["cells"] for output in cell.get("outputs", [])]
    markup = "".join("".join(output["data"].get("text/html", "")) for output in outputs)
    wanted = markup.count("<math"), markup.count("<svg")
    work = tempfile.mkdtemp(dir=os.environ["HOME"])
    runtime, profile = work + "/runtime", work + "/profile"
    log = open(work + "/log", "w")
    children = []
    try:
        children.append(subprocess.Popen(
            ["/usr/bin/python3", "-m", "notebook", "--no-browser", "--allow-root", "--ip=127.0.0.1",
             "--port=%d" % free_port(),
             "--notebook-dir=" + os.path.dirname(notebook)],
            env=dict(os.environ, JUPYTER_RUNTIME_DIR=runtime), stdout=log, stderr=log))
        children.append(subprocess.Popen(
            ["chromium", "--headless", "--no-sandbox", "--disable-gpu", "--disable-quic", "--no-first-run",
             "--disable-background-networking", "--disable-component-update", "--disable-sync",
             "--user-data-dir=" + profile, "--remote-debugging-port=0", "--window-size=1200,900",
             "about:blank"], stdout=log, stderr=log))
        server = started("%s/nbserver-%d.json" % (runtime, children[0].pid), 60, json.load)
        port = started(profile + "/DevToolsActivePort", 60, lambda file: int(file.readline()))
        url = "http://127.0.0.1:%d/notebooks/%s?token=%s" % (
            server["port"], os.path.basename(notebook), server["token"])
        found = asyncio.run(asyncio.wait_for(in_page(port, url, wanted), 150))
    finally:
        for child in reversed(children):
            child.terminate()
            child.wait(20)
    assert (found["formulas"], found["pictures"]) == wanted and min(wanted) > 0, (found, wanted)
    assert found["flat"] == found["wide"] == found["errors"] == 0 and "Math" in found["font"], found
    print("The notebook is well in the browser")


main()
