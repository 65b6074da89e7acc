"""Random uploads for the control, network and service half of a unit, run through the comparison tool
and through the plain statement, and shrunk to something readable when the two do not agree."""

import copy
import json
import os
import pathlib
import random
import subprocess

import control_and_services as statement


# ---- running --------------------------------------------------------------------------------------


def tool_path():
    return pathlib.Path(os.environ.get("GATEWAY_BUILD_DIR", "build")) / "tests" / "trace_tool"


def run_tool(requests):
    """(result, trace) of each request; the trace one character a byte. None where the tool ended."""
    lines = "".join(json.dumps(request) + "\n" for request in requests)
    done = subprocess.run([str(tool_path())], input=lines.encode(), stdout=subprocess.PIPE, check=False)
    answers = []
    for line in done.stdout.split(b"\n")[:-1]:
        answer = json.loads(line.decode("latin-1"))
        answers.append((answer["result"], answer["trace"]))
    return answers + [None] * (len(requests) - len(answers))


def differences(requests):
    """The requests for which the tool and the statement do not agree."""
    answers = run_tool(requests)
    return [r for r, answer in zip(requests, answers) if answer != statement.expected(r)]


# ---- values ---------------------------------------------------------------------------------------

TEXTS = (
    "", "a", "room 1", "10.0.0.1", "Room 4/B", "x" * 31, "y" * 32, 'say "hi"', "back\\slash", "tab\there",
    "two\nlines", "cr\rlf", "%s %d %n %%", "$(reboot)", "`id`", "a;b", "TAG", "TATAGG", "Grüße", "日本語テキスト",
    "😀 smile", "-", " ", "  lead", "0", "1", "true", "null", "\u0001\u001f\u007f", "cut\u0000here", "\u0000",
    "é" * 16, "/", "'", "#", "\\n\\t\\x41", "a\b\fb",
)
NUMBERS = (
    0, 1, 2, 3, 6, 7, 8, 9, 10, -1, -2, 0.5, -0.5, 0.999, 1.5, 1.999, 2.5, -1.5, 16, 20, 80, 161, 255, 256, 1883,
    4094, 4095, 65535, 65536, 115200, 9600, 2147483646, 2147483647, 2147483648, -2147483647, -2147483648,
    -2147483649, 2147483647.5, 4294967296, 1e10, 1e15, 123456789012345678, 1e17, 1e22, 1e300, -1e300,
    float("inf"), 0.1, 1e-7, 3.141592653589793, 1 / 3, 5e-324, -0.0,
)


def random_text(rng):
    pick = rng.random()
    if pick < 0.03:
        return rng.choice("abé") * rng.randint(1900, 2100)
    if pick < 0.035:
        return "k" * rng.choice([1023, 1024, 4096, 16384, 131072, 140000])
    if pick < 0.8:
        return rng.choice(TEXTS)
    return "".join(rng.choice("aZ09 -_./%\"\\$é") for _ in range(rng.randint(1, 40)))


def random_number(rng):
    return rng.choice(NUMBERS) if rng.random() < 0.7 else rng.randint(-5, 5000)


def random_json(rng, depth=3):
    kind = rng.randrange(8 if depth else 6)
    if kind < 2:
        return random_text(rng)
    if kind < 4:
        return random_number(rng)
    if kind == 4:
        return rng.choice([True, False])
    if kind == 5:
        return None
    if kind == 6:
        return [random_json(rng, depth - 1) for _ in range(rng.randint(0, 3))]
    keys = ("data", "name", "cmd", "a b", "", 'q"q', "é", "Type", "enable", "apievent")
    return {rng.choice(keys): random_json(rng, depth - 1) for _ in range(rng.randint(0, 3))}


def other_case(rng, word):
    return rng.choice([word.upper(), word.capitalize(), word.swapcase(), word.title()])


# A kind of member is a function from the random source to a value that the member may rightly have.


def flag(rng):
    return rng.choice([True, False])


