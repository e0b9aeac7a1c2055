"""Headless Chromium, driven through a pipe with its DevTools protocol; needs nothing but Python."""

import json
import os
import select
import shutil
import signal
import subprocess
import tempfile
import time

LONGEST_ANSWER = 60  # seconds

KEYS = {"Tab": 9, "Enter": 13, "Escape": 27, " ": 32, "ArrowLeft": 37, "ArrowUp": 38,
        "ArrowRight": 39, "ArrowDown": 40, "Home": 36, "End": 35}


def program():
    """The path of the browser, None when there is none."""
    return shutil.which("chromium") or shutil.which("chromium-browser")


class Browser:
    def __init__(self):
        self.home = tempfile.mkdtemp(prefix="orxscan-browser-")
        to_browser, self.output = os.pipe()
        self.input, from_browser = os.pipe()

        def connect():  # the browser reads commands from 3 and writes answers to 4
            high = [os.dup2(fd, 200 + i) for i, fd in enumerate((to_browser, from_browser))]
            os.dup2(high[0], 3)
            os.dup2(high[1], 4)
            os.closerange(5, 256)

        self.process = subprocess.Popen(
            [program(), "--headless=new", "--no-sandbox", "--disable-gpu", "--disable-quic",
             "--no-first-run", "--disable-background-networking", "--disable-component-update",
             "--disable-sync", "--disable-dev-shm-usage", "--remote-debugging-pipe",
             f"--user-data-dir={self.home}", "about:blank"],
            stdin=subprocess.DEVNULL, stdout=subprocess.DEVNULL, stderr=subprocess.DEVNULL,
            preexec_fn=connect, close_fds=False, start_new_session=True,
            env={**os.environ, "HOME": self.home})
        os.close(to_browser)
        os.close(from_browser)
        self.rest = b""
        self.number = 0
        self.events = []

    def close(self):
        """Ends the browser and all its processes."""
        try:
            os.killpg(self.process.pid, signal.SIGKILL)
        except ProcessLookupError:
            pass
        self.process.wait()
        os.close(self.input)
        os.close(self.output)
        shutil.rmtree(self.home, ignore_errors=True)

    def receive(self, deadline):
        while b"\0" not in self.rest:
            if not select.select([self.input], [], [], max(0, deadline - time.monotonic()))[0]:
                raise TimeoutError("the browser does not answer")
            part = os.read(self.input, 1 << 20)
            if not part:
                raise RuntimeError("the browser has ended")
            self.rest += part
        message, self.rest = self.rest.split(b"\0", 1)
        return json.loads(message)

    def send(self, method, session=None, **parameters):
        self.number += 1
        command = {"id": self.number, "method": method, "params": parameters}
        if session:
            command["sessionId"] = session
        data = json.dumps(command).encode() + b"\0"
        while data:
            data = data[os.write(self.output, data):]
        deadline = time.monotonic() + LONGEST_ANSWER
        while True:
            message = self.receive(deadline)
            if message.get("id") == self.number:
                if "error" in message:
                    raise RuntimeError(f"{method}: {message['error']}")
                return message["result"]
            self.events.append(message)


class Page:
    """A page of its own, opened from a file or an address; notes what it says and asks for."""

    def __init__(self, browser, path, width=1280, height=900, dark=False, scripts=True,
                 domains=("Page", "Runtime", "Log", "Network", "Accessibility"), watch="",
                 until="document.readyState === 'complete' && location.protocol === 'file:'"):
        """`domains` of the protocol are enabled, `watch` runs before the page's own script."""
        self.browser = browser
        self.context = browser.send("Target.createBrowserContext")["browserContextId"]
        self.target = browser.send("Target.createTarget", url="about:blank",
                                   browserContextId=self.context)["targetId"]
        self.session = browser.send("Target.attachToTarget", targetId=self.target,
                                    flatten=True)["sessionId"]
        for domain in domains:
            self.send(f"{domain}.enable")
        self.send("Emulation.setDeviceMetricsOverride", width=width, height=height,
                  deviceScaleFactor=1, mobile=width < 600)
        self.send("Emulation.setEmulatedMedia", features=[
            {"name": "prefers-color-scheme", "value": "dark" if dark else "light"}])
        self.send("Emulation.setScriptExecutionDisabled", value=not scripts)
        if watch:
            self.send("Page.addScriptToEvaluateOnNewDocument", source=watch)
        start = time.monotonic()
        self.send("Page.navigate", url=path if "://" in path else "file://" + path)
        self.wait(until)
        self.seconds = time.monotonic() - start

    def send(self, method, **parameters):
        return self.browser.send(method, self.session, **parameters)

    def close(self):
        self.browser.send("Target.closeTarget", targetId=self.target)
        self.browser.send("Target.disposeBrowserContext", browserContextId=self.context)

    def evaluate(self, expression):
        answer = self.send("Runtime.evaluate", expression=expression, returnByValue=True,
                           awaitPromise=True)
        if "exceptionDetails" in answer:
            raise RuntimeError(f"{expression}: {answer['exceptionDetails']}")
        return answer["result"].get("value")

    def wait(self, expression):
        """Until the expression is true."""
        deadline = time.monotonic() + LONGEST_ANSWER
        while not self.evaluate(expression):
            if time.monotonic() > deadline:
                raise TimeoutError(f"never true: {expression}")
            time.sleep(0.02)

    def press(self, key):
        """A key as a user presses it."""
        code = KEYS.get(key, ord(key.upper()) if len(key) == 1 else 0)
        text = "\r" if key == "Enter" else key if len(key) == 1 else ""
        self.send("Input.dispatchKeyEvent", type="keyDown", key=key, text=text,
                  windowsVirtualKeyCode=code)
        self.send("Input.dispatchKeyEvent", type="keyUp", key=key, windowsVirtualKeyCode=code)

    def type(self, text):
        for character in text:
            self.press(character)

    def tab_to(self, condition):
        """Goes on with the tabulator until `condition` holds for the focused `element`."""
        for _ in range(60):
            if self.evaluate(f"(element => {condition})(document.activeElement)"):
                return
            self.press("Tab")
        raise AssertionError(f"the tabulator never comes to: {condition}")

    def screenshot(self, path):
        import base64
        data = self.send("Page.captureScreenshot", format="png")["data"]
        with open(path, "wb") as file:
            file.write(base64.b64decode(data))

    def accessible(self):
        """The role and name of everything that assistive programs are told of."""
        nodes = self.send("Accessibility.getFullAXTree")["nodes"]
        value = lambda node, key: node.get(key, {}).get("value", "")
        return [(value(node, "role"), value(node, "name")) for node in nodes
                if not node.get("ignored")]

    def events(self, *methods):
        return [event for event in self.browser.events
                if event.get("sessionId") == self.session and event["method"] in methods]

    def complaints(self):
        """Errors, warnings, dialogs and requests other than for local files."""
        self.evaluate("1")  # what was under way has arrived
        said = self.events("Runtime.exceptionThrown", "Runtime.consoleAPICalled", "Log.entryAdded",
                           "Page.javascriptDialogOpening")
        asked = [event for event in self.events("Network.requestWillBeSent")
                 if not event["params"]["request"]["url"].startswith(("file:", "data:"))]
        return said + asked
