# SPDX-FileCopyrightText: 2026 The NQP2ParserU authors
# SPDX-License-Identifier: MIT
"""A real browser without a window, driven over a pipe by the protocol of its developer tools."""

import base64
import fcntl
import json
import os
import select
import shutil
import signal
import subprocess
import tempfile
import time
import unittest

PATIENCE = 60  # seconds


def program():
    """The browser; without one the test is skipped, unless the machine has to have it."""
    found = shutil.which("chromium")
    if found is None and os.environ.get("NQP2_BROWSER") == "required":
        raise AssertionError("chromium is not installed")
    if found is None:
        raise unittest.SkipTest("chromium is not installed")
    return found


def high_pipe():
    """A pipe whose ends are none of those that the browser uses."""
    ends = os.pipe()
    high = [fcntl.fcntl(end, fcntl.F_DUPFD_CLOEXEC, 20) for end in ends]
    for end in ends:
        os.close(end)
    return high


class Browser:
    """One page, and everything that it asked for or complained about."""

    def __init__(self):
        # Helpers of a killed browser may still write into it while it is taken away.
        self.folder = tempfile.TemporaryDirectory(ignore_cleanup_errors=True)
        (commands, self.to_browser), (self.from_browser, answers) = high_pipe(), high_pipe()

        def connect():
            os.dup2(commands, 3)
            os.dup2(answers, 4)

        self.process = subprocess.Popen(
            [program(), "--headless", "--no-sandbox", "--disable-gpu", "--hide-scrollbars",
             "--remote-debugging-pipe", f"--user-data-dir={self.folder.name}"],
            preexec_fn=connect, pass_fds=(3, 4), stdout=subprocess.DEVNULL,
            stderr=subprocess.DEVNULL, start_new_session=True)
        os.close(commands)
        os.close(answers)
        self.events, self.bytes, self.last, self.session = [], b"", 0, None
        target = self.call("Target.createTarget", url="about:blank")["targetId"]
        self.session = self.call("Target.attachToTarget", targetId=target,
                                 flatten=True)["sessionId"]
        for domain in ("Page", "Runtime", "Log", "Network"):
            self.call(f"{domain}.enable")

    def close(self):
        for end in (self.to_browser, self.from_browser):
            os.close(end)
        os.killpg(self.process.pid, signal.SIGKILL)
        self.process.wait()
        self.folder.cleanup()

    def next_message(self):
        deadline = time.monotonic() + PATIENCE
        while b"\0" not in self.bytes:
            ready = select.select([self.from_browser], [], [], deadline - time.monotonic())[0]
            more = os.read(self.from_browser, 1 << 20) if ready else b""
            if not more:
                raise AssertionError("the browser does not answer")
            self.bytes += more
        message, _, self.bytes = self.bytes.partition(b"\0")
        return json.loads(message)

    def call(self, method, **parameters):
        self.last += 1
        request = {"id": self.last, "method": method, "params": parameters}
        if self.session:
            request["sessionId"] = self.session
        data = json.dumps(request).encode() + b"\0"
        while data:
            data = data[os.write(self.to_browser, data):]
        while True:
            message = self.next_message()
            if message.get("id") == self.last:
                if "error" in message:
                    raise AssertionError(f"{method}: {message['error']}")
                return message["result"]
            self.events.append(message)

    def open(self, path):
        self.events.clear()
        self.call("Page.navigate", url=path.as_uri())
        while not any(event["method"] == "Page.loadEventFired" for event in self.events):
            self.events.append(self.next_message())
        self.run("0")  # what happened until now has been told

    def run(self, script):
        """The value of a script."""
        answer = self.call("Runtime.evaluate", expression=script, returnByValue=True)
        if "exceptionDetails" in answer:
            raise AssertionError(answer["exceptionDetails"])
        return answer["result"].get("value")

    def complaints(self):
        return [event["params"] for event in self.events
                if event["method"] in ("Log.entryAdded", "Runtime.consoleAPICalled",
                                       "Runtime.exceptionThrown")]

    def loaded(self):
        """What the page asked for, itself and what it holds aside."""
        urls = [event["params"]["request"]["url"] for event in self.events
                if event["method"] == "Network.requestWillBeSent"]
        return [url for url in urls[1:] if not url.startswith("data:")]

    def show(self, *, width, scheme="light", media="screen"):
        self.call("Emulation.setDeviceMetricsOverride", width=width, height=900,
                  deviceScaleFactor=1, mobile=False)
        self.call("Emulation.setEmulatedMedia", media=media,
                  features=[{"name": "prefers-color-scheme", "value": scheme}])

    def picture(self):
        shot = self.call("Page.captureScreenshot", format="png", captureBeyondViewport=True)
        return base64.b64decode(shot["data"])
