"""The notebook kernel as a client sees it: kernel_client.py DIRECTORY_OF_KERNELS"""
import os
import subprocess
import sys
import tempfile
import threading
import time

os.environ["JUPYTER_PATH"] = sys.argv[1]
from jupyter_client.connect import write_connection_file
from jupyter_client.manager import KernelManager

manager = KernelManager(kernel_name="worksheet")
manager.start_kernel()
client = manager.client()
client.start_channels()
client.wait_for_ready(timeout=30)


def run(code):
    """The status of a cell and its outputs, by kind."""
    outputs = []
    hook = lambda message: outputs.append((message["msg_type"], message["content"]))
    reply = client.execute_interactive(code, output_hook=hook, timeout=60)["content"]
    return reply["status"], [o for o in outputs if o[0] not in ("status", "execute_input")]


def ask(request, *arguments):
    identity = request(*arguments)
    while True:
        message = client.get_shell_msg(timeout=30)
        if message["parent_header"].get("msg_id") == identity:
            return message["content"]


status, (value,) = run("1 + 1")
assert (status, value[0], value[1]["data"]["text/plain"]) == ("ok", "execute_result", "2"), value
status, outputs = run("A = [1, 2; 3, 4]{kN}\nlength(A)\n3")
assert status == "error" and [o[0] for o in outputs] == ["display_data", "error"], outputs
assert "<math" in outputs[0][1]["data"]["text/html"]
assert outputs[1][1]["traceback"][-1].lstrip() == "^^^^^^^^^"
run("g(x) = length(x)")
traceback = "\n".join(run("g(A)")[1][0][1]["traceback"])
assert "In [3]:\n    1 | g(x) = length(x)" in traceback, traceback
picture = run("plot([1, 2, 3])")[1][0][1]["data"]
assert "<svg" in picture["text/html"] and "<svg" in picture["image/svg+xml"]
assert "lsolve" in run("help lsolve")[1][0][1]["data"]["text/markdown"]
assert run('"caf\u00e9"')[0] == "ok"

found = ask(client.complete, "\u00fcx = 3{kilom", 12)
assert "kilometre" in found["matches"] and found["cursor_start"] == 7, found
assert ask(client.inspect, "lsolve(A", 3)["found"] and not ask(client.inspect, "  ", 1)["found"]
assert ask(client.is_complete, "[1, 2;\n")["status"] == "incomplete"
assert ask(client.is_complete, "x = 1")["status"] == "complete"

manager.interrupt_kernel()  # While idle.
time.sleep(0.1)
assert manager.is_alive() and run("2 * 21")[0] == "ok"
threading.Timer(0.3, manager.interrupt_kernel).start()
start = time.time()
status, outputs = run("svd(identity(2500) + 1)")
assert status == "error" and outputs[-1][1]["evalue"] == "interrupted", outputs
assert time.time() - start < 20 and run("A * 2")[0] == "ok", "the state is kept"
for k in range(200):
    assert run("x = %d" % k)[0] == "ok"
manager.restart_kernel(now=True)
client.wait_for_ready(timeout=30)
assert run("A")[0] == "error", "a kernel that was killed begins anew"
manager.shutdown_kernel()
client.stop_channels()
del client

# A kernel ends with its parent, even when that is killed.
with tempfile.TemporaryDirectory() as directory:
    path, _ = write_connection_file(directory + "/connection.json")
    command = [path if word == "{connection_file}" else word for word in manager.kernel_spec.argv]
    parent = subprocess.Popen(["sh", "-c", '"$@" & echo $!; wait', "sh"] + command,
                              stdout=subprocess.PIPE, stderr=subprocess.PIPE, text=True)
    kernel = "/proc/%d/stat" % int(parent.stdout.readline())
    parent.stderr.readline()  # The kernel has begun.
assert os.path.exists(kernel)
parent.kill()
parent.wait()
end = time.time() + 5
while os.path.exists(kernel) and open(kernel).read().split()[2] != "Z":
    assert time.time() < end, "the kernel outlives its parent"
    time.sleep(0.02)
print("The kernel is well")
