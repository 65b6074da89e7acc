"""Every upload beside the unit configuration, and the export: the reply, what the unit was told and the
bytes that it keeps."""

import base64
import concurrent.futures
import json
import os
import re
import signal
import time

import pytest

from conftest import (ERROR_NODE, HEADERS, INVALID_EDID, MAC_READ, NOT_JSON, RANGE, REPOSITORY, TOO_LARGE,
                      U300, assert_refused, curl, failure, form, post, start_unit, success, told, wait_until)

RS232 = "/user_data2/rs232_list.json"
IR = "/user_data2/ir_list.json"
TRIGGERS = ["/user_data2/trigger_poweron_event_list.json",
            "/user_data2/trigger_video_connect_event_list.json",
            "/user_data2/trigger_video_disconnect_event_list.json"]
DISCONNECT_COPY = ("line cp /user_data2/trigger_video_disconnect_event_list.json "
                   "/var/tmp/trigger_video_disconnect_event_list.json")


def example(name):
    with open(os.path.join(REPOSITORY, "examples", name), "rb") as file:
        return file.read()


def stored_form(text):
    """The stored form of a text without backslashes."""
    text = text.encode() if isinstance(text, str) else text
    assert b"\\" not in text
    return text.translate(None, b"\r\n\t").replace(b'"', b"TAG")


def twin(path):
    return path.replace("/user_data2/", "/var/tmp/")


def user_data(unit):
    return {path: content for path, content in unit.stored_files().items()
            if path.startswith("/user_data2/")}


def lines(unit):
    return [entry for entry in told(unit) if entry.startswith(("line", "script"))]


def assert_stored(unit, path, content):
    assert unit.read(path) == content
    assert unit.read(twin(path)) == content


def assert_nothing_stored(unit, content, field, feedback):
    before = unit.stored_files()
    assert_refused(unit, post(unit, content, field=field), feedback)
    assert unit.stored_files() == before


# ---- lists ----

def rs232(setting):
    """A list with this text, as it stands in JSON, for its setting."""
    return b'{"data":{"setting":"' + setting + b'"}}'


def test_AnRs232ListIsStoredAndCopied(any_unit):
    content = example("rs232-list.json")
    assert post(any_unit, content, field="Rs232CodeUpload").body == success(any_unit)
    assert_stored(any_unit, RS232, stored_form(content))
    assert lines(any_unit) == ["line astparam g ethaddr", f"line cp {RS232} {twin(RS232)}"]
    assert list(user_data(any_unit)) == [RS232]


def test_AnIrListIsStoredAndItsTimingSet(any_unit):
    content = example("ir-list.json")
    assert post(any_unit, content, field="IRCodeUpload").body == success(any_unit)
    assert_stored(any_unit, IR, stored_form(content))
    assert lines(any_unit) == [
        "line astparam g ethaddr", f"line cp {IR} {twin(IR)}",
        "line astparam s ir_setting_delay 100;astparam s ir_setting_rpt 1;"
        "astparam s ir_setting_rpt_delay 110;astparam save;"]
    assert any_unit.parameter("ir_setting_rpt_delay") == "110"


def test_TriggerListsAreStoredInAFileEach(any_unit):
    content = example("trigger-lists.json")
    assert post(any_unit, content, field="TriggerCommandsUpload").body == success(any_unit)
    elements = json.loads(content)["data"]

    def printed(element):
        return json.dumps(element, separators=(",", ":")).replace("},{", "}, {").replace('"', "TAG").encode()

    for path, element in zip(TRIGGERS, elements):
        assert_stored(any_unit, path, printed(element))
    custom = {f"/user_data2/trigger_custom_event{event['apievent']}_list.json": printed(event)
              for event in elements[3]["data"]}
    assert user_data(any_unit) == {**{path: printed(element)
                                      for path, element in zip(TRIGGERS, elements)}, **custom}
    assert lines(any_unit) == ["line astparam g ethaddr",
                               *(f"line cp {path} {twin(path)}" for path in TRIGGERS),
                               DISCONNECT_COPY, DISCONNECT_COPY]


@pytest.mark.parametrize("name", ["", "x", "a" * 19, "b" * 20, "c" * 21, "d" * 225, "Sa\u00e4l_1.b-c"])
def test_ACustomEventsFileIsNamedAfterItWhateverItsLength(u300, name):
    document = {"data": [1, 2, 3, {"data": [{"apievent": name}]}]}
    assert post(u300, document, field="TriggerCommandsUpload").body == success(u300)
    assert u300.read(f"/user_data2/trigger_custom_event{name}_list.json") == \
        f"{{TAGapieventTAG:TAG{name}TAG}}".encode()
    assert len(user_data(u300)) == 4


