#!/usr/bin/env python3
"""Opens reports in a browser, clicks, types and looks at what is there.

report_browser.py CHROMIUM FLTOOL KILNBATCH MAKE_SAMPLES [FOLDER FOR SCREENSHOTS]
report_browser.py --time CHROMIUM PAGE: prints how many seconds the page takes to open
"""
import base64
import json
import os
import pathlib
import select
import shutil
import struct
import subprocess
import sys
import tempfile
import time

LIMIT = 30  # seconds for whatever is waited for


class Browser:
    """Chromium without a window, spoken to through a pipe; notes what a page must not do."""

    def __init__(self, program, profile):
        to_browser, self._out = os.pipe()
        self._in, from_browser = os.pipe()

        def own_pipes():  # the browser reads 3 and writes 4
            inner, outer = os.dup(to_browser), os.dup(from_browser)
            os.dup2(inner, 3)
            os.dup2(outer, 4)

        self._process = subprocess.Popen(
            [program, "--headless", "--no-sandbox", "--remote-debugging-pipe", "--disable-gpu",
             "--no-first-run", "--disable-background-networking", "--disable-component-update",
             "--disable-dev-shm-usage", "--hide-scrollbars", "--force-device-scale-factor=1",
             f"--user-data-dir={profile}", "about:blank"],
            preexec_fn=own_pipes, close_fds=False, stdout=subprocess.DEVNULL, stderr=subprocess.DEVNULL)
        os.close(to_browser)
        os.close(from_browser)
        self._rest, self._last, self._session = b"", 0, None
        self._events, self.wrongs = [], []
        target = self.call("Target.createTarget", url="about:blank")["targetId"]
        self._session = self.call("Target.attachToTarget", targetId=target, flatten=True)["sessionId"]
        for domain in ("Page", "Runtime", "Log", "Network"):
            self.call(domain + ".enable")
        self.resize(1280, 1000)

    def close(self):
        self._session = None
        try:
            self.call("Browser.close")
            self._process.wait(LIMIT)
        except Exception:
            self._process.kill()
            self._process.wait()

    def _read(self, until):
        while b"\0" not in self._rest:
            if not select.select([self._in], [], [], max(until - time.monotonic(), 0))[0]:
                raise TimeoutError("the browser does not answer")
            got = os.read(self._in, 1 << 20)
            if not got:
                raise EOFError("the browser has ended")
            self._rest += got
        message, self._rest = self._rest.split(b"\0", 1)
        message = json.loads(message)
        if "method" in message:
            self._note(message["method"], message["params"])
        return message

    def _note(self, method, params):
        self._events.append(method)
        if method == "Runtime.exceptionThrown":
            self.wrongs.append("exception: " + json.dumps(params["exceptionDetails"])[:600])
        elif method == "Runtime.consoleAPICalled" and params["type"] in ("error", "warning", "assert"):
            self.wrongs.append("console: " + json.dumps(params["args"])[:600])
        elif method == "Log.entryAdded" and params["entry"]["level"] in ("error", "warning"):
            self.wrongs.append("log: " + params["entry"]["text"] + " " + params["entry"].get("url", ""))
        elif method == "Page.javascriptDialogOpening":
            self.wrongs.append("a dialog: " + params["message"])
        elif method == "Network.requestWillBeSent":
            url = params["request"]["url"]
            if not url.startswith(("file:", "data:", "about:")):
                self.wrongs.append("a request: " + url)

    def call(self, method, **params):
        self._last += 1
        message = {"id": self._last, "method": method, "params": params}
        if self._session:
            message["sessionId"] = self._session
        os.write(self._out, json.dumps(message).encode() + b"\0")
        until = time.monotonic() + LIMIT
        while True:
            answer = self._read(until)
            if answer.get("id") == self._last:
                if "error" in answer:
                    raise RuntimeError(f"{method}: {answer['error']}")
                return answer["result"]

    def open(self, path, part=""):
        """Gives the seconds until the page is loaded and drawn."""
        self.call("Page.navigate", url="about:blank")  # another part of the same page would not be loaded
        self.wait("location.href === 'about:blank' && document.readyState === 'complete'")
        begun = time.monotonic()
        self._events.clear()
        self.call("Page.navigate", url=pathlib.Path(path).resolve().as_uri() + part)
        while "Page.loadEventFired" not in self._events:
            self._read(begun + LIMIT)
        self.js("new Promise(done => requestAnimationFrame(() => requestAnimationFrame(() => done(1))))")
        return time.monotonic() - begun

    def js(self, expression):
        answer = self.call("Runtime.evaluate", expression=expression, returnByValue=True, awaitPromise=True)
        if "exceptionDetails" in answer:
            raise RuntimeError(f"{expression}: {answer['exceptionDetails']}")
        return answer["result"].get("value")

    def wait(self, expression):
        until = time.monotonic() + LIMIT
        while not self.js(f"!!({expression})"):
            if time.monotonic() > until:
                raise TimeoutError("never true: " + expression)
            time.sleep(0.02)

    def click(self, selector):
        box = self.js("""(() => { const it = document.querySelector(%s); it.scrollIntoView({block: 'center', behavior: 'instant'});
            const box = it.getBoundingClientRect(); return [box.left + box.width / 2, box.top + box.height / 2]; })()""" % json.dumps(selector))
        for kind in ("mouseMoved", "mousePressed", "mouseReleased"):
            self.call("Input.dispatchMouseEvent", type=kind, x=box[0], y=box[1], button="left", clickCount=1)

    def key(self, name):
        code = {"Enter": 13, "Escape": 27, "ArrowDown": 40, "ArrowUp": 38, "ArrowRight": 39, "ArrowLeft": 37, "/": 191, "Tab": 9}[name]
        text = {"Enter": "\r", "/": "/"}.get(name)
        self.call("Input.dispatchKeyEvent", type="keyDown", key=name, windowsVirtualKeyCode=code, **({"text": text} if text else {}))
        self.call("Input.dispatchKeyEvent", type="keyUp", key=name, windowsVirtualKeyCode=code)

    def type(self, text):
        self.call("Input.insertText", text=text)

    def resize(self, width, height):
        self.call("Emulation.setDeviceMetricsOverride", width=width, height=height, deviceScaleFactor=1, mobile=False)

    def picture(self, path, whole=True):
        shot = self.call("Page.captureScreenshot", format="png", captureBeyondViewport=whole)
        pathlib.Path(path).write_bytes(base64.b64decode(shot["data"]))


