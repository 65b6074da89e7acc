"""What the end-to-end tests share: simulated units, curl, replies and journals.

A test of a section is a document and the journal that it must give:

    def test_SshPortIsStored(e100):
        assert_told(e100, {"ssh": {"port": 22}}, '''
            progress 1-23
            line astparam s ssh_port 22;
            progress 24-25
        ''')

Environment: GATEWAY_BUILD_DIR, folder with models/<MODEL>/upload_gateway and sim/ (default: build);
SIM_BUILD_DIR, folder with unit_tool and libfast_clock.so where it is not $GATEWAY_BUILD_DIR/sim;
GATEWAY_ARMHF_BUILD_DIR, the same folder built for 32-bit ARM (default: build-armhf);
GATEWAY_PRELOAD, libraries to preload into the gateway, separated by colons.

A gateway that was built with sanitizers may report: the test in which it does fails.
"""

import contextlib
import dataclasses
import json
import os
import re
import shutil
import signal
import subprocess
import sys
import tempfile
import textwrap
import time

import pytest

REPOSITORY = os.path.dirname(os.path.dirname(os.path.dirname(os.path.abspath(__file__))))
sys.path.insert(0, os.path.join(REPOSITORY, "sim"))
import simulated_unit  # noqa: E402

U300, E100, D200 = simulated_unit.MODELS
HEADERS = b"HTTP/1.1 200 OK\r\nContent-Type: text/html\n\n"
BUILD = os.path.join(REPOSITORY, os.environ.get("GATEWAY_BUILD_DIR", "build"))

NOT_SUPPORTED = "The uploaded file is not in the supported list"
TOO_LARGE = "more than 500kb"
NOT_JSON = "The uploaded file format is not JSON"
TYPE_DELETED = "Invalid file, do not delete the type field in the JSON data."
TYPE_MODIFIED = "Invalid file, do not modify the type field in the JSON data."
RANGE = "Error, the parameter range is incorrect"
ERROR_NODE = "Error, JSON data error node"
INVALID_EDID = "Invalid EDID data, must be 256 bytes and contain only hex characters (0-9A-Fa-f)"

# What every request does to the unit before anything else, and all that a refused one does.
MAC_READ = ["line astparam g ethaddr", "tool astparam g ethaddr"]

# What an encoder is told of a configuration that holds nothing but the device name "n".
NAMED_N = ["line astparam g ethaddr", "line cp /dev/shm/rwparam /dev/shm/rwparam_temp",
           'line astparam s deviceName "n" > /dev/null 2>&1', "progress 1-25", "line astparam save;",
           "line e e_reboot &", "rebooted"]


# Where the gateways of this run report to.
reports = None


def pytest_configure(config):
    global reports
    # Nothing is left in the source tree.
    sys.dont_write_bytecode = True
    reports = tempfile.mkdtemp(prefix="gateway-reports-")
    # Started in the background or by nohup, this would ignore them, and so would all that it starts.
    signal.signal(signal.SIGINT, signal.default_int_handler)
    signal.signal(signal.SIGHUP, signal.SIG_DFL)


def pytest_unconfigure(config):
    shutil.rmtree(reports)


def assert_no_reports():
    names = os.listdir(reports)
    if names:
        # Time to write it to its end.
        time.sleep(1)
    texts = []
    for name in names:
        with open(os.path.join(reports, name), encoding="utf-8", errors="replace") as file:
            texts.append(file.read())
        os.unlink(os.path.join(reports, name))
    assert not texts, "\n".join(texts)


@pytest.fixture(autouse=True)
def no_sanitizer_report():
    """Fails the test in which a gateway reported; the next one when it did behind its reply."""
    yield
    assert_no_reports()


def built(build, model):
    """The gateway of a model in a build folder."""
    return os.path.join(build, "models", model, "upload_gateway")


def start_unit(model, **options):
    return simulated_unit.start(
        model, **{"gateway": built(BUILD, model),
                  "tools": os.environ.get("SIM_BUILD_DIR", os.path.join(BUILD, "sim")),
                  "preload": [one for one in os.environ.get("GATEWAY_PRELOAD", "").split(":") if one],
                  "reports": reports, **options})


@pytest.fixture(scope="session")
def running_units():
    """One unit of a kind, started when first asked for."""
    units = {}
    yield units
    for unit in units.values():
        wait_until(lambda unit=unit: not unit.gateway_pids())
        unit.stop()
    assert_no_reports()


def fresh_unit(units, model, kind="lighttpd", **options):
    """A factory-fresh unit of the kind that these options make."""
    key = (model, kind)
    if key not in units or not units[key].running():
        units[key] = start_unit(model, **options)
    units[key].reset()
    return units[key]


@pytest.fixture
def u300(running_units):
    """A factory-fresh encoder with HDMI and USB-C inputs."""
    return fresh_unit(running_units, U300)


@pytest.fixture
def e100(running_units):
    """A factory-fresh encoder with an HDMI input."""
    return fresh_unit(running_units, E100)


@pytest.fixture
def d200(running_units):
    """A factory-fresh decoder."""
    return fresh_unit(running_units, D200)


@pytest.fixture(params=simulated_unit.MODELS)
def any_unit(request, running_units):
    """Each model in turn."""
    return fresh_unit(running_units, request.param)


# ---- requests ----

@dataclasses.dataclass
class Reply:
    status: int
    headers: bytes
    body: bytes


