"""The gateway as it is built for the appliance, a 32-bit ARM program run by an emulator, beside the one of
this machine: every kind of upload gets the same reply, tells the unit the same, entry by entry, and leaves
the same files."""

import json
import os
import time

import pytest

from conftest import (D200, E100, ERROR_NODE, HEADERS, INVALID_EDID, MAC_READ, NOT_JSON, NOT_SUPPORTED, RANGE,
                      REPOSITORY, TOO_LARGE, TYPE_DELETED, TYPE_MODIFIED, U300, built, curl, failure,
                      form, fresh_unit, leaving_client, post, success, told, wait_until)

ARMHF = os.path.join(REPOSITORY, os.environ.get("GATEWAY_ARMHF_BUILD_DIR", "build-armhf"))
EMULATOR = "/usr/bin/qemu-arm-static"

pytestmark = pytest.mark.skipif(
    not os.path.exists(built(ARMHF, U300)) or not os.path.exists(EMULATOR),
    reason=f"NOT TESTED FOR 32-BIT ARM: {built(ARMHF, U300)} or {EMULATOR} is missing")


def short(value):
    """A case's name: pytest puts it into the environment, where long ones do not fit."""
    return repr(value)[:40]


def armhf_unit(units, model):
    return fresh_unit(units, model, "armhf", gateway=built(ARMHF, model), runner=[EMULATOR],
                      fast_clock=os.path.join(ARMHF, "sim", "libfast_clock.so"))


@pytest.fixture
def both(running_units):
    """Makes the two units of a model: this machine's program first, the appliance's second."""
    return lambda model: (fresh_unit(running_units, model), armhf_unit(running_units, model))


@pytest.fixture
def arm(running_units):
    """A factory-fresh encoder whose gateway is the appliance's."""
    return armhf_unit(running_units, U300)


def example(name):
    with open(os.path.join(REPOSITORY, "examples", name), "rb") as file:
        return file.read()


def assert_alike(units, request, prepare=None):
    """Does the same with both units and compares everything. Returns the reply's body and the journal."""
    seen = []
    for unit in units:
        if prepare:
            prepare(unit)
        reply = request(unit)
        if reply.body == success(unit) and getattr(request, "field", None) == "UnitConfUpload":
            unit.wait_for("rebooted")
        seen.append((reply.status, reply.body, unit.journal(), unit.stored_files()))
    assert seen[1] == seen[0]
    return seen[0][1], seen[0][2]


def posting(content, field="UnitConfUpload"):
    def request(unit):
        return post(unit, content, field=field)
    request.field = field
    return request


# ---- every kind of upload ----

@pytest.mark.parametrize("model", [U300, E100, D200])
def test_AWholeConfigurationTellsTheUnitTheSame(both, model):
    units = both(model)
    body, journal = assert_alike(units, posting(example(f"unit-configuration.{model}.json")))
    assert body == success(units[0])
    assert journal[-5:] == ["line astparam save;", "tool astparam save", "line e e_reboot &",
                            "tool e e_reboot", "rebooted"]


@pytest.mark.parametrize("document", [
    {"device_name": "H\u00e4lle \u00ff\u20ac", "serial_number": "\u00fc" * 40},
    {"ssh": {"enable": True, "port": 4294967297}}, {"ssh": {"port": -2147483649}}, {"ssh": {"port": 1e300}},
    {"ssh": {"port": 22.9}}, {"ssh": {"username": "x" * 3000, "password": "%s%n%d"}},
    {"fan_speed": 2147483648}, {"ssh": {"username": "x" * 140000}}], ids=short)
def test_NumbersAndTextsAtTheirLimitsAreTheSame(both, document):
    units = both(U300)
    body, journal = assert_alike(units, posting({"model": U300, **document}))
    assert body == success(units[0])
    assert journal[-1] == "rebooted"


@pytest.mark.parametrize("model", [U300, D200])
@pytest.mark.parametrize("field, name", [
    ("Rs232CodeUpload", "rs232-list.json"), ("IRCodeUpload", "ir-list.json"),
    ("TriggerCommandsUpload", "trigger-lists.json"), ("CustomEdidFile", "custom-edid.json"),
    ("VideoWallUpload", "video-wall.json")])
def test_EveryOtherUploadTellsTheUnitTheSame(both, model, field, name):
    units = both(model)
    body, journal = assert_alike(units, posting(example(name), field))
    assert body == success(units[0])
    assert len(journal) > len(MAC_READ)


@pytest.mark.parametrize("setting", ["\u00e4\u00ff\u20ac\U0001f600", "\\\\x41\\u0001\\n", "$((6*7))", "x" * 511000], ids=short)
def test_ListsOfAnyBytesAreStoredTheSame(both, setting):
    content = b'{"data":{"setting":"' + setting.encode() + b'"}}'
    units = both(U300)
    body, _ = assert_alike(units, posting(content, "Rs232CodeUpload"))
    assert body == success(units[0])
    assert units[1].exists("/user_data2/rs232_list.json")


