"""The simulated unit itself: a test of the gateway is worth only as much as what it runs in."""

import base64
import contextlib
import json
import os
import signal
import socket
import subprocess
import sys
import time

import pytest

from conftest import BUILD, REPOSITORY, U300, simulated_unit, start_unit, wait_until

MARK = b'printf ":mcu_end" | nc -w 3 127.0.0.1 4445'


def shell(unit, line, stdin=b""):
    return unit.run(["/bin/sh", "-c", line], stdin=stdin)


def test_LinesAreJournaledByteForByte(u300):
    lines = ["", " ", "true;  # two blanks  ", "echo 'a\tb\nc' > /dev/null", 'echo "\\x41^é" >/dev/null']
    for line in lines:
        assert shell(u300, line) == (0, b"")
    assert u300.journal() == ["line", "line  ", "line true;  # two blanks  ",
                              "line echo 'a^09b^0Ac' > /dev/null", 'line echo "\\x41^5Eé" >/dev/null']


def test_BytesThatAreNoTextAreJournaledAsCodes(u300):
    u300.run(["/bin/sh", "-c", ": " + os.fsdecode(b"\xff\xc3")])
    assert u300.journal() == ["line : ^FF^C3"]


def test_StatusInputAndSignalsAreTheShellsOwn(u300):
    assert shell(u300, "exit 7") == (7, b"")
    assert shell(u300, "no_such_tool_here 2>/dev/null") == (127, b"")
    assert shell(u300, "cat", stdin=b"in\0put") == (0, b"in\0put")
    assert shell(u300, "kill -TERM $$") == (-signal.SIGTERM, b"")


def test_EchoIsTheAppliancesOwn(u300):
    assert shell(u300, 'echo -ne "a\\x0ab\\tc"') == (0, b"a\nb\tc")


def test_AScriptOnStandardInputRunsAndIsJournaledWhole(u300):
    script = b"x=word\necho got $x\n: " + b"y" * 200000 + b"\nexit 3"
    assert u300.run(["/bin/sh"], stdin=script) == (3, b"got word\n")
    assert u300.run(["/bin/sh", "-c", "sh"], stdin=script) == (3, b"got word\n")
    assert u300.journal() == ["script " + script.decode().replace("\n", "^0A")] * 2


def test_BackgroundChildrenAreNotWaitedFor(u300):
    begun = time.monotonic()
    assert shell(u300, "sleep 30 &") == (0, b"")
    assert time.monotonic() - begun < 20
    wait_until(lambda: u300.pids("sleep"))
    for pid in u300.pids("sleep"):
        os.kill(pid, signal.SIGKILL)


def test_BackgroundEntriesStandBeforeTheNextLine(u300):
    u300.run(["/bin/busybox", "sh", "-c",
              "i=0; while [ $i -lt 30 ]; do"
              " /bin/sh -c \"echo set,$i > /dev/ttyS1 &\"; /bin/sh -c 'e e_step '$i' &';"
              " i=$((i+1)); done"])
    expected = []
    for i in range(30):
        expected += [f"line echo set,{i} > /dev/ttyS1 &", f"mcu set,{i}",
                     f"line e e_step {i} &", f"tool e e_step {i}"]
    assert u300.journal() == expected


def test_ToolEntriesShowWhereArgumentsEnd(u300):
    shell(u300, 'astparam s deviceName "Room 1"; astparam s x ""; e "a\\"b" c')
    assert u300.journal("tool") == ['tool astparam s deviceName "Room 1"', 'tool astparam s x ""',
                                    'tool e "a\\"b" c']


def test_ParametersAreStoredAndExported(u300):
    assert shell(u300, "astparam g deviceName") == (0, b"Lectern\n")
    assert shell(u300, "astparam g nothing") == (1, b'"nothing" not defined\n')
    assert shell(u300, "astparam s deviceName 'A  B'; lmparam s MY_IP 10.0.0.2")[0] == 0
    assert u300.parameter("deviceName") == "A  B"
    assert u300.parameter("MY_IP", "live") == "10.0.0.2"
    dump = u300.read("/dev/shm/rwparam")
    assert b"\0deviceName=A  B\0" in dump
    assert dump[4:].startswith(b"fm_version=") and dump.endswith(b"\0\0")
    assert dump.count(b"\0\0") == 1
    assert b"\nMY_IP=10.0.0.2\n" in u300.read("/var/tmp/lmparam_dump")


def test_ToolsTalkOnStandardOutput(u300):
    assert shell(u300, "astparam save")[1] and shell(u300, "e e_x 1")[1] and shell(u300, "dapi")[1]