def words(*choices):
    def pick(rng):
        word = rng.choice(choices)
        if rng.random() < 0.7:
            return word
        near = [other_case(rng, word), word + " ", " " + word, word[:-1], word[1:], word + "x", "x" + word, ""]
        near += [word + "\0x", word.replace(" ", ""), word.replace("-", ""), word.replace("_", "-")]
        return rng.choice(near)

    return pick


def either(*kinds):
    return lambda rng: rng.choice(kinds)(rng)


def ipv4(rng):
    def field():
        return rng.choice(
            ["0", "1", "2", "10", "253", "254", "255", "256", "-1", "+1", " 1", "1 ", "01", "0x1", "1a", "a", "",
             "2147483648", "4294967297", "99999999999999999999"]
        )

    if rng.random() < 0.4:
        return rng.choice(
            ["192.168.1.10", "10.0.0.1", "192.168.1.255", "0.1.2.3", "1.0.0.1", "1.0.0.0", "254.254.254.254",
             "1.1.1", "1...1.1.1", "1.1.1.1.255", "1.1.1.1.x", "1.1.", "1.1.1.1", ".1.1.1.1.", "1,1,1,1", "1111", "",
             "1.1.1.1" + "." * 60 + "9", "0" * 57 + "1.1.1.1", "1.1.1." + "0" * 56 + "12", "1.1.1." + "0" * 57 + "1",
             "1.1.1." + "0" * 55 + "255", "1.1.1." + "0" * 54 + "255", "1.2.3.4" + " " * 100]
        )
    return ".".join(field() if rng.random() < 0.3 else str(rng.randint(1, 254)) for _ in range(rng.choice([3, 4, 4, 4, 5])))


def vlan_array(rng):
    if rng.random() < 0.02:
        return [rng.randint(1, 4094) for _ in range(rng.randint(100, 1200))]
    return [
        random_json(rng, 1) if rng.random() < 0.2 else rng.choice([1, 2, 10, 20, 4094, random_number(rng)])
        for _ in range(rng.choice([0, 0, 1, 1, 2, 3, 4]))
    ]


def members(**kinds):
    """An object with some of the members, in any order, now and then with a key in another case, with a
    value of a wrong type, or with the same key twice in different cases."""

    def build(rng):
        density = rng.choice([0.15, 0.5, 0.9, 1, 1])
        pairs = []
        for key, kind in kinds.items():
            if rng.random() < density:
                value = kind(rng) if rng.random() < 0.82 else random_json(rng, 2)
                pairs.append((other_case(rng, key) if rng.random() < 0.08 else key, value))
                if rng.random() < 0.03:
                    twin = kind(rng) if rng.random() < 0.5 else random_json(rng, 1)
                    pairs.append((other_case(rng, key), twin))
        if rng.random() < 0.1:
            pairs.append((rng.choice(["extra", "", "enabled", "_comment"]), random_json(rng, 2)))
        if rng.random() < 0.5:
            rng.shuffle(pairs)
        return dict(pairs)

    build.kinds = kinds
    return build


def sometimes_no_object(kind):
    return lambda rng: random_json(rng, 1) if rng.random() < 0.06 else kind(rng)


# ---- sections -------------------------------------------------------------------------------------

AUTHENTICATION = words("none", "md5", "sha", "sha-256", "sha-384", "sha-512")
PRIVACY = words("none", "des", "aes", "aes-128")

SERVICE = members(
    lan_1=words("tagged", "untagged"),
    lan_2=words("tagged", "untagged"),
    enable=flag,
    vlan_id=either(random_number, lambda rng: rng.choice([1, 10, 20, 30])),
    ttl=random_number,
    dscp=random_number,
    lan_port=either(words("lan 1", "lan1", "lan 2", "lan2", "lan 1 + lan 2", "lan1 + lan2"), random_number),
    ip_mode=words("dhcp", "static"),
    ip_address=ipv4,
    subnet=random_text,
    gateway=random_text,
)

PORT_8021X = members(
    enable=flag,
    method=random_text,
    username=random_text,
    password=random_text,
    private_key_password=random_text,
    tls_cert=random_text,
    tls_key=random_text,
    server_certificate_enable=flag,
    ca=random_text,
    ca_time=random_text,
)


