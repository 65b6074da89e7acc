"""A whole unit configuration: the walk with its progress, save and restart, and the identity."""

import pytest

from conftest import HEADERS, MAC_READ, assert_told, form, post, success, told


def progress(last):
    entries = []
    for step in range(1, last + 1):
        entries += [f'line echo "upgradeUnitSetting:{step},26" | nc 127.0.0.1 4445',
                    f"status upgradeUnitSetting:{step},26"]
    return entries


SAVE_AND_RESTART = ["line astparam save;", "tool astparam save", "line e e_reboot &",
                    "tool e e_reboot", "rebooted"]


@pytest.mark.parametrize("stream", [False, True])
def test_ADocumentOfOnlyTheModelReportsEveryStep(any_unit, stream):
    document = {"model": any_unit.model, **({"stream": {}} if stream else {})}
    assert post(any_unit, document).body == success(any_unit)
    any_unit.wait_for("rebooted")
    last = (29 if any_unit.model == "ZAVO-DEC-D200-DA" else 25) + stream
    assert any_unit.journal() == MAC_READ + progress(last) + SAVE_AND_RESTART


@pytest.mark.parametrize("stream", ["null", "7", "[]", '"text"', '{"unknown":1}'])
def test_AStreamOfAnyTypeCountsAsPresent(u300, stream):
    post(u300, '{"model":"%s","stream":%s}' % (u300.model, stream))
    u300.wait_for("rebooted")
    assert u300.journal() == MAC_READ + progress(26) + SAVE_AND_RESTART


def test_NothingIsStoredWhenNothingIsAskedFor(any_unit):
    before = any_unit.stored_files()
    assert_told(any_unit, {}, "progress 1-29" if "DEC" in any_unit.model else "progress 1-25")
    assert any_unit.stored_files() == before


def test_UnknownKeysAreIgnored(any_unit):
    assert_told(any_unit, {"unknown": {"a": [1, 2]}, "devicename": "x", "": None, "aes67": {"x": 1}},
                "progress 1-29" if "DEC" in any_unit.model else "progress 1-25")


def test_ADecodersSectionsMeanNothingToAnEncoder(u300, e100):
    document = {"video_wall": {"rows": 1}, "osd": {"enable": True}, "routing": {
        "video": {"stream_number": "3"}}, "no_stream_image": {"enable": True},
        "power_on_image": {"enable": True}}
    for unit in (u300, e100):
        assert_told(unit, document, "progress 1-25")


def test_AnEncodersSectionMeansNothingToADecoder(d200):
    assert_told(d200, {"usb_host": {"enable": True, "host_select": "auto"}}, "progress 1-29")


def test_AModelMayHaveMoreBehindItsSixteenCharacters(any_unit):
    assert post(any_unit, {"model": any_unit.model + "-V2"}).body == success(any_unit)
    any_unit.wait_for("rebooted")


def test_ASecondConfigurationStartsFromTheFirstOnesParameters(u300):
    post(u300, {"model": u300.model, "device_name": "First", "serial_number": "1"})
    post(u300, {"model": u300.model, "device_name": "Second"})
    u300.wait_for("rebooted")
    assert (u300.parameter("deviceName"), u300.parameter("serialNumber")) == ("Second", "1")
    assert u300.parameter("SERIALNUMBER", "live") == "1"


# ---- identity ----

SNAPSHOT = "line cp /dev/shm/rwparam /dev/shm/rwparam_temp"


def identity(unit, document):
    """What a document's identity does, without what follows it. A text is posted as it stands."""
    text = document if isinstance(document, str) else {"model": unit.model, **document}
    assert unit.run_gateway("POST", form(text)) == (0, HEADERS + success(unit))
    unit.wait_for("rebooted")
    entries = told(unit)
    last = "progress 1-29" if "DEC" in unit.model else "progress 1-25"
    assert entries[0] == "line astparam g ethaddr"
    assert entries[-4:] == [last, "line astparam save;", "line e e_reboot &", "rebooted"]
    return entries[1:-4]


def test_NameAndSerialNumberComeFirst(any_unit):
    document = {"serial_number": "SN 1", "device_name": "Room 1"}
    assert identity(any_unit, document) == [
        SNAPSHOT, 'line astparam s deviceName "Room 1" > /dev/null 2>&1',
        'line astparam s serialNumber "SN 1"  > /dev/null 2>&1;lmparam s SERIALNUMBER "SN 1";']
    assert any_unit.parameter("deviceName") == "Room 1"
    assert any_unit.parameter("serialNumber") == "SN 1"
    assert any_unit.parameter("SERIALNUMBER", "live") == "SN 1"


def name_lines(unit, name, flags):
    unit.set_parameter("device_name_sync_enable", flags)
    entries = identity(unit, {"device_name": name})
    assert entries[0] == SNAPSHOT
    return [entry.removeprefix("line ") for entry in entries[1:]]


def store(name):
    return f'astparam s deviceName "{name}" > /dev/null 2>&1'


def channel(number, name, dante):
    lines = [f'astparam s a_d_tx_ch{number}_name "{name}-0{number}"']
    if dante is not None:
        lines.append(f'dapi --txch{number}_name "{dante}-0{number}" > /dev/null 2>&1')
    return lines


@pytest.mark.parametrize("flags, channels", [
    ("000", []), ("001", []), ("100", [1]), ("010", [2]), ("110", [1, 2]), ("111", [1, 2]),
    ("1", [1]), ("", []), ("n1", [2]), ("211", [2]), (None, [])])