def test_EncryptedTextDecryptsToTheSameBytes(u300):
    secret = bytes(range(256)) + b"\0\n"
    for length in (0, 1, 2, 3, 47, 48, 49, 258):
        u300.write("/user_data2/ca.pem", secret[:length])
        status, text = shell(u300, "crypto_program -e /user_data2/ca.pem")
        assert status == 0
        assert shell(u300, f'crypto_program -d "{text.decode()}" /var/tmp/out > /dev/null')[0] == 0
        assert u300.read("/var/tmp/out") == secret[:length]


def test_DecryptingNoiseLeavesNoFile(u300):
    assert shell(u300, 'crypto_program -d "***" /var/tmp/out > /dev/null')[0] == 1
    assert not u300.exists("/var/tmp/out")


def test_NodeQueryKnowsItsPeersOnly(u300):
    line = ("nice -n 19 ionice -c 3 node_query --match_key MY_IP={} --match_key IS_HOST=n"
            " --get_key MY_MAC")
    assert shell(u300, line.format("169.254.18.3")) == (0, b"025A00120003\n")
    assert shell(u300, line.format("169.254.18.33")) == (0, b"")


def test_StatusServiceTakesTheLineAndCloses(u300):
    assert shell(u300, 'echo "upgradeUnitSetting:3,26" | nc 127.0.0.1 4445') == (0, b"")
    assert u300.journal() == ['line echo "upgradeUnitSetting:3,26" | nc 127.0.0.1 4445',
                              "status upgradeUnitSetting:3,26"]


def test_EveryByteArrivesOnTheSerialLine(u300):
    echo = 'echo -ne "' + "".join(f"\\x{byte:02X}" for byte in range(256)) + '" > /dev/ttyS1'
    shell(u300, 'echo -e "setuseredid" > /dev/ttyS1')
    shell(u300, echo)
    shell(u300, 'echo "" > /dev/ttyS1')
    assert u300.journal() == ['line echo -e "setuseredid" > /dev/ttyS1', "mcu setuseredid",
                              "line " + echo, "mcu-edid " + bytes(range(256)).hex(),
                              'line echo "" > /dev/ttyS1', "mcu"]


# What follows the command seta,1: its echo, the end mark and a prompt of five bytes or more.
ANSWER = b"seta,1\r\n\x1b[0m\xfe ok\r\n" + MARK + b"\r\nmcu:~# "


def relayed(unit, seconds=20):
    """What a client of the relay hears behind the command, as much as an answer; it waits this long
    at most."""
    return unit.run(["/usr/bin/bash", "-c",
                     "exec 3<>/dev/tcp/127.0.0.1/5449; echo seta,1 > /dev/ttyS1;"
                     f"timeout {seconds} head -c {len(ANSWER)} <&3"])[1]


@pytest.mark.parametrize("mode", ["normal", "split"])
def test_AnswersEndInTheMarkAndFiveMoreBytes(u300, mode):
    u300.set_mcu(mode)
    assert relayed(u300) == ANSWER
    assert len(MARK) == 42


def test_ASilentMicrocontrollerHearsButDoesNotAnswer(u300):
    u300.set_mcu("silent")
    assert relayed(u300, seconds=0.3) == b""
    assert u300.journal() == ["mcu seta,1"]


def test_ASlowMicrocontrollerAnswersLater(u300):
    u300.set_mcu("slow", 10_000)
    assert relayed(u300, seconds=0.2) == b""
    u300.reset()
    u300.set_mcu("slow", 200)
    begun = time.monotonic()
    assert relayed(u300) == ANSWER
    assert time.monotonic() - begun >= 0.2


def test_AnAbsentRelayRefusesConnections(u300):
    u300.set_mcu("absent")
    status, _ = u300.run(["/bin/busybox", "nc", "127.0.0.1", "5449"])
    assert status == 1
    u300.set_mcu("normal")
    assert relayed(u300) == ANSWER


def test_ChangedAndRemovedFilesAreNotedOnceWhoeverChangedThem(u300):
    shell(u300, "echo one > /user_data2/a; echo two > /share/b")
    u300.run(["/bin/busybox", "sh", "-c", "echo oned > /user_data2/a; rm /share/b"])
    shell(u300, "true")
    shell(u300, "echo 1 > /sys/devices/platform/videoip/ull")
    u300.run(["/bin/busybox", "sh", "-c", "mv /user_data2/a /user_data2/c"])
    assert u300.journal() == [
        "line echo one > /user_data2/a; echo two > /share/b", "file /user_data2/a 5",
        "line true", "line echo 1 > /sys/devices/platform/videoip/ull",
        "file /sys/devices/platform/videoip/ull 2", "file /user_data2/a gone",
        "file /user_data2/c 5"]