@pytest.mark.parametrize("by_post", [False, True])
def test_TheCertificateExportIsTheSame(both, by_post):
    def prepare(unit):
        for name in ("LDAP_CAFile", "KEYFile", "HTTPS_CAFILE", "client.pem", "ca_2.pem"):
            unit.write(f"/user_data2/{name}", name.encode() * 50 + bytes(range(256)))

    def request(unit):
        return curl(unit, "-d", "name=getCaEncryptData", unit.url) if by_post else \
            curl(unit, unit.url + "?name=getCaEncryptData")

    body, journal = assert_alike(both(U300), request, prepare)
    assert [key for key, text in json.loads(body).items() if text] == [
        "ldap_ca_file", "mqtt_key_file", "https_ca_file", "lan1_cert_file_8021x", "lan2_ca_8021x"]
    assert "line rm -rf /var/tmp/ca_2.pem.txt" in journal


@pytest.mark.parametrize("field, content, feedback", [
    ("UnitConfUpload", "x", NOT_JSON), ("UnitConfUpload", "{}", TYPE_DELETED),
    ("UnitConfUpload", '{"model":"ZAVO-DEC-X999-DA"}', TYPE_MODIFIED),
    ("UnitConfUpload", b"[" * 1000 + b"]" * 1000, TYPE_DELETED), ("UnitConfUpload", b"[" * 1001, NOT_JSON),
    ("UnitConfUpload", b" " * 1_048_576, TOO_LARGE), ("x", "{}", NOT_SUPPORTED),
    ("Rs232CodeUpload", b" " * 512_001, TOO_LARGE), ("Rs232CodeUpload", "{", NOT_JSON),
    ("IRCodeUpload", "{}", NOT_JSON), ("TriggerCommandsUpload", "[", NOT_JSON),
    ("VideoWallUpload", "{}", ERROR_NODE),
    ("VideoWallUpload", example("video-wall.json").replace(b'"rotation": "', b'"rotation": "9'), RANGE),
    ("CustomEdidFile", '{"custom_edid":"00"}', INVALID_EDID)], ids=short)
def test_ARefusalIsTheSame(both, field, content, feedback):
    units = both(U300)
    body, journal = assert_alike(units, posting(content, field),
                                 lambda unit: unit.set_parameter("VW_VAR_VER", "1", "live"))
    assert body == failure(units[0], feedback)
    assert journal == MAC_READ


# ---- where the width of a number would show ----

OTHER = '{"model":"ZAVO-DEC-X999-DA"}'


@pytest.mark.parametrize("length", [
    "-5", "20000000", "2147483647", "2147483648", "4294967295", "4294967296", "4294967306", "-2147483649",
    "-4294967295", "99999999999999999999", "-99999999999999999999", "  +100000", "100000x"])
def test_LengthsBeyondThirtyTwoBitsAreClamped(arm, length):
    assert arm.run_gateway("POST", form(OTHER), length) == (0, HEADERS + failure(arm, TYPE_MODIFIED))
    assert arm.journal() == MAC_READ


@pytest.mark.parametrize("length", ["0", "letters", "", "-0", False])
def test_NoLengthMeansNoBody(arm, length):
    assert arm.run_gateway("POST", form(OTHER), length) == (0, HEADERS + failure(arm, NOT_SUPPORTED))


@pytest.mark.parametrize("size, length, taken", [
    (200, 60, 60), (60, 100, 60), (12_000_000, 20_000_000, 10_485_759), (12_000_000, -5, 10_485_759)])
def test_NoByteBehindTheLengthIsTaken(arm, size, length, taken):
    with open(os.memfd_create("body"), "w+b", buffering=0) as body:
        body.write(b" " * size)
        body.seek(0)
        assert arm.run_gateway("POST", body.fileno(), length) == (0, HEADERS + failure(arm, NOT_SUPPORTED))
        assert os.lseek(body.fileno(), 0, os.SEEK_CUR) == taken


# ---- who waits for whom ----

def test_AClientThatLeavesDoesNotEndTheConfiguration(arm):
    with arm.held("astparam s deviceName"):
        with leaving_client(arm, "-F", "UnitConfUpload=@-;type=application/json", arm.url,
                            body=json.dumps({"model": U300, "device_name": "n"}).encode()):
            arm.wait_for("tool astparam s deviceName n")
        time.sleep(0.3)
        assert len(arm.gateway_pids()) == 1
        assert not arm.rebooted()
    arm.wait_for("rebooted")
    wait_until(lambda: not arm.gateway_pids())
    assert told(arm)[-4:] == ["progress 1-25", "line astparam save;", "line e e_reboot &", "rebooted"]


def test_AMicrocontrollerThatAnswersSlowlyAndInPiecesIsWaitedFor(both):
    units = both(U300)
    document = {"model": U300, "hdcp": {"hdmi_compatibility": True, "usbc_compatibility": False}}
    for mode in ("split", "hangup"):
        _, journal = assert_alike(units, posting(document), lambda unit: unit.set_mcu(mode, 20))
        assert "mcu hdcpadvertising,1:off" in journal
        for unit in units:
            unit.reset()
