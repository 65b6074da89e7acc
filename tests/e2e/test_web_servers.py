"""The gateway behind each web server it is meant for: what the client receives, byte for byte, and what
happens to the unit when client or server do not wait for the end."""

import json
import os
import re
import signal
import time

import pytest

from conftest import (HEADERS, MAC_READ, NAMED_N, NOT_SUPPORTED, REPOSITORY, TOO_LARGE, TYPE_MODIFIED,
                      U300, curl, failure, form, fresh_unit, leaving_client, post, post_body, reply_in,
                      run_curl, simulated_unit, start_unit, success, told, wait_until)

APACHES = ["apache", "apache-prefork"]
BEGUN = NAMED_N[:3]

# How curl ends when the server closes the connection without a byte.
EMPTY_REPLY = 52


@pytest.fixture(params=simulated_unit.SERVERS)
def unit(request, running_units):
    """A factory-fresh unit behind each web server in turn."""
    return fresh_unit(running_units, U300, request.param, server=request.param)


def document(unit):
    return {"model": unit.model, "device_name": "n"}


def form_of(unit):
    return ["-F", "UnitConfUpload=@-;filename=f.json;type=application/json", unit.url]


def assert_received(unit, reply, body):
    """What the client received, whole. lighttpd writes the header lines anew and adds its own; the
    others pass the gateway's bytes on as they are."""
    assert reply.body == body
    if unit.server == "lighttpd":
        headers = re.sub(rb"\r\nDate: [^\r\n]+ GMT", b"", reply.headers)
        assert re.fullmatch(rb"HTTP/1\.1 200 OK\r\nContent-Type: text/html\r\n(Accept-Ranges: bytes\r\n)?"
                            rb"Content-Length: %d\r\nConnection: close\r\nServer: lighttpd/[0-9.]+"
                            % len(body), headers), headers
    else:
        assert reply.headers + b"\n\n" == HEADERS


# ---- what the client receives ----

def test_EveryServerConfiguresTheUnitAlike(running_units):
    with open(f"{REPOSITORY}/examples/unit-configuration.{U300}.json", "rb") as file:
        content = file.read()
    journals = []
    for server in simulated_unit.SERVERS:
        one = fresh_unit(running_units, U300, server, server=server)
        assert_received(one, post(one, content), success(one))
        one.wait_for("rebooted")
        journals.append(told(one, tools=True))
    assert journals[0][-5:] == ["line astparam save;", "tool astparam save", "line e e_reboot &",
                                "tool e e_reboot", "rebooted"]
    for journal in journals[1:]:
        assert journal == journals[0]


def test_ARefusalIsReceivedByteForByte(unit):
    reply = post(unit, {"model": "ZAVO-DEC-X999-DA"})
    assert_received(unit, reply, failure(unit, TYPE_MODIFIED))
    assert unit.journal() == MAC_READ


def test_AListOf512000BytesArrivesWhole(unit):
    begin, end = b'{"data":{"setting":"', b'"}}'
    text = b"".join(b"%07d " % i for i in range(64000))[:512000 - len(begin) - len(end)]
    assert len(begin + text + end) == 512000
    reply = post(unit, begin + text + end, field="Rs232CodeUpload")
    assert_received(unit, reply, success(unit))
    stored = (begin + text + end).replace(b'"', b"TAG")
    assert unit.read("/user_data2/rs232_list.json") == stored
    assert unit.read("/var/tmp/rs232_list.json") == stored


def test_TheCertificateExportIsReceivedByteForByte(unit):
    unit.write("/user_data2/ca_2.pem", b"secret")
    keys = ["ldap_ca_file", "ldap_cert_file", "ldap_key_file", "mqtt_ca_file", "mqtt_cert_file",
            "mqtt_key_file", "https_ca_file", "lan1_cert_file_8021x", "lan1_key_file_8021x",
            "lan2_cert_file_8021x", "lan2_key_file_8021x", "lan1_ca_8021x", "lan2_ca_8021x"]
    expected = json.dumps({**{key: "" for key in keys}, "lan2_ca_8021x": "c2VjcmV0\n"},
                          separators=(",", ":")).encode()
    assert_received(unit, curl(unit, unit.url + "?name=getCaEncryptData"), expected)


def assert_refused_or_closed(unit, status, output, body):
    """The gateway stops reading where it has enough. apache may then close without passing its answer
    on, BusyBox resets the connection behind it while the client may still be sending: to curl that is
    an empty reply, or a failure to send (55) or to receive (56)."""
    if status == 0:
        assert_received(unit, reply_in(output), body)
    else:
        assert unit.server != "lighttpd"
        assert status in (EMPTY_REPLY, 55, 56)
    assert_at_most_the_mac_was_read(unit)


def assert_at_most_the_mac_was_read(unit):
    """Nothing was done to the unit. apache may end a gateway early that it cannot hand all to."""
    wait_until(lambda: not unit.gateway_pids())
    assert unit.journal() in ([[], MAC_READ[:1], MAC_READ] if unit.server in APACHES else [MAC_READ])


def test_ABodyInChunksNeedsAServerThatCountsIt(unit):
    # lighttpd collects the body and announces its length; the others hand it on without one, and the
    # gateway reads nothing that is not announced.
    received = run_curl(unit, "-H", "Transfer-Encoding: chunked", *form_of(unit),
                        body=json.dumps({"model": "ZAVO-DEC-X999-DA"}).encode())
    refusal = TYPE_MODIFIED if unit.server == "lighttpd" else NOT_SUPPORTED
    assert_refused_or_closed(unit, *received, failure(unit, refusal))