def test_ACustomEventThatIsNoLongerListedKeepsItsFile(u300):
    for events in ([{"apievent": "one"}], [{"apievent": "two"}], []):
        assert post(u300, {"data": [1, 2, 3, {"data": events}]},
                    field="TriggerCommandsUpload").body == success(u300)
    assert sorted(user_data(u300)) == sorted(
        TRIGGERS + [f"/user_data2/trigger_custom_event{name}_list.json" for name in ("one", "two")])


@pytest.mark.parametrize("custom", [{}, [], None, 3, {"data": {}}, {"data": [{}]},
                                    {"data": [{"apievent": "a"}, {"apievent": 1}]}])
def test_WrongCustomEventsAreRefusedBehindTheThreeOtherLists(u300, custom):
    document = {"data": ["one", "two", "three", custom]}
    assert post(u300, document, field="TriggerCommandsUpload").body == failure(u300, NOT_JSON)
    assert user_data(u300) == {TRIGGERS[0]: b"TAGoneTAG", TRIGGERS[1]: b"TAGtwoTAG",
                               TRIGGERS[2]: b"TAGthreeTAG"}
    for path in TRIGGERS:
        assert u300.read(twin(path)) == u300.read(path)


@pytest.mark.parametrize("field, content", [
    ("Rs232CodeUpload", ""),
    ("Rs232CodeUpload", "{"),
    ("Rs232CodeUpload", "[]"),
    ("Rs232CodeUpload", '{"data":{}}'),
    ("Rs232CodeUpload", '{"data":[{"setting":1}]}'),
    ("IRCodeUpload", "x"),
    ("IRCodeUpload", '{"data":{},"delay":"1","rpt":"1","rptdelay":"1"}'),
    ("IRCodeUpload", '{"data":[],"rpt":"1","rptdelay":"1"}'),
    ("IRCodeUpload", '{"data":[],"delay":"1","rpt":1,"rptdelay":"1"}'),
    ("IRCodeUpload", '{"data":[],"delay":"1","rpt":"1","rptdelay":null}'),
    ("TriggerCommandsUpload", "x"),
    ("TriggerCommandsUpload", '{"data":{}}'),
    ("TriggerCommandsUpload", '{"data":[1,2,3]}'),
    ("TriggerCommandsUpload", '{"data":[1,2,3,{"data":[]},5]}'),
])
def test_AListOfAnotherShapeLeavesTheUnitAsItWas(u300, field, content):
    assert_nothing_stored(u300, content, field, NOT_JSON)


def test_LineEndsAndTabsAreRemovedInsideTextsToo(u300):
    post(u300, rs232(b"a\tb\r\nc"), field="Rs232CodeUpload")
    assert_stored(u300, RS232, b"{TAGdataTAG:{TAGsettingTAG:TAGabcTAG}}")


def test_TheLettersTagAreStoredUnchanged(u300):
    post(u300, rs232(b"TAG"), field="Rs232CodeUpload")
    assert_stored(u300, RS232, b"{TAGdataTAG:{TAGsettingTAG:TAGTAGTAG}}")


BACKSLASHES = [rb"\n", rb"\\n", rb"\\\\n", rb"\\\\\\\\", rb"\"", rb"\/", rb"\u0041\u00e9", rb"\\x41\\x4\\xg",
               rb"\\0\\0101\\101\\400\\8", rb"\\a\\b\\e\\f\\r\\t\\v", rb"\b\f\r\t", rb"one\\ctwo", rb"\\",
               rb"\\w", b"\xc3\xa9\xff\x81\x88"]


@pytest.mark.parametrize("text", BACKSLASHES)
def test_AStoredListHoldsTheBytesThatTheUnitsShellWouldWrite(u300, text):
    content = rs232(text)
    assert post(u300, content, field="Rs232CodeUpload").body == success(u300)
    line = b'echo -ne "' + content.translate(None, b"\r\n\t").replace(b'"', b"TAG") + b'"'
    status, expected = u300.run(["/bin/busybox", "sh", "-c", os.fsdecode(line)])
    assert status == 0
    assert_stored(u300, RS232, expected)
    assert lines(u300) == ["line astparam g ethaddr", f"line cp {RS232} {twin(RS232)}"]