def test_RewritingAFileWithTheSameBytesIsAChange(u300):
    for _ in range(20):
        shell(u300, "echo same > /user_data2/a")
    assert u300.journal("file") == ["file /user_data2/a 5"] * 20


def test_RebootIsMarked(u300):
    assert not u300.rebooted()
    shell(u300, "e e_reboot &")
    u300.wait_for("rebooted")
    assert u300.journal() == ["line e e_reboot &", "tool e e_reboot", "rebooted"]


def test_ResetBringsBackAFreshUnit(u300):
    fresh = u300.stored_files()
    shell(u300, "astparam s deviceName x; lmparam s NEW 1; echo x > /user_data2/f; echo -n half > /dev/ttyS1")
    assert u300.stored_files() != fresh
    u300.reset()
    assert u300.stored_files() == fresh
    assert u300.journal() == []


def test_AToolOfTheTestsOwnComesFirst(u300):
    u300.put_tool("dapi", "#!/bin/busybox sh\necho mine $1\n")
    assert shell(u300, "dapi --x") == (0, b"mine --x\n")


def test_AHeldToolWaitsAfterItsEntry(u300):
    with u300.held("astparam s a"):
        ended = u300.spawn(["/bin/sh", "-c", "astparam s a 1; astparam s b 1"])
        u300.wait_for("tool astparam s a 1")
        time.sleep(0.05)
        assert u300.peek("tool") == ["tool astparam s a 1"]
    assert u300.exit_status(ended) == 0
    assert u300.peek("tool") == ["tool astparam s a 1", "tool astparam s b 1"]


def test_UserDataMayBeSmall():
    with start_unit(U300, user_data_bytes=16384) as unit:
        assert shell(unit, "dd if=/dev/zero of=/user_data2/f bs=1024 count=20 2>/dev/null")[0] == 1
        assert len(unit.read("/user_data2/f")) == 16384


def alive(pid):
    try:
        with open(f"/proc/{pid}/stat", encoding="ascii", errors="replace") as stat:
            return stat.read().rpartition(")")[2].split()[0] != "Z"
    except OSError:
        return False


@contextlib.contextmanager
def started(command, **options):
    """A program whose output is read; it does not outlast the block."""
    with subprocess.Popen(command, stdout=subprocess.PIPE, text=True, **options) as program:
        try:
            yield program
        finally:
            program.kill()


START = ("import sys, time; sys.path.insert(0, sys.argv[1]); import simulated_unit as s\n"
         "u = s.start(sys.argv[2], sys.argv[3], sys.argv[4]); u.spawn(['/bin/sleep', '60'])\n"
         "while not u.pids('sleep'): time.sleep(0.01)\n"
         "print(*u.pids('unit_tool'), *u.pids('lighttpd'), *u.pids('sleep'), flush=True)\n"
         "time.sleep(60)\n")


@pytest.mark.parametrize("number", [signal.SIGKILL, signal.SIGTERM, signal.SIGHUP, signal.SIGINT])
def test_NothingIsLeftWhenTheLauncherIsKilled(number):
    tools = os.environ.get("SIM_BUILD_DIR", os.path.join(BUILD, "sim"))
    gateway = os.path.join(BUILD, "models", U300, "upload_gateway")
    with started([sys.executable, "-B", "-c", START, simulated_unit.HERE, U300, gateway, tools],
                 stderr=subprocess.DEVNULL) as launcher:
        pids = [int(pid) for pid in launcher.stdout.readline().split()]
        running = len(pids) == 6 and all(alive(pid) for pid in pids)
        launcher.send_signal(number)
        launcher.wait(20)
    assert running
    end = time.monotonic() + 20
    while any(alive(pid) for pid in pids) and time.monotonic() < end:
        time.sleep(0.01)
    assert not any(alive(pid) for pid in pids)


def test_TheHostIsNotTouched(u300):
    shell(u300, "echo x > /user_data2/not_on_the_host; echo x > /var/tmp/not_on_the_host;"
                " echo x > /dev/shm/not_on_the_host; echo x > /tmp/not_on_the_host")
    assert u300.exists("/user_data2/not_on_the_host") and u300.exists("/tmp/not_on_the_host")
    for folder in ("/user_data2", "/var/tmp", "/dev/shm", "/tmp"):
        assert not os.path.exists(f"{folder}/not_on_the_host")


def demo(*arguments):
    return subprocess.run(
        [sys.executable, "-B", os.path.join(REPOSITORY, "sim", "demo.py"), "--build", BUILD, *arguments],
        capture_output=True, text=True, timeout=60, check=False)