def record(opcode, body):
    body += b"\0" * (-len(body) % 4)
    return struct.pack(">HH", opcode, 4 + len(body)) + body


MARKUP = "</script><script>window.owned=1</script><img src=x onerror=\"window.owned=1\">"
NAME = MARKUP + "'\"`&amp;{0}${x}\u202egnp.\u2028\x01\x1b"
ARABIC = "\u0645\u0628\u0646\u0649"


def hostile():
    """A file whose texts would like to be something else."""
    header = bytearray(320)
    header[0:8] = b"<b>&'\"\xff\xfe"
    struct.pack_into(">ii", header, 8, 1580, 1)
    header[16:48] = b"<script>window.owned=1</script>\0"
    struct.pack_into(">h", header, 118, 1)
    texts = [NAME.encode(), b"<!--<script>", b"__proto__", ARABIC.encode(), b"\xff\xfe\xc0\x80"]
    groups = b""
    for text in texts:
        groups += record(2, text[:7].ljust(40, b"\0")) + record(33, text + b"\0") + record(31, b"<h1>" + text + b"\n]]>\0")
    return (record(1, bytes(header)) + record(64, b"\"><svg onload=window.owned=1>.rgb".ljust(200, b"\0") + bytes(12)) +
            record(10, b"") + groups + record(63, b"javascript:window.owned=1//<i>.flt".ljust(200, b"\0") + bytes(12)) + record(11, b""))


