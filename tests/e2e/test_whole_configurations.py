"""Whole unit configurations: every example against the whole journal that it must give, and the
documents that are large, repeated or follow another upload."""

import contextlib
import json
import os
import random
import re
import stat
import tempfile

import pytest

from conftest import REPOSITORY, assert_told, curl, post, simulated_unit, start_unit, success, told

EXPECTED = os.path.join(os.path.dirname(os.path.abspath(__file__)), "expected")
SERIAL_LINE = re.compile(r'line echo "(.*)" > /dev/ttyS1 &')


def example(model):
    with open(f"{REPOSITORY}/examples/unit-configuration.{model}.json", "rb") as file:
        return file.read()


def folded(entries):
    """Entries in the notation of the expected journals: a serial line with the command that came of
    it reads "command hdmiout,on", progress is one entry a step."""
    result = []
    at = 0
    while at < len(entries):
        entry = entries[at]
        steps = re.fullmatch(r"progress (\d+)-(\d+)", entry)
        sent = SERIAL_LINE.fullmatch(entry)
        command = f"mcu {sent[1]}".rstrip() if sent else None
        if steps:
            result += [f"progress {step}" for step in range(int(steps[1]), int(steps[2]) + 1)]
        elif command and entries[at + 1:at + 2] == [command]:
            result.append(f"command {sent[1]}".rstrip())
            at += 1
        else:
            result.append(entry)
        at += 1
    return result


def expected_journal(model):
    with open(f"{EXPECTED}/{model}.journal", encoding="utf-8") as file:
        lines = file.read().split("\n")
    return [line for line in lines if line and not line.startswith("#")]


def test_AnExampleConfigurationTellsTheUnitAllOfItInOrder(any_unit):
    reply = post(any_unit, example(any_unit.model))
    assert reply.body == success(any_unit)
    any_unit.wait_for("rebooted")
    assert folded(told(any_unit)) == expected_journal(any_unit.model)


# ---- the same configuration again ----

def on_the_second_time(model, lines):
    """The expected journal of an example that follows itself: what it reads is by then its own."""
    flags = re.compile("line astparam s device_name_sync_enable 0+;")
    option = "line astparam s v_eng_drv_option 0x80100000;echo 0 > /sys/devices/platform/videoip/ull"
    result = [flags.sub("line astparam s device_name_sync_enable 000000;", line) for line in lines]
    if "E100" in model:
        # The unit is in audio-only mode by now, which keeps its multicast as it is.
        second = [at for at, line in enumerate(result) if line == "line astparam s multicast_on y;"][1]
        del result[second]
    else:
        # The top bit of the option went with "high".
        result[result.index(option)] = option.replace("0x80100000", "0x00100000")
    custom = result.index("line rm -rf /user_data2/trigger_custom_event_*")
    result[custom + 1:custom + 1] = [
        f"file /user_data2/trigger_custom_event_api_event_hall_{name}.json gone"
        for name in ("close", "start")]
    return result


def test_AnExampleConfigurationPostedTwiceStartsFromItsOwnValues(any_unit):
    first = expected_journal(any_unit.model)
    assert post(any_unit, example(any_unit.model)).body == success(any_unit)
    any_unit.wait_for("rebooted")
    assert len(folded(told(any_unit))) == len(first)
    stored = any_unit.stored_files()
    assert post(any_unit, example(any_unit.model)).body == success(any_unit)
    assert folded(told(any_unit)) == first + on_the_second_time(any_unit.model, first)
    again = any_unit.stored_files()
    for files in (stored, again):
        for path in ("/dev/shm/rwparam", "/dev/shm/rwparam_temp", "/var/tmp/lmparam_dump"):
            del files[path]
    assert again == stored


# ---- certificates and secrets ----

# section, member, the file that its text is decrypted to
CERTIFICATES = [
    ("mqtt", "tls_ca", "CAFile"), ("mqtt", "tls_cert", "CERTFile"), ("mqtt", "tls_key", "KEYFile"),
    ("https", "tls_ca", "HTTPS_CAFILE"),
    ("ldap", "tls_ca", "LDAP_CAFile"), ("ldap", "tls_cert", "LDAP_CERTFile"),
    ("ldap", "tls_key", "LDAP_KEYFile"),
    ("lan1", "tls_cert", "client.pem"), ("lan1", "tls_key", "client.key"), ("lan1", "ca", "ca.pem"),
    ("lan2", "tls_cert", "client_2.pem"), ("lan2", "tls_key", "client_2.key"),
    ("lan2", "ca", "ca_2.pem"),
]