def test_TheDemoConfiguresAUnit():
    done = demo("--model", "e100")
    assert done.returncode == 0, done.stderr
    assert '{"command":"uploadConfFile","success":true,"mac":"02:5A:00:11:00:02"}' in done.stdout
    assert "--- progress 26 of 26" in done.stdout and "--- the unit restarts" in done.stdout


def test_TheDemoFailsWhenTheUploadIsRefused(tmp_path):
    file = tmp_path / "bad, file.json"
    file.write_text("{")
    done = demo("--file", str(file))
    assert done.returncode == 1
    assert '"feedback":"The uploaded file format is not JSON"' in done.stdout


@pytest.mark.parametrize("arguments", [
    ("--port", "65536"), ("--port", "-1"), ("--port", "x"), ("--model", "x"), ("--kind", "x"),
    ("--file", "/nowhere"), ("--kind", "edid"), ("--kind", "certificates", "--file", "/etc/passwd")])
def test_TheDemoTellsWrongArgumentsBeforeItNeedsAnything(arguments):
    done = demo("--check", *arguments)
    assert (done.returncode, done.stdout) == (2, "")
    assert "demo: error: " in done.stderr and "Traceback" not in done.stderr


def test_TheDemoFindsNothingWrongWithGoodArguments():
    done = demo("--check", "--port", "65535", "--model", "d200")
    assert (done.returncode, done.stdout, done.stderr) == (0, "", "")


def test_TheDemoNamesThePortThatIsTaken():
    with socket.create_server(("127.0.0.1", 0)) as taken:
        port = taken.getsockname()[1]
        done = demo("--port", str(port))
    assert (done.returncode, done.stdout) == (1, "")
    assert done.stderr == f"demo: port {port}: Address already in use\n"


def test_TheDemoCountsCommandsAndTheBytesOfAnEdid():
    done = demo("--kind", "edid", "--file", os.path.join(REPOSITORY, "examples", "custom-edid.json"))
    assert done.stdout.endswith("\nThe unit ran 7 shell lines, its front panel got 1 command and an EDID"
                                " of 256 bytes, it was not restarted.\n")


def test_TheDemoCountsEmptyCommands(tmp_path):
    file = tmp_path / "empty command.json"
    file.write_text('{"model": "ZAVO-ENC-U300-DA", "hdcp": {"hdmi_compatibility": 1}}')
    done = demo("--file", str(file))
    assert "\n      front panel <- (empty)\n" in done.stdout
    assert "its front panel got 1 command (1 empty), it was restarted.\n" in done.stdout


def test_TheDemosUnitHasCertificatesToExport():
    done = demo("--kind", "certificates")
    reply = json.loads(done.stdout.partition("\nReply after ")[2].splitlines()[1])
    assert len(reply) == 13
    assert {name: base64.b64decode(text).decode() for name, text in reply.items() if text} == {
        "mqtt_ca_file": "made-up CAFile of the demo\n",
        "mqtt_cert_file": "made-up CERTFile of the demo\n",
        "mqtt_key_file": "made-up KEYFile of the demo\n",
        "https_ca_file": "made-up HTTPS_CAFILE of the demo\n",
        "lan1_ca_8021x": "made-up ca.pem of the demo\n"}


@pytest.mark.parametrize("number", [signal.SIGINT, signal.SIGTERM])
def test_TheDemoStopsInTheMiddleWhenItIsToldTo(number):
    command = [sys.executable, "-B", os.path.join(REPOSITORY, "sim", "demo.py"), "--build", BUILD,
               "--real-time"]
    with started(command) as running:
        while "$ astparam g ethaddr" not in running.stdout.readline():
            pass
        begun = time.monotonic()
        running.send_signal(number)
        assert running.wait(20) == (130 if number == signal.SIGINT else 128 + number)
        # The pauses that were left take over a minute and a half.
        assert time.monotonic() - begun < 15
        assert "Reply" not in running.stdout.read()


def test_TheDemoServesUntilItIsToldToStop():
    command = [sys.executable, "-B", os.path.join(REPOSITORY, "sim", "demo.py"), "--build", BUILD, "--serve"]
    with started(command) as served:
        url = served.stdout.readline().split()[4]
        assert url.startswith("http://127.0.0.1:")
        reply = subprocess.run(["curl", "-sS", "-X", "PUT", "-w", "%{http_code}", url],
                               capture_output=True, text=True, timeout=10, check=False)
        assert reply.stdout == "200"
        served.send_signal(signal.SIGINT)
        assert served.wait(20) == 0
    # It has given its port back.
    with socket.socket() as port:
        port.setsockopt(socket.SOL_SOCKET, socket.SO_REUSEADDR, 1)
        port.bind(("127.0.0.1", int(url.split(":")[2].split("/")[0])))
        port.listen(1)