def test_AnExpansionIsLeftToTheUnitsShell(u300):
    assert post(u300, rs232(rb"$((6*7)) `echo x`\\n"), field="Rs232CodeUpload").body == success(u300)
    assert_stored(u300, RS232, b"{TAGdataTAG:{TAGsettingTAG:TAG42 x\nTAG}}")
    assert lines(u300) == ["line astparam g ethaddr",
                           'line echo -ne "{TAGdataTAG:{TAGsettingTAG:TAG$((6*7)) `echo x`\\\\nTAG}}" > ' + RS232,
                           f"line cp {RS232} {twin(RS232)}"]


def padded(size, begin=b'{"data":{"setting":"', end=b'"}}'):
    return begin + b"x" * (size - len(begin) - len(end)) + end


@pytest.mark.parametrize("size", [2048, 131071, 131072, 131073, 512000])
def test_AListIsStoredWholeWhateverItsLength(u300, size):
    content = padded(size)
    assert len(content) == size
    assert post(u300, content, field="Rs232CodeUpload").body == success(u300)
    assert_stored(u300, RS232, stored_form(content))


def test_ALongListWithAnExpansionIsStoredWhole(u300):
    content = padded(512000, begin=b'{"data":{"setting":"$((6*7))')
    assert post(u300, content, field="Rs232CodeUpload").body == success(u300)
    assert_stored(u300, RS232, stored_form(content.replace(b"$((6*7))", b"42")))


def test_AListOfQuotesAloneIsStoredWhole(u300):
    content = b'{"data":{"setting":[' + b'"",' * 150000 + b'""]}}'
    assert post(u300, content, field="Rs232CodeUpload").body == success(u300)
    assert_stored(u300, RS232, stored_form(content))


@pytest.mark.parametrize("field, path, begin", [
    ("Rs232CodeUpload", RS232, b'{"data":{"setting":1}}'),
    ("IRCodeUpload", IR, b'{"data":[],"delay":"1","rpt":"1","rptdelay":"1"}'),
])
def test_AListOfOneByteMoreThanTheLimitLeavesTheOldOne(u300, field, path, begin):
    most = begin + b" " * (512000 - len(begin))
    assert post(u300, most, field=field).body == success(u300)
    assert_stored(u300, path, stored_form(most))
    before = u300.stored_files()
    assert post(u300, most + b" ", field=field).body == failure(u300, TOO_LARGE)
    assert u300.stored_files() == before


def test_AnExistingListKeepsItsMode(u300):
    u300.write(RS232, b"old", mode=0o640)
    post(u300, rs232(b"new"), field="Rs232CodeUpload")
    folder = u300._open("/user_data2", os.O_RDONLY | os.O_DIRECTORY)
    try:
        assert os.stat("rs232_list.json", dir_fd=folder).st_mode & 0o7777 == 0o640
    finally:
        os.close(folder)


# ---- what comes between ----

@pytest.fixture(scope="module")
def small_disk():
    """A unit with room for 256 KiB."""
    with start_unit(U300, user_data_bytes=256 * 1024) as unit:
        yield unit


@pytest.mark.parametrize("present", [b"", b"old"])
def test_AFullDiskLeavesTheOldListAndNothingElse(small_disk, present):
    small_disk.reset()
    content = stored_form(rs232(present))
    if present:
        assert post(small_disk, rs232(present), field="Rs232CodeUpload").body == success(small_disk)
    before = user_data(small_disk)
    assert post(small_disk, padded(400000), field="Rs232CodeUpload").body == success(small_disk)
    assert user_data(small_disk) == before == ({RS232: content} if present else {})
    # The disk is as free as before.
    assert post(small_disk, padded(200000), field="Rs232CodeUpload").body == success(small_disk)
    assert_stored(small_disk, RS232, stored_form(padded(200000)))


def test_AFullDiskLeavesEachOldTriggerList(small_disk):
    small_disk.reset()
    post(small_disk, {"data": [1, 2, 3, {"data": []}]}, field="TriggerCommandsUpload")
    post(small_disk, {"data": ["new", "x" * 300000, "new", {"data": []}]}, field="TriggerCommandsUpload")
    assert user_data(small_disk) == {TRIGGERS[0]: b"TAGnewTAG", TRIGGERS[1]: b"2", TRIGGERS[2]: b"TAGnewTAG"}