EXPORTED = {
    "LDAP_CAFile": "ldap_ca_file", "LDAP_CERTFile": "ldap_cert_file", "LDAP_KEYFile": "ldap_key_file",
    "CAFile": "mqtt_ca_file", "CERTFile": "mqtt_cert_file", "KEYFile": "mqtt_key_file",
    "HTTPS_CAFILE": "https_ca_file", "client.pem": "lan1_cert_file_8021x",
    "client.key": "lan1_key_file_8021x", "client_2.pem": "lan2_cert_file_8021x",
    "client_2.key": "lan2_key_file_8021x", "ca.pem": "lan1_ca_8021x", "ca_2.pem": "lan2_ca_8021x",
}

INSTALL_SCRIPTS = ("mqtt_upgrade_cert.sh", "https_upgrade_cert.sh", "ldap_upgrade_cert.sh",
                   "update_1x_cert_upload_conf.sh")


def encrypted(unit, content):
    """What the unit's own tool makes of these bytes."""
    unit.write("/tmp/plain", content)
    status, text = unit.run(["/unit/bin/crypto_program", "-e", "/tmp/plain"])
    assert status == 0
    return text.decode()


def certificates(unit, text_bytes):
    """Thirteen certificates and keys whose encrypted texts have at least this size: file name -> (bytes,
    encrypted text)."""
    chance = random.Random(text_bytes)
    result = {}
    for _, _, name in CERTIFICATES:
        content = chance.randbytes(text_bytes * 3 // 4 + chance.randrange(3))
        result[name] = (content, encrypted(unit, content))
        assert len(result[name][1]) >= text_bytes
    return result


def security_document(texts):
    """802.1X, MQTT, LDAP and HTTPS with these certificates and little else."""
    members = {section: {} for section in ("mqtt", "https", "ldap", "lan1", "lan2")}
    for section, member, name in CERTIFICATES:
        members[section][member] = texts[name]
    return {
        "mqtt": {"enable": True, "password": "mqtt-secret", **members["mqtt"]},
        "https": {"enable": True, "tls_private_key": "https secret", **members["https"]},
        "ldap": {"enable": True, "password": "ldap-secret", "use_tls": True, **members["ldap"]},
        "auth_8021x": {
            "lan1": {"enable": True, "method": "EAP-TLS", "private_key_password": "key secret",
                     "server_certificate_enable": True, **members["lan1"]},
            "lan2": {"enable": True, "method": "EAP-TLS", "private_key_password": "key secret 2",
                     "server_certificate_enable": False, **members["lan2"]}}}


def security_journal(certificates_by_name, after_script):
    """What that document tells the unit. `after_script` gives the file entries that the install script
    of these files leaves behind."""
    def decrypted(name):
        content, text = certificates_by_name[name]
        line = f'crypto_program -d "{text}" /var/tmp/{name}'.replace("\n", "^0A")
        return [f"line {line}", f"file /var/tmp/{name} {len(content)}"]

    def decrypted_all(*names):
        return [entry for name in names for entry in decrypted(name)]

    def port(ending, server):
        names = [f"client{ending}.pem", f"client{ending}.key", f"ca{ending}.pem"]
        secret = "key secret" + (" 2" if ending else "")
        return [
            f"line astparam s auth_1x_en{ending} y;",
            f"line astparam s auth_1x_method{ending} EAP-TLS > /dev/null 2>&1",
            f'line astparam s auth_1x_priv_key_passwd{ending} "{secret}" > /dev/null 2>&1',
            *decrypted_all(*names[:2]),
            f"line astparam s auth_1x_valid_server_en{ending} {server};",
            *decrypted(names[2]),
            f"line update_1x_cert_upload_conf.sh lan{2 if ending else 1}",
            *after_script(*names)]

    return [
        "progress 1-16",
        "line astparam s mqttStatu 1;",
        "line astparam s mqttPassword mqtt-secret > /dev/null 2>&1",
        *decrypted_all("CAFile", "CERTFile", "KEYFile"),
        "line mqtt_upgrade_cert.sh &",
        *after_script("CAFile", "CERTFile", "KEYFile"),
        "progress 17",
        "line astparam s en_https y;",
        'line astparam s httpsKeyPassword "https secret" > /dev/null 2>&1',
        *decrypted("HTTPS_CAFILE"),
        "line https_upgrade_cert.sh &",
        *after_script("HTTPS_CAFILE"),
        "progress 18",
        "line astparam s ldapStatu 1;",
        "line astparam s ldapInfoPassword ldap-secret > /dev/null 2>&1",
        "line astparam s ldapInfoTls 1;",
        *decrypted_all("LDAP_CAFile", "LDAP_CERTFile", "LDAP_KEYFile"),
        "line ldap_upgrade_cert.sh &",
        *after_script("LDAP_CAFile", "LDAP_CERTFile", "LDAP_KEYFile"),
        "progress 19",
        *port("", "y"), *port("_2", "n"),
        "progress 20-25"]

@pytest.mark.parametrize("text_bytes", [4096, 16384])
def test_CertificatesArriveWholeInTheirWorkingFiles(u300, text_bytes):
    for script in INSTALL_SCRIPTS:
        u300.put_tool(script, "#!/bin/busybox sh\n")
    made = certificates(u300, text_bytes)
    document = security_document({name: text for name, (_, text) in made.items()})
    assert_told(u300, document, "\n".join(security_journal(made, lambda *names: [])))
    assert {name: u300.read(f"/var/tmp/{name}") for name in made} == \
        {name: content for name, (content, _) in made.items()}


@pytest.mark.parametrize("text_bytes", [4096, 16384])
def test_InstalledCertificatesAreExportedAsTheyWerePosted(u300, text_bytes):
    def installed(*names):
        return [*(f"file /user_data2/{name} {len(made[name][0])}" for name in sorted(names)),
                *(f"file /var/tmp/{name} gone" for name in sorted(names))]

    made = certificates(u300, text_bytes)
    document = security_document({name: text for name, (_, text) in made.items()})
    assert_told(u300, document, "\n".join(security_journal(made, installed)))
    reply = curl(u300, f"{u300.url}?name=getCaEncryptData")
    assert json.loads(reply.body) == {EXPORTED[name]: text for name, (_, text) in made.items()}


SECRETS = [
    "aes256/custom_key_string", "snmp/public_community", "snmp/private_community",
    "snmp/v3_auth_password", "snmp/v3_privacy_password", "snmp/v3_trap/auth_password",
    "snmp/v3_trap/privacy_password", "mqtt/password", "https/tls_private_key", "ldap/password",
    "auth_8021x/lan1/password", "auth_8021x/lan1/private_key_password", "auth_8021x/lan2/password",
    "auth_8021x/lan2/private_key_password", "ssh/password",
]

# Where the unit keeps them on purpose, and what the simulated unit writes down itself.
STORES = {"/run/sim/astparam", "/dev/shm/rwparam", "/dev/shm/rwparam_temp"}
JOURNAL = "/run/sim/journal"


@contextlib.contextmanager
def error_output(file):
    """While the block runs, what is started writes its standard error to this file."""
    kept = os.dup(2)
    os.dup2(file.fileno(), 2)
    try:
        yield
    finally:
        os.dup2(kept, 2)
        os.close(kept)


def all_files(unit):
    """Every file of the unit that is not part of its programs: path -> bytes."""
    found = {}
    for top in ("bin", "dev/shm", "run", "share", "tmp", "unit", "user_data2", "var", "www"):
        for folder, _, names, descriptor in os.fwalk(top, dir_fd=unit._root):
            for name in names:
                if stat.S_ISREG(os.lstat(name, dir_fd=descriptor).st_mode):
                    with open(os.open(name, os.O_RDONLY, dir_fd=descriptor), "rb") as file:
                        found[f"/{folder}/{name}"] = file.read()
    return found


@pytest.mark.parametrize("model", simulated_unit.MODELS)
@pytest.mark.parametrize("form", ["{}", "`{}`"])
def test_SecretsOfADocumentReachTheParameterStoreAndNothingElse(model, form):
    # What stands in backquotes the shell takes for a command, and complains.
    document = json.loads(example(model))
    secrets = {path: f"secret-{number}-{path.replace('/', '-')}" for number, path in enumerate(SECRETS)}
    for path, secret in secrets.items():
        *sections, member = path.split("/")
        at = document
        for section in sections:
            at = at[section]
        assert member in at
        at[member] = form.format(secret)
    with tempfile.TemporaryFile() as log:
        with error_output(log), start_unit(model) as unit:
            reply = post(unit, document)
            unit.wait_for("rebooted")
            assert reply.body == success(unit)
            entries = unit.journal()
            files = all_files(unit)
        log.seek(0)
        logged = log.read()
    places = {path for path, content in files.items()
              if any(secret.encode() in content for secret in secrets.values())}
    assert places == ({JOURNAL, *STORES} if form == "{}" else {JOURNAL})
    assert not any(secret.encode() in logged + reply.headers for secret in secrets.values())
    for secret in secrets.values():
        assert any(form.format(secret) in entry for entry in entries if entry.startswith("line "))
        assert (secret.encode() in files["/run/sim/astparam"]) == (form == "{}")
    assert "/run/sim/lighttpd.log" in files
    assert not any(path.startswith("/www/uploads/") for path in files)


# ---- lines that no program can be given as an argument ----

# The kernel takes an argument of up to 128 KiB, its closing NUL included.
LONGEST_ARGUMENT = 131071


def custom_event(characters):
    return {"trigger": {"trigger_lists": [0, 0, 0, {
        "type": "custom", "data": [{"apievent": "long", "cmd": "x" * characters}, {"apievent": "short"}]}]}}


def custom_event_text(characters):
    return f'{{TAGapieventTAG:TAGlongTAG,TAGcmdTAG:TAG{"x" * characters}TAG}}'


def custom_event_line(characters):
    return f'echo -ne "{custom_event_text(characters)}" > /user_data2/trigger_custom_event_long.json'


@pytest.mark.parametrize("length, kind", [
    (LONGEST_ARGUMENT, "line"), (LONGEST_ARGUMENT + 1, "script"), (200_000, "script")])
def test_ALongCustomEventIsStoredWholeByTheShellsOwnEcho(u300, length, kind):
    # A line that is too long for an argument goes to the shell's input. Its echo is built in, so that
    # nothing has to take the text as an argument.
    characters = length - len(custom_event_line(0))
    text, short = custom_event_text(characters), "{TAGapieventTAG:TAGshortTAG}"
    assert_told(u300, custom_event(characters), f'''
        progress 1-12
        line rm -rf /user_data2/trigger_custom_event_*
        {kind} {custom_event_line(characters)}
        file /user_data2/trigger_custom_event_long.json {len(text)}
        line echo -ne "{short}" > /user_data2/trigger_custom_event_short.json
        file /user_data2/trigger_custom_event_short.json {len(short)}
        progress 13-25
    ''')
    assert u300.read("/user_data2/trigger_custom_event_long.json").decode() == text
    assert u300.read("/user_data2/trigger_custom_event_short.json").decode() == short


def test_ALongGreenListIsStoredWhole(u300):
    units = [f"10.{number >> 8}.{number & 255}.40" for number in range(10_000)]
    text = "USB_GREENLIST=y" + "".join(f"\\x0aIP:{unit}" for unit in units)
    stored = "/user_data2/usb_greenlist.txt"
    content = "USB_GREENLIST=y" + "".join(f"\nIP:{unit}" for unit in units)
    assert len(text) > LONGEST_ARGUMENT
    assert_told(u300, {"usb_devices": {"green_list": {
        "enable": True, "lists": [{"ipaddr": unit} for unit in units]}}}, f'''
        progress 1-21
        script echo -ne "{text}" > {stored};cp {stored} /share/usb_greenlist.txt;
        file /share/usb_greenlist.txt {len(content)}
        file {stored} {len(content)}
        progress 22-25
    ''')
    assert u300.read(stored).decode() == content
    assert u300.read("/share/usb_greenlist.txt").decode() == content


def test_ACertificateThatNoToolCanTakeLeavesTheOldOneAndTheRestIsApplied(u300):
    # The tool is another program: no shell can hand it 200 KB in one argument. It is not started at
    # all, least of all with a part of the text.
    u300.write("/user_data2/CAFile", b"the old one")
    key = encrypted(u300, b"the new key")
    text = encrypted(u300, random.Random(1).randbytes(150_000))
    assert len(text) > 200_000
    reply = post(u300, {"model": u300.model, "mqtt": {"host": "broker", "tls_ca": text, "tls_key": key}})
    u300.wait_for("rebooted")
    assert reply.body == success(u300)
    key, text = (one.replace("\n", "^0A") for one in (key, text))
    journal = told(u300, tools=True)
    begin = journal.index("line astparam s mqttHost broker > /dev/null 2>&1")
    assert journal[begin:begin + 9] == [
        "line astparam s mqttHost broker > /dev/null 2>&1",
        "tool astparam s mqttHost broker",
        f'script crypto_program -d "{text}" /var/tmp/CAFile',
        f'line crypto_program -d "{key}" /var/tmp/KEYFile',
        f"tool crypto_program -d {key} /var/tmp/KEYFile",
        "file /var/tmp/KEYFile 11",
        "line mqtt_upgrade_cert.sh &",
        "tool mqtt_upgrade_cert.sh",
        "file /user_data2/KEYFile 11"]
    assert u300.read("/user_data2/CAFile") == b"the old one"
    assert u300.read("/user_data2/KEYFile") == b"the new key"
    assert not u300.exists("/var/tmp/CAFile")


# ---- stored lists ----

RS232 = "/user_data2/rs232_list.json"


def merged(size):
    """The entries of one merge into the stored RS-232 list that makes it this long."""
    return [f"line cp {RS232} /var/tmp/rs232_list.json", f"file /var/tmp/rs232_list.json {size}",
            f"line cp /var/tmp/rs232_list.json {RS232}", f"file {RS232} {size}",
            "line rm -rf /var/tmp/rs232_list.json", "file /var/tmp/rs232_list.json gone"]


def serial_line(baud, frame):
    return (f"line astparam s s0_baudrate {baud}-{frame};lmparam s S0_BAUDRATE {baud}-{frame};"
            f"change_serial -f /dev/ttyS0 -b {baud};")


SNAPSHOT = "line cp /dev/shm/rwparam /dev/shm/rwparam_temp"


def assert_serial(unit, section, entries):
    assert_told(unit, {"serial": section}, "\n".join(["progress 1-10", SNAPSHOT, *entries,
                                                      "progress 11-25"]))


def test_AnEmptyStoredListBecomesTheDefaultOneWithTheSettings(u300):
    u300.write(RS232, b"\r\n\t")
    stored = (b"{TAGdataTAG:{TAGsettingTAG:{TAGbaudTAG:57600,TAGdatabitTAG:7,TAGparityTAG:TAGeTAG,"
              b"TAGstopbitTAG:2,TAGtypeTAG:TAG2TAG,TAGendingTAG:TAGCRLFTAG,TAGmode1TAG:false,"
              b"TAGmode2TAG:true},TAGuserdefinedTAG:["
              b"{TAGnameTAG:TAGUser-defined 1TAG,TAGvalueTAG:TAGTAG},"
              b"{TAGnameTAG:TAGUser-defined 2TAG,TAGvalueTAG:TAGTAG},"
              b"{TAGnameTAG:TAGUser-defined 3TAG,TAGvalueTAG:TAGTAG},"
              b"{TAGnameTAG:TAGUser-defined 4TAG,TAGvalueTAG:TAGTAG},"
              b"{TAGnameTAG:TAGUser-defined 5TAG,TAGvalueTAG:TAGTAG}]}}")
    one = [serial_line(57600, "7e2"), *merged(len(stored))]
    assert_serial(u300, {"setting": {"baud": 57600, "databit": "7", "parity": "even", "stopbit": 2,
                                     "ending": "crlf", "format": "hex"}}, one + one)
    assert u300.read(RS232) == stored


def test_AListThatIsMissingStaysMissing(u300):
    assert_serial(u300, {"setting": {"baud": 9600}, "userdefined": []}, [serial_line(9600, "8n1")])
    assert not u300.exists(RS232)


def test_AnUploadedListGivesItsEndingToTheConfigurationThatFollows(u300):
    with open(f"{REPOSITORY}/examples/rs232-list.json", "rb") as file:
        assert post(u300, file.read(), field="Rs232CodeUpload").body == success(u300)
    assert u300.exists("/var/tmp/rs232_list.json")
    before = len(told(u300))

    def stored(baud, ending):
        return (f"{{TAGdataTAG:{{TAGsettingTAG:{{TAGbaudTAG:{baud},TAGdatabitTAG:8,TAGparityTAG:TAGnTAG,"
                f"TAGstopbitTAG:1,TAGtypeTAG:TAG2TAG,TAGendingTAG:TAG{ending}TAG,TAGformatTAG:TAGhTAG,"
                "TAGmode1TAG:false,TAGmode2TAG:true},TAGuserdefinedTAG:"
                "[{TAGnameTAG:TAGOnTAG,TAGvalueTAG:TAG01 02TAG}]}}").encode()

    def applied(baud, content):
        return ["line astparam g ethaddr", "progress 1-10", SNAPSHOT, serial_line(baud, "8n1"),
                *merged(len(content)), "progress 11-25", "line astparam save;", "line e e_reboot &",
                "rebooted"]

    # The working copy that the upload left says "CR".
    section = {"setting": {"baud": 19200, "format": "hex"},
               "userdefined": [{"name": "On", "value": "01 02"}]}
    post(u300, {"model": u300.model, "serial": section})
    assert told(u300)[before:] == applied(19200, stored(19200, "CR"))
    assert u300.read(RS232) == stored(19200, "CR")

    # The first configuration has taken the working copy away.
    section["setting"]["baud"] = 38400
    before = len(told(u300))
    post(u300, {"model": u300.model, "serial": section})
    assert told(u300)[before:] == applied(38400, stored(38400, "null"))
    assert u300.read(RS232) == stored(38400, "null")


def as_list(value):
    """The stored form of a list that holds no character which JSON or the shell would change."""
    return json.dumps({"data": value}, separators=(",", ":")).replace('"', "TAG").encode()


def user_data(unit):
    return {path: content for path, content in unit.stored_files().items()
            if path.startswith("/user_data2/") and "_list" in path or "custom" in path}


def lists_of(document):
    lists = document["trigger"]["trigger_lists"]
    custom = {f"/user_data2/trigger_custom_event_{event['apievent']}.json":
              json.dumps(event, separators=(",", ":")).replace('"', "TAG").encode()
              for event in lists[3]["data"]}
    return {"/user_data2/ir_list.json": as_list(document["ir"]["data"]),
            "/user_data2/trigger_poweron_event_list.json": as_list(lists[0]["data"]),
            "/user_data2/trigger_video_connect_event_list.json": as_list(lists[1]["data"]),
            "/user_data2/trigger_video_disconnect_event_list.json": as_list(lists[2]["data"]),
            **custom}


def test_TheListsOfAnExampleAreStoredByteForByte(any_unit):
    post(any_unit, example(any_unit.model))
    any_unit.wait_for("rebooted")
    assert user_data(any_unit) == lists_of(json.loads(example(any_unit.model)))
    assert user_data(any_unit)["/user_data2/trigger_custom_event_api_event_hall_close.json"] == (
        b"{TAGapieventTAG:TAGapi_event_hall_closeTAG,TAGnameTAG:TAGHall closesTAG,TAGdataTAG:"
        b"[{TAGnameTAG:TAGDisplay offTAG,TAGcmdTAG:TAGka 01 00TAG,TAGdelayTAG:0}]}")


def test_AConfigurationReplacesUploadedListsAndTakesTheirWorkingCopiesAway(u300):
    uploads = {"IRCodeUpload": {"delay": "1", "rpt": "2", "rptdelay": "3", "data": [{"name": "old"}]},
               "TriggerCommandsUpload": {"data": [1, 2, 3, {"data": [
                   {"apievent": "api_event_hall_start"}, {"apievent": "_night"}]}]}}
    for field, document in uploads.items():
        assert post(u300, document, field=field).body == success(u300)
    working = ["ir_list.json", "trigger_poweron_event_list.json",
               "trigger_video_connect_event_list.json", "trigger_video_disconnect_event_list.json"]
    for name in working:
        assert u300.read(f"/var/tmp/{name}") == u300.read(f"/user_data2/{name}")
    before = len(told(u300))
    document = json.loads(example(u300.model))
    lists = lists_of(document)

    def replaced(name):
        size = len(lists[f"/user_data2/{name}"])
        return [f"file /var/tmp/{name} {size}", f"line cp /var/tmp/{name} /user_data2/{name}",
                f"file /user_data2/{name} {size}", f"line rm -rf /var/tmp/{name}",
                f"file /var/tmp/{name} gone"]

    def written(path):
        return [f'line echo -ne "{lists[path].decode()}" > {path}', f"file {path} {len(lists[path])}"]

    post(u300, {"model": u300.model, "ir": {"data": document["ir"]["data"]},
                "trigger": {"trigger_lists": document["trigger"]["trigger_lists"]}})
    custom = "/user_data2/trigger_custom_event_api_event_hall_{}.json"
    assert told(u300)[before:] == [
        "line astparam g ethaddr", "progress 1-11", *replaced(working[0]), "progress 12",
        *replaced(working[1]), *replaced(working[2]), *replaced(working[3]),
        "line rm -rf /user_data2/trigger_custom_event_*",
        # An uploaded event's file has another name: only one whose own begins with "_" matches.
        "file /user_data2/trigger_custom_event_night_list.json gone",
        *written(custom.format("start")), *written(custom.format("close")),
        "progress 13-25", "line astparam save;", "line e e_reboot &", "rebooted"]
    assert user_data(u300) == {
        **lists, "/user_data2/trigger_custom_eventapi_event_hall_start_list.json":
        b"{TAGapieventTAG:TAGapi_event_hall_startTAG}"}


# A quote, a backslash, a line feed, a tab, a byte of two and a slash, as JSON prints them.
AWKWARD = 'say "on" C:\\dir\na\tb é /'
PRINTED = 'say \\TAGon\\TAG C:\\\\dir\\na\\tb é /'


def test_ListsThatTheGatewayWritesKeepTheirEscapes(u300):
    text = f"{{TAGdataTAG:[TAG{PRINTED}TAG]}}".encode()
    post(u300, {"model": u300.model, "ir": {"data": [AWKWARD]}, "trigger": {"trigger_lists": [
        {"type": kind, "data": [AWKWARD]} for kind in ("power_on", "video_connect", "video_disconnect")]}})
    u300.wait_for("rebooted")
    assert user_data(u300) == {f"/user_data2/{name}": text for name in (
        "ir_list.json", "trigger_poweron_event_list.json", "trigger_video_connect_event_list.json",
        "trigger_video_disconnect_event_list.json")}


def test_ACustomEventGoesThroughTheShellAndItsEcho(u300):
    # The shell takes one of two backslashes away, and echo turns what is then an escape into its byte.
    path = "/user_data2/trigger_custom_event_e.json"
    stored = "{TAGapieventTAG:TAGeTAG,TAGcmdTAG:TAGsay \\TAGon\\TAG C:\\dir\na\tb é /TAG}".encode()
    assert_told(u300, {"trigger": {"trigger_lists": [0, 0, 0, {
        "type": "custom", "data": [{"apievent": "e", "cmd": AWKWARD}]}]}}, f'''
        progress 1-12
        line rm -rf /user_data2/trigger_custom_event_*
        line echo -ne "{{TAGapieventTAG:TAGeTAG,TAGcmdTAG:TAG{PRINTED}TAG}}" > {path}
        file {path} {len(stored)}
        progress 13-25
    ''')
    assert u300.read(path) == stored


def test_AStoredListThatHoldsTheLettersOfAQuoteIsLeftAlone(u300):
    # "TAG" in a value reads back as a quote, and the list is JSON no more: the first pass stores it,
    # the second cannot read it.
    u300.write(RS232, b"")
    section = {"setting": {"baud": 9600, "databit": 8, "parity": "none", "stopbit": 1, "ending": "null"},
               "userdefined": [{"name": "TAG", "value": ""}]}
    stored = (b"{TAGdataTAG:{TAGsettingTAG:{TAGbaudTAG:9600,TAGdatabitTAG:8,TAGparityTAG:TAGnTAG,"
              b"TAGstopbitTAG:1,TAGtypeTAG:TAG1TAG,TAGendingTAG:TAGNULLTAG,TAGmode1TAG:true,"
              b"TAGmode2TAG:false},TAGuserdefinedTAG:[{TAGnameTAG:TAGTAGTAG,TAGvalueTAG:TAGTAG}]}}")
    line = serial_line(9600, "8n1")
    assert_serial(u300, section, [line, *merged(len(stored)), line])
    assert u300.read(RS232) == stored