def userdefined(rng):
    return [{"name": random_text(rng), "value": random_text(rng)} for _ in range(rng.randint(0, 5))]


def trigger_item(word):
    def build(rng):
        shown = word if rng.random() < 0.8 else rng.choice(["power_on", "video_connect", "video_disconnect", "custom"])
        around = rng.choice(["", "", "my ", "x"])
        kind = around + words(shown)(rng) + rng.choice(["", "", " list"])
        data = random_json(rng)
        if word == "custom" and rng.random() < 0.8:
            data = [custom_event(rng) for _ in range(rng.randint(0, 4))]
        item = members(type=lambda rng: kind, data=lambda rng: data)(rng)
        return random_json(rng, 1) if rng.random() < 0.05 else item

    return build


def custom_event(rng):
    names = ("room_on", "room_off", "", "01234567890123456789", "a b")
    kinds = {"apievent": lambda rng: rng.choice(names), "cmd": random_json, "list": random_json}
    return random_json(rng, 2) if rng.random() < 0.1 else members(**kinds)(rng)


def trigger_lists(rng):
    count = rng.choice([0, 1, 2, 3, 4, 4, 4, 4, 5])
    order = ["power_on", "video_connect", "video_disconnect", "custom", "custom"]
    if rng.random() < 0.1:
        rng.shuffle(order)
    return [trigger_item(word)(rng) for word in order[:count]]


def enable_only(key, kind):
    return sometimes_no_object(members(**{"enable": flag, key: kind}))