def wait_until_no_gateway_runs(unit):
    end = time.monotonic() + 20
    while unit.gateway_pids():
        assert time.monotonic() < end
        time.sleep(0.001)


def test_AGatewayKilledAtAnySystemCallLeavesOneWholeListAndNothingElse(u300):
    old, new = stored_form(rs232(b"old")), stored_form(padded(300000))
    body = form(padded(300000), field="Rs232CodeUpload")
    environment = {"PATH": u300.cgi_environment["PATH"], "REQUEST_METHOD": "POST",
                   "CONTENT_LENGTH": str(len(body))}

    def run_under_strace(*options):
        u300.write(RS232, old)
        status, _ = u300.run(["/usr/bin/strace", "-qq", *options, "/www/cgi-bin/upload_gateway"],
                             stdin=body, environment=environment)
        wait_until_no_gateway_runs(u300)
        return status

    assert run_under_strace("-o", "/tmp/calls") == 0
    assert user_data(u300) == {RS232: new}
    calls = re.findall(rb"^([a-z0-9_]+)\(", u300.read("/tmp/calls"), re.MULTILINE)
    found = set()
    # The first one is the program's own start, which it is too early to kill in.
    for at in range(1, len(calls)):
        call, nth = calls[at], calls[:at + 1].count(calls[at])
        status = run_under_strace("-o", "/dev/null", "-e",
                                  f"inject={call.decode()}:signal=KILL:when={nth}")
        assert status == -signal.SIGKILL, f"not killed at {call} {nth}"
        stored = user_data(u300)
        assert stored in ({RS232: old}, {RS232: new}), f"killed at {call} {nth}"
        found.add(stored[RS232])
    # It was killed before and behind the moment in which the list changes.
    assert found == {old, new}


# ---- custom EDID ----

EVERY_BYTE = bytes(range(256)).hex()


def edid_told(edid, *choices):
    escaped = "".join(f"\\x{edid[i:i + 2]}" for i in range(0, 512, 2))
    return ["line astparam g ethaddr",
            'line echo -e "setuseredid" > /dev/ttyS1', "mcu setuseredid",
            f'line echo -ne "{escaped}" > /dev/ttyS1', f"mcu-edid {edid.lower()}",
            "line astparam g edid_set_u", "line astparam g edid_set_h",
            *(entry for number in choices for entry in
              (f'line echo "setedid,{number}:9" > /dev/ttyS1', f"mcu setedid,{number}:9"))]


NAMED = ['line astparam s edid_user_defined1 "{}" > /dev/null 2>&1', "line astparam save > /dev/null 2>&1"]


def named(name):
    return [line.format(name) for line in NAMED]


@pytest.mark.parametrize("edid", [EVERY_BYTE, EVERY_BYTE.upper()])
def test_TheMicrocontrollerReceivesTheRawBytes(any_unit, edid):
    assert post(any_unit, {"custom_edid": edid}, field="CustomEdidFile").body == success(any_unit)
    assert told(any_unit) == edid_told(edid)


def test_TheExampleEdidIsLoadedAndNamed(any_unit):
    content = example("custom-edid.json")
    assert post(any_unit, content, field="CustomEdidFile").body == success(any_unit)
    assert told(any_unit) == edid_told(json.loads(content)["custom_edid"]) + named("Hall 1 display")
    assert any_unit.parameter("edid_user_defined1") == "Hall 1 display"


def test_AnEdidBrokenUpByBlanksIsTheSameEdid(u300):
    broken = "".join(f" {EVERY_BYTE[i:i + 32]}\t\r\n" for i in range(0, 512, 32))
    assert post(u300, {"custom_edid": broken}, field="CustomEdidFile").body == success(u300)
    assert told(u300) == edid_told(EVERY_BYTE)


@pytest.mark.parametrize("first, second, choices", [("9", "9", (1, 2)), ("9", "2", (1,)), ("2", "9", (2,)),
                                                    (None, None, ()), ("91", "19", (1,))])
def test_InputsThatUseTheEdidTakeItAgain(u300, first, second, choices):
    u300.set_parameter("edid_set_u", first)
    u300.set_parameter("edid_set_h", second)
    assert post(u300, {"custom_edid": EVERY_BYTE}, field="CustomEdidFile").body == success(u300)
    assert told(u300) == edid_told(EVERY_BYTE, *choices)


