"""What a request costs in things that can be counted: read calls and programs started. Times are measured
by scripts/bench instead.

Run by scripts/test; GATEWAY_BUILD_DIR is the build folder (default: build)."""

import os
import re
import subprocess
import sys

import pytest

sys.path.insert(0, os.path.join(os.path.dirname(os.path.abspath(__file__)), "..", "..", "bench"))
import effects  # noqa: E402: found by the line above

BUILD = os.path.join(effects.REPOSITORY, os.environ.get("GATEWAY_BUILD_DIR", "build"))
GATEWAY = os.path.join(BUILD, "upload_gateway")

HEADERS = b"HTTP/1.1 200 OK\r\nContent-Type: text/html\n\n"


@pytest.fixture(name="tools")
def fixture_tools(tmp_path):
    """A folder for PATH in which the one tool is that every request asks for the MAC."""
    tool = tmp_path / "tools" / "astparam"
    tool.parent.mkdir()
    tool.write_text("#!/bin/sh\necho 00:11:22:33:44:55\n")
    tool.chmod(0o755)
    return tool.parent


def body_of(size):
    text = (b'--x\r\nContent-Disposition: form-data; name="UnitConfUpload"\r\n'
            b'Content-Type: application/json\r\n\r\n{"model":"none"')
    end = b'}\r\n------x--\r\n'
    return text + b" " * (size - len(text) - len(end)) + end


REFUSED = (HEADERS + b'{"command":"uploadConfFile","success":false,"mac":"00:11:22:33:44:55",'
           b'"feedback":"Invalid file, do not modify the type field in the JSON data."}')


class Run:
    """One request under strace: what was printed and the system calls of the program itself."""

    def __init__(self, tools, tmp_path, stdin, length, method="POST"):
        log = tmp_path / "calls"
        environment = {"PATH": f"{tools}:/usr/bin:/bin", "REQUEST_METHOD": method,
                       "CONTENT_LENGTH": str(length)}
        result = subprocess.run(
            ["strace", "-f", "-qq", "-e", "signal=none", "-s", "64", "-o", str(log), GATEWAY],
            stdin=stdin, stdout=subprocess.PIPE, check=True, env=environment)
        self.printed = result.stdout
        self.log = log.read_text(encoding="latin-1")
        lines = self.log.splitlines()
        self.process = lines[0].split()[0]
        self.calls = [call for process, call in (line.split(None, 1) for line in lines)
                      if process == self.process]

    def body_reads(self):
        """(bytes asked for, bytes got) of every read of the request: standard input is the request's
        until it is put aside."""
        reads = []
        for call in self.calls:
            if re.match(r"dup[23]?\(\d+, 0\b", call):
                break
            match = re.match(r"(?:read|readv|pread64|recvfrom)\(0, .*, (\d+)\) = (-?\d+)", call)
            if match:
                reads.append((int(match.group(1)), int(match.group(2))))
        return reads

    def programs(self):
        """Names of the programs that were started, the gateway's own first."""
        return [os.path.basename(program[0]).decode() for program in effects.programs_in(self.log)]


@pytest.mark.parametrize("size", [1024, 102400, 512000, 0x9FFFFF])
def test_a_body_in_a_file_is_read_by_one_call(tools, tmp_path, size):
    path = tmp_path / "body"
    path.write_bytes(body_of(size))
    with path.open("rb") as body:
        run = Run(tools, tmp_path, body, size)
    assert run.body_reads() == [(size, size)]
    if size <= 512000:
        assert run.printed == REFUSED


def test_no_byte_behind_the_announced_length_is_read(tools, tmp_path):
    path = tmp_path / "body"
    path.write_bytes(body_of(5000) + b"the next request")
    with path.open("rb") as body:
        run = Run(tools, tmp_path, body, 5000)
        assert os.lseek(body.fileno(), 0, os.SEEK_CUR) == 5000
    assert run.body_reads() == [(5000, 5000)]


def test_no_byte_of_a_pipe_behind_the_announced_length_is_read(tools, tmp_path):
    reading, writing = os.pipe()
    os.write(writing, body_of(5000) + b"the next request")
    os.close(writing)
    run = Run(tools, tmp_path, reading, 5000)
    with os.fdopen(reading, "rb") as rest:
        assert rest.read() == b"the next request"
    assert run.printed == REFUSED


@pytest.mark.parametrize("length", ["0", "none", ""])
def test_a_request_without_a_body_reads_nothing(tools, tmp_path, length):
    path = tmp_path / "body"
    path.write_bytes(body_of(1024))
    with path.open("rb") as body:
        run = Run(tools, tmp_path, body, length)
    assert run.body_reads() == []


def test_a_refused_upload_starts_a_shell_and_the_tool_for_the_mac(tools, tmp_path):
    path = tmp_path / "body"
    path.write_bytes(body_of(1024))
    with path.open("rb") as body:
        run = Run(tools, tmp_path, body, 1024)
    # The tool of this test is itself a script.
    assert run.programs() == ["upload_gateway", "sh", "astparam"]
    assert run.printed == REFUSED


def test_an_unknown_method_starts_nothing(tools, tmp_path):
    with open(os.devnull, "rb") as nothing:
        run = Run(tools, tmp_path, nothing, 0, method="PUT")
    assert run.programs() == ["upload_gateway"]
    assert run.printed == HEADERS


# --- What a configuration starts --------------------------------------------------------------------

def documented_sections():
    """The documentation's table: (model, section) -> [shell lines, commands, seconds, programs]."""
    with open(os.path.join(effects.REPOSITORY, "docs", "performance.md"), encoding="utf-8") as file:
        rows = re.findall(r"^\| (ZAVO-\S+) \| (.*?) \| (\d+) \| (\d+) \| (\d+) \| (\d+) \|$",
                          file.read(), re.MULTILINE)
    return {(model, section): [int(number) for number in numbers]
            for model, section, *numbers in rows}


@pytest.mark.parametrize("model", effects.MODELS)
def test_every_section_starts_what_is_documented(model):
    names, documents = zip(*effects.sections(model), strict=True)
    counts = dict(zip(names, effects.traced(BUILD, model, documents), strict=True))
    base = next(iter(counts.values()))
    found = {name: effects.less(one, base) if one is not base else base
             for name, one in counts.items()}
    documented = {name: numbers[:3] for (documented_model, name), numbers
                  in documented_sections().items() if documented_model == model}
    assert found == documented