def curl(unit, *arguments, body=None, timeout=60):
    """One request by the real curl. `body` is what "@-" in the arguments stands for."""
    status, output = run_curl(unit, *arguments, body=body, timeout=timeout)
    assert status == 0, f"curl ended with {status}"
    return reply_in(output)


def run_curl(unit, *arguments, body=None, timeout=60):
    """The same where the server may answer with nothing: curl's exit status and what it received."""
    command = ["/usr/bin/curl", "-sS", "-i", "--raw", "-H", "Expect:", "--max-time", str(timeout),
               *arguments]
    if unit.inside:
        return unit.run(command, stdin=body, timeout=timeout + 10)
    done = subprocess.run(command, input=body, stdout=subprocess.PIPE, check=False)
    return done.returncode, done.stdout


def reply_in(output):
    """The reply in these bytes. A program that speaks for itself may end its lines in LF alone."""
    headers, content = re.split(rb"\r?\n\r?\n", output, maxsplit=1)
    return Reply(int(headers.split()[1]), headers, content)


@contextlib.contextmanager
def leaving_client(unit, *arguments, body):
    """A client that is still there when the block begins and gone when it ends. It is sent the body as
    "@-", like the others."""
    command = ["/usr/bin/curl", "-sS", "-H", "Expect:", *arguments]
    with open(os.memfd_create("body"), "w+b", buffering=0) as given:
        given.write(body)
        given.seek(0)
        if not unit.inside:
            with subprocess.Popen(command, stdin=given, stdout=subprocess.DEVNULL,
                                  stderr=subprocess.DEVNULL) as client:
                yield
                client.kill()
            return
        ended = unit.spawn(command, stdin=given.fileno())
        yield
        (client,) = unit.pids("curl")
        os.kill(client, signal.SIGKILL)
        unit.exit_status(ended)


def wait_until(condition, timeout=20):
    end = time.monotonic() + timeout
    while not condition():
        assert time.monotonic() < end
        time.sleep(0.005)


def post(unit, content, field="UnitConfUpload", content_type="application/json"):
    """Posts a file as a browser's form does. A document given as dict or list is written as JSON."""
    return curl(unit, "-F", f"{field}=@-;filename=upload.json;type={content_type}", unit.url,
                body=as_bytes(content))


def post_body(unit, body):
    """Posts these very bytes as the body of a form."""
    return curl(unit, "-H", "Content-Type: multipart/form-data; boundary=----edge",
                "--data-binary", "@-", unit.url, body=body)


def as_bytes(content):
    if isinstance(content, (dict, list)):
        return json.dumps(content, ensure_ascii=False).encode()
    return content.encode() if isinstance(content, str) else content


def form(content, field="UnitConfUpload", content_type="application/json"):
    """A form body as a browser writes it."""
    return (b"------edge\r\nContent-Disposition: form-data; name=\"" + field.encode()
            + b"\"; filename=\"upload.json\"\r\nContent-Type: " + content_type.encode()
            + b"\r\n\r\n" + as_bytes(content) + b"\r\n------edge--\r\n")


# ---- replies ----

def success(unit):
    """The whole body of the reply to an upload that was applied."""
    mac = unit.parameter("ethaddr") or ""
    return f'{{"command":"uploadConfFile","success":true,"mac":"{mac}"}}'.encode()


def failure(unit, feedback):
    """The whole body of the reply to an upload that was refused."""
    mac = unit.parameter("ethaddr") or ""
    return (f'{{"command":"uploadConfFile","success":false,"mac":"{mac}",'
            f'"feedback":"{feedback}"}}').encode()


def assert_refused(unit, reply, feedback):
    """The reply is this refusal, and the unit is as it was."""
    assert reply.body == failure(unit, feedback)
    assert reply.status == 200
    assert unit.journal() == MAC_READ


# ---- journals ----

PROGRESS = re.compile(r'line echo "upgradeUnitSetting:(\d+),26" \| nc 127\.0\.0\.1 4445')


def told(unit, tools=False):
    """What the unit was told, shortened without loss: a progress line with the message that came of
    it reads "progress 7", several in a row "progress 7-12". Entries of tools are left out unless
    asked for: the lines show them."""
    entries, steps = [], []
    journal = unit.journal()
    at = 0

    def end_steps():
        if steps:
            last = f"-{steps[-1]}" if len(steps) > 1 else ""
            entries.append(f"progress {steps[0]}{last}")
            steps.clear()

    while at < len(journal):
        entry = journal[at]
        step = PROGRESS.fullmatch(entry)
        if step and at + 1 < len(journal) and \
                journal[at + 1] == f"status upgradeUnitSetting:{step[1]},26":
            if steps and int(step[1]) != steps[-1] + 1:
                end_steps()
            steps.append(int(step[1]))
            at += 2
            continue
        at += 1
        if tools or not entry.startswith("tool "):
            end_steps()
            entries.append(entry)
    end_steps()
    return entries


def told_text(text):
    """The entries of an expected journal, one a line, however far it is indented."""
    return textwrap.dedent(text).strip("\n").split("\n")


def assert_told(unit, document, expected):
    """Posts a unit configuration (its "model" may be left out) and compares the whole journal. What
    all configurations have in common, the read of the MAC before and save and restart behind, is not
    part of `expected`."""
    reply = post(unit, {"model": unit.model, **document})
    unit.wait_for("rebooted")
    assert told(unit) == ["line astparam g ethaddr", *told_text(expected),
                          "line astparam save;", "line e e_reboot &", "rebooted"]
    assert reply.body == success(unit)