def test_AnEdidTakesItsTwoSecondsAndOneForEachInputThatUsesIt():
    with start_unit(U300, real_time=True) as unit:
        for first, seconds in (("2", 2), ("9", 3)):
            unit.set_parameter("edid_set_u", first)
            begun = time.monotonic()
            assert post(unit, {"custom_edid": EVERY_BYTE}, field="CustomEdidFile").body == success(unit)
            assert seconds <= time.monotonic() - begun < seconds + 4


@pytest.mark.parametrize("edid", [EVERY_BYTE[:510], EVERY_BYTE + "00", "G" + EVERY_BYTE[1:],
                                  EVERY_BYTE[:511] + "g", " ", "0" * 3000])
def test_AWrongEdidIsRefusedBeforeAnythingIsSentOrNamed(u300, edid):
    content = {"custom_edid": edid, "custom_edid_name": "new"}
    assert_nothing_stored(u300, content, "CustomEdidFile", INVALID_EDID)
    assert u300.parameter("edid_user_defined1") != "new"


def test_ANameAloneIsStored(u300):
    assert post(u300, {"custom_edid_name": "Hall 2"}, field="CustomEdidFile").body == success(u300)
    assert told(u300) == ["line astparam g ethaddr", *named("Hall 2")]
    assert u300.parameter("edid_user_defined1") == "Hall 2"


@pytest.mark.parametrize("content", ["{}", "[]", "[1]", "3", "null", '"x"', '{"custom_edid":""}',
                                     '{"custom_edid":1,"custom_edid_name":2}'])
def test_AnEdidFileWithoutMembersIsASuccessWithoutEffect(u300, content):
    assert post(u300, content, field="CustomEdidFile").body == success(u300)
    assert u300.journal() == MAC_READ


@pytest.mark.parametrize("content", ["", "x", "{"])
def test_AnEdidFileThatIsNotJsonIsRefused(u300, content):
    assert_nothing_stored(u300, content, "CustomEdidFile", NOT_JSON)


# ---- video wall ----

SCREEN = {"connect": "11", "outer_width": "1213", "outer_height": "684", "view_width": "1210",
          "view_height": "681", "stretch": "0", "rotation": "1"}
GRID = {**SCREEN, "max_row_count": "16", "max_column_count": "16", "position_row": "3", "position_column": "4"}
COORDINATES = {**SCREEN, "virtual_coordinates_x1": "1", "virtual_coordinates_y1": "2",
               "virtual_coordinates_x2": "3", "virtual_coordinates_y2": "4"}
SCREEN_EVENTS = "e e_vw_moninfo_1210_1213_681_684;e e_vw_rotate_5;e e_vw_stretch_type_2;"


def wall_told(unit, document, variant=None):
    unit.set_parameter("VW_VAR_VER", variant, "live")
    assert post(unit, document, field="VideoWallUpload").body == success(unit)
    return told(unit)


@pytest.mark.parametrize("variant, document, event", [
    ("1", GRID, "e e_vw_enable_15_15_3_4;"),
    ("2", GRID, "e e_chg_video_wall_type;e e_vw_enable_16_16_3_4;"),
    ("2", {**GRID, "max_row_count": "40"}, "e e_chg_video_wall_type;e e_vw_enable_40_16_3_4;"),
    ("3", GRID, "e e_vw_enable_15_15_3_4;"),
    ("3", {**GRID, "max_row_count": "40", "max_column_count": "x"}, "e e_vw_enable_39_-1_3_4;"),
    (None, GRID, "e e_vw_enable_15_15_3_4;"),
    ("1", COORDINATES, "e e_vw_enable_1_2_3_4_2;"),
    ("2", COORDINATES, "e e_vw_enable_1_2_3_4_2;"),
    (None, COORDINATES, "e e_vw_enable_1_2_3_4_2;"),
])
def test_TheScreenIsPlacedOnEveryKindOfWall(d200, variant, document, event):
    assert wall_told(d200, document, variant) == ["line astparam g ethaddr", f"line {event}{SCREEN_EVENTS}"]


@pytest.mark.parametrize("addon, mode, reconnects", [
    ("none", "AV-A", True), ("none", None, True), ("dante", "audio-only", True), ("dante", "AV-A", False),
    ("dante", None, False), ("aes67", "audio-only", False), (None, "audio-only", False)])
