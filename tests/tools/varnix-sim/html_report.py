#!/usr/bin/env python3
"""Checks of the simulator's HTML report of the tank example.

  html_report.py outline SIM WORKDIR GOLDEN [--no-dot] [--update]
      Runs the tank example into a page and compares the page's outline (sections, headings, one
      plot per port, its value line, quality bands with their titles, stimulus marks) with GOLDEN.
      Also checks the page is self-contained. --no-dot runs the simulator where Graphviz's dot
      cannot be found, so the page takes the plain graph layout. --update rewrites GOLDEN.

  html_report.py browser SIM WORKDIR [--picture FILE.png]
      Opens the page in headless Chromium with every network name unresolvable, takes a
      screenshot, checks that it is not blank and that the page asked for no network resource
      (from Chromium's net log; a page with a remote picture is opened first to show that the check
      sees such a request). --picture keeps the screenshot. Exits 77 (skipped) without Chromium.

  html_report.py verdicts SIM WORKDIR
      Runs `varnix-sim test --html` on the tank example's scenario and a failing one, and checks
      that the page lists each scenario's verdict and marks each failed expectation on the plot of
      its port, in the run of its scenario, with its cycle, expected and actual value.

Everything runs in a fresh temporary directory and is bounded in time.
"""
import html.parser
import json
import os
import re
import shutil
import struct
import subprocess
import sys
import tempfile
import zlib

SKIP = 77
TANK = ["run", "examples/tank/TankProgram.prog.config", "--stimulus", "examples/tank/tank.stimulus.csv"]


def fail(message):
    print("html_report: " + message, file=sys.stderr)
    sys.exit(1)


def write_page(sim, workdir, directory, env=None):
    page = os.path.join(directory, "tank.html")
    result = subprocess.run([sim] + TANK + ["--trace", page], cwd=workdir, env=env, capture_output=True,
                            text=True, timeout=120)
    if result.returncode != 0:
        fail("varnix-sim failed ({}): {}".format(result.returncode, result.stderr))
    with open(page, encoding="utf-8") as file:
        return page, file.read()


class Outline(html.parser.HTMLParser):
    """The page as lines: what a reader finds in it, leaving out figures that vary from run to run
    (wall time, time per cycle) and the graph's drawing, which depends on the layout used."""

    def __init__(self):
        super().__init__(convert_charrefs=True)
        self.lines = []
        self.stack = []
        self.text = None
        self.title_of = None
        self.in_graph = 0

    def handle_starttag(self, tag, attrs):
        a = dict(attrs)
        cls = a.get("class", "")
        if tag not in ("meta", "br", "path", "rect", "line", "img", "input"):
            self.stack.append(tag)
        if self.in_graph:
            if tag == "svg":
                self.in_graph += 1
            return
        if tag == "section":
            self.lines.append("section " + (a.get("id") or ""))
        elif tag in ("h1", "h2", "h3"):
            self.text = [tag]
        elif tag == "svg" and "graph" in cls.split():
            self.lines.append("svg graph")
            self.in_graph = 1
        elif tag == "svg":
            self.lines.append("svg {} port={}".format(cls, a.get("data-port", "")))
        elif tag == "path" and cls.startswith("value"):
            self.lines.append("path " + cls)
        elif tag == "rect" and (cls.startswith("quality") or cls.startswith("band")):
            self.title_of = "rect " + cls
        elif tag == "g" and cls in ("stimulus", "failure"):
            self.title_of = "mark " + cls
        elif tag == "title" and self.title_of:
            self.text = [self.title_of + ":"]
        elif tag == "th":
            self.text = ["column"]

    def handle_endtag(self, tag):
        if self.in_graph:
            if tag == "svg":
                self.in_graph -= 1
        elif self.text is not None and tag in ("h1", "h2", "h3", "title", "th"):
            self.lines.append(" ".join(self.text[:1] + ["".join(self.text[1:]).strip()]))
            self.text = None
            if tag == "title":
                self.title_of = None
        while self.stack and self.stack.pop() != tag:
            pass

    def handle_data(self, data):
        if self.text is not None and not self.in_graph:
            self.text.append(data)