SECTIONS = {
    "aes67": members(enable=flag),
    "date_and_time": members(
        enable=flag,
        primary_ntp_server=random_text,
        secondary_ntp_server=random_text,
        time_zone=random_text,
        daylight_save_time=flag,
        clock_format=random_number,
    ),
    "oled_display": members(
        always_on=flag,
        lines_changing_time=random_number,
        device_name=flag,
        ip_address=flag,
        mac_address=flag,
        firmware_version=flag,
        serial_number=flag,
        video_stream_number=flag,
        resolution=flag,
        custom_text=flag,
        custom_text_content=random_text,
    ),
    "auto_status": members(
        enable=flag, status_port=random_number, status_ip=random_text, status_interval=random_number
    ),
    "fan_control": members(
        enable=flag,
        speed_setting=either(
            words("off", "extra low", "low", "medium", "high", "super high", "auto"),
            random_number,
            lambda rng: rng.randint(-2, 9),
        ),
    ),
    "serial": members(
        setting=sometimes_no_object(
            members(
                baud=either(random_number, random_text, lambda rng: rng.choice([9600, "115200", "", "2147483648"])),
                databit=either(random_number, random_text, lambda rng: rng.choice([8, "7", ""])),
                parity=words("none", "even", "odd", "mark", "space"),
                stopbit=either(random_number, random_text, lambda rng: rng.choice([1, "2", ""])),
                ending=words("null", "cr", "lf", "crlf"),
                format=words("ascii", "ascii", "hex", "hex", "hex-ascii", "asci", "ASCII", "a text that names ascii late"),
                ip_tunnel=flag,
                ip_ssh_tunnel=flag,
            )
        ),
        userdefined=userdefined,
        serial_pass=enable_only("serial_pass_ip_address", random_text),
    ),
    "ir": members(
        ir_read=sometimes_no_object(members(enable=flag)),
        ir_delay=random_number,
        ir_repeat_time=random_number,
        ir_repeat_delay=random_number,
        data=random_json,
        ir_pass=enable_only("ir_pass_ip_address", random_text),
    ),
    "trigger": members(enable=flag, trigger_lists=trigger_lists),
    "network": members(
        lan1=sometimes_no_object(
            members(
                ip_mode=words("dhcp", "static"),
                ip_address=ipv4,
                subnet=random_text,
                gateway=random_text,
                dns1=random_text,
                dns2=random_text,
                hostname=random_text,
                use_device_name=flag,
                port_vlan_id=random_number,
                untagged_vlans=vlan_array,
                tagged_vlans=vlan_array,
                multicast_discovery=flag,
                discovery_send_interval=random_number,
                igmp_v3_enable=flag,
            )
        ),
        lan2=sometimes_no_object(
            members(
                enable=flag,
                multicast_traffic=flag,
                poe_passthrough=flag,
                port_vlan_id=random_number,
                untagged_vlans=vlan_array,
                tagged_vlans=vlan_array,
            )
        ),
        services_settings=sometimes_no_object(
            members(
                stream=sometimes_no_object(SERVICE),
                control=sometimes_no_object(SERVICE),
                dante_aes67=sometimes_no_object(SERVICE),
            )
        ),
    ),
    "aes256": members(
        enable=flag,
        aes256_mode=either(words("standard", "high"), random_number, lambda rng: rng.randint(-1, 3)),
        custom_key_enable=flag,
        custom_key_string=random_text,
    ),
    "snmp": members(
        enable=flag,
        is_get=flag,
        is_set=flag,
        port=random_number,
        sys_contact=random_text,
        sys_name=random_text,
        sys_location=random_text,
        v2_enable=flag,
        public_community=random_text,
        private_community=random_text,
        v3_enable=flag,
        v3_username=random_text,
        v3_auth_algorithm=AUTHENTICATION,
        v3_auth_password=random_text,
        v3_privacy_algorithm=PRIVACY,
        v3_privacy_password=random_text,
        trap_mode=random_number,
        trap=flag,
        v3_trap=sometimes_no_object(
            members(
                username=random_text,
                engine_id=random_text,
                auth_algorithm=AUTHENTICATION,
                auth_password=random_text,
                privacy_algorithm=PRIVACY,
                privacy_password=random_text,
            )
        ),
        trap_receiver1=random_text,
        trap_receiver2=random_text,
    ),
    "mqtt": members(
        enable=flag,
        host=random_text,
        port=random_number,
        enable_ssl=flag,
        user_credentials=flag,
        username=random_text,
        password=random_text,
        client_id=random_text,
        topics=random_text,
        qos=random_number,
        keep_alive_ping=random_number,
        publish_data_interval=random_number,
        tls_ca=random_text,
        tls_cert=random_text,
        tls_key=random_text,
    ),
    "https": members(
        enable=flag, use_internal_certificate=flag, tls_private_key=random_text, tls_ca=random_text
    ),
    "ldap": members(
        enable=flag,
        domain_name=random_text,
        username=random_text,
        password=random_text,
        server=random_text,
        port=random_number,
        use_tls=flag,
        tls_ca=random_text,
        tls_cert=random_text,
        tls_key=random_text,
    ),
    "auth_8021x": members(lan1=sometimes_no_object(PORT_8021X), lan2=sometimes_no_object(PORT_8021X)),
    "front_panel_lock": flag,
    "debug": members(command_log_enable=flag, debug_log_enable=flag),
    "ssh": members(enable=flag, username=random_text, password=random_text, port=random_number),
    "power": members(power_status=words("poweron", "poweroff", "powerlow", "standby")),
}
WEIGHTS = {"network": 6, "serial": 5, "trigger": 3, "ir": 2, "snmp": 2, "aes256": 2, "fan_control": 2}


# ---- present values -------------------------------------------------------------------------------


def stored_serial_list(rng):
    """The text of a stored code list, in its file's form or nearly so."""
    pick = rng.random()
    if pick < 0.2:
        return rng.choice(["", "\n", "\r\n\t", " ", "{", "{}", "[]", "null", "5", "-1.5e3", "TAGaTAG", "nonsense", "[{}]"])
    setting = members(
        baud=random_json,
        databit=random_json,
        parity=random_json,
        stopbit=random_json,
        type=random_json,
        ending=words("NULL", "CR", "LF", "CRLF", "cr", "15 characters!!", "16 characters!!!", "é" * 8),
        format=random_json,
        mode1=flag,
        mode2=flag,
    )
    scalar = random_number if rng.random() < 0.5 else random_text
    data = members(setting=setting if rng.random() < 0.94 else scalar, userdefined=userdefined)
    document = members(data=data)(rng)
    text = write_json(rng, document)
    if rng.random() < 0.9:
        text = text.replace('"', "TAG")
    if rng.random() < 0.2:
        text = text.replace(":", rng.choice([":\t", ":\r\n", ": "]))
    return text