def test_TheUnitReconnectsWhereItsAudioAllows(any_unit, addon, mode, reconnects):
    any_unit.set_parameter("A_ADDON", addon, "live")
    any_unit.set_parameter("DANTE_OP_MODE", mode, "live")
    assert wall_told(any_unit, COORDINATES) == [
        "line astparam g ethaddr", f"line e e_vw_enable_1_2_3_4_2;{SCREEN_EVENTS}",
        *(["line e e_reconnect::11::v"] if reconnects else [])]


def test_TheExampleWallIsApplied(any_unit):
    assert wall_told(any_unit, json.loads(example("video-wall.json")), "1") == [
        "line astparam g ethaddr",
        "line e e_vw_enable_1_1_0_1;e e_vw_moninfo_1210_1213_681_684;e e_vw_rotate_0;e e_vw_stretch_type_2;"]


def without(document, key, value=None):
    changed = {**document, key: value}
    if value is None:
        del changed[key]
    return changed


@pytest.mark.parametrize("document, feedback", [
    ("", NOT_JSON), ("x", NOT_JSON), ("{", NOT_JSON),
    ({}, ERROR_NODE), ([], ERROR_NODE), (SCREEN, ERROR_NODE), ({**GRID, **COORDINATES}, ERROR_NODE),
    *((without(GRID, key), ERROR_NODE) for key in GRID),
    *((without(COORDINATES, key), ERROR_NODE) for key in COORDINATES),
    *((without(GRID, key, 1), ERROR_NODE) for key in GRID),
    *(({**GRID, key: "1"}, ERROR_NODE) for key in COORDINATES if key not in SCREEN),
    *(({**COORDINATES, key: "1"}, ERROR_NODE) for key in GRID if key not in SCREEN),
    *(({**GRID, key: value}, RANGE) for key in ("max_row_count", "max_column_count")
      for value in ("17", "0", "-1", "x", "")),
    *(({**document, key: value}, RANGE) for document in (GRID, COORDINATES)
      for key in ("rotation", "stretch") for value in ("10", "-1")),
    ({**without(GRID, "stretch"), "max_row_count": "17"}, ERROR_NODE),
])
def test_AWrongWallLeavesTheUnitAsItWas(d200, document, feedback):
    d200.set_parameter("VW_VAR_VER", "1", "live")
    assert_nothing_stored(d200, document, "VideoWallUpload", feedback)


# ---- certificates ----

FILES = {
    "ldap_ca_file": "LDAP_CAFile", "ldap_cert_file": "LDAP_CERTFile", "ldap_key_file": "LDAP_KEYFile",
    "mqtt_ca_file": "CAFile", "mqtt_cert_file": "CERTFile", "mqtt_key_file": "KEYFile",
    "https_ca_file": "HTTPS_CAFILE", "lan1_cert_file_8021x": "client.pem",
    "lan1_key_file_8021x": "client.key", "lan2_cert_file_8021x": "client_2.pem",
    "lan2_key_file_8021x": "client_2.key", "lan1_ca_8021x": "ca.pem", "lan2_ca_8021x": "ca_2.pem",
}


def encrypted(secret):
    """The form that the simulated unit's tool gives a file."""
    return base64.encodebytes(secret).decode().replace("\n", "")


def assert_exported(unit, reply, secrets):
    """The reply is one object with the thirteen texts, in their order."""
    found = json.loads(reply.body)
    assert list(found) == list(FILES)
    assert reply.body == json.dumps(found, separators=(",", ":")).encode()
    for key in FILES:
        secret = secrets.get(key)
        assert found[key].replace("\n", "") == (encrypted(secret) if secret else "")
        assert found[key].endswith("\n") == bool(secret)
    assert unit.files("/var/tmp") == ["lmparam_dump"]


def test_AUnitWithoutCertificatesExportsThirteenEmptyTexts(any_unit):
    reply = curl(any_unit, any_unit.url + "?name=getCaEncryptData")
    assert_exported(any_unit, reply, {})
    assert any_unit.journal() == MAC_READ


