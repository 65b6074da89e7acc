"""What a unit is told, stated plainly: a document and the unit's present values in, a trace out.

A second, independent statement of the control, network, service, panel and system sections and of
the custom EDID and video wall uploads. It is written for being read beside the appliance's rules and
not for speed, and shares nothing with the program it is compared with.

All texts in here hold one character a byte (UTF-8 bytes as the characters 0 to 255), because lengths,
cut-offs and replaced characters are bytes on the unit.
"""

import json
import math
import re

MISSING = object()  # a member that is not there; None is JSON's null

INT_MAX = 2147483647
INT_MIN = -2147483648

PROGRESS_TOTAL = 26
USBC_ENCODER = "ZAVO-ENC-U300-DA"
HDMI_ENCODER = "ZAVO-ENC-E100-DA"
DECODER = "ZAVO-DEC-D200-DA"
MODELS = (USBC_ENCODER, HDMI_ENCODER, DECODER)


# ---- JSON as the unit sees it ---------------------------------------------------------------------


class Members(list):
    """The members of a JSON object, (key, value) in document order."""


def bytes_text(text):
    return text.encode("utf-8", "surrogatepass").decode("latin-1")


def c_text(text):
    """A text ends at its first NUL."""
    return bytes_text(text.split("\0", 1)[0])


def from_json(value):
    if isinstance(value, Members):
        return Members((c_text(key), from_json(member)) for key, member in value)
    if isinstance(value, list):
        return [from_json(item) for item in value]
    if isinstance(value, str):
        return c_text(value)
    return value


def parse(text):
    """The document of a byte text, or MISSING when it is not JSON. Text behind the value is accepted."""
    text = text.encode("latin-1").decode("utf-8", "surrogateescape")
    text = text.removeprefix("\ufeff").lstrip("".join(map(chr, range(1, 33))))
    decoder = json.JSONDecoder(object_pairs_hook=Members, parse_int=float, strict=False)
    try:
        return from_json(decoder.raw_decode(text)[0])
    except ValueError:
        return MISSING


def ascii_lower(text):
    return "".join(chr(ord(c) + 32) if "A" <= c <= "Z" else c for c in text)


def exact(item, key):
    """A member by its exact key."""
    if isinstance(item, Members):
        for name, value in item:
            if name == key:
                return value
    return MISSING


def get(item, key):
    """A member by its key, ignoring case."""
    if isinstance(item, Members):
        for name, value in item:
            if ascii_lower(name) == ascii_lower(key):
                return value
    return MISSING


def is_text(value):
    return isinstance(value, str)


def is_number(value):
    return isinstance(value, float)


def is_array(value):
    return isinstance(value, list) and not isinstance(value, Members)


def integer(number):
    if number >= INT_MAX:
        return INT_MAX
    if number <= INT_MIN:
        return INT_MIN
    return int(number)


def leading_integer(text):
    """Decimal conversion of the leading digits, as a 32-bit strtol does it."""
    match = re.match(r"[ \t\n\v\f\r]*([+-]?[0-9]+)", text)
    return max(INT_MIN, min(INT_MAX, int(match.group(1)))) if match else 0


def print_number(number):
    if math.isinf(number) or math.isnan(number):
        return "null"
    short = "%1.15g" % number
    back = float(short)
    if abs(back - number) <= max(abs(back), abs(number)) * 2.220446049250313e-16:
        return short
    return "%1.17g" % number


def print_text(text):
    named = {'"': '\\"', "\\": "\\\\", "\b": "\\b", "\f": "\\f", "\n": "\\n", "\r": "\\r", "\t": "\\t"}
    out = ""
    for char in text:
        if char in named:
            out += named[char]
        elif char < " ":
            out += "\\u%04x" % ord(char)
        else:
            out += char
    return '"' + out + '"'


def print_json(value, comma=","):
    """JSON without line feeds and tabs. The formatted print differs, once these are taken out again,
    only by a blank behind the commas of arrays."""
    if value is None:
        return "null"
    if value is True:
        return "true"
    if value is False:
        return "false"
    if isinstance(value, float):
        return print_number(value)
    if isinstance(value, str):
        return print_text(value)
    if isinstance(value, Members):
        return "{" + ",".join(print_text(k) + ":" + print_json(v, comma) for k, v in value) + "}"
    return "[" + comma.join(print_json(item, comma) for item in value) + "]"


def print_formatted_without_breaks(value):
    return print_json(value, comma=", ")


def quotes_to_tag(text):
    return text.replace('"', "TAG")


def tag_to_quotes(text):
    return text.replace("TAG", '"')


# ---- the unit -------------------------------------------------------------------------------------


class Unit:
    """Present values, files and command answers of a unit, and the trace of what it is told."""

    def __init__(self, rw=(), lm=(), answers=None, files=None, refuse=()):
        self.rw = [(bytes_text(k), bytes_text(v)) for k, v in rw]
        self.lm = [(bytes_text(k), bytes_text(v)) for k, v in lm]
        self.answers = {bytes_text(k): bytes_text(v) for k, v in (answers or {}).items()}
        self.files = {path: bytes_text(content) for path, content in (files or {}).items()}
        self.refuse = set(refuse)
        self.trace = ""

    def shell(self, line):
        self.trace += "shell " + line + "\n"

    def mcu(self, command):
        self.trace += "mcu " + command + "\n"

    def pause(self, seconds=1):
        self.trace += "pause %d\n" % seconds

    def read(self, command):
        """The last output line of a command; a command without an answer says that the value is not
        defined, which leaves the reader's buffer empty."""
        self.trace += "read " + command + "\n"
        return self.answers.get(command, "")

    def write(self, path, text):
        """Whether the file could be opened and was written."""
        if path in self.refuse:
            return False
        self.trace += "write " + path + " " + text + "\n"
        self.files[path] = text
        return True

    def snapshot(self):
        self.shell("cp /dev/shm/rwparam /dev/shm/rwparam_temp")

    def rw_value(self, key):
        return next((v for k, v in self.rw if k == key), "")

    def lm_value(self, key):
        return next((v for k, v in self.lm if k == key), "")