def main():
    chromium, fltool, kilnbatch, make_samples = sys.argv[1:5]
    shots = pathlib.Path(sys.argv[5]) if len(sys.argv) > 5 else None
    place = pathlib.Path(tempfile.mkdtemp(prefix="report "))
    browser, wrongs = None, []

    def same(what, got, wanted):
        if got != wanted:
            wrongs.append(f"{what}: {got!r}, not {wanted!r}")

    def true(what, condition):
        same(what, bool(condition), True)

    def run(*words):
        subprocess.run([str(word) for word in words], check=True, stdout=subprocess.DEVNULL, timeout=120)

    def shot(name, whole=True):
        if shots:
            shots.mkdir(parents=True, exist_ok=True)
            browser.picture(shots / (name + ".png"), whole)

    try:
        models = place / "models"
        run(make_samples, models)
        for folder in [entry for entry in models.iterdir() if entry.is_dir()]:  # a few models are enough
            shutil.rmtree(folder)
        (models / "it's <b>&\"x\".flt").write_bytes(hostile())
        run(fltool, "report", models, "-o", place / "few.html", "--kilnbatch", kilnbatch)
        run(make_samples, "--city", 30, place / "city")
        run(fltool, "report", place / "city", "-o", place / "city.html", "--lang", "zh")
        run(make_samples, "--city", 300, place / "large")
        run(fltool, "report", place / "large", "-o", place / "large.html")
        browser = Browser(chromium, place / "profile")
        all_of = lambda selector: f"document.querySelectorAll({json.dumps(selector)})"
        texts = lambda selector: browser.js(f"[...{all_of(selector)}].map(each => each.textContent)")
        count = lambda selector: browser.js(all_of(selector) + ".length")

        # All models: sorting, filtering, both languages, both themes.
        browser.open(place / "few.html")
        same("language", browser.js("document.documentElement.lang"), "en")
        faces = lambda: [int(each.replace(",", "")) for each in texts("#table-models td:nth-child(5)")]
        browser.click("#table-models [data-sort=faces]")
        true("sorted from the top", len(faces()) == 4 and faces() == sorted(faces(), reverse=True) and faces()[0] > faces()[3])
        browser.click("#table-models [data-sort=faces]")
        same("sorted from the bottom", faces(), sorted(faces()))
        same("said to be sorted", browser.js("document.querySelector('[data-sort=faces]').parentNode.ariaSort"), "ascending")
        browser.key("/")
        browser.type("AIRP")
        same("found by its name", texts("#table-models td:nth-child(1)"), ["airport.flt"])
        browser.key("Escape")
        same("found without a search", count("#table-models tbody tr"), 4)
        shot("models-en-light")
        background = lambda: browser.js("getComputedStyle(document.body).backgroundColor")
        light = background()
        for _ in range(2):
            browser.click("#theme")
        true("dark is not light", background() != light)
        browser.click("#language-zh")
        same("language", browser.js("document.documentElement.lang"), "zh-CN")
        true("headings in Chinese", "全部模型" in texts("h2"))
        shot("models-zh-dark")

        # A model: pictures, the hierarchy by mouse and keyboard, search.
        browser.click("#table-models a[href='#m0']")
        browser.wait("document.querySelector('#icicle')")
        same("the model", texts("h1"), ["airport.flt"])
        true("pictures", count("figure img") >= 6)
        same("pictures that show", browser.js("[...document.images].filter(each => each.naturalWidth < 16).length"), 0)
        shot("model-zh-dark")
        browser.click("#language-en")
        same("title", browser.js("document.title"), "airport.flt \u2013 OpenFlight report")
        boxes = "#icicle [data-node]"
        before = count(boxes)
        widest = browser.js("[...%s].slice(1).sort((a, b) => b.getBBox().width - a.getBBox().width)[0].dataset.node" % all_of(boxes))
        browser.click(f"#icicle [data-node='{widest}'] rect")
        true("zoomed in", count(boxes) < before and count("#icicle [data-path] bdi") >= 2)
        node = "document.activeElement.dataset.node"
        same("keyboard is at it", browser.js(node), widest)
        browser.key("ArrowDown")
        child = browser.js(node)
        true("down to a child", child != widest)
        browser.key("ArrowUp")
        same("and up", browser.js(node), widest)
        browser.key("Escape")
        true("zoomed out", count(boxes) > 1 and count("#icicle [data-path] bdi") < 3)
        browser.click("#icicle [data-action=all]") if not browser.js("document.querySelector('[data-action=all]').disabled") else None
        same("all of it", count(boxes), before)
        widths = lambda: browser.js("[...%s].map(each => each.getAttribute('width')).join()" % all_of("#icicle rect"))
        by_faces = widths()
        browser.click("#icicle [data-measure=bytes]")
        true("other widths by bytes", widths() != by_faces)
        true("steps", count("#steps-chart .step") >= 2)
        rows = count("tbody tr")
        browser.key("/")
        browser.type("tower")
        true("matches are counted", browser.js("parseInt(document.querySelector('#matches').textContent)") >= 1)
        true("matches in the picture", count("#icicle .match") >= 1)
        true("tables follow", 0 < count("tbody tr") < rows)
        browser.key("Enter")
        true("Enter goes there", "tower" in browser.js("document.activeElement.getAttribute('aria-label')"))
        browser.key("/")
        browser.key("Escape")
        for _ in range(2):
            browser.click("#theme")
        shot("model-en-light")
        browser.call("Emulation.setEmulatedMedia", media="print")
        same("no buttons on paper", browser.js("getComputedStyle(document.querySelector('#bar')).display"), "none")
        shot("model-print")
        browser.call("Emulation.setEmulatedMedia", media="")

        # Texts that would like to be something else stay texts.
        browser.open(place / "few.html", "#m3")
        same("hostile name", texts("h1"), ["it's <b>&\"x\".flt"])
        same("nothing ran", browser.js("window.owned === undefined && {}.polluted === undefined"), True)
        same("elements of theirs", count("main h1 b, main td b, main i:not([class]), main img:not([src^='data:']), main script, main td svg"), 0)
        same("scripts", count("script"), 2)
        shown = NAME.replace("\u202e", "\u27e8U+202E\u27e9").replace("\u2028", "\u27e8U+2028\u27e9").replace("\x01", "\u2401").replace("\x1b", "\u241b")
        true("the name as it is", any(shown in text for text in texts("#comments ~ * td")))
        true("right to left", ARABIC in texts("td bdi"))
        true("no way out", browser.js("[...document.links].every(each => /^#/.test(each.getAttribute('href')))"))
        true("the reference is missing", count("#references ~ * td .error") == 1)
        shot("hostile")

        # Many models have their details beside the page.
        # The part of a large graph that is shown hangs together.
        browser.open(place / "large.html")
        same("a part of the graph", count("#graph circle"), 80)
        true("with what joins it", count("#graph path") >= 79)
        shot("large-en-light", False)
        browser.open(place / "city.html")
        same("opens in Chinese", browser.js("document.documentElement.lang"), "zh-CN")
        true("a graph", count("#graph circle") >= 20 and count("#graph path") >= 20)
        shot("city-zh-light")
        browser.click("#table-models tbody tr a")
        browser.wait("document.querySelector('#icicle')")
        browser.js("location.hash = '#m5'")
        browser.wait("document.querySelector('#icicle') && document.querySelector('h1').textContent.endsWith('.flt')")
        browser.open(place / "large.html", "#m290")
        browser.wait("document.querySelector('#icicle')")
        name = texts("h1")[0]
        browser.js("location.hash = '#m289'")
        browser.wait(f"document.querySelector('#icicle') && document.querySelector('h1').textContent !== '{name}'")
        same("the file of both is loaded", count("script[src]:not([src$='/0.js'])"), 1)
        same("and no other", count("script[src]"), 1)
        first = place / "large.files" / "0.js"
        first.write_text(first.read_text().replace('fltoolDetails(4, "', 'fltoolDetails(4, "another/', 1))
        browser.js("location.hash = '#m4'")
        browser.wait("document.querySelector('p.error')")
        true("another report's details are not shown", count("#icicle") == 0)
        wrongs += browser.wrongs
        first.unlink()
        browser.open(place / "large.html", "#m4")
        browser.wait("document.querySelector('p.error')")
        true("what is not there", "0.js" in texts("p.error")[0] and count("#icicle") == 0)
        wrongs += [wrong for wrong in browser.wrongs if not wrong.endswith("/large.files/0.js")]
    except Exception as error:
        wrongs.append(f"{type(error).__name__}: {error}")
        if browser:
            wrongs += browser.wrongs
    finally:
        if browser:
            browser.close()
        shutil.rmtree(place, ignore_errors=True)
    for wrong in wrongs:
        print(wrong)
    return 1 if wrongs else 0


def time_to_open():
    profile = tempfile.mkdtemp(prefix="report ")
    browser = Browser(sys.argv[2], profile)
    try:
        print(browser.open(sys.argv[3]))
        return 1 if browser.wrongs else 0
    finally:
        browser.close()
        shutil.rmtree(profile, ignore_errors=True)


sys.exit(time_to_open() if sys.argv[1] == "--time" else main())
