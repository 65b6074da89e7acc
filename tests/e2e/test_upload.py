"""Recognising an upload, cutting its content out of the form, its size, and the one reply."""

import pytest

from conftest import (HEADERS, MAC_READ, NOT_JSON, NOT_SUPPORTED, TOO_LARGE, TYPE_DELETED,
                      TYPE_MODIFIED, assert_refused, curl, failure, form, post, post_body, success)

OTHER = b'{"model":"ZAVO-DEC-X999-DA"}'
LIMITED = ["Rs232CodeUpload", "IRCodeUpload", "VideoWallUpload", "CustomEdidFile"]
UNLIMITED = ["UnitConfUpload", "TriggerCommandsUpload"]


# ---- replies ----

def test_AConfigurationIsAnsweredWithSuccessAndTheMac(any_unit):
    reply = post(any_unit, {"model": any_unit.model})
    assert reply.body == success(any_unit)
    assert reply.status == 200
    assert b"\r\nContent-Type: text/html\r\n" in reply.headers


def test_TheReplyIsHeaderLinesAndOneObjectWithoutALineFeed(any_unit):
    body = form({"model": any_unit.model})
    assert any_unit.run_gateway("POST", body) == (0, HEADERS + success(any_unit))


@pytest.mark.parametrize("content, feedback", [
    ("", NOT_JSON),
    ("no json", NOT_JSON),
    ('{"model":"ZAVO-ENC-U300-DA"', NOT_JSON),
    ("{}", TYPE_DELETED),
    ('{"device_name":"x"}', TYPE_DELETED),
    ("[]", TYPE_DELETED),
    ('[{"model":"ZAVO-ENC-U300-DA"}]', TYPE_DELETED),
    ("7", TYPE_DELETED),
    ('"ZAVO-ENC-U300-DA"', TYPE_DELETED),
    ("null", TYPE_DELETED),
    ('{"model":"ZAVO-ENC-E100-DA","device_name":"x"}', TYPE_MODIFIED),
    ('{"model":"zavo-enc-u300-da"}', TYPE_MODIFIED),
    ('{"model":"ZAVO-ENC-U300-D"}', TYPE_MODIFIED),
    ('{"model":""}', TYPE_MODIFIED),
    ('{"model":" ZAVO-ENC-U300-DA"}', TYPE_MODIFIED),
    ('{"model":7}', TYPE_MODIFIED),
    ('{"model":null}', TYPE_MODIFIED),
    ('{"model":["ZAVO-ENC-U300-DA"]}', TYPE_MODIFIED),
    ('{"model":{"model":"ZAVO-ENC-U300-DA"}}', TYPE_MODIFIED),
    ('{"model":"x","Model":"ZAVO-ENC-U300-DA"}', TYPE_MODIFIED),
])
def test_AConfigurationThatIsNoneLeavesTheUnitAsItWas(u300, content, feedback):
    before = u300.stored_files()
    assert_refused(u300, post(u300, content), feedback)
    assert u300.stored_files() == before


@pytest.mark.parametrize("content", [
    '{"MODEL":"ZAVO-ENC-U300-DA"}',
    '{"Model":"ZAVO-ENC-U300-DA","model":"x"}',
    '{"model":"ZAVO-ENC-U300-DA and more"}',
    '{"model":"ZAVO-ENC-U300-DA"} and text behind it',
    '\ufeff{"model":"ZAVO-ENC-U300-DA"}',
    ' \r\n\t{ "model" : "ZAVO-ENC-U300-DA" }\r\n',
])
def test_AConfigurationWithOddsAndEndsIsApplied(u300, content):
    assert post(u300, content).body == success(u300)
    u300.wait_for("rebooted")


@pytest.mark.parametrize("field", ["", "UnitConfUploa", "unitconfupload", "UnitConfUpload2", "file",
                                   "getCaEncrypt"])
def test_AnUnknownFieldIsNotSupported(u300, field):
    assert_refused(u300, post(u300, OTHER, field=field or "x"), NOT_SUPPORTED)