# ---- what many members share ----------------------------------------------------------------------


def flag(unit, section, key, line_true, line_false, pause=0):
    value = exact(section, key)
    if value is True or value is False:
        unit.shell(line_true if value else line_false)
        if pause:
            unit.pause(pause)


def flag_bit(unit, section, key, line):
    """A flag whose two lines differ only by 1 and 0 in place of the "#"."""
    flag(unit, section, key, line.replace("#", "1"), line.replace("#", "0"))


def number(unit, section, key, line):
    value = get(section, key)
    if is_number(value):
        unit.shell(line.replace("%d", str(integer(value))))


def text(unit, section, key, line, pause=0):
    """Whether the text was there and not empty, so that its line was run."""
    value = get(section, key)
    if not is_text(value) or value == "":
        return False
    unit.shell(line.replace("%s", value))
    if pause:
        unit.pause(pause)
    return True


# ---- serial ---------------------------------------------------------------------------------------

PARITY = {"none": "n", "even": "e", "odd": "o", "mark": "m", "space": "s"}
ENDING = {"null": "NULL", "cr": "CR", "lf": "LF", "crlf": "CRLF"}
SERIAL_LIST = "/user_data2/rs232_list.json"
SERIAL_WORKING = "/var/tmp/rs232_list.json"
DEFAULT_SERIAL_LIST = (
    '{"data":{"setting":{"baud":9600,"databit":8,"parity":"n","stopbit":1,"type":"1",'
    '"ending":"NULL","mode1":true,"mode2":false},"userdefined":['
    + ",".join('{"name":"User-defined %d","value":""}' % i for i in range(1, 6))
    + "]}}"
)
assert len(DEFAULT_SERIAL_LIST) == 326


def replace_member(item, key, value):
    """Replaces what exists and adds nothing; the member takes the key it is replaced by."""
    if isinstance(item, Members):
        for i, (name, _) in enumerate(item):
            if ascii_lower(name) == ascii_lower(key):
                item[i] = (key, value)
                return


def switch_member(item, key, value):
    """A boolean by its exact key: switched where it stands, added when it is not there."""
    if isinstance(item, Members):
        for i, (name, _) in enumerate(item):
            if name == key:
                item[i] = (name, value)
                return
        item.append((key, value))


def merge_serial_list(unit, section, numbers, parity, ending, format_code):
    if SERIAL_LIST not in unit.files:
        return
    content = unit.files[SERIAL_LIST]
    for dropped in "\r\t\n":
        content = content.replace(dropped, "")
    content = tag_to_quotes(content)
    if content == "":
        content = DEFAULT_SERIAL_LIST
    document = parse(content)
    if document is MISSING:
        return
    stored = get(get(document, "data"), "setting")
    for key, value in numbers.items():
        if value is not None:
            replace_member(stored, key, float(value))
    replace_member(stored, "parity", parity)
    replace_member(stored, "ending", ending)
    replace_member(stored, "format", format_code)
    format_text = get(get(section, "setting"), "format")
    if is_text(format_text):
        is_ascii = "ascii" in format_text
        replace_member(stored, "type", "1" if is_ascii else "2")
        switch_member(stored, "mode1", is_ascii)
        switch_member(stored, "mode2", not is_ascii)
    slots = get(section, "userdefined")
    if is_array(slots):
        replace_member(get(document, "data"), "userdefined", slots)
    unit.shell("cp /user_data2/rs232_list.json /var/tmp/rs232_list.json")
    if unit.write(SERIAL_WORKING, quotes_to_tag(print_json(document))):
        unit.shell("cp /var/tmp/rs232_list.json /user_data2/rs232_list.json")
        unit.shell("rm -rf /var/tmp/rs232_list.json")


def serial_line_and_pause(unit, baud, databit, parity, stopbit):
    frame = databit + parity + stopbit
    unit.shell(
        "astparam s s0_baudrate " + baud + "-" + frame + ";"
        "lmparam s S0_BAUDRATE " + baud + "-" + frame + ";"
        "change_serial -f /dev/ttyS0 -b " + baud + ";"
    )
    unit.pause()


def list_ending(unit):
    content = tag_to_quotes(unit.files.get(SERIAL_WORKING, ""))
    if len(content) < 10:
        return "null"
    ending = get(get(get(parse(content), "data"), "setting"), "ending")
    return ending[:15] if is_text(ending) else "null"


