"""The request's way in: methods, announced lengths, what is read and what is not. Most run the
gateway without the web server, which would tidy such requests up."""

import os
import re
import time

import pytest

from conftest import (HEADERS, MAC_READ, NOT_JSON, NOT_SUPPORTED, TOO_LARGE, TYPE_MODIFIED, curl, failure, form,
                      post_body)

LONGEST = 10_485_759
FIELD = b' name="UnitConfUpload"'
OTHER_MODEL = '{"model":"ZAVO-DEC-X999-DA"}'


def answered(unit, feedback):
    return 0, HEADERS + failure(unit, feedback)


@pytest.mark.parametrize("method", [None, "PUT", "", "POSTS", "HEAD"])
def test_OtherMethodsGetTheHeadersAlone(u300, method):
    assert u300.run_gateway(method, form(OTHER_MODEL)) == (0, HEADERS)
    assert u300.journal() == []


def test_AnUnknownMethodGetsAnEmptyReplyFromTheWebServer(u300):
    reply = curl(u300, "-X", "PUT", u300.url)
    assert (reply.status, reply.body) == (200, b"")
    assert b"\r\nContent-Type: text/html" in reply.headers
    assert u300.journal() == []


@pytest.mark.parametrize("method", ["POST", "post", "PoSt"])
def test_MethodIgnoresCase(u300, method):
    assert u300.run_gateway(method, form(OTHER_MODEL)) == answered(u300, TYPE_MODIFIED)
    assert u300.journal() == MAC_READ


def test_GetWithoutQueryGetsTheHeadersAlone(u300):
    assert u300.run_gateway("GET") == (0, HEADERS)
    assert u300.journal() == []


@pytest.mark.parametrize("method", ["GET", "get"])
def test_AQueryIsSearchedAsItStands(u300, method):
    assert u300.run_gateway(method, query="") == answered(u300, NOT_SUPPORTED)
    assert u300.run_gateway(method, query="%20name=%22UnitConfUpload%22") == \
        answered(u300, NOT_SUPPORTED)
    assert u300.run_gateway(method, query=OTHER_MODEL + FIELD.decode()) == \
        answered(u300, TYPE_MODIFIED)


def test_AQueryDoesNotReadTheBody(u300):
    with open(os.memfd_create("body"), "w+b", buffering=0) as body:
        body.write(form(OTHER_MODEL))
        body.seek(0)
        u300.run_gateway("GET", body.fileno(), length=10, query="x")
        assert os.lseek(body.fileno(), 0, os.SEEK_CUR) == 0


@pytest.mark.parametrize("length", ["0", "letters", "", "-0", " ", False])
def test_NoLengthMeansNoBody(u300, length):
    assert u300.run_gateway("POST", form(OTHER_MODEL), length) == answered(u300, NOT_SUPPORTED)
    assert u300.journal() == MAC_READ


@pytest.mark.parametrize("length", [
    "-5", "-1", "20000000", "4294967295", "4294967296", "4294967306", "-4294967295",
    "99999999999999999999", "-99999999999999999999", "  +100000", "\t100000", "100000x", "100000.5"])
def test_LengthsAreReadAsFarAsTheyGoAndClamped(u300, length):
    assert u300.run_gateway("POST", form(OTHER_MODEL), length) == answered(u300, TYPE_MODIFIED)
    assert u300.journal() == MAC_READ


def test_AShortBodyIsTakenAsItIs(u300):
    body = form(OTHER_MODEL)
    assert u300.run_gateway("POST", body, len(body) + 40) == answered(u300, TYPE_MODIFIED)


def consumed(unit, size, length, field_end):
    """Sends a file of this size in which the form field ends at `field_end`; returns the gateway's
    output and how many bytes it took from the file."""
    with open(os.memfd_create("body"), "w+b") as body:
        body.truncate(0)
        body.write(b" " * (field_end - len(FIELD)) + FIELD + b" " * (size - field_end))
        body.flush()
        os.lseek(body.fileno(), 0, os.SEEK_SET)
        _, output = unit.run_gateway("POST", body.fileno(), length)
        return output, os.lseek(body.fileno(), 0, os.SEEK_CUR)


@pytest.mark.parametrize("size, length, taken", [
    (200, 60, 60), (60, 100, 60), (4096, 4095, 4095), (8192, 4097, 4097),
    (12_000_000, LONGEST - 1, LONGEST - 1), (12_000_000, LONGEST, LONGEST),
    (12_000_000, LONGEST + 1, LONGEST), (12_000_000, 20_000_000, LONGEST), (12_000_000, -5, LONGEST),
    (LONGEST - 1, LONGEST - 1, LONGEST - 1), (LONGEST - 1, LONGEST + 1, LONGEST - 1),
    (LONGEST, LONGEST, LONGEST), (LONGEST + 1, LONGEST + 1, LONGEST)])