PORT_VALUES = ("115200-8n1", "9600-7e2", "", "-", "--", "9600", "9600-", "-8n1", "9600-8", "9600-8n", "9600--8o1",
               "9600-8n1-x", "115200-8n15", "a b-c d", "1-é1",
               "1" * 31 + "-8n1", "2" * 32 + "-8n1" * 9, "é" * 16 + "-" + "8n1" * 20)
IDS = ("", "0", "1", "10", "20", "20", "30", "020", " 20", "+20", "-20", "20x", "x", "20,30", "4294967316",
       "2147483647", "2147483648", "99999999999999999999")
LISTS = ("", "1", "20", "1,20,30", "20,20", ",20,,30,", "20,", " 20,20 ,+20", "020,0020", "x,20", "0,00,a", "10,20x",
         "4294967316,20", "2147483648,2147483647", "-20,20", ",")


def random_answers(rng):
    answers = {}

    def put(key, values):
        if rng.random() < 0.85:
            odd = rng.choice(["not define", "", "é"])
            answers["astparam g " + key] = rng.choice(values) if rng.random() < 0.93 else odd

    put("device_name_sync_enable", ["", "1", "0", "11", "110", "1101", "éé", "aé", "1,0,1,1"])
    put("deviceName", ["", "Encoder 1", "Büro_4", "x" * 150, "y" * 900, "a-b-C 9"])
    for service in ("stream", "dante", "control"):
        put(service + "LanPort", ["0", "0", "1", "2", "3", "", "01", "12", "-1"])
        put(service + "VlanID", IDS)
        put(service + "VlanMode", ["y", "y", "y", "n", "yes", "Y", "ny", ""])
        put("lan1" + service, ["0", "1", "0", "1", "10", "01", "2", ""])
        put("lan2" + service, ["0", "1", "0", "1", "10", "01", "2", ""])
    for key in ("vlan1Tag", "vlan2Tag", "vlan1Untag", "vlan2Untag"):
        if rng.random() < 0.03:
            put(key, [",".join(str(rng.randint(1, 4094)) for _ in range(150))])
        else:
            put(key, LISTS)
    return answers


WORKING_FILES = ["/var/tmp/" + name for name in (
    "rs232_list.json", "ir_list.json", "trigger_poweron_event_list.json",
    "trigger_video_connect_event_list.json", "trigger_video_disconnect_event_list.json")]


def random_unit(rng):
    rw = [["fplock", rng.choice(["1", "9600-8n1"])], ["fm_version", "1.0"]]
    if rng.random() < 0.9:
        options = ("0x80000000", "0x80100000", "0x00100000", "0x00000000", "0x8", "0x0", "", "0x", "0", "0x1",
                   "0x12345678", "0X80000000", "abc", "aé")
        rw.append(["v_eng_drv_option", rng.choice(options)])
    lm = [["HOSTNAME", "unit"], ["MY_IP", "10.0.0.2"]]
    if rng.random() < 0.9:
        lm.append(["S0_BAUDRATE", rng.choice(PORT_VALUES) if rng.random() < 0.7 else "9600-8n1"])
    rng.shuffle(rw)
    rng.shuffle(lm)
    if rng.random() < 0.03:
        lm = []  # no live dump at all
    files = {}
    if rng.random() < 0.85:
        files["/user_data2/rs232_list.json"] = stored_serial_list(rng)
    if rng.random() < 0.3:
        files["/var/tmp/rs232_list.json"] = stored_serial_list(rng)
    refuse = [path for path in WORKING_FILES if rng.random() < 0.05]
    return {"rw": rw, "lm": lm, "answers": random_answers(rng), "files": files, "refuse": refuse}


# ---- uploads --------------------------------------------------------------------------------------