def check_self_contained(text):
    problems = []
    if "Content-Security-Policy\" content=\"default-src 'none';" not in text:
        problems.append("no content security policy forbidding loads")
    for pattern, what in [(r"https?://", "an http(s) address"), (r"\ssrc\s*=", "a src attribute"),
                          (r"<link\b", "a link element"), (r"@import", "a style import"),
                          (r"href\s*=\s*\"(?!#)", "a link leaving the page"), (r"url\((?!#)", "a style url")]:
        if re.search(pattern, text, re.IGNORECASE):
            problems.append("the page holds " + what)
    return problems


def outline(arguments):
    if len(arguments) < 3:
        fail("usage: outline SIM WORKDIR GOLDEN [--no-dot] [--update]")
    sim, workdir, golden = arguments[:3]
    with tempfile.TemporaryDirectory(prefix="html-report-") as directory:
        env = dict(os.environ)
        if "--no-dot" in arguments:
            empty = os.path.join(directory, "no-tools")
            os.mkdir(empty)
            env["PATH"] = empty
        _, text = write_page(sim, workdir, directory, env)
    problems = check_self_contained(text)
    if "--no-dot" in arguments and 'class="graph plain"' not in text:
        problems.append("without dot the graph is not in the plain layout")
    parser = Outline()
    parser.feed(text)
    actual = "\n".join(parser.lines) + "\n"
    if "--update" in arguments:
        with open(golden, "w", encoding="utf-8") as file:
            file.write(actual)
    with open(golden, encoding="utf-8") as file:
        expected = file.read()
    if actual != expected:
        import difflib
        problems.append("the page's outline differs from {}:\n{}".format(golden, "".join(
            difflib.unified_diff(expected.splitlines(True), actual.splitlines(True), "expected", "actual"))))
    if problems:
        fail("\n".join(problems))
    print("html_report: the page's outline matches {} ({} lines) and it loads nothing".format(
        golden, len(parser.lines)))