def apply_serial(unit, section):
    unit.snapshot()
    setting = get(section, "setting")
    if setting is not MISSING or get(section, "userdefined") is not MISSING:
        present_ending = list_ending(unit)
        # The port's value and the panel lock share a place in the snapshot; the live store is read
        # last, so the lock's value is seen only when there is no live dump at all.
        present = unit.lm_value("S0_BAUDRATE") if unit.lm else unit.rw_value("fplock")
        fields = [field for field in present.split("-") if field]
        present_baud = fields[0][:31] if fields else "9600"
        frame = fields[1] if len(fields) > 1 else "8n1"

        def line_value(key, limit, present):
            value = get(setting, key)
            if is_number(value):
                return str(integer(value))
            return value[:limit] if is_text(value) else present

        baud = line_value("baud", 31, present_baud)
        databit = line_value("databit", 15, frame[0:1])
        stopbit = line_value("stopbit", 15, frame[2:3])
        parity_text = get(setting, "parity")
        parity = PARITY.get(parity_text, frame[1:2]) if is_text(parity_text) else frame[1:2]
        format_text = get(setting, "format")
        format_code = {"ascii": "a", "hex": "h"}.get(format_text, "") if is_text(format_text) else "a"
        ending_text = get(setting, "ending")
        ending = ENDING.get(ending_text, "") if is_text(ending_text) else present_ending

        serial_line_and_pause(unit, baud, databit, parity, stopbit)

        def digits_as_number(value):
            return min(int(value), INT_MAX) if re.fullmatch("[0-9]+", value) else None

        merge_serial_list(
            unit,
            section,
            {
                "baud": digits_as_number(baud),
                "databit": digits_as_number(databit),
                "stopbit": digits_as_number(stopbit),
            },
            parity,
            ending,
            format_code,
        )

        complete = baud and databit and stopbit and is_text(parity_text)
        if complete and is_text(ending_text) and ending_text:
            parity = PARITY.get(parity_text, "")
            ending = ENDING.get(ending_text, "")
            serial_line_and_pause(unit, baud, databit, parity, stopbit)

            def json_number(key):
                value = get(setting, key)
                return integer(value) if is_number(value) else None

            merge_serial_list(
                unit,
                section,
                {key: json_number(key) for key in ("baud", "databit", "stopbit")},
                parity,
                ending,
                format_code,
            )

        for key, stem in (("ip_tunnel", "ip_rs232_tunneling"), ("ip_ssh_tunnel", "ip_ssh_rs232_tunneling")):
            flag(
                unit,
                setting,
                key,
                "astparam s " + stem + " 1;e e_chg_" + stem,
                "astparam s " + stem + " 0;e e_chg_" + stem,
                pause=1,
            )

    serial_pass = get(section, "serial_pass")
    text(unit, serial_pass, "serial_pass_ip_address", "astparam s serial_unit_conn %s;")
    flag(
        unit,
        serial_pass,
        "enable",
        "astparam s serial_pass_enable 1;e e_serial_pass 1",
        "astparam s serial_pass_enable 0;e e_serial_pass 0",
        pause=1,
    )


# ---- infrared and triggers ------------------------------------------------------------------------


def store_list(unit, name, value):
    stored = quotes_to_tag(print_json(Members([("data", value)])))
    if unit.write("/var/tmp/" + name, stored):
        unit.shell("cp /var/tmp/" + name + " /user_data2/" + name)
        unit.shell("rm -rf /var/tmp/" + name)


def apply_ir(unit, section):
    flag(
        unit,
        get(section, "ir_read"),
        "enable",
        "astparam s irread 1;e e_chg_ir_read_data_check",
        "astparam s irread 0;e e_chg_ir_read_data_check",
        pause=1,
    )
    number(unit, section, "ir_delay", "astparam s ir_setting_delay %d;")
    number(unit, section, "ir_repeat_time", "astparam s ir_setting_rpt %d;")
    number(unit, section, "ir_repeat_delay", "astparam s ir_setting_rpt_delay %d;")
    data = get(section, "data")
    if data is not MISSING:
        store_list(unit, "ir_list.json", data)
    ir_pass = get(section, "ir_pass")
    text(unit, ir_pass, "ir_pass_ip_address", "astparam s ir_unit_conn %s;")
    flag(
        unit,
        ir_pass,
        "enable",
        "astparam s ir_pass_enable 1;e e_ir_pass 1",
        "astparam s ir_pass_enable 0;e e_ir_pass 0",
        pause=1,
    )


def apply_trigger(unit, section):
    lists = exact(section, "trigger_lists")
    lists = lists if is_array(lists) else []
    fixed = (
        ("power_on", "trigger_poweron_event_list.json"),
        ("video_connect", "trigger_video_connect_event_list.json"),
        ("video_disconnect", "trigger_video_disconnect_event_list.json"),
    )
    for item, (word, name) in zip(lists, fixed):
        kind = get(item, "type")
        data = get(item, "data")
        if is_text(kind) and word in kind and data is not MISSING:
            store_list(unit, name, data)
    if len(lists) > 3:
        kind = get(lists[3], "type")
        data = get(lists[3], "data")
        if is_text(kind) and "custom" in kind and is_array(data):
            unit.shell("rm -rf /user_data2/trigger_custom_event_*")
            for element in data:
                event = get(element, "apievent")
                if is_text(event):
                    encoded = quotes_to_tag(print_formatted_without_breaks(element))
                    unit.shell(
                        'echo -ne "' + encoded + '" > /user_data2/trigger_custom_event_' + event + ".json"
                    )
    flag_bit(unit, section, "enable", "astparam s triggerEnable #;")


# ---- network --------------------------------------------------------------------------------------


def is_valid_ipv4(address):
    address = address[:63]
    if len(address) < 5:
        return False
    fields = [field for field in address.split(".") if field]
    if len(fields) < 4:
        return False
    first, second, third, fourth = (leading_integer(field) for field in fields[:4])
    return 1 <= first <= 254 and 0 <= second <= 254 and 0 <= third <= 254 and 1 <= fourth <= 254