def write_json(rng, document):
    style = rng.randrange(4)
    text = json.dumps(
        document,
        ensure_ascii=rng.random() < 0.5,
        indent=[None, "\t", 1, None][style],
        separators=[(",", ":"), None, None, (" , ", " : ")][style],
    )
    return text.replace("Infinity", "1e999")


def random_configuration(rng, model):
    pool = [key for key in SECTIONS for _ in range(WEIGHTS.get(key, 1))]
    count = rng.choice([1, 1, 1, 2, 2, 3, 5, len(SECTIONS)])
    chosen = list(SECTIONS) if count == len(SECTIONS) else rng.sample(pool, count)
    document = {}
    for key in dict.fromkeys(chosen):
        value = SECTIONS[key](rng) if rng.random() < 0.95 else random_json(rng, 1)
        document[other_case(rng, key) if rng.random() < 0.05 else key] = value
    if rng.random() < 0.1:
        document["stream"] = rng.choice([{}, [], None, True, "x", {"other": 1}])
    if rng.random() < 0.05:
        document[rng.choice(["unknown", "osd2", ""])] = random_json(rng, 1)
    if model != statement.DECODER and rng.random() < 0.05:
        document[rng.choice(["routing", "osd", "video_wall", "power_on_image"])] = random_json(rng, 1)
    wanted = model + rng.choice(["", "", "", " rev B"])
    if rng.random() < 0.02:
        wanted = rng.choice([*statement.MODELS, model[:-1], model.lower(), "", None, 1, True, {}, [model]])
    pairs = list(document.items())
    rng.shuffle(pairs)
    if rng.random() < 0.99:
        place = rng.choice([0, len(pairs), rng.randint(0, len(pairs))])
        pairs.insert(place, ("model" if rng.random() < 0.97 else other_case(rng, "model"), wanted))
    text = write_json(rng, dict(pairs))
    if rng.random() < 0.005:
        text = rng.choice(["", "{", "nonsense", text[:-1], "[" + text, "[" + text + "]", "null", '"model"', text + " tail"])
    return {"upload": "configuration", "model": model, "text": text, **random_unit(rng)}


def hexadecimal(rng):
    count = rng.choice([512] * 12 + [0, 1, 2, 510, 511, 513, 514, 1024, 2047, 2048, 5000])
    digits = [rng.choice("0123456789abcdefABCDEF") for _ in range(count)]
    if digits and rng.random() < 0.15:
        digits[rng.choice([0, -1, rng.randrange(count)])] = rng.choice("gGxX/:@`-é\v\f\0\u00a0")
    if rng.random() < 0.5:
        for _ in range(rng.randint(1, 40)):
            digits.insert(rng.randint(0, len(digits)), rng.choice([" ", "\r", "\n", "\t", "\r\n", "    "]))
    return "".join(digits)


def random_custom_edid(rng):
    blanks = lambda rng: rng.choice([" ", "\r\n\t", "  "])
    document = members(custom_edid=either(hexadecimal, hexadecimal, hexadecimal, blanks), custom_edid_name=random_text)(rng)
    if rng.random() < 0.03:
        document = random_json(rng, 2)
    text = write_json(rng, document)
    if rng.random() < 0.02:
        text = rng.choice(["", "{", "no", text[:-1], " "])
    answers = {}
    for key in ("edid_set_u", "edid_set_h"):
        if rng.random() < 0.9:
            answers["astparam g " + key] = rng.choice(["9", "9", "90", "1", "", "09", " 9", "not define"])
    return {"upload": "custom_edid", "model": "", "text": text, "answers": answers}


def wall_number(rng):
    return rng.choice(
        ["0", "1", "2", "3", "4", "9", "10", "15", "16", "17", "40", "-1", "+1", " 1", "1x", "x", "", "01", "1920",
         "99999999999", "-2147483648", "2147483648", "1.9", random_text(rng)]
    )


