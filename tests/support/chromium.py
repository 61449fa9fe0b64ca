"""A browser for tests: Chromium without a window, driven over its debugging pipe. Python's standard library is enough.

    with Browser() as browser:
        browser.open("out/walk.html")
        assert browser.evaluate("document.title") == "walk"
        browser.press("Space")
        assert browser.problems() == []

Timeouts are in seconds; running out of one raises TimeoutError. A page that throws raises PageError, a browser that
ends or does not start BrowserError.
"""

import base64
import fcntl
import json
import os
import pathlib
import select
import shutil
import signal
import subprocess
import tempfile
import time

NAMES = ("chromium", "chromium-browser", "google-chrome")

# Key: code and virtual key code. Letters and digits follow a rule.
KEYS = {
    "Space": (" ", "Space", 32), "Enter": ("Enter", "Enter", 13), "Tab": ("Tab", "Tab", 9),
    "Escape": ("Escape", "Escape", 27), "Home": ("Home", "Home", 36), "End": ("End", "End", 35),
    "ArrowLeft": ("ArrowLeft", "ArrowLeft", 37), "ArrowUp": ("ArrowUp", "ArrowUp", 38),
    "ArrowRight": ("ArrowRight", "ArrowRight", 39), "ArrowDown": ("ArrowDown", "ArrowDown", 40),
    "PageUp": ("PageUp", "PageUp", 33), "PageDown": ("PageDown", "PageDown", 34),
    "Backspace": ("Backspace", "Backspace", 8), "Delete": ("Delete", "Delete", 46),
    ",": (",", "Comma", 188), ".": (".", "Period", 190), "/": ("/", "Slash", 191), "?": ("?", "Slash", 191),
    "[": ("[", "BracketLeft", 219), "]": ("]", "BracketRight", 221),
}
TEXT_OF_KEYS = {"Space": " ", "Enter": "\r"}
MODIFIERS = {"Alt": 1, "Control": 2, "Meta": 4, "Shift": 8}

# Warnings about the test's own screenshots in software drawing.
NOISE = ("GL Driver Message", "ReadPixels")


class BrowserError(Exception):
    pass


class PageError(Exception):
    pass


def find():
    """The path of a Chromium that is installed, or None."""
    return next((path for path in map(shutil.which, NAMES) if path), None)