def lan_port(value):
    if is_number(value):
        return integer(value)
    words = {"lan 1": 1, "lan1": 1, "lan 2": 2, "lan2": 2, "lan 1 + lan 2": 0, "lan1 + lan2": 0}
    return words.get(value, -1) if is_text(value) else -1


def number_list(array):
    """Numbers joined by commas; a comma follows every number that is not the last item."""
    out = ""
    for i, item in enumerate(array):
        if is_number(item):
            out += str(integer(item))
            if i + 1 < len(array):
                out += ","
    return out


def address(unit, section, key, line, pause=0):
    value = get(section, key)
    if is_text(value) and is_valid_ipv4(value):
        unit.shell(line.replace("%s", value))
        if pause:
            unit.pause(pause)


def ip_mode(unit, section, line_dhcp, line_static):
    value = get(section, "ip_mode")
    if is_text(value) and value != "":
        unit.shell(line_dhcp if value[:4] == "dhcp" else line_static)
        unit.pause()


def vlans(unit, section, key, line, pause=0):
    value = get(section, key)
    if is_array(value):
        unit.shell(line.replace("%s", number_list(value)))
        if pause:
            unit.pause(pause)


def host_name(source):
    kept = "abcdefghijklmnopqrstuvwxyzABCDEFGHIJKLMNOPQRSTUVWXYZ0123456789-"
    return "".join(c if c in kept else "-" if c == " " else "O" for c in source)


def apply_lan1(unit, lan1):
    ip_mode(
        unit,
        lan1,
        "astparam s ip_mode dhcp;lmparam s IP_MODE dhcp;",
        "astparam s ip_mode static;lmparam s IP_MODE static;",
    )
    address(unit, lan1, "ip_address", "astparam s ipaddr %s;lmparam s IPADDR %s;", pause=1)
    text(unit, lan1, "subnet", "astparam s netmask %s;lmparam s NETMASK %s;", pause=1)
    text(unit, lan1, "gateway", "astparam s gatewayip %s;lmparam s gatewayip %s;", pause=1)
    for n in "12":
        line = "astparam s static_dns_ip# %s;lmparam s STATIC_DNS_IP# %s;lmparam s DNS_IP# %s;"
        text(unit, lan1, "dns" + n, line.replace("#", n), pause=1)

    use_device_name = exact(lan1, "use_device_name")
    if use_device_name is True or use_device_name is False:
        value = unit.read("astparam g device_name_sync_enable")
        if len(value) >= 2:  # the third character; behind a shorter text's end it does not show
            value = value[:2] + ("1" if use_device_name else "0") + value[3:]
        unit.shell("astparam s device_name_sync_enable " + value + ";")

    hostname = get(lan1, "hostname")
    if is_text(hostname):
        device_name = unit.read("astparam g deviceName")
        source = device_name if use_device_name is True else hostname
        unit.shell("astparam s hostname_tx_middle " + host_name(source) + ";" if source else "")
        unit.pause()

    number(unit, lan1, "port_vlan_id", "astparam s vlan1ID %d")
    vlans(unit, lan1, "tagged_vlans", 'astparam s vlan1Tag "%s" > /dev/null 2>&1', pause=1)
    vlans(unit, lan1, "untagged_vlans", "astparam s vlan1Untag %s > /dev/null 2>&1", pause=1)
    number(unit, lan1, "discovery_send_interval", "astparam s discovery_inter %d;")
    flag(
        unit,
        lan1,
        "multicast_discovery",
        "astparam s discovery_enable 1;",
        "astparam s discovery_enable 0;",
        pause=1,
    )
    flag_bit(unit, lan1, "igmp_v3_enable", "astparam s lan1_igmp_v3 #;")


def apply_lan2(unit, lan2):
    for key, command in (
        ("enable", "lan2port"),
        ("multicast_traffic", "multicasttraffic"),
        ("poe_passthrough", "lan2poepass"),
    ):
        value = exact(lan2, key)
        if value is True or value is False:
            unit.mcu(command + (",on" if value else ",off"))
    number(unit, lan2, "port_vlan_id", "astparam s vlan2ID %d")
    vlans(unit, lan2, "tagged_vlans", "astparam s vlan2Tag %s > /dev/null 2>&1")
    vlans(unit, lan2, "untagged_vlans", "astparam s vlan2Untag %s > /dev/null 2>&1")


def apply_service(unit, service, stem, address_stem):
    """`address_stem` is what stands before the address keys, or None when they are not taken."""
    for port in "12":
        value = get(service, "lan_" + port)
        if is_text(value):
            tagged = "1" if value[:6] == "tagged" else "0"
            unit.shell("astparam s lan" + port + stem + " " + tagged + ";")
    flag(
        unit,
        service,
        "enable",
        "astparam s " + stem + "VlanMode y;",
        "astparam s " + stem + "VlanMode n;",
    )
    number(unit, service, "vlan_id", "astparam s " + stem + "VlanID %d;")
    number(unit, service, "ttl", "astparam s " + stem + "VlanTTL %d;")
    number(unit, service, "dscp", "astparam s " + stem + "VlanDSCP %d;")
    port = lan_port(get(service, "lan_port"))
    if port >= 0:
        unit.shell("astparam s " + stem + "LanPort %d;" % port)
    if address_stem is None:
        return
    mode_key = "ip_mode" if address_stem == "" else address_stem + "ip_Mode"
    ip_mode(unit, service, "astparam s " + mode_key + " dhcp;", "astparam s " + mode_key + " static;")
    address(unit, service, "ip_address", "astparam s " + address_stem + "ipaddr %s;", pause=1)
    text(unit, service, "subnet", "astparam s " + address_stem + "netmask %s;")
    text(unit, service, "gateway", "astparam s " + address_stem + "gatewayip %s;")


