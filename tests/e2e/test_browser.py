"""A real browser posts a file through the form of a page, as the unit's web interface does."""

import contextlib
import json
import os
import re
import shutil
import subprocess
import time
import urllib.request

import pytest

from conftest import REPOSITORY, TYPE_MODIFIED, failure, success, told

PAGE = b"""<!DOCTYPE html><title>Upload</title>
<form method="post" enctype="multipart/form-data" action="/cgi-bin/PROGRAM">
<input type="file" name="UnitConfUpload"><button>Upload</button></form>
"""

# Stands in for the gateway and keeps what it is sent.
RECORDER = '#!/bin/busybox sh\ncat > /tmp/body\nprintf "HTTP/1.1 200 OK\\r\\nContent-Type: text/html\\n\\nkept"\n'

ARGUMENTS = ["--headless", "--no-sandbox", "--disable-gpu", "--disable-quic", "--no-first-run",
             "--disable-background-networking", "--disable-component-update", "--disable-sync",
             "--disable-dev-shm-usage"]
ELEMENT = "element-6066-11e4-a52e-4f735466cecf"  # the name that the WebDriver protocol gives elements


class Browser:
    """A page of a headless browser, told what to do over the WebDriver protocol."""

    def __init__(self, address, profile):
        self._address = f"{address}/session"
        options = {"args": [*ARGUMENTS, f"--user-data-dir={profile}"]}
        session = self._ask("", {"capabilities": {"alwaysMatch": {
            "browserName": "chrome", "goog:chromeOptions": options}}})
        self._address += "/" + session["sessionId"]

    def _ask(self, path, content=None, method=None):
        data = json.dumps(content).encode() if content is not None else None
        request = urllib.request.Request(self._address + path, data, {"Content-Type": "application/json"},
                                         method=method)
        with urllib.request.urlopen(request, timeout=60) as answer:
            return json.load(answer)["value"]

    def _element(self, selector):
        return self._ask("/element", {"using": "css selector", "value": selector})[ELEMENT]

    def upload(self, page, path):
        """Chooses the file in the page's form, sends it, and returns the text of the page that follows."""
        self._ask("/url", {"url": page})
        self._ask(f"/element/{self._element('input')}/value", {"text": path})
        self._ask(f"/element/{self._element('button')}/click", {})
        end = time.monotonic() + 30
        while self._ask("/url") == page:
            assert time.monotonic() < end
            time.sleep(0.01)
        return self._ask(f"/element/{self._element('body')}/text").encode()

    def close(self):
        self._ask("", method="DELETE")


@pytest.fixture(scope="module")
def browser(tmp_path_factory):
    if shutil.which("chromedriver") is None or shutil.which("chromium") is None:
        pytest.skip("chromium and chromium-driver are not installed")
    home = tmp_path_factory.mktemp("browser")
    environment = {**os.environ, "HOME": str(home), "TMPDIR": str(home), "XDG_CONFIG_HOME": str(home),
                   "XDG_CACHE_HOME": str(home)}
    with subprocess.Popen(["chromedriver", "--port=0"], env=environment, stdout=subprocess.PIPE,
                          stderr=subprocess.STDOUT, text=True) as driver:
        try:
            for line in driver.stdout:
                if started := re.search(r"started successfully on port (\d+)", line):
                    break
            one = Browser(f"http://127.0.0.1:{started[1]}", home / "profile")
            try:
                yield one
            finally:
                one.close()
        finally:
            driver.terminate()
            with contextlib.suppress(ValueError):
                driver.communicate(timeout=10)
    shutil.rmtree(home)


def upload(browser, unit, path, program="upload_gateway"):
    # A page of its own for each program: the browser keeps what it has seen.
    unit.write(f"/www/to_{program}.html", PAGE.replace(b"PROGRAM", program.encode()))
    return browser.upload(unit.url.replace("/cgi-bin/upload_gateway", f"/to_{program}.html"), str(path))


def test_AConfigurationFromAFormIsAppliedWhole(browser, u300):
    path = f"{REPOSITORY}/examples/unit-configuration.{u300.model}.json"
    assert upload(browser, u300, path) == success(u300)
    u300.wait_for("rebooted")
    by_browser = told(u300)
    # Without any form around it, a body is taken whole: the same configuration by the shortest way.
    with open(path, "rb") as file:
        content = file.read() + b' name="UnitConfUpload"'
    u300.reset()
    u300.run_gateway("POST", content)
    assert told(u300) == by_browser
    assert len(by_browser) > 300


@pytest.mark.parametrize("name, content_type", [
    ("unit.json", b"application/json"), ("unit.txt", b"text/plain"),
    ("unit", b"application/octet-stream"), ("unit.png", b"image/png"),
    ("Halle 1 \u00e4\".json", b"application/json")])
def test_TheContentIsCutOutOfWhateverTheBrowserPutsAroundIt(browser, u300, tmp_path, name, content_type):
    document = json.dumps({"model": u300.model, "device_name": "H\u00e4lle"}, ensure_ascii=False, indent=1).encode()
    path = tmp_path / name
    path.write_bytes(document.replace(b"\n", b"\r\n"))

    u300.write("/www/cgi-bin/recorder", RECORDER.encode(), 0o777)
    assert upload(browser, u300, path, "recorder") == b"kept"
    sent = u300.read("/tmp/body")
    quoted = name.replace('"', "%22").encode()
    form = re.fullmatch(
        rb'(------WebKitFormBoundary[0-9A-Za-z]{16})\r\nContent-Disposition: form-data; name="UnitConfUpload"; '
        rb'filename="' + re.escape(quoted) + rb'"\r\nContent-Type: ' + re.escape(content_type)
        + rb"\r\n\r\n(.*)\r\n\1--\r\n", sent, re.DOTALL)
    assert form, sent
    assert form[2] == path.read_bytes()

    assert upload(browser, u300, path) == success(u300)
    u300.wait_for("rebooted")
    assert u300.parameter("deviceName") == "H\u00e4lle"


def test_ARefusalIsShown(browser, u300, tmp_path):
    path = tmp_path / "other.json"
    path.write_text('{"model":"ZAVO-DEC-X999-DA"}')
    assert upload(browser, u300, path) == failure(u300, TYPE_MODIFIED)