@pytest.mark.parametrize("by_post", [False, True])
def test_AllCertificatesAreExportedEncrypted(any_unit, by_post):
    secrets = {key: f"secret of {file}\n".encode() * 20 + bytes(range(256)) for key, file in FILES.items()}
    for key, file in FILES.items():
        any_unit.write(f"/user_data2/{file}", secrets[key])
    reply = curl(any_unit, "-d", "name=getCaEncryptData", any_unit.url) if by_post else \
        curl(any_unit, any_unit.url + "?name=getCaEncryptData")
    assert_exported(any_unit, reply, secrets)
    working = [file if file.startswith("c") else "encrypt_" + file.removeprefix("LDAP_").removeprefix("HTTPS_")
               for file in FILES.values()]
    assert lines(any_unit) == ["line astparam g ethaddr", *(
        line for file, name in zip(FILES.values(), working) for line in
        (f"line crypto_program -e /user_data2/{file} > /var/tmp/{name}.txt", f"line rm -rf /var/tmp/{name}.txt"))]


def test_TheLastCertificateAloneIsTheLastMember(u300):
    u300.write("/user_data2/ca_2.pem", b"secret")
    reply = curl(u300, u300.url + "?name=getCaEncryptData")
    assert_exported(u300, reply, {"lan2_ca_8021x": b"secret"})
    assert reply.body.endswith(b',"lan2_ca_8021x":"c2VjcmV0\\n"}')


def test_TwoExportsAtATimeAreBothWhole(u300):
    secrets = {key: f"secret of {file}\n".encode() for key, file in FILES.items()}
    for key, file in FILES.items():
        u300.write(f"/user_data2/{file}", secrets[key])
    with concurrent.futures.ThreadPoolExecutor() as callers:
        with u300.held("crypto_program -e /user_data2/LDAP_CAFile"):
            replies = [callers.submit(curl, u300, u300.url + "?name=getCaEncryptData") for _ in range(2)]
            wait_until(lambda: u300.peek().count("line astparam g ethaddr") == 2)
            u300.wait_for("tool crypto_program -e /user_data2/LDAP_CAFile")
            # Time for the second one to go as far as it can.
            time.sleep(0.2)
            assert len([entry for entry in u300.peek("line") if "crypto_program" in entry]) == 1
        for reply in [reply.result() for reply in replies]:
            assert_exported(u300, reply, secrets)


def test_ACallerWhoReadsSlowlyGetsTheWholeExportAndKeepsNobodyWaiting(u300):
    for file in FILES.values():
        u300.write(f"/user_data2/{file}", b"secret" * 5000)
    read_end, write_end = os.pipe2(os.O_NONBLOCK)
    ended = u300.spawn(["/www/cgi-bin/upload_gateway"], stdout=write_end,
                       environment={**u300.cgi_environment, "REQUEST_METHOD": "GET",
                                    "QUERY_STRING": "name=getCaEncryptData"})
    os.close(write_end)
    os.set_blocking(read_end, True)
    # The pipe is full before anybody reads.
    wait_until(lambda: u300.peek().count("line rm -rf /var/tmp/ca_2.pem.txt") == 1)
    time.sleep(0.2)
    found = json.loads(curl(u300, u300.url + "?name=getCaEncryptData").body)
    assert [len(base64.b64decode(found[key])) for key in FILES] == [30000] * len(FILES)
    with open(read_end, "rb") as pipe:
        printed = pipe.read()
    assert u300.exit_status(ended) == 0
    assert printed.startswith(HEADERS)
    found = json.loads(printed[len(HEADERS):])
    assert [len(base64.b64decode(found[key])) for key in FILES] == [30000] * len(FILES)


def test_WithoutANullDeviceNoToolPrintsIntoTheReply(u300):
    body = form(example("video-wall.json"), field="VideoWallUpload")
    environment = {**u300.cgi_environment, "REQUEST_METHOD": "POST", "CONTENT_LENGTH": str(len(body))}
    printed = u300.run(["/usr/bin/strace", "-qq", "-o", "/tmp/calls", "-P", "/dev/null",
                        "-e", "inject=openat:error=ENOENT", "/www/cgi-bin/upload_gateway"],
                       stdin=body, environment=environment)
    assert printed == (0, HEADERS + success(u300))
    assert b"INJECTED" in u300.read("/tmp/calls")


def test_WhatTheToolPrintsBesideItsOutputStaysOutOfTheReply(u300):
    u300.put_tool("crypto_program", "#!/bin/busybox sh\necho noise >&2\n")
    try:
        u300.write("/user_data2/ca.pem", b"secret")
        assert_exported(u300, curl(u300, u300.url + "?name=getCaEncryptData"), {})
    finally:
        os.unlink("unit/extra/crypto_program", dir_fd=u300._root)