def merge_memberships(unit, services):
    now = {}
    for key in (
        "vlan1Tag vlan2Tag streamLanPort danteLanPort controlLanPort streamVlanID danteVlanID "
        "controlVlanID streamVlanMode danteVlanMode controlVlanMode lan1stream lan2stream lan1control "
        "lan2control lan1dante lan2dante vlan1Untag vlan2Untag"
    ).split():
        now[key] = unit.read("astparam g " + key)

    names = ("stream", "dante", "control")

    def wants(name, port, kind):
        return (
            now[name + "VlanMode"][:1] == "y"
            and now[name + "LanPort"][:1] in ("0", port)
            and now["lan" + port + name][:1] == kind
        )

    def new_list(port, kind):
        present = now["vlan" + port + ("Tag" if kind == "1" else "Untag")]
        entries = [now[name + "VlanID"] for name in names if wants(name, port, kind)] + [present]
        refused = [leading_integer(now[n + "VlanID"]) for n in names if not wants(n, port, kind)]
        entries = [entry for entry in ",".join(entries).split(",") if entry]
        return ",".join(entry for entry in entries if leading_integer(entry) not in refused)

    untagged = {port: new_list(port, "0") for port in "12"}
    tagged = {port: new_list(port, "1") for port in "12"}
    for port in "12":
        if untagged[port] == "":
            untagged[port] = "1"
            unit.shell("astparam s vlan" + port + "ID 1")
    for key in ("stream", "control", "dante_aes67"):
        service = get(services, key)
        vlan_id = get(service, "vlan_id")
        for port in "12":
            membership = get(service, "lan_" + port)
            if (
                exact(service, "enable") is True
                and is_text(membership)
                and membership[:8] == "untagged"
                and is_number(vlan_id)
            ):
                unit.shell("astparam s vlan" + port + "ID %d" % integer(vlan_id))
    for port in "12":
        unit.shell("astparam s vlan" + port + "Untag " + untagged[port])
        if tagged[port]:
            unit.shell("astparam s vlan" + port + "Tag " + tagged[port])
    unit.pause()


def apply_network(unit, section):
    unit.snapshot()
    lan1 = get(section, "lan1")
    apply_lan1(unit, lan1)
    apply_lan2(unit, get(section, "lan2"))
    services = get(section, "services_settings")
    if isinstance(services, Members):
        lan1_given = isinstance(lan1, Members)
        apply_service(unit, get(services, "stream"), "stream", None if lan1_given else "")
        apply_service(unit, get(services, "control"), "control", "control_")
        apply_service(unit, get(services, "dante_aes67"), "dante", "dante_")
        merge_memberships(unit, services)


# ---- security services ----------------------------------------------------------------------------

AUTHENTICATION = {
    "none": "0",
    "md5": "MD5",
    "sha": "SHA",
    "sha-256": "SHA-256",
    "sha-384": "SHA-384",
    "sha-512": "SHA-512",
}
PRIVACY = {"none": "0", "des": "DES", "aes": "AES", "aes-128": "AES-128"}
QUIET = " > /dev/null 2>&1"


def apply_aes256(unit, section):
    unit.snapshot()
    present = unit.rw_value("v_eng_drv_option")
    option = {"0x8": "0x80000000", "0x0": "0x00000000", "": "0x00000000"}.get(present, present)
    flag_bit(unit, section, "enable", "astparam s aes_encrypt_en #;")
    mode = get(section, "aes256_mode")
    level = integer(mode) if is_number(mode) else None
    digit = None
    if level == 1 or mode == "standard":
        digit = "8"
    elif level == 2 or mode == "high":
        digit = "0"
    if digit is not None:
        if len(option) >= 2:
            option = option[:2] + digit + option[3:]
        unit.shell("astparam s v_eng_drv_option " + option + ";")
    elif level is not None and level >= 0:
        unit.shell("")
    flag_bit(unit, section, "custom_key_enable", "astparam s encrypt_en #;")
    text(unit, section, "custom_key_string", 'astparam s encrypt_val "%s";')


def algorithm(unit, section, key, words, parameter):
    value = get(section, key)
    if is_text(value) and value in words:
        unit.shell("astparam s " + parameter + " " + words[value] + QUIET)