def read_png(path):
    """Width, height and rows of RGB(A) pixels of an 8-bit PNG, with zlib alone."""
    with open(path, "rb") as file:
        data = file.read()
    if data[:8] != b"\x89PNG\r\n\x1a\n":
        fail(path + " is not a PNG")
    at, idat, width, height, kind = 8, b"", 0, 0, 0
    while at < len(data):
        length, name = struct.unpack(">I4s", data[at:at + 8])
        body = data[at + 8:at + 8 + length]
        if name == b"IHDR":
            width, height, depth, kind = struct.unpack(">IIBB", body[:10])
            if depth != 8 or kind not in (2, 6) or body[12] != 0:
                fail("{}: PNG of depth {} and colour type {} (interlace {}) is not read here".format(
                    path, depth, kind, body[12]))
        elif name == b"IDAT":
            idat += body
        at += 12 + length
    channels = 3 if kind == 2 else 4
    raw = zlib.decompress(idat)
    stride = width * channels
    rows, previous = [], bytearray(stride)
    for y in range(height):
        start = y * (stride + 1)
        mode, line = raw[start], bytearray(raw[start + 1:start + 1 + stride])
        for i in range(stride):
            left = line[i - channels] if i >= channels else 0
            up = previous[i]
            upper_left = previous[i - channels] if i >= channels else 0
            if mode == 1:
                line[i] = (line[i] + left) & 0xFF
            elif mode == 2:
                line[i] = (line[i] + up) & 0xFF
            elif mode == 3:
                line[i] = (line[i] + (left + up) // 2) & 0xFF
            elif mode == 4:
                p = left + up - upper_left
                pa, pb, pc = abs(p - left), abs(p - up), abs(p - upper_left)
                line[i] = (line[i] + (left if pa <= pb and pa <= pc else up if pb <= pc else upper_left)) & 0xFF
        rows.append(bytes(line))
        previous = line
    return width, height, channels, rows


CHROMIUM_FLAGS = [
    "--headless", "--no-sandbox", "--disable-gpu", "--disable-quic", "--no-first-run",
    "--disable-background-networking", "--disable-component-update", "--disable-sync",
    "--disable-default-apps", "--disable-extensions", "--no-pings", "--disable-breakpad",
    "--disable-domain-reliability", "--disable-client-side-phishing-detection",
    "--allow-browser-signin=false",
    "--disable-features=OptimizationHints,OptimizationGuideModelDownloading,OptimizationHintsFetching,"
    "MediaRouter,NetworkTimeServiceQuerying,AutofillServerCommunication,Translate",
    # No name resolves: nothing the browser or the page might ask for leaves the machine.
    "--host-resolver-rules=MAP * ~NOTFOUND",
    "--hide-scrollbars",
]


def chromium():
    for name in ("chromium", "chromium-browser"):
        path = shutil.which(name)
        if path:
            return path
    return None


def open_page(browser, page, directory, name):
    """Screenshot and net log of `page` in a fresh profile."""
    shot = os.path.join(directory, name + ".png")
    log = os.path.join(directory, name + ".netlog.json")
    profile = tempfile.mkdtemp(prefix="profile-", dir=directory)
    command = [browser] + CHROMIUM_FLAGS + ["--user-data-dir=" + profile, "--window-size=1100,900",
                                            "--log-net-log=" + log, "--screenshot=" + shot,
                                            "file://" + os.path.abspath(page)]
    try:
        result = subprocess.run(command, capture_output=True, text=True, timeout=150)
    except subprocess.TimeoutExpired:
        fail("chromium did not finish within 150 s")
    if not os.path.exists(shot):
        fail("chromium wrote no screenshot (status {}):\n{}".format(result.returncode, result.stderr[-2000:]))
    return shot, log


def page_requests(log):
    """Network requests the page made: every URL request for a network scheme that the browser did
    not start on its own (its own carry the initiator "not an origin")."""
    with open(log, encoding="utf-8") as file:
        text = file.read()
    # Chromium may end the log without its closing brackets when it is cut short.
    try:
        data = json.loads(text)
    except json.JSONDecodeError:
        data = json.loads(text.rstrip().rstrip(",") + "]}")
    names = {number: name for name, number in data["constants"]["logEventTypes"].items()}
    requests = []
    for event in data.get("events", []):
        params = event.get("params") or {}
        if names.get(event.get("type")) == "URL_REQUEST_START_JOB" and "url" in params:
            url = params["url"]
            if re.match(r"(https?|wss?|ftp):", url) and params.get("initiator") != "not an origin":
                requests.append(url)
    return requests


def browser(arguments):
    if len(arguments) < 2:
        fail("usage: browser SIM WORKDIR [--picture FILE.png]")
    sim, workdir = arguments[:2]
    picture = arguments[arguments.index("--picture") + 1] if "--picture" in arguments else None
    path = chromium()
    if path is None:
        print("html_report: SKIPPED: chromium is not installed (scripts/setup --browser installs it)")
        sys.exit(SKIP)
    with tempfile.TemporaryDirectory(prefix="html-report-") as directory:
        # First a page that does ask for a remote picture: the net log must show it, or the check
        # below could not see a request either.
        canary = os.path.join(directory, "canary.html")
        with open(canary, "w", encoding="utf-8") as file:
            file.write('<!DOCTYPE html><html><body><img src="http://picture.invalid/x.png"></body></html>\n')
        _, log = open_page(path, canary, directory, "canary")
        if not any("picture.invalid" in url for url in page_requests(log)):
            fail("the net log does not show the test page's remote picture: the check cannot see requests")

        page, _ = write_page(sim, workdir, directory)
        shot, log = open_page(path, page, directory, "tank")
        requests = page_requests(log)
        if requests:
            fail("the page asked for network resources: " + ", ".join(requests))
        width, height, channels, rows = read_png(shot)
        colours, inked = set(), 0
        for row in rows[::2]:
            for x in range(0, width * channels, channels * 2):
                pixel = row[x:x + 3]
                colours.add(pixel)
                inked += pixel != b"\xff\xff\xff"
        sampled = len(rows[::2]) * len(range(0, width * channels, channels * 2))
        # The tank page shows text, the blue value lines and green, red and orange quality bands.
        wanted = {"green": (0x43, 0xA0, 0x47), "red": (0xE5, 0x39, 0x35), "orange": (0xFB, 0x8C, 0x00)}
        missing = [name for name, rgb in wanted.items() if bytes(rgb) not in colours]
        if len(colours) < 16 or inked < sampled // 50 or missing:
            fail("the screenshot looks blank or incomplete: {} colours, {} of {} pixels not white, missing {}".format(
                len(colours), inked, sampled, missing))
        if picture:
            shutil.copyfile(shot, picture)
        print("html_report: screenshot {}x{}, {} colours, {:.0%} inked, no network request{}".format(
            width, height, len(colours), inked / sampled, "; kept as " + picture if picture else ""))


def verdicts(arguments):
    if len(arguments) < 2:
        fail("usage: verdicts SIM WORKDIR")
    sim, workdir = arguments[0], arguments[1]
    failing = "tests/tools/varnix-sim/documents/tank.failing.scenario.csv"
    passing = "examples/tank/tank.scenario.csv"
    with tempfile.TemporaryDirectory() as directory:
        page = os.path.join(directory, "verdicts.html")
        result = subprocess.run([sim, "test", "examples/tank/TankProgram.prog.config", failing, passing,
                                 "--html", page], cwd=workdir, capture_output=True, text=True, timeout=120)
        if result.returncode != 1:
            fail("varnix-sim test should fail (1), got {}: {}".format(result.returncode, result.stderr))
        if not result.stdout.endswith("2 scenarios, 41 expectations: 38 passed, 3 failed; FAILED (1 of 2 scenarios)\n"):
            fail("the verdicts on standard output changed with --html:\n" + result.stdout)
        with open(page, encoding="utf-8") as file:
            text = file.read()
    problems = check_self_contained(text)
    rows = re.findall(r'<tr><td><a href="#(run\d+)">([^<]*)</a></td><td class="(pass|fail)">', text)
    if rows != [("run1", failing, "fail"), ("run2", passing, "pass")]:
        problems.append("verdict rows: {}".format(rows))
    # Each run's plots, in order: a failure mark must lie in the plot of level in the failing run.
    plots = re.split(r'(?=<[a-z]+[^>]* id="run\d+-port\d+")', text)
    marks = []
    for plot in plots:
        anchor = re.match(r'<[^>]* id="(run\d+-port\d+)"', plot)
        for title in re.findall(r'<g class="failure">.*?<title>([^<]*)</title>', plot):
            marks.append((anchor.group(1) if anchor else None, title))
    level = re.search(r'<a href="#(run1-port\d+)">level</a>', text)
    expected = [
        "after cycle 3: level expected 25.5~0.1, was 25 ({}:5)".format(failing),
        "after cycle 9: level expected quality Bad Overrange, was quality Good ({}:6)".format(failing),
        "after cycle 9: level expected time T#90ms, was time T#80ms ({}:6)".format(failing),
    ]
    found = [title for anchor, title in marks if level and anchor == level.group(1)]
    for line in expected:
        if not any(line in title for title in found):
            problems.append("no failure mark on level's plot of the failing run: " + line)
    if len(found) != len(marks):
        problems.append("failure marks outside level's plot of the failing run: {}".format(marks))
    if problems:
        fail("the verdicts page:\n  " + "\n  ".join(problems))
    print("html_report: verdicts listed, {} failure marks on level's plot".format(len(found)))


if __name__ == "__main__":
    commands = {"outline": outline, "browser": browser, "verdicts": verdicts}
    if len(sys.argv) < 2 or sys.argv[1] not in commands:
        fail("usage: html_report.py outline|browser|verdicts ... (see the top of the file)")
    commands[sys.argv[1]](sys.argv[2:])