def random_video_wall(rng):
    grid = ("max_row_count", "max_column_count", "position_row", "position_column")
    corners = tuple("virtual_coordinates_" + corner for corner in ("x1", "y1", "x2", "y2"))
    always = ("connect", "outer_width", "outer_height", "view_width", "view_height", "stretch", "rotation")
    keys = set(always) | set(rng.choice([grid, grid, corners, grid + corners, ()]))
    for key in grid + corners + always:
        if rng.random() < 0.015:
            keys ^= {key}
    pairs = []
    for key in sorted(keys):
        value = wall_number(rng) if rng.random() < 0.5 else rng.choice(["0", "1", "2", "3", "4", "16", "16", "17"])
        if rng.random() < 0.015:
            value = rng.choice([1, None, True, {}, []])
        pairs.append((other_case(rng, key) if rng.random() < 0.05 else key, value))
    rng.shuffle(pairs)
    document = dict(pairs)
    text = write_json(rng, document if rng.random() < 0.98 else random_json(rng, 1))
    if rng.random() < 0.02:
        text = rng.choice(["", "{", "no", text[:-1], " "])
    lm = [["HOSTNAME", "unit"]]
    for key, values in (
        ("VW_VAR_VER", ["1", "1", "2", "2", "12", "21", "0", "3", "", " 1"]),
        ("A_ADDON", ["none", "dante", "dante", "analog", "", "none ", "None", "dante2"]),
        ("DANTE_OP_MODE", ["audio-only", "audio-only", "video", "", "audio-only2", "audio=only"]),
    ):
        if rng.random() < 0.93:
            lm.append([key, rng.choice(values)])
    rng.shuffle(lm)
    return {"upload": "video_wall", "model": "", "text": text, "lm": lm}


# ---- shrinking ------------------------------------------------------------------------------------


def smaller_values(value):
    if isinstance(value, dict):
        for key in value:
            yield {k: v for k, v in value.items() if k != key}
        for key in value:
            for smaller in smaller_values(value[key]):
                yield {k: smaller if k == key else v for k, v in value.items()}
    elif isinstance(value, list):
        for i in range(len(value)):
            yield value[:i] + value[i + 1 :]
        for i, item in enumerate(value):
            for smaller in smaller_values(item):
                yield value[:i] + [smaller] + value[i + 1 :]
    elif isinstance(value, str) and value:
        yield ""
        if len(value) > 1:
            yield value[: len(value) // 2]
            yield value[len(value) // 2 :]
            yield value[:-1]


def smaller_requests(request):
    try:
        document = json.loads(request["text"])
        for smaller in smaller_values(document):
            text = json.dumps(smaller, ensure_ascii=False).replace("Infinity", "1e999")
            if len(text) < len(request["text"]):
                yield {**request, "text": text}
    except ValueError:
        pass
    for part in ("rw", "lm", "answers", "files", "refuse"):
        if part in request:
            for smaller in smaller_values(request[part]):
                if part not in ("rw", "lm") or all(len(entry) == 2 and entry[0] for entry in smaller):
                    yield {**request, part: smaller}


def shrink(request):
    """A request, as small as can be had by leaving things out, that the two still disagree about."""
    request = copy.deepcopy(request)
    for _ in range(400):
        candidates = []
        for candidate in smaller_requests(request):
            candidates.append(candidate)
            if len(candidates) == 300:
                break
        found = differences(candidates)
        if not found:
            return request
        request = min(found, key=lambda r: len(json.dumps(r)))
    return request


def describe(request):
    answer = run_tool([request])[0]
    result, trace = statement.expected(request)
    out = json.dumps(request, ensure_ascii=False, indent=1) + "\n"
    out += "--- expected: result %d\n%s" % (result, trace)
    if answer is None:
        return out + "--- the program ended without an answer\n"
    return out + "--- the program: result %d\n%s" % answer


def generate(kind, count, seed):
    """`kind` is a model name, "custom_edid" or "video_wall"."""
    rng = random.Random("%s %d" % (kind, seed))
    uploads = {"custom_edid": random_custom_edid, "video_wall": random_video_wall}
    if kind in uploads:
        return [uploads[kind](rng) for _ in range(count)]
    return [random_configuration(rng, kind) for _ in range(count)]