def apply_snmp(unit, section):
    flag_bit(unit, section, "enable", "astparam s snmpStatu #;")
    flag_bit(unit, section, "is_get", "astparam s EnableSnmpV1Get #;")
    flag_bit(unit, section, "is_set", "astparam s EnableSnmpV1Set #;")
    number(unit, section, "port", "astparam s SnmpPort %d;")
    text(unit, section, "sys_contact", 'astparam s SnmpSysContact "%s"' + QUIET)
    text(unit, section, "sys_name", 'astparam s SnmpSysName "%s"' + QUIET)
    text(unit, section, "sys_location", 'astparam s SnmpSysLocation "%s"' + QUIET)
    flag_bit(unit, section, "v2_enable", "astparam s EnableSnmpV2 #;")
    text(unit, section, "public_community", "astparam s EnableSnmpV2public %s" + QUIET)
    text(unit, section, "private_community", "astparam s EnableSnmpV2private %s" + QUIET)
    flag_bit(unit, section, "v3_enable", "astparam s EnableSnmpV3 #;")
    text(unit, section, "v3_username", "astparam s SnmpV3Username %s" + QUIET)
    algorithm(unit, section, "v3_auth_algorithm", AUTHENTICATION, "SnmpV3Algorithm")
    text(unit, section, "v3_auth_password", "astparam s SnmpV3AuthPassword %s" + QUIET)
    algorithm(unit, section, "v3_privacy_algorithm", PRIVACY, "SnmpV3PrivacyAlg")
    text(unit, section, "v3_privacy_password", "astparam s SnmpV3Privacypassword %s" + QUIET)
    number(unit, section, "trap_mode", "astparam s EnableSnmpTrap %d;")
    flag_bit(unit, section, "trap", "astparam s EnableSnmpTrapEnable #")
    trap = get(section, "v3_trap")
    text(unit, trap, "username", "astparam s TrapV3Name %s" + QUIET)
    engine_id = get(trap, "engine_id")
    username = get(trap, "username")
    if is_text(engine_id) and engine_id != "" and is_text(username):
        unit.shell("astparam s TrapV3EngID " + username + QUIET)
    algorithm(unit, trap, "auth_algorithm", AUTHENTICATION, "TrapV3AA")
    text(unit, trap, "auth_password", "astparam s TrapV3AP %s" + QUIET)
    algorithm(unit, trap, "privacy_algorithm", PRIVACY, "TrapV3PA")
    text(unit, trap, "privacy_password", "astparam s TrapV3PP %s" + QUIET)
    text(unit, section, "trap_receiver1", "astparam s SnmpTrapreceiver1 %s" + QUIET)
    text(unit, section, "trap_receiver2", "astparam s SnmpTrapreceiver2 %s" + QUIET)


def apply_mqtt(unit, section):
    flag_bit(unit, section, "enable", "astparam s mqttStatu #;")
    text(unit, section, "host", "astparam s mqttHost %s" + QUIET)
    number(unit, section, "port", "astparam s mqttPort %d;")
    flag_bit(unit, section, "enable_ssl", "astparam s mqttSSLStatus #;")
    flag_bit(unit, section, "user_credentials", "astparam s mqttUseCredentials #;")
    text(unit, section, "username", "astparam s mqttUsername %s" + QUIET)
    text(unit, section, "password", "astparam s mqttPassword %s" + QUIET)
    text(unit, section, "client_id", "astparam s mqttClientID %s" + QUIET)
    text(unit, section, "topics", "astparam s mqttTopic %s" + QUIET)
    number(unit, section, "qos", "astparam s mqttQos %d;")
    number(unit, section, "keep_alive_ping", "astparam s mqttInterval %d;")
    number(unit, section, "publish_data_interval", "astparam s mqttPubInterval %d;")
    text(unit, section, "tls_ca", 'crypto_program -d "%s" /var/tmp/CAFile')
    text(unit, section, "tls_cert", 'crypto_program -d "%s" /var/tmp/CERTFile')
    text(unit, section, "tls_key", 'crypto_program -d "%s" /var/tmp/KEYFile')
    unit.shell("mqtt_upgrade_cert.sh &")


def apply_https(unit, section):
    flag(unit, section, "enable", "astparam s en_https y;", "astparam s en_https n;")
    flag(
        unit,
        section,
        "use_internal_certificate",
        "astparam s httpsInOrServer 1;",
        "astparam s httpsInOrServer 2;",
    )
    text(unit, section, "tls_private_key", 'astparam s httpsKeyPassword "%s"' + QUIET)
    if text(unit, section, "tls_ca", 'crypto_program -d "%s" /var/tmp/HTTPS_CAFILE'):
        unit.shell("https_upgrade_cert.sh &")


def apply_ldap(unit, section):
    flag_bit(unit, section, "enable", "astparam s ldapStatu #;")
    text(unit, section, "domain_name", "astparam s ldapInfoDn %s" + QUIET)
    text(unit, section, "username", "astparam s ldapInfoUsername %s" + QUIET)
    text(unit, section, "password", "astparam s ldapInfoPassword %s" + QUIET)
    text(unit, section, "server", "astparam s ldapInfoServer %s" + QUIET)
    number(unit, section, "port", "astparam s ldapInfoPort %d;")
    flag_bit(unit, section, "use_tls", "astparam s ldapInfoTls #;")
    text(unit, section, "tls_ca", 'crypto_program -d "%s" /var/tmp/LDAP_CAFile')
    text(unit, section, "tls_cert", 'crypto_program -d "%s" /var/tmp/LDAP_CERTFile')
    text(unit, section, "tls_key", 'crypto_program -d "%s" /var/tmp/LDAP_KEYFile')
    unit.shell("ldap_upgrade_cert.sh &")


def apply_8021x(unit, section):
    for port_name, end in (("lan1", ""), ("lan2", "_2")):
        port = get(section, port_name)
        if not isinstance(port, Members):
            continue

        def yes_no(key, parameter, port=port, end=end):
            line = "astparam s " + parameter + end
            flag(unit, port, key, line + " y;", line + " n;")

        def quoted(key, parameter, port=port, end=end):
            text(unit, port, key, "astparam s " + parameter + end + ' "%s"' + QUIET)

        def decrypted(key, name, extension, port=port, end=end):
            text(unit, port, key, 'crypto_program -d "%s" /var/tmp/' + name + end + extension)

        yes_no("enable", "auth_1x_en")
        text(unit, port, "method", "astparam s auth_1x_method" + end + " %s" + QUIET)
        quoted("username", "auth_1x_username")
        quoted("password", "auth_1x_passwd")
        quoted("private_key_password", "auth_1x_priv_key_passwd")
        decrypted("tls_cert", "client", ".pem")
        decrypted("tls_key", "client", ".key")
        yes_no("server_certificate_enable", "auth_1x_valid_server_en")
        decrypted("ca", "ca", ".pem")
        quoted("ca_time", "auth_1x_server_cert_start_time")
        unit.shell("update_1x_cert_upload_conf.sh " + port_name)