class Browser:
    """One page in a browser of its own: new profile, no network use of its own accord.

    entries: what console, log, exceptions and dialogs of the page said since the last open(), as dictionaries of
        source ("console", "log", "exception", "dialog"), level and text.
    requests: the addresses that the page asked for since the last open().
    """

    def __init__(self, width=1280, height=720, flags=(), timeout=60):
        self.timeout = timeout
        self.entries = []
        self.requests = []
        self._last_id = 0
        self._answers = {}
        self._loaded = False
        self._gone = None
        self._unread = b""
        path = find()
        if path is None:
            raise BrowserError("chromium is not installed")
        self._profile = tempfile.mkdtemp(prefix="chromium_")
        try:
            self._start(path, flags)
            self._session = None
            target = self._call("Target.createTarget", url="about:blank")["targetId"]
            self._session = self._call("Target.attachToTarget", targetId=target, flatten=True)["sessionId"]
            for domain in ("Page", "Runtime", "Log", "Network", "Inspector"):
                self._call(domain + ".enable")
            self.resize(width, height)
        except BaseException:
            self.close()
            raise

    def __enter__(self):
        return self

    def __exit__(self, *_):
        self.close()

    def open(self, page):
        """Loads a file or an address and waits for its load event."""
        address = str(page)
        if ":" not in address.split("/")[0]:
            address = pathlib.Path(page).resolve().as_uri()
        self._drain()
        self.entries, self.requests, self._loaded = [], [], False
        failure = self._call("Page.navigate", url=address).get("errorText")
        if failure:
            raise PageError(f"{address}: {failure}")
        self._until(lambda: self._loaded, self.timeout, f"{address} to load")

    def evaluate(self, expression, timeout=None):
        """The value of a JavaScript expression, awaited where it is a promise. Values are what JSON can hold, and NaN,
        infinities and -0 where the whole value is one."""
        answer = self._call("Runtime.evaluate", timeout, expression=expression, awaitPromise=True, returnByValue=True,
                            userGesture=True)
        if "exceptionDetails" in answer:
            raise PageError(text_of_exception(answer["exceptionDetails"]))
        result = answer["result"]
        return float(result["unserializableValue"]) if "unserializableValue" in result else result.get("value")

    def call(self, function, *arguments, timeout=None):
        """The result of a JavaScript function, as in call("(a, b) => a + b", 1, 2)."""
        return self.evaluate(f"({function})({', '.join(map(json.dumps, arguments))})", timeout)

    def wait_for(self, expression, timeout=None):
        """Evaluates until the value is true in JavaScript's sense; the value."""
        end = time.monotonic() + (timeout or self.timeout)
        while True:
            value = self.evaluate(expression)
            if value:
                return value
            if time.monotonic() > end:
                raise TimeoutError(f"waited for {expression}")
            time.sleep(0.02)

    def press(self, key, *modifiers):
        """Presses and releases a key, given as one character or as in KEYS, with modifiers such as "Control"."""
        name, code, number = KEYS.get(key) or (key, ("Key" + key.upper()) if key.isalpha() else ("Digit" + key),
                                               ord(key.upper()))
        held = sum(MODIFIERS[modifier] for modifier in modifiers)
        event = {"key": name, "code": code, "windowsVirtualKeyCode": number, "modifiers": held}
        text = TEXT_OF_KEYS.get(key, key if len(key) == 1 else "")
        typed = {"text": text} if text and not held & ~MODIFIERS["Shift"] else {}
        self._call("Input.dispatchKeyEvent", type="keyDown" if typed else "rawKeyDown", **event, **typed)
        self._call("Input.dispatchKeyEvent", type="keyUp", **event)

    def type(self, text):
        """Types text where the focus is."""
        for character in text:
            self._call("Input.dispatchKeyEvent", type="char", text=character)

    def mouse(self, kind, x, y, button="none", **more):
        """One event: "mouseMoved", "mousePressed", "mouseReleased" or "mouseWheel" (with deltaX, deltaY)."""
        held = {"left": 1, "right": 2, "middle": 4}.get(button, 0) if kind != "mouseReleased" else 0
        self._call("Input.dispatchMouseEvent", type=kind, x=x, y=y, button=button, buttons=held, **more)

    def move(self, x, y):
        self.mouse("mouseMoved", x, y)

    def click(self, x, y, button="left", count=1):
        self.mouse("mouseMoved", x, y)
        self.mouse("mousePressed", x, y, button, clickCount=count)
        self.mouse("mouseReleased", x, y, button, clickCount=count)

    def click_on(self, selector):
        """Clicks in the middle of the first element that a CSS selector finds."""
        middle = self.call("""selector => {
            const element = document.querySelector(selector);
            if (!element) return null;
            element.scrollIntoView({block: "nearest"});
            const box = element.getBoundingClientRect();
            return [box.x + box.width / 2, box.y + box.height / 2];
        }""", selector)
        if middle is None:
            raise PageError(f"no element is {selector}")
        self.click(*middle)

    def drag(self, start, end, button="left", steps=8):
        self.mouse("mouseMoved", *start)
        self.mouse("mousePressed", *start, button, clickCount=1)
        for step in range(1, steps + 1):
            self.mouse("mouseMoved", *(a + (b - a) * step / steps for a, b in zip(start, end)), button)
        self.mouse("mouseReleased", *end, button, clickCount=1)

    def wheel(self, x, y, delta):
        self.mouse("mouseWheel", x, y, deltaX=0, deltaY=delta)

    def resize(self, width, height, scale=1):
        """Makes the page's area this large, in CSS pixels of `scale` screen pixels."""
        self._call("Emulation.setDeviceMetricsOverride", width=width, height=height, deviceScaleFactor=scale,
                   mobile=False)

    def prefer(self, scheme):
        """Has pages know that the user prefers a "dark" or a "light" scheme of colours."""
        self._call("Emulation.setEmulatedMedia", features=[{"name": "prefers-color-scheme", "value": scheme}])

    def screenshot(self, path=None):
        """A PNG of the page's area, also written to a path."""
        image = base64.b64decode(self._call("Page.captureScreenshot", format="png")["data"])
        if path is not None:
            pathlib.Path(path).write_bytes(image)
        return image

    def problems(self):
        """The entries that a page without fault does not have: errors, warnings, exceptions, dialogs."""
        self._drain()
        return [entry for entry in self.entries
                if entry["level"] in ("error", "warning", "assert") and
                not all(part in entry["text"] for part in NOISE)]

    def close(self):
        """Ends the browser with all its processes and removes its profile."""
        process = getattr(self, "_process", None)
        if process:
            try:
                self._session = None
                self._call("Browser.close", 5)
                process.wait(10)
            except (BrowserError, TimeoutError, OSError, subprocess.TimeoutExpired):
                pass
            try:
                os.killpg(process.pid, signal.SIGKILL)  # the group that it leads
            except ProcessLookupError:
                pass
            process.wait()
            os.close(self._commands)
            os.close(self._replies)
            self._process = None
        shutil.rmtree(self._profile, ignore_errors=True)

    def _start(self, path, flags):
        arguments = [
            path, "--headless", "--remote-debugging-pipe", "--user-data-dir=" + self._profile,
            "--enable-unsafe-swiftshader",  # WebGL without a graphics card
            "--no-first-run", "--no-default-browser-check", "--disable-background-networking",
            "--disable-component-update", "--disable-extensions", "--disable-sync", "--disable-dev-shm-usage",
            "--force-color-profile=srgb", "--mute-audio", *flags,
        ]
        if os.geteuid() == 0:
            arguments.append("--no-sandbox")
        # The browser reads 3 and writes 4. Above 10, the copies cannot be overwritten by each other.
        commands, self._commands = os.pipe()
        self._replies, replies = os.pipe()
        ends = [fcntl.fcntl(end, fcntl.F_DUPFD_CLOEXEC, 10) for end in (commands, replies)]
        environment = dict(os.environ, HOME=self._profile)
        try:
            self._process = subprocess.Popen(
                arguments, stdin=subprocess.DEVNULL, stdout=subprocess.DEVNULL, stderr=subprocess.DEVNULL,
                close_fds=False, start_new_session=True, env=environment,
                preexec_fn=lambda: (os.dup2(ends[0], 3), os.dup2(ends[1], 4)))
        finally:
            for end in (commands, replies, *ends):
                os.close(end)

    def _call(self, method, timeout=None, **parameters):
        self._last_id += 1
        number = self._last_id
        message = {"id": number, "method": method, "params": parameters}
        if self._session is not None:
            message["sessionId"] = self._session
        self._send(message)
        self._until(lambda: number in self._answers, timeout or self.timeout, method)
        answer = self._answers.pop(number)
        if "error" in answer:
            raise BrowserError(f"{method}: {answer['error'].get('message')}")
        return answer["result"]

    def _send(self, message):
        rest = json.dumps(message).encode() + b"\0"
        try:
            while rest:
                rest = rest[os.write(self._commands, rest):]
        except BrokenPipeError:
            raise BrowserError(f"the browser ended with {self._process.poll()}") from None

    def _until(self, done, timeout, what):
        end = time.monotonic() + timeout
        while not done():
            if self._gone:
                raise BrowserError(self._gone)
            if not self._read(max(0.0, end - time.monotonic())):
                raise TimeoutError(f"waited {timeout:g} s for {what}")

    def _drain(self):
        while not self._gone and self._read(0):
            pass

    def _read(self, timeout):
        """Takes in what the browser has written; false where it writes nothing for that long."""
        if not select.select([self._replies], [], [], timeout)[0]:
            return False
        data = os.read(self._replies, 1 << 20)
        if not data:
            self._gone = f"the browser ended with {self._process.poll()}"
            return True
        *messages, self._unread = (self._unread + data).split(b"\0")
        for text in messages:
            self._take(json.loads(text))
        return True

    def _take(self, message):
        if "id" in message:
            self._answers[message["id"]] = message
            return
        event, values = message["method"], message.get("params", {})
        if event == "Page.loadEventFired":
            self._loaded = True
        elif event == "Network.requestWillBeSent":
            self.requests.append(values["request"]["url"])
        elif event == "Inspector.targetCrashed":
            self._gone = "the page's process crashed"
        elif event == "Log.entryAdded":
            entry = values["entry"]
            self._note("log", entry["level"], f"{entry['text']} {entry.get('url', '')}".strip())
        elif event == "Runtime.consoleAPICalled":
            words = (str(value.get("value", value.get("description", value["type"]))) for value in values["args"])
            self._note("console", values["type"], " ".join(words))
        elif event == "Runtime.exceptionThrown":
            self._note("exception", "error", text_of_exception(values["exceptionDetails"]))
        elif event == "Page.javascriptDialogOpening":
            self._note("dialog", "error", values["message"])
            self._last_id += 1
            self._send({"id": self._last_id, "sessionId": self._session, "method": "Page.handleJavaScriptDialog",
                        "params": {"accept": False}})

    def _note(self, source, level, text):
        self.entries.append({"source": source, "level": level, "text": text})


def text_of_exception(details):
    exception = details.get("exception", {})
    return exception.get("description") or str(exception.get("value", details["text"]))