def test_AnEmptyPostIsNotSupported(u300):
    assert_refused(u300, curl(u300, "--data", "", u300.url), NOT_SUPPORTED)


@pytest.mark.parametrize("depth, feedback", [(1000, TYPE_DELETED), (1001, NOT_JSON),
                                             (200_000, NOT_JSON)])
def test_NestedBracketsAreHeldWithinTheParsersLimit(u300, depth, feedback):
    assert_refused(u300, post(u300, b"[" * depth + b"]" * depth), feedback)


# ---- the MAC in the reply ----

@pytest.mark.parametrize("printed, mac", [
    ("printf '%s\\n' 02:00:00:00:00:01", b"02:00:00:00:00:01"),
    ("printf 'first\\nlast\\n'", b"last"),
    ("printf 'first\\nlast'", b"last"),
    ("printf 'last\\n\\n'", b""),
    ("printf ' AB \\r\\n'", b" AB \r"),
    (":", b""),
    ("echo not defined", b""),
    ("echo '\"ethaddr\" not defined'", b""),
    ("echo 'not defined here'", b""),
    ("printf 'not defined\\n02:00\\n'", b"02:00"),
    ("echo not define", b"not define"),
    ("head -c 1023 /dev/zero | tr '\\0' a", b"a" * 1023),
    ("head -c 1030 /dev/zero | tr '\\0' a; echo", b"a" * 7),
    ("head -c 2046 /dev/zero | tr '\\0' a", b"a" * 1023),
    ("head -c 1023 /dev/zero | tr '\\0' a; echo", b""),
    ("echo 100%s%d%n", b"100%s%d%n"),
    ("echo out; echo error >&2", b"out"),
    ("echo killed; kill -9 $$", b"killed"),
])
def test_TheMacIsTheLastLineThatTheToolPrints(u300, printed, mac):
    u300.put_tool("astparam", "#!/bin/busybox sh\n" + printed + "\n")
    reply = post(u300, OTHER)
    assert reply.body == (b'{"command":"uploadConfFile","success":false,"mac":"' + mac
                          + b'","feedback":"' + TYPE_MODIFIED.encode() + b'"}')


def test_AnUnsetMacIsAnEmptyText(u300):
    u300.set_parameter("ethaddr", None)
    assert post(u300, OTHER).body == \
        (b'{"command":"uploadConfFile","success":false,"mac":"","feedback":"'
         + TYPE_MODIFIED.encode() + b'"}')


# ---- recognising ----

def test_TheFirstKnownFieldInTheTablesOrderWins(u300):
    # Too long for a limited kind, never too long for a configuration: the answer tells the kind.
    long = b'{"a":"' + b"x" * 512_000 + b'"}'
    for name in LIMITED[:2]:
        field = b' name="' + name.encode() + b'"'
        for body in (form(long, "UnitConfUpload") + field, field + form(long, "UnitConfUpload"),
                     form(b'{"a":"' + field.replace(b'"', b"") + field + long, "UnitConfUpload")):
            assert u300.run_gateway("POST", body)[1] == HEADERS + failure(u300, TOO_LARGE)
    for name in LIMITED[2:]:
        field = b' name="' + name.encode() + b'"'
        for body in (form(long, "UnitConfUpload") + field, field + form(long, "UnitConfUpload")):
            assert u300.run_gateway("POST", body)[1] == HEADERS + failure(u300, TYPE_DELETED)


def test_AConfigurationMayHoldTheExportsName(u300):
    document = OTHER[:-1] + b',"note":"name=getCaEncryptData"}'
    assert_refused(u300, post(u300, document), TYPE_MODIFIED)


def test_TheFieldsNameNeedsItsBlankAndQuotes(u300):
    for text in (b'name="UnitConfUpload"', b" name=UnitConfUpload", b' name="UnitConfUpload'):
        assert u300.run_gateway("POST", text + OTHER)[1] == HEADERS + failure(u300, NOT_SUPPORTED)