# ---- panel and system -----------------------------------------------------------------------------


def apply_oled_display(unit, section):
    unit.pause()
    always_on = exact(section, "always_on")
    if always_on is True or always_on is False:
        unit.mcu("oledkeep,on" if always_on else "oledkeep,off")
    unit.pause()
    changing_time = get(section, "lines_changing_time")
    if is_number(changing_time):
        unit.mcu("oledrefresh,%d" % integer(changing_time))
    unit.pause()
    flag_bit(unit, section, "device_name", "astparam s o_d_is_device_name #;")
    flag_bit(unit, section, "ip_address", "astparam s o_d_is_ip #;")
    flag_bit(unit, section, "mac_address", "astparam s o_d_is_mac #;")
    flag_bit(unit, section, "firmware_version", "astparam s o_d_is_fwversion #;")
    flag_bit(unit, section, "serial_number", "astparam s o_d_is_serial_number #;")
    flag_bit(unit, section, "video_stream_number", "astparam s o_d_is_stream_number #;")
    flag_bit(unit, section, "resolution", "astparam s o_d_is_resolution #;")
    flag_bit(unit, section, "custom_text", "astparam s o_d_is_custom #;")
    text(unit, section, "custom_text_content", 'astparam s o_d_is_custom_text "%s"' + QUIET)
    unit.shell("init_send_oled" + QUIET)
    unit.pause()


def apply_auto_status(unit, section):
    flag_bit(unit, section, "enable", "astparam s auto_status_enable #;")
    number(unit, section, "status_port", "astparam s auto_status_port %d" + QUIET)
    text(unit, section, "status_ip", "astparam s auto_status_ipaddr %s" + QUIET)
    number(unit, section, "status_interval", "astparam s auto_status_interval %d;")
    unit.shell("e e_chg_auto_sta")
    unit.pause()


def fan_speed(value):
    if is_number(value):
        return integer(value)
    words = ("off", "extra low", "low", "medium", "high", "super high", "auto")
    return words.index(value) if is_text(value) and value in words else -1


def apply_fan_control(unit, section):
    unit.pause()
    enable = exact(section, "enable")
    level = fan_speed(get(section, "speed_setting"))
    if enable is True and level >= 0:
        unit.mcu("fanspeed,%d" % (level if 1 <= level <= 6 else 0))
    if enable is False:
        unit.mcu("fanspeed,0")
        unit.shell("astparam s fancontrol_bk %d;" % level)
    unit.pause()


def apply_front_panel_lock(unit, section):
    unit.pause()
    if section is True or section is False:
        unit.mcu("fplock,on" if section else "fplock,off")
    unit.pause()


def apply_aes67(_unit, _section):
    pass


def apply_date_and_time(unit, section):
    flag_bit(unit, section, "enable", "astparam s ntp_enable #;")
    text(unit, section, "primary_ntp_server", "astparam s primary_ntp_server %s" + QUIET)
    text(unit, section, "secondary_ntp_server", "astparam s secondary_ntp_server %s" + QUIET)
    text(unit, section, "time_zone", "astparam s ntp_time_zone %s" + QUIET)
    flag_bit(unit, section, "daylight_save_time", "astparam s ntp_daylight_save_time #;")
    number(unit, section, "clock_format", "astparam s ntp_clock_format %d" + QUIET)


def apply_debug(unit, section):
    unit.snapshot()
    flag_bit(unit, section, "command_log_enable", "astparam s dm_log #;")
    flag_bit(unit, section, "debug_log_enable", "astparam s logEnable #;")


def apply_ssh(unit, section):
    flag_bit(unit, section, "enable", "astparam s ssh_enable #;")
    text(unit, section, "username", 'astparam s ssh_username "%s";')
    text(unit, section, "password", 'astparam s ssh_password "%s";')
    number(unit, section, "port", "astparam s ssh_port %d;")


def apply_power(unit, section):
    unit.pause()
    status = get(section, "power_status")
    if is_text(status) and status in ("poweron", "poweroff", "powerlow"):
        unit.mcu(status)
    unit.pause()


# ---- the whole configuration ----------------------------------------------------------------------

# The common part of every model, in order. Sections without an applier here belong to the audio and
# video half; the documents compared with this statement do not hold them.
COMMON_SECTIONS = (
    ("aes67", apply_aes67),
    ("date_and_time", apply_date_and_time),
    ("dante", None),
    ("routing", None),
    ("oled_display", apply_oled_display),
    ("auto_status", apply_auto_status),
    ("fan_control", apply_fan_control),
    ("serial", apply_serial),
    ("ir", apply_ir),
    ("trigger", apply_trigger),
    ("network", apply_network),
    ("aes256", apply_aes256),
    ("snmp", apply_snmp),
    ("mqtt", apply_mqtt),
    ("https", apply_https),
    ("ldap", apply_ldap),
    ("auth_8021x", apply_8021x),
    ("front_panel_lock", apply_front_panel_lock),
    ("usb_devices", None),
    ("debug", apply_debug),
    ("ssh", apply_ssh),
    ("power", apply_power),
)


