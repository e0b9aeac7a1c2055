"""Two machines on a cable: network namespaces joined by a veth pair, made within a user namespace.

This process is the client's machine; the server's is another network namespace.  Nothing leaves
them: they have no way to any other network.
"""

import os
import signal
import subprocess
import sys
import time

SERVER, CLIENT, OTHER = "10.77.0.1", "10.77.0.2", "10.77.0.3"
MARK = "ORXSERVE_TEST_NETWORK"


def enter():
    """Starts this program again within namespaces of its own; ends with 77 where that is not allowed."""
    if os.environ.get(MARK):
        return
    probe = subprocess.run(["unshare", "-rn", "true"], capture_output=True)
    if probe.returncode != 0:
        print("skipped: no network namespaces here:", probe.stderr.decode().strip())
        sys.exit(77)
    os.environ[MARK] = "1"
    os.execvp("unshare", ["unshare", "-rn", sys.executable, *sys.argv])


def ip(*words):
    subprocess.run(["ip", *words], check=True)


class Network:
    def __init__(self):
        self.machine = subprocess.Popen(["unshare", "-n", "sleep", "infinity"])
        own = os.readlink("/proc/self/ns/net")
        while os.readlink(f"/proc/{self.machine.pid}/ns/net") == own:
            time.sleep(0.01)
        ip("link", "set", "lo", "up")
        ip("link", "add", "client0", "type", "veth", "peer", "name", "server0", "netns",
           str(self.machine.pid))
        ip("addr", "add", f"{CLIENT}/24", "dev", "client0")
        ip("addr", "add", f"{OTHER}/24", "dev", "client0")
        ip("link", "set", "client0", "up")
        ip("route", "add", "default", "dev", "client0")
        self.on_server("ip", "link", "set", "lo", "up")
        self.on_server("ip", "addr", "add", f"{SERVER}/24", "dev", "server0")
        self.on_server("ip", "link", "set", "server0", "up")
        self.on_server("ip", "route", "add", "default", "dev", "server0")
        time.sleep(2.2)  # until the addresses of the link are known to be unique

    def command(self, *words):
        return ["nsenter", "-t", str(self.machine.pid), "-n", *words]

    def on_server(self, *words):
        return subprocess.run(self.command(*words), check=True, capture_output=True, text=True).stdout

    def close(self):
        self.machine.send_signal(signal.SIGKILL)
        self.machine.wait()


class Server:
    """orxserve on the server's machine."""

    def __init__(self, network, program, folder, state, *options):
        self.arguments = network.command(program, folder, "--state", state, "--verbose", *options)
        self.log = open(state + ".log", "a+b")
        self.process = subprocess.Popen(self.arguments, stderr=self.log, stdout=self.log)

    def said(self):
        self.log.seek(0)
        return self.log.read().decode()

    def wait_for(self, words, times=1, patience=20):
        deadline = time.monotonic() + patience
        while self.said().count(words) < times:
            if time.monotonic() > deadline or self.process.poll() is not None:
                raise AssertionError(f"never said {words!r} {times} times:\n{self.said()}")
            time.sleep(0.02)

    def rescan(self):
        before = self.said().count("serving ")
        self.process.send_signal(signal.SIGHUP)
        deadline = time.monotonic() + 20
        while self.said().count("serving ") == before:
            if time.monotonic() > deadline:
                raise AssertionError("no rescan:\n" + self.said())
            time.sleep(0.02)

    def memory(self):
        """Resident, in kilobytes."""
        with open(f"/proc/{self.process.pid}/status") as status:
            return next(int(line.split()[1]) for line in status if line.startswith("VmRSS"))

    def stop(self, number=signal.SIGTERM):
        """The exit status and how long it took."""
        start = time.monotonic()
        if self.process.poll() is None:
            self.process.send_signal(number)
        status = self.process.wait(10)
        self.log.close()
        return status, time.monotonic() - start