# ---- where the content starts and ends ----

NAME = b'Content-Disposition: form-data; name="UnitConfUpload"; filename="f"\r\n'


@pytest.mark.parametrize("body, feedback", [
    # A known type's blank line is the start, wherever its part stands.
    (NAME + b"Content-Type: text/plain\r\n\r\n" + OTHER, TYPE_MODIFIED),
    (b"a\r\n\r\nb" + NAME + b"Content-Type: text/plain\r\n\r\n" + OTHER, TYPE_MODIFIED),
    (NAME + b"Content-Type: application/octet-stream\r\n\r\n" + OTHER, TYPE_MODIFIED),
    (b"a\r\n\r\nb" + NAME + b"Content-Type: application/octet-stream\r\n\r\n" + OTHER, TYPE_MODIFIED),
    (b"a\r\n\r\nb" + NAME + b"Content-Type: image/png\r\n\r\n" + OTHER, TYPE_MODIFIED),
    # Plain text counts before the others, and the first of several counts.
    (NAME + b"Content-Type: image/png\r\n\r\nx\r\nContent-Type: text/plain\r\n\r\n" + OTHER,
     TYPE_MODIFIED),
    (NAME + b"Content-Type: application/octet-stream\r\n\r\n{}\r\n"
     b"Content-Type: image/png\r\n\r\n" + OTHER, TYPE_DELETED),
    (NAME + b"Content-Type: text/plain\r\n\r\n{} Content-Type: text/plain\r\n\r\n" + OTHER,
     TYPE_DELETED),
    # The form's own type only counts with an odd line end.
    (NAME + b"Content-Type: multipart/form-data\r\n\r\n" + OTHER, None),
    (NAME + b"Content-Type: multipart/form-data\r\n\r\n{} Content-Type: multipart/form-data\n\r\n"
     + OTHER, TYPE_MODIFIED),
    # Any other type: behind the first blank line of all.
    (NAME + b"Content-Type: application/json\r\n\r\n" + OTHER, TYPE_MODIFIED),
    (b"a\r\n\r\n{}" + NAME + b"Content-Type: application/json\r\n\r\n" + OTHER, TYPE_DELETED),
    (NAME + b"Content-Type: text/plain; charset=utf-8\r\n\r\n" + OTHER, TYPE_MODIFIED),
    (NAME + b"Content-Type:\r\n\r\n" + OTHER, TYPE_MODIFIED),
    (NAME + b"Content-Type: multipart/form-data\n\r\n" + OTHER, None),
    (NAME + b"Content-Type: application/json\n\n" + OTHER, None),
    (NAME + b"Content-Type: application/json\r\n", None),
    # No type at all.
    (NAME + b"\r\n" + OTHER, TYPE_MODIFIED),
    (NAME + b"\n" + OTHER, None),
    (NAME, None),
    # No headers: all of it.
    (OTHER + b' name="UnitConfUpload"', TYPE_MODIFIED),
    (b' name="UnitConfUpload"' + OTHER, NOT_JSON),
    (b'Content-Disposition:x name="UnitConfUpload"\r\n\r\n' + OTHER, NOT_JSON),
    (b"{}\r\n\r\n" + OTHER + b' name="UnitConfUpload"', TYPE_DELETED),
])
def test_TheContentStartsWhereTheFirstRuleThatAppliesSaysSo(u300, body, feedback):
    expected = b"" if feedback is None else failure(u300, feedback)
    assert u300.run_gateway("POST", body) == (0, HEADERS + expected)
    assert u300.journal() == MAC_READ


@pytest.mark.parametrize("inside, feedback", [
    (b"\r\n---", TYPE_MODIFIED), (b"\n----", TYPE_MODIFIED), (b"\r----", TYPE_MODIFIED),
    (b"\r\n--\r\n--", TYPE_MODIFIED), (b"\r\n ----", TYPE_MODIFIED), (b"\r\n----", NOT_JSON),
    (b"\r\r\n----", NOT_JSON), (b"\r\n-----", NOT_JSON)])
