"""A configuration that has begun ends with the unit saved and restarted, whatever happens to the
client, the web server or what the tools leave running."""

import os
import signal
import time

import pytest

from conftest import HEADERS, NAMED_N, U300, form, post, start_unit, success, told


def document(unit):
    return {"model": unit.model, "device_name": "n"}


def spawn_gateway(unit, output):
    body = form(document(unit))
    with open(os.memfd_create("body"), "w+b", buffering=0) as given:
        given.write(body)
        given.seek(0)
        return unit.spawn(["/www/cgi-bin/upload_gateway"], stdin=given.fileno(), stdout=output,
                          environment={**unit.cgi_environment, "REQUEST_METHOD": "POST",
                                       "CONTENT_LENGTH": str(len(body))})


def signal_sets(pid):
    """The signals that wait for a process and those that it catches, as sets of numbers."""
    with open(f"/proc/{pid}/status", encoding="ascii", errors="replace") as status:
        lines = dict(line.split(":\t") for line in status)
    waiting = int(lines["SigPnd"], 16) | int(lines["ShdPnd"], 16)
    return [{number for number in range(1, 65) if mask >> (number - 1) & 1}
            for mask in (waiting, int(lines["SigCgt"], 16))]


def deliver(pid, number):
    """Sends a signal and waits until the process has taken it. It must be one that it catches: an
    ignored one would leave the unit's tools with the signal ignored."""
    assert number in signal_sets(pid)[1]
    os.kill(pid, number)
    end = time.monotonic() + 10
    while number in signal_sets(pid)[0]:
        assert time.monotonic() < end
        time.sleep(0.002)


@pytest.mark.parametrize("number", [signal.SIGTERM, signal.SIGHUP, signal.SIGPIPE])
@pytest.mark.parametrize("held", ["astparam s deviceName", "astparam save"])
def test_ASignalDuringALineDoesNotEndTheConfiguration(u300, number, held):
    with open(os.memfd_create("output"), "w+b", buffering=0) as output:
        with u300.held(held):
            ended = spawn_gateway(u300, output.fileno())
            u300.wait_for('tool astparam s deviceName n' if "Name" in held else "tool astparam save")
            (pid,) = u300.gateway_pids()
            deliver(pid, number)
            assert "rebooted" not in u300.peek()
            assert u300.gateway_pids() == [pid]
        assert u300.exit_status(ended) == 0
        output.seek(0)
        assert output.read() == HEADERS + success(u300)
    u300.wait_for("rebooted")
    assert told(u300) == NAMED_N


@pytest.mark.parametrize("number", [signal.SIGTERM, signal.SIGHUP])
def test_SignalsDuringAPauseNeitherShortenNorLengthenIt(number):
    with start_unit(U300, real_time=True) as unit, \
            open(os.memfd_create("output"), "w+b", buffering=0) as output:
        ended = spawn_gateway(unit, output.fileno())
        unit.wait_for("tool astparam save")
        saved = time.monotonic()
        (pid,) = unit.gateway_pids()
        time.sleep(0.3)
        sent = 0
        while not unit.rebooted() and time.monotonic() < saved + 5:
            try:
                os.kill(pid, number)
            except ProcessLookupError:  # it has ended, and the restart is about to be noted
                break
            sent += 1
            time.sleep(0.05)
        unit.wait_for("rebooted")
        assert sent > 5
        # If each signal began the second anew, it would last as long as signals are sent.
        assert 0.9 < time.monotonic() - saved < 4.5
        assert unit.exit_status(ended) == 0
        output.seek(0)
        assert output.read() == HEADERS + success(unit)
        assert told(unit) == NAMED_N


def test_ToolsDoNotInheritWhatKeepsTheGatewayRunning(u300):
    u300.put_tool("astparam", "#!/bin/busybox sh\n[ \"$1\" = s ] && grep '^Sig[BI]' /proc/$$/status"
                  " > /tmp/signals\nexit 0\n")
    u300.run_gateway("POST", form(document(u300)))
    masks = [int(line.split(b"\t")[1], 16) for line in u300.read("/tmp/signals").splitlines()]
    assert len(masks) == 2
    for number in (signal.SIGTERM, signal.SIGHUP, signal.SIGPIPE, signal.SIGCHLD):
        assert [mask >> (number - 1) & 1 for mask in masks] == [0, 0]


def test_AReplyThatNobodyReadsDoesNotEndTheConfiguration(u300):
    read_end, write_end = os.pipe()
    with u300.held("astparam s deviceName"):
        ended = spawn_gateway(u300, write_end)
        os.close(write_end)
        u300.wait_for("tool astparam s deviceName n")
        os.close(read_end)
    u300.exit_status(ended)
    u300.wait_for("rebooted")
    assert told(u300) == NAMED_N


def test_TwoRequestsAtATimeAreBothAnswered(u300):
    with u300.held("astparam save"):
        with open(os.memfd_create("output"), "w+b", buffering=0) as output:
            ended = spawn_gateway(u300, output.fileno())
            u300.wait_for("tool astparam save")
            refused = post(u300, "x")
            os.unlink("run/sim/hold", dir_fd=u300._root)
            assert u300.exit_status(ended) == 0
            output.seek(0)
            assert output.read() == HEADERS + success(u300)
        u300.write("/run/sim/hold", b"nothing")
    assert b"The uploaded file format is not JSON" in refused.body
    u300.wait_for("rebooted")