def apply_configuration(unit, model, document_text):
    document = parse(document_text)
    if document is MISSING:
        return 2
    wanted = get(document, "model")
    if wanted is MISSING:
        return 3
    if not is_text(wanted) or wanted[:16] != model:
        return 4

    step = 0

    def progress():
        nonlocal step
        step += 1
        unit.shell('echo "upgradeUnitSetting:%d,%d" | nc 127.0.0.1 4445' % (step, PROGRESS_TOTAL))

    if get(document, "stream") is not MISSING:
        progress()
    # then: after the stream, edid, hdcp and either usb_host or the decoder's two images, osd and wall
    for _ in range(7 if model == DECODER else 4):
        progress()
    for key, applier in COMMON_SECTIONS:
        if key == "routing" and model != DECODER:
            continue
        section = get(document, key)
        if section is not MISSING and applier is not None:
            applier(unit, section)
        progress()
    unit.shell("astparam save;")
    unit.pause()
    unit.shell("e e_reboot &")
    return 1


# ---- custom EDID and video wall uploads -----------------------------------------------------------


def load_custom_edid(unit, document_text):
    document = parse(document_text)
    if document is MISSING:
        return 2
    edid = get(document, "custom_edid")
    if is_text(edid) and edid != "":
        for blank in " \r\t\n":
            edid = edid.replace(blank, "")
        if not re.fullmatch("[0-9A-Fa-f]{512}", edid):
            return 5
        unit.shell('echo -e "setuseredid" > /dev/ttyS1')
        unit.pause()
        pieces = "".join("\\x" + edid[i : i + 2] for i in range(0, 512, 2))
        unit.shell('echo -ne "' + pieces + '" > /dev/ttyS1')
        input_1 = unit.read("astparam g edid_set_u")
        input_2 = unit.read("astparam g edid_set_h")
        if input_1[:1] == "9":
            unit.pause()
            unit.shell('echo "setedid,1:9" > /dev/ttyS1')
        unit.pause()
        if input_2[:1] == "9":
            unit.pause()
            unit.shell('echo "setedid,2:9" > /dev/ttyS1')
    if text(unit, document, "custom_edid_name", 'astparam s edid_user_defined1 "%s"' + QUIET):
        unit.shell("astparam save" + QUIET)
    return 1


def apply_video_wall(unit, document_text):
    document = parse(document_text)
    if document is MISSING:
        return 2
    variant = unit.lm_value("VW_VAR_VER")
    addon = unit.lm_value("A_ADDON")
    dante_mode = unit.lm_value("DANTE_OP_MODE")

    def texts(*keys):
        values = [get(document, key) for key in keys]
        return [value if is_text(value) else None for value in values]

    connect, outer_width, outer_height, view_width, view_height = texts(
        "connect", "outer_width", "outer_height", "view_width", "view_height"
    )
    if None in (connect, outer_width, outer_height, view_width, view_height):
        return 4
    grid = texts("max_row_count", "max_column_count", "position_row", "position_column")
    corners = texts(
        "virtual_coordinates_x1",
        "virtual_coordinates_y1",
        "virtual_coordinates_x2",
        "virtual_coordinates_y2",
    )
    in_grid = None not in grid and corners == [None] * 4
    in_coordinates = None not in corners and grid == [None] * 4
    if not in_grid and not in_coordinates:
        return 4
    stretch, rotation = texts("stretch", "rotation")
    if stretch is None or rotation is None:
        return 4
    stretch = leading_integer(stretch)
    rotation = leading_integer(rotation)
    if not (0 <= stretch <= 9 and 0 <= rotation <= 9):
        return 3
    stretch_code = {0: "2", 1: "1"}.get(stretch, "")
    rotation_code = {0: "0", 1: "5", 2: "3", 3: "6"}.get(rotation, "")

    if in_coordinates:
        enable = "e e_vw_enable_" + "_".join(corners) + "_2;"
    elif variant[:1] == "2":
        enable = "e e_chg_video_wall_type;e e_vw_enable_" + "_".join(grid) + ";"
    else:
        rows = leading_integer(grid[0])
        columns = leading_integer(grid[1])
        if variant[:1] == "1" and not (1 <= rows <= 16 and 1 <= columns <= 16):
            return 3
        rows, columns = max(INT_MIN, rows - 1), max(INT_MIN, columns - 1)
        enable = "e e_vw_enable_%d_%d_" % (rows, columns) + grid[2] + "_" + grid[3] + ";"
    unit.shell(
        enable
        + "e e_vw_moninfo_" + "_".join((view_width, outer_width, view_height, outer_height)) + ";"
        + "e e_vw_rotate_" + rotation_code + ";"
        + "e e_vw_stretch_type_" + stretch_code + ";"
    )
    if addon == "none" or (addon == "dante" and dante_mode == "audio-only"):
        unit.shell("e e_reconnect::" + connect + "::v")
    return 1


def expected(request):
    """The result and the trace of one upload, for a request as the comparison tool takes it."""
    unit = Unit(
        request.get("rw", ()),
        request.get("lm", ()),
        request.get("answers"),
        request.get("files"),
        request.get("refuse", ()),
    )
    document_text = bytes_text(request["text"])
    if request["upload"] == "configuration":
        result = apply_configuration(unit, request["model"], document_text)
    elif request["upload"] == "custom_edid":
        result = load_custom_edid(unit, document_text)
    else:
        result = apply_video_wall(unit, document_text)
    return result, unit.trace