def test_TheFlagsChooseTheDanteChannelsThatTakeTheName(u300, flags, channels):
    expected = [store("Room 1_A")]
    for number in channels:
        expected += channel(number, "Room 1_A", "Room-1OA")
    assert name_lines(u300, "Room 1_A", flags) == expected


@pytest.mark.parametrize("name, stored, dante", [
    ("", True, ""),
    ("a-Z 09", True, "a-Z-09"),
    ("_.,:;/+*#@[]{}()<>=?!~|", True, "O" * 23),
    ("é1", True, "OO"),
    ("aé", True, "aO"),
    ("aéb1", True, "aOOb"),
    ("日本", True, "OO"),
    ("x" * 29, True, "x" * 29),
    ("x" * 30, True, None),
    ("x" * 32, True, None),
    ("x" * 33, False, None),
    ("é" * 14 + "x", True, "O" * 15),
    ("é" * 15, True, None),
    ("é" * 16, True, None),
    ("é" * 16 + "x", False, None),
    ("x" * 3000, False, None),
])
def test_NamesAreStoredUpTo32BytesAndGoToDanteUpTo29(u300, name, stored, dante):
    expected = [store(name)] if stored else []
    expected += channel(1, name, dante) + channel(2, name, dante)
    assert name_lines(u300, name, "111") == expected


def test_ALineOfAnyLengthRunsWhole(u300):
    name = "y" * 200_000
    unit = u300
    unit.set_parameter("device_name_sync_enable", "100")
    assert identity(unit, {"device_name": name})[1:] == \
        [f'script astparam s a_d_tx_ch1_name "{name}-01"']


@pytest.mark.parametrize("value", ["7", "null", "true", "{}", '["a"]'])
def test_ANameOrSerialNumberThatIsNoTextIsIgnored(u300, value):
    text = '{"model":"%s","device_name":%s,"serial_number":%s}' % (u300.model, value, value)
    assert [entry for entry in identity(u300, text) if entry != SNAPSHOT] == []


def test_KeysIgnoreCaseAndTheFirstOfTwoCounts(u300):
    text = '{"Model":"%s","DEVICE_NAME":"one","device_name":"two","Serial_Number":"s"}' % u300.model
    assert identity(u300, text) == [
        SNAPSHOT, "line " + store("one"),
        'line astparam s serialNumber "s"  > /dev/null 2>&1;lmparam s SERIALNUMBER "s";']


def test_TextsAreNeverTakenForFormats(u300):
    document = {"device_name": "100%s%d%n%", "serial_number": "%s%s%n%5$s"}
    assert identity(u300, document)[1:] == [
        "line " + store("100%s%d%n%"),
        'line astparam s serialNumber "%s%s%n%5$s"  > /dev/null 2>&1;'
        'lmparam s SERIALNUMBER "%s%s%n%5$s";']


def test_AnEmptySerialNumberIsWritten(u300):
    assert identity(u300, {"serial_number": ""}) == [
        'line astparam s serialNumber ""  > /dev/null 2>&1;lmparam s SERIALNUMBER "";']


# ---- the present parameters, as far as the name's flags show them ----

def dump(*entries):
    return b"HEAD" + b"".join(entry + b"\0" for entry in entries) + b"\0"


FLAG = b"device_name_sync_enable="


# Keys that the dump does not hold leave the search at its second entry, so that is where it begins
# in these short dumps; the first entry comes last.
@pytest.mark.parametrize("content, flags", [
    (dump(FLAG + b"110"), "110"),
    (dump(b"a=1", FLAG + b"100", FLAG + b"010"), "100"),
    (dump(b"a=1", b"note=10 " + FLAG, FLAG + b"010"), "100"),
    (dump(b"note=10 " + FLAG, FLAG + b"010"), "010"),
    (dump(FLAG + b"010", b"note=10 " + FLAG), "100"),
    (dump(b"x" + FLAG + b"100"), "100"),
    (dump(b"a=1", b"", FLAG + b"110"), ""),
    (dump(b"a=1"), ""),
    (b"HEAD\0" + FLAG + b"110\0\0", ""),
    (b"HEAD" + FLAG + b"110", "110"),
    (FLAG + b"110\0\0", ""),
    (b"HEAD", ""), (b"HE", ""), (b"", ""),
])
def test_TheFlagsAreReadFromTheDumpAsItStands(u300, content, flags):
    u300.write("/dev/shm/rwparam", content)
    expected = ["line " + store("n")]
    for number in (1, 2):
        if flags[number - 1:number] == "1":
            expected += ["line " + line for line in channel(number, "n", "n")]
    assert identity(u300, {"device_name": "n"}) == [SNAPSHOT, *expected]


def test_WithoutADumpEveryFlagIsOff(u300):
    u300.set_parameter("device_name_sync_enable", "111")
    u300.run(["/bin/rm", "/dev/shm/rwparam", "/var/tmp/lmparam_dump"])
    assert identity(u300, {"device_name": "n"}) == [SNAPSHOT, "line " + store("n")]


# ---- a unit that does not answer ----

def test_ToolsThatFailDoNotStopTheConfiguration(u300):
    # Nothing tells the gateway whether the message arrived.
    u300.put_tool("astparam", "#!/bin/busybox sh\nexit 1\n")
    u300.put_tool("e", "#!/bin/busybox sh\nexit 1\n")
    reply = post(u300, {"model": u300.model, "device_name": "n"})
    assert reply.body == b'{"command":"uploadConfFile","success":true,"mac":""}'
    assert told(u300) == ["line astparam g ethaddr", SNAPSHOT, "line " + store("n"), "progress 1-25",
                          "line astparam save;", "line e e_reboot &"]