def test_NoByteBehindTheLengthIsTaken(u300, size, length, taken):
    # The field's last byte is the last one that counts, then the first one that does not.
    seen = TOO_LARGE if taken > 1_048_575 else NOT_JSON
    assert consumed(u300, size, length, taken) == (HEADERS + failure(u300, seen), taken)
    if size > taken:
        assert consumed(u300, size, length, taken + 1) == \
            (HEADERS + failure(u300, NOT_SUPPORTED), taken)


def test_AFileIsReadByOneCallForWhatIsAnnounced(u300):
    length, size = 300_000, 400_000
    environment = {**u300.cgi_environment, "REQUEST_METHOD": "POST", "CONTENT_LENGTH": str(length)}
    u300.run(["/usr/bin/strace", "-o", "/tmp/trace", "-e", "trace=read",
              "/www/cgi-bin/upload_gateway"], stdin=b" " * size, environment=environment)
    assert re.findall(rb"^read\(0, .*, (\d+)\) += (\d+)$", u300.read("/tmp/trace"), re.M) == \
        [(b"300000", b"300000")]


def test_TheReplyComesWhileTheClientKeepsThePipeOpen(u300):
    body = form(OTHER_MODEL)
    read_end, write_end = os.pipe()
    try:
        os.write(write_end, body + b"more")
        assert u300.run_gateway("POST", read_end, len(body), timeout=10) == \
            answered(u300, TYPE_MODIFIED)
        assert os.read(read_end, 100) == b"more"
    finally:
        os.close(read_end)
        os.close(write_end)


def test_ABodyInManyPiecesIsReadWhole(u300):
    body = form(OTHER_MODEL)
    read_end, write_end = os.pipe()
    with open(os.memfd_create("output"), "w+b", buffering=0) as output:
        ended = u300.spawn(
            ["/www/cgi-bin/upload_gateway"], stdin=read_end, stdout=output.fileno(),
            environment={**u300.cgi_environment, "REQUEST_METHOD": "POST",
                         "CONTENT_LENGTH": str(len(body))})
        os.close(read_end)
        for at in range(0, len(body), 7):
            os.write(write_end, body[at:at + 7])
            time.sleep(0.001)
        os.close(write_end)
        assert u300.exit_status(ended) == 0
        output.seek(0)
        assert output.read() == HEADERS + failure(u300, TYPE_MODIFIED)


def test_WhatStandsBehindANulIsNotSeen(u300):
    body = form(OTHER_MODEL)
    assert u300.run_gateway("POST", b"\0" + body) == answered(u300, NOT_SUPPORTED)
    at = body.index(b"model")
    assert u300.run_gateway("POST", body[:at] + b"\0" + body[at:]) == answered(u300, NOT_JSON)
    assert u300.run_gateway("POST", body + b"\0" + b"x" * 100) == answered(u300, TYPE_MODIFIED)
    assert u300.journal() == MAC_READ * 3


@pytest.mark.parametrize("size", [0, 1, 2, 3])
def test_TinyBodiesAreNotSupported(u300, size):
    assert u300.run_gateway("POST", b"{}x"[:size]) == answered(u300, NOT_SUPPORTED)


def test_ABodyCutAnywhereIsAnsweredByWhatIsLeftOfIt(u300):
    body = form(OTHER_MODEL)
    named = body.index(FIELD) + len(FIELD)
    headed = body.index(b"\r\n\r\n") + 4
    complete = body.index(OTHER_MODEL.encode()) + len(OTHER_MODEL)
    for cut in range(len(body) + 1):
        status, output = u300.run_gateway("POST", body[:cut], len(body))
        if cut < named:
            expected = failure(u300, NOT_SUPPORTED)
        elif cut < headed:
            expected = b""
        elif cut < complete:
            expected = failure(u300, NOT_JSON)
        else:
            expected = failure(u300, TYPE_MODIFIED)
        assert (cut, status, output) == (cut, 0, HEADERS + expected)
    assert u300.journal() == MAC_READ * (len(body) + 1)


def test_ABodyOfTwelveMillionBytesPassesTheWebServer(u300):
    reply = post_body(u300, b" " * (LONGEST - len(FIELD)) + FIELD + b" " * 1_500_000)
    assert (reply.status, reply.body) == (200, failure(u300, TOO_LARGE))
    reply = post_body(u300, b" " * (LONGEST - len(FIELD) + 1) + FIELD + b" " * 1_500_000)
    assert (reply.status, reply.body) == (200, failure(u300, NOT_SUPPORTED))
    assert u300.journal() == MAC_READ * 2