def test_TheContentEndsAtALineOfFourHyphens(u300, inside, feedback):
    document = OTHER[:-1] + b',"note":"' + inside + b'"}'
    assert u300.run_gateway("POST", form(document)) == (0, HEADERS + failure(u300, feedback))


def test_WithoutABoundaryTheContentEndsWithTheBody(u300):
    assert u300.run_gateway("POST", NAME + b"\r\n" + OTHER[:-1]) == (0, HEADERS + failure(u300, NOT_JSON))
    assert u300.run_gateway("POST", NAME + b"\r\n" + OTHER) == (0, HEADERS + failure(u300, TYPE_MODIFIED))


# ---- size ----

@pytest.mark.parametrize("field", LIMITED)
@pytest.mark.parametrize("size", [512_001, 600_000, 1_048_575, 1_048_576, 1_048_577, 2_000_000])
def test_ALimitedKindIsRefusedAbove512000Bytes(u300, field, size):
    assert_refused(u300, post(u300, b"[" + b" " * (size - 2) + b"]", field), TOO_LARGE)


@pytest.mark.parametrize("field", LIMITED)
@pytest.mark.parametrize("size", [0, 511_999, 512_000])
def test_ALimitedKindOf512000BytesIsLookedAt(u300, field, size):
    reply = post(u300, b"x" * size, field)
    assert reply.body != failure(u300, TOO_LARGE)
    assert u300.journal() == MAC_READ


@pytest.mark.parametrize("size", [512_000, 512_001, 600_000, 1_048_574, 1_048_575])
def test_AConfigurationMayFillTheContentBuffer(u300, size):
    content = OTHER[:-1] + b',"pad":"' + b"x" * (size - len(OTHER) - 9) + b'"}'
    assert len(content) == size
    assert_refused(u300, post(u300, content), TYPE_MODIFIED)


@pytest.mark.parametrize("field", UNLIMITED)
@pytest.mark.parametrize("size", [1_048_576, 1_048_577, 3_000_000])
def test_WhatDoesNotFitTheContentBufferIsTooLarge(u300, field, size):
    assert_refused(u300, post(u300, OTHER + b" " * (size - len(OTHER)), field), TOO_LARGE)


@pytest.mark.parametrize("size", [10_485_758, 10_485_759, 10_485_760, 12_000_000])
def test_BodiesAroundTheRequestBufferAreTooLarge(u300, size):
    head = NAME + b"\r\n"
    assert_refused(u300, post_body(u300, head + b" " * (size - len(head))), TOO_LARGE)


# ---- nothing else reaches the client ----

def test_ToolsThatTalkDoNotReachTheReply(u300):
    u300.put_tool("astparam", "#!/bin/busybox sh\n"
                  "head -c 100000 /dev/zero | tr '\\0' x; echo; echo noise >&2\n"
                  "[ \"$1\" = g ] && echo 02:5A:00:10:00:01\nexit 1\n")
    u300.put_tool("lmparam", "#!/bin/busybox sh\necho noise; echo noise >&2\n")
    document = {"model": u300.model, "device_name": "n", "serial_number": "s"}
    assert u300.run_gateway("POST", form(document)) == (0, HEADERS + success(u300))
    assert post(u300, document).body == success(u300)


def test_ToolsDoNotReadTheRequest(u300):
    u300.put_tool("astparam", "#!/bin/busybox sh\n[ \"$1\" = g ] && echo 02:5A:00:10:00:01\n"
                  "[ \"$1\" = s ] && cat > /tmp/taken.$2\n")
    body = form({"model": u300.model, "device_name": "n"})
    assert u300.run_gateway("POST", body + b"what stands behind", len(body)) == \
        (0, HEADERS + success(u300))
    assert u300.read("/tmp/taken.deviceName") == b""