def test_ABodyOfTwelveMillionBytesLeavesTheUnitAsItWas(unit):
    received = run_curl(unit, "-H", "Content-Type: multipart/form-data; boundary=----edge",
                        "--data-binary", "@-", unit.url,
                        body=b' name="UnitConfUpload"' + b" " * 12_000_000)
    assert_refused_or_closed(unit, *received, failure(unit, TOO_LARGE))
    # The server is as good as before.
    assert_received(unit, post(unit, {"model": "x"}), failure(unit, TYPE_MODIFIED))


def test_LighttpdRefusesWhatIsBeyondItsOwnLimit(u300):
    reply = post_body(u300, b' name="UnitConfUpload"' + b" " * 17_000_000)
    assert reply.headers.split(b"\r\n")[0] == b"HTTP/1.1 413 Payload Too Large"
    assert u300.journal() == []


# ---- who waits for whom ----

def test_AToolLeftInTheBackgroundDoesNotDelayTheClient(unit):
    unit.put_tool("e", "#!/bin/busybox sh\nexec sleep 30\n")
    begun = time.monotonic()
    reply = post(unit, {"model": unit.model})
    seconds = time.monotonic() - begun
    # The reply may be faster than the tool's start.
    wait_until(lambda: unit.pids("sleep"))
    running = unit.pids("sleep")
    for pid in running:
        os.kill(pid, signal.SIGKILL)
    assert_received(unit, reply, success(unit))
    assert len(running) == 1
    assert seconds < 20


def test_AClientThatLeavesDoesNotEndTheConfiguration(unit):
    with unit.held("astparam s deviceName"):
        with leaving_client(unit, *form_of(unit), body=json.dumps(document(unit)).encode()):
            unit.wait_for("tool astparam s deviceName n")
            pids = unit.gateway_pids()
        # Time for the web server to notice, and to do about it what it does.
        time.sleep(0.3)
        assert unit.gateway_pids() == pids and len(pids) == 1
        assert not unit.rebooted()
    unit.wait_for("rebooted")
    assert told(unit) == NAMED_N


def test_AClientThatLeavesWhileItSendsLeavesTheUnitAsItWas(unit):
    body = form(document(unit))
    cut = body[:body.index(b"device_name")]
    with leaving_client(unit, "-H", "Content-Type: multipart/form-data; boundary=----edge", "-H",
                        f"Content-Length: {len(body)}", "--data-binary", "@-", unit.url, body=cut):
        if unit.server == "lighttpd":
            # It waits for the whole body before it starts the gateway.
            time.sleep(0.2)
            assert unit.gateway_pids() == []
        else:
            wait_until(unit.gateway_pids)
    if unit.server == "lighttpd":
        assert unit.journal() == []
    else:
        # BusyBox lets the gateway answer what came; apache tells it to end, sooner or later.
        assert_at_most_the_mac_was_read(unit)
    assert_received(unit, post(unit, {"model": "x"}), failure(unit, TYPE_MODIFIED))


def test_LighttpdsLimitsDoNotCountForTheGateway():
    with start_unit(U300, patience=1) as unit:
        unit.put_tool("astparam", '#!/bin/busybox sh\n[ "$1" = save ] && sleep 3\n'
                      'exec /unit/bin/astparam "$@"\n')
        begun = time.monotonic()
        assert_received(unit, post(unit, document(unit)), success(unit))
        assert time.monotonic() - begun >= 3
        unit.wait_for("rebooted")
        assert told(unit) == NAMED_N


# ---- apache ----

@pytest.mark.parametrize("server", APACHES)
def test_ApacheKillsWhatItsTimeoutIsTooShortFor(server):
    # SIGTERM does not end the configuration, SIGKILL does: the unit is left half configured. That is
    # why the Timeout has to be set.
    with start_unit(U300, server=server, patience=1) as unit, unit.held("astparam s deviceName"):
        begun = time.monotonic()
        received = run_curl(unit, *form_of(unit), body=json.dumps(document(unit)).encode())
        # A second of patience, SIGTERM, three more seconds, SIGKILL: the client gets no reply.
        assert 4 <= time.monotonic() - begun < 30
        assert received == (EMPTY_REPLY, b"")
        assert unit.gateway_pids() == []
        assert told(unit) == BEGUN


@pytest.mark.parametrize("server", APACHES)
def test_UnderAnotherNameApacheHidesTheReplyOfAConfigurationThatIsApplied(running_units, server):
    unit = fresh_unit(running_units, U300, server, server=server)
    reply = curl(unit, *form_of(unit)[:2], unit.url.replace("nph-", ""),
                 body=json.dumps(document(unit)).encode())
    assert reply.headers.split(b"\r\n")[0] == b"HTTP/1.1 500 Internal Server Error"
    assert b"uploadConfFile" not in reply.body
    unit.wait_for("rebooted")
    assert told(unit) == NAMED_N


# ---- the guide ----

@pytest.mark.parametrize("server", ["lighttpd", "apache"])
def test_TheDeploymentGuideShowsTheSettingsThatRunHere(server):
    with open(f"{REPOSITORY}/docs/deployment.md", encoding="utf-8") as file:
        shown = file.read().split(f"\n### {server}\n")[1].split("```")[1]
    with open(f"{REPOSITORY}/sim/{server}.conf", encoding="utf-8") as file:
        run = re.sub(r"\$?\{?(env\.)?UNIT_PATIENCE\}?", str(simulated_unit.SERVER_PATIENCE), file.read())
    settings = ["".join(line.split("#")[0].split()) for line in shown.strip().splitlines()
                if not line.startswith("server.modules")]
    assert len(settings) >= 2
    for setting in settings:
        assert setting in "".join(run.split()), setting
