"""What a unit is told when it is given a unit configuration: a second, plain statement.

expected() takes a document and the unit's present values and says the whole ordered trace that the
gateway must leave: identity, video, audio, EDID, HDCP, images, routing, preview, USB, OSD, video wall
and Dante, within the progress lines, the save, the pause and the reboot that frame them. It shares
nothing with the program: no table, no helper, no order of code. It is written as one long list of
"look this up, tell the unit that", so that a reader can follow it with a finger.

A document is a plain Python value (dict, list, str, int, float, bool, None). Texts in the trace are
handled as bytes, held in str with one character for each byte (latin-1), because limits, prefixes and
cuts count bytes. The sections of the control, network and service half are not handled here: a document
that has them gives only their progress lines.
"""

U300 = "ZAVO-ENC-U300-DA"  # encoder with HDMI and USB-C inputs
E100 = "ZAVO-ENC-E100-DA"  # encoder with an HDMI input
D200 = "ZAVO-DEC-D200-DA"  # decoder
MODELS = (U300, E100, D200)

MISSING = object()


# ---------------------------------------------------------------------------------------------------
# Documents

def as_bytes(text):
    """A text of the document as the unit sees it: UTF-8, one character a byte, ended by a NUL."""
    return text.encode("utf-8", "surrogateescape").decode("latin-1").split("\0")[0]


def lower(key):
    return "".join(chr(ord(c) + 32) if "A" <= c <= "Z" else c for c in as_bytes(key))


def get(item, key):
    """First member of that name, ignoring case."""
    if isinstance(item, dict):
        for name, value in item.items():
            if lower(name) == lower(key):
                return value
    return MISSING


def get_exact(item, key):
    """First member of exactly that name."""
    if isinstance(item, dict):
        for name, value in item.items():
            if as_bytes(name) == key:
                return value
    return MISSING


def elements(item):
    """What can be reached by position: the elements of an array, the values of an object."""
    if isinstance(item, list):
        return item
    if isinstance(item, dict):
        return list(item.values())
    return []


def is_there(item):
    return item is not MISSING


def is_bool(item):
    return item is True or item is False


def is_number(item):
    return isinstance(item, (int, float)) and not is_bool(item)


def is_text(item):
    return isinstance(item, str)


def integer(item):
    """The integer value of a number: toward zero, held at the 32-bit limits."""
    if item >= 2147483647:
        return 2147483647
    if item <= -2147483648:
        return -2147483648
    return int(item)


def text_or_none(item):
    """A text that is not empty."""
    if is_text(item) and as_bytes(item) != "":
        return as_bytes(item)
    return None


def choice(item, words):
    """A number as it stands (its integer value), a word's number, or -1. A negative number is -1."""
    if is_number(item):
        return max(integer(item), -1)
    if is_text(item):
        return words.get(as_bytes(item), -1)
    return -1


# ---------------------------------------------------------------------------------------------------
# The unit: its present values, and the trace of what it is told

RW_KEYS = """1 fm_version, 8 v_hdmi_singal_sta, 9 v_hdmi_lock_sta, 10 v_usbc_singal_sta, 11 v_usbc_lock_sta,
12 v_usbc_charging_enable, 13 v_source_selection, 14 auto_switching_enable, 15 v_auto_switching_prio,
16 v_color_space, 17 v_hdmi_loopout_enable, 18 v_hdmi_loopout_video_mute, 19 streamEnable,
21 stream_video_mute_stream, 22 as_source, 23 as_out_audio_stream, 24 a_a_audio_direction, 25 a_a_in_1_vol,
26 a_a_in_2_vol, 27 a_a_in_3_vol, 28 a_a_in_1_mute, 29 a_a_in_2_mute, 30 a_a_in_3_mute, 31 a_a_audio_source,
32 a_a_out_vol, 33 a_a_out_mute, 34 a_a_output_delay, 35 u_h_enable, 36 u_h_select, 37 h_h_compatibility,
38 h_u_compatibility, 39 deviceName, 40 tmperature, 41 multicast_on, 42 user_def_multicast_ip,
43 user_def_multicast_enable, 46 a_addon, 47 v_eng_drv_option, 48 source_detect, 52 edid_set_u, 53 edid_set_h,
54 edid_copy_set_u, 55 edid_copy_set_h, 56 edid_user_defined1, 57 edid_user_defined2, 59 v_stream_singal_sta,
60 v_stream_lock_sta, 62 audioFlv, 64 o_d_always_on, 65 o_d_line_time, 66 o_d_is_device_name, 67 o_d_is_ip,
68 o_d_is_mac, 69 o_d_is_fwversion, 70 o_d_is_serial_number, 71 o_d_is_stream_number, 72 o_d_is_resolution,
73 o_d_is_custom, 74 o_d_is_custom_text, 75 auto_status_enable, 76 auto_status_port, 77 auto_status_ipaddr,
78 auto_status_interval, 79 fplock, 82 device_name_sync_enable, 84 snmpStatu, 85 EnableSnmpV1Get,
86 EnableSnmpV1Set, 87 SnmpPort, 88 SnmpSysContact, 89 SnmpSysName, 90 SnmpSysLocation, 91 EnableSnmpV2,
92 EnableSnmpV2public, 93 EnableSnmpV2private, 94 EnableSnmpV3, 95 SnmpV3Username, 96 SnmpV3Algorithm,
97 SnmpV3AuthPassword, 98 SnmpV3PrivacyAlg, 99 SnmpV3Privacypassword, 100 EnableSnmpTrap,
101 SnmpTrapreceiver1, 102 SnmpTrapreceiver2, 103 TrapV3Name, 104 TrapV3AA, 105 TrapV3AP, 106 TrapV3PA,
107 TrapV3PP, 108 mqttStatu, 109 mqttHost, 110 mqttPort, 111 mqttSSLStatus, 112 mqttUseCredentials,
113 mqttUsername, 114 mqttPassword, 115 mqttClientID, 116 mqttTopic, 117 mqttQos, 118 mqttInterval,
119 mqttPubInterval, 120 ldapStatu, 121 ldapInfoDn, 122 ldapInfoUseOpenLDAP, 123 ldapInfoUsername,
124 ldapInfoPassword, 125 ldapInfoServer, 126 ldapInfoPort, 127 ldapInfoTls, 128 ldapInfoAllowUser,
129 lan_2_poe, 130 osd_cus_text, 131 osd_pos, 132 osd_fs, 133 osd_fc, 134 osd_fc_at, 135 osd_bgc,
136 osd_bg_tran, 137 osd_off_time, 141 vw_moninfo_ha, 142 vw_moninfo_ht, 143 vw_moninfo_va,
144 vw_moninfo_vt, 145 vw_rotate, 146 vw_stretch_type, 147 vw_max_row, 148 vw_max_column, 149 vw_row,
150 vw_column, 151 vw_v2_x1, 152 vw_v2_y1, 153 vw_v2_x2, 154 vw_v2_y2, 155 usbpower, 158 ir_pass_enable,
159 ir_unit_conn, 160 serial_pass_enable, 161 serial_unit_conn, 162 irread, 163 usbconnectip, 164 fancontrol,
165 dante_op_mode, 168 a_d_tx_enable, 169 a_d_tx_ch1_name, 170 a_d_tx_ch2_name, 172 a_d_tx_ch1_sub_sta,
173 a_d_tx_ch2_sub_sta, 174 a_d_tx_audio_mute, 175 a_d_rx_ch1_subscription, 176 a_d_rx_ch2_subscription,
177 a_d_lock, 181 ip_rs232_tunneling, 182 ip_ssh_rs232_tunneling, 183 a_a_audio_auto, 187 ss_stream_option,
188 ss_snapshot_option, 189 ss_en"""

LM_KEYS = """0 HOSTNAME, 2 SERIALNUMBER, 3 IP_MODE, 4 MY_IP, 5 MY_NETMASK, 6 MY_GATEWAYIP,
43 MULTICAST_IP_PREFIX, 44 MCIP_SRV_MAP_V, 79 S0_BAUDRATE, 80 HOSTNAME, 138 EN_VIDEO_WALL, 139 VW_VAR_VER,
155 NO_KMOIP, 156 NO_USB, 184 SS_STREAM_OPTION, 185 SS_SNAPSHOT_OPTION, 186 SS_EN"""


LONGEST_VALUE = 1023  # what a slot holds, without its NUL


def key_order(listing):
    return [pair.split()[1] for pair in listing.replace("\n", " ").split(",")]


RW_ORDER = key_order(RW_KEYS)
LM_ORDER = key_order(LM_KEYS)


def snapshot_of(entries, order, matches):
    """The value of each key. A search goes on where the last one left off: at the first entry after a
    hit, at the second after a miss, the first entry being tried last then."""
    values = {}
    start = 0
    whole = "\0".join(entries)
    for key in order:
        tried = entries[start:] + entries[:1] if key + "=" in whole else []
        hit = next((entry for entry in tried if matches(entry, key + "=")), None)
        values[key] = "" if hit is None else hit.split("=", 1)[1][:LONGEST_VALUE]
        start = 1 if hit is None else 0
    return values


class Unit:
    """Present values (lists of key and value), command answers and files; and what the unit was told."""

    def __init__(self, rw=(), lm=(), answers=None, files=None, refuse=()):
        self.rw = [(key, as_bytes(value)) for key, value in rw]
        self.lm = [(key, as_bytes(value)) for key, value in lm]
        self.answers = answers or {}
        self.files = {path: as_bytes(content) for path, content in (files or {}).items()}
        self.refuse = refuse
        self.trace = []

    def shell(self, line):
        self.trace.append("shell " + line)

    def mcu(self, command):
        self.trace.append("mcu " + command)

    def pause(self, seconds):
        self.trace.append("pause %d" % seconds)

    def read_command(self, command):
        """The last output line; empty when there is no value."""
        self.trace.append("read " + command)
        return as_bytes(self.answers.get(command.encode("latin-1").decode("utf-8", "surrogateescape"), ""))

    def replace_file(self, path, content):
        """A file that cannot be opened for writing stays as it was and leaves no trace."""
        if path not in self.refuse:
            self.trace.append("replace " + path + " " + content)
            self.files[path] = content

    def snapshot(self):
        """Copies the run-time store and gives all present values by their key."""
        self.shell("cp /dev/shm/rwparam /dev/shm/rwparam_temp")
        rw = [key + "=" + value for key, value in self.rw]
        lm = lines_of("\n".join(key + "=" + value for key, value in self.lm))
        lm = lm[:lm.index("")] if "" in lm else lm  # an empty line ends the live store
        values = snapshot_of(rw, RW_ORDER, lambda entry, key: key in entry)
        values.update(snapshot_of(lm, LM_ORDER, lambda entry, key: entry.startswith(key)))
        return values

    def stored_value(self, wanted):
        """A present value straight from the run-time store, line by line. The store's header stands in
        front of the first entry, which therefore never begins with its key."""
        store = "????" + "\n".join(key + "=" + value for key, value in self.rw)
        for line in lines_of(store):
            if line.startswith(wanted + "="):
                return line.split("=", 1)[1][:LONGEST_VALUE]
        return ""


def lines_of(text):
    return text.replace("\r", "\n").split("\n")


def set_character(text, position, character):
    """A C text patched in place: behind its end the patch does not show."""
    if position > len(text):
        return text
    return text[:position] + character + text[position + 1:]


def channel_name(name, blank):
    """The characters that Dante takes. As many bytes are looked at as the name has characters."""
    count = sum(1 for c in name if ord(c) & 0xC0 != 0x80)
    out = ""
    for c in name[:count]:
        if "0" <= c <= "9" or "A" <= c <= "Z" or "a" <= c <= "z" or c == "-":
            out += c
        elif c == " ":
            out += blank
        else:
            out += "O"
    return out


def leading_number(text):
    """The number that a text begins with, as atoi finds it: 0 when there is none."""
    text = text.lstrip(" \t\n\v\f\r")
    sign = 1
    if text[:1] in ("+", "-"):
        sign = -1 if text[0] == "-" else 1
        text = text[1:]
    digits = ""
    while text[:1] and text[0] in "0123456789":
        digits, text = digits + text[0], text[1:]
    return sign * int(digits or "0")


# ---------------------------------------------------------------------------------------------------
# The whole walk

def expected(model, document, **present):
    """Result and trace for a document given to a unit of that model."""
    unit = Unit(**present)
    result = apply_configuration(unit, model, document)
    return result, "".join(entry + "\n" for entry in unit.trace)


def apply_configuration(unit, model, document):
    named = get(document, "model")
    if not is_there(named):
        return 3
    if not is_text(named) or as_bytes(named)[:16] != model:
        return 4

    step = 0

    def progress():
        nonlocal step
        step += 1
        unit.shell('echo "upgradeUnitSetting:%d,26" | nc 127.0.0.1 4445' % step)

    def section(key, apply):
        item = get(document, key)
        if is_there(item):
            apply(unit, item)
        progress()

    device_name = get(document, "device_name")
    if is_there(device_name):
        apply_device_name(unit, device_name)
    serial_number = get(document, "serial_number")
    if is_there(serial_number):
        apply_serial_number(unit, serial_number)

    video, audio, edid, hdcp = {
        U300: (usbc_encoder_video, usbc_encoder_audio, usbc_encoder_edid, usbc_encoder_hdcp),
        E100: (hdmi_encoder_video, hdmi_encoder_audio, hdmi_encoder_edid, hdmi_encoder_hdcp),
        D200: (decoder_video, decoder_audio, decoder_edid, decoder_hdcp),
    }[model]

    stream = get(document, "stream")
    if is_there(stream):
        for key, apply in (("video", video), ("audio", audio), ("preview", apply_preview)):
            item = get(stream, key)
            if is_there(item):
                apply(unit, item)
        progress()
    progress()
    section("edid", edid)
    section("hdcp", hdcp)
    if model == D200:
        section("no_stream_image", apply_no_stream_image)
        section("power_on_image", apply_power_on_image)
        section("osd", apply_osd)
        section("video_wall", apply_video_wall)
    else:
        section("usb_host", apply_usb_host)

    progress()  # aes67
    progress()  # date_and_time
    section("dante", apply_dante)
    if model == D200:
        section("routing", apply_routing)
    for _ in ("oled_display", "auto_status", "fan_control", "serial", "ir", "trigger", "network", "aes256",
              "snmp", "mqtt", "https", "ldap", "auth_8021x", "front_panel_lock"):
        progress()
    section("usb_devices", apply_usb_devices)
    for _ in ("debug", "ssh", "power"):
        progress()

    unit.shell("astparam save;")
    unit.pause(1)
    unit.shell("e e_reboot &")
    return 1


# ---------------------------------------------------------------------------------------------------
# Identity

def apply_device_name(unit, item):
    if not is_text(item):
        return
    name = as_bytes(item)
    flags = unit.snapshot()["device_name_sync_enable"]
    if len(name) <= 32:
        unit.shell('astparam s deviceName "%s" > /dev/null 2>&1' % name)
    if flags[0:1] == "1":
        unit.shell('astparam s a_d_tx_ch1_name "%s-01"' % name)
        if len(name) <= 29:
            unit.shell('dapi --txch1_name "%s-01" > /dev/null 2>&1' % channel_name(name, "-"))
    if flags[1:2] == "1":
        unit.shell('astparam s a_d_tx_ch2_name "%s-02"' % name)
        if len(name) <= 29:
            unit.shell('dapi --txch2_name "%s-02" > /dev/null 2>&1' % channel_name(name, "-"))


def apply_serial_number(unit, item):
    if not is_text(item):
        return
    text = as_bytes(item)
    unit.shell('astparam s serialNumber "%s"  > /dev/null 2>&1;lmparam s SERIALNUMBER "%s";' % (text, text))
    unit.pause(1)


# ---------------------------------------------------------------------------------------------------
# Video

COLOR_SPACES = {"auto": 0, "rgb": 1, "ycbcr": 2}
DECODER_OUTPUTS = {"": 0, "enc stream": 1, "hdmi": 2}
USBC_ENCODER_SOURCES = {"": 0, "usb-c": 1, "hdmi": 2}
DECODER_PRIORITIES = {"last connect": 0, "prio hdmi, stream": 1}
USBC_ENCODER_PRIORITIES = {"last connect": 0, "prio usb-c, hdmi": 1, "prio hdmi, usb-c": 2}
OUTPUT_SCALINGS = {
    "pass through": 0, "pass through(strict)": 1, "720p50": 2, "720p60": 3, "1080p24": 4, "1080p30": 5,
    "1080p50": 6, "1080p60": 7, "1366x768p60": 8, "1440x900p60": 9, "1400x1050p60": 10, "1600x900p60": 11,
    "1600x1200p60": 12, "1920x1200p60": 13, "2560x1440p60": 14, "3840x2160p24": 15, "3840x2160p25": 16,
    "3840x2160p30": 17, "3840x2160p50": 18, "3840x2160p60": 19, "4096x2160p24": 20, "4096x2160p25": 21,
    "4096x2160p30": 22, "4096x2160p50": 23, "4096x2160p60": 24,
}
OUTPUT_TIMINGS = {
    1: "10000000", 2: "81000025", 3: "81000026", 4: "8100001D", 5: "8100002D", 6: "8100002E", 7: "8100002F",
    8: "81004049", 9: "81004021", 10: "8100401D", 11: "8100404E", 12: "81004025", 13: "81004033",
    14: "810040A5", 15: "81000067", 16: "81000069", 17: "8100006B", 18: "81000068", 19: "8100006A",
    20: "8100006C", 21: "8100006E", 22: "81000070", 23: "8100006D", 24: "8100006F",
}


def normal_engine_option(option):
    return {"0x0": "0x00000000", "0x8": "0x80000000", "": "0x00000000"}.get(option, option)


def switch(tell, item, on, off):
    """One of two things told for a boolean; nothing for anything else."""
    if item is True:
        tell(on)
    elif item is False:
        tell(off)


def apply_latency(unit, item, option):
    """Says whether a line was run."""
    number = integer(item) if is_number(item) else None
    if number == 0 or (is_text(item) and as_bytes(item) == "ull"):
        unit.shell("astparam s v_eng_drv_option %s;echo 1 > /sys/devices/platform/videoip/ull"
                   % set_character(option, 4, "0"))
    elif number == 1 or (is_text(item) and as_bytes(item) == "normal"):
        unit.shell("astparam s v_eng_drv_option %s;echo 0 > /sys/devices/platform/videoip/ull"
                   % set_character(option, 4, "1"))
    elif number is not None and number > 1:
        unit.shell("")
    else:
        return False
    return True


def cast_of(item):
    if is_text(item):
        if "unicast" in as_bytes(item):
            return "unicast"
        if "multicast" in as_bytes(item):
            return "multicast"
    return None


def send_choice(unit, command, item, words):
    code = choice(item, words)
    if code >= 0:
        unit.mcu(command % code)


def decoder_video(unit, video):
    option = normal_engine_option(unit.snapshot()["v_eng_drv_option"])

    stream_number = text_or_none(get(video, "stream_number"))
    if stream_number is not None:
        unit.shell("e e_reconnect::%s::v" % stream_number)
        unit.pause(3)
    unit.pause(1)

    switch(unit.mcu, get_exact(video, "video_mute"), "videomute,on", "videomute,off")
    unit.pause(1)

    if apply_latency(unit, get(video, "latency_mode"), option):
        unit.pause(1)

    timing = OUTPUT_TIMINGS.get(choice(get(video, "output_scaling"), OUTPUT_SCALINGS))
    if timing is not None:
        unit.shell("astparam s v_output_timing_convert %s;lmparam s V_OUTPUT_TIMING_CONVERT %s;" % (timing, timing))
        unit.pause(1)
    unit.pause(1)

    send_choice(unit, "set,%d", get(video, "output_selection"), DECODER_OUTPUTS)
    unit.pause(1)

    switch(unit.mcu, get_exact(video, "auto_switching_enable"), "autoswitch,on", "autoswitch,off")
    unit.pause(1)

    send_choice(unit, "autoswitchprio,%d", get(video, "auto_switching_prio"), DECODER_PRIORITIES)
    unit.pause(1)

    send_choice(unit, "setcolorspace,%d", get(video, "color_space"), COLOR_SPACES)
    unit.pause(1)

    cast = cast_of(get(video, "cast_mode"))
    if cast == "unicast":
        unit.shell("astparam s multicast_on n;lmparam s MULTICAST_ON n;e e_chg_multicast_mode 0;")
        unit.pause(1)
    elif cast == "multicast":
        unit.shell("astparam s multicast_on y;lmparam s MULTICAST_ON y;e e_chg_multicast_mode 1;")
        unit.pause(1)

    switch(unit.mcu, get_exact(video, "hdmi_out_enable"), "hdmiout,on", "hdmiout,off")
    unit.pause(1)

    unit.pause(1)  # no_stream_setting tells the unit nothing


def encoder_cast_and_multicast(unit, video, custom_enable):
    """What both encoders do last."""
    cast = cast_of(get(video, "cast_mode"))
    if cast == "unicast":
        unit.shell("astparam s multicast_on n;")
        unit.pause(3)
    elif cast == "multicast":
        unit.shell("astparam s multicast_on y;")
        unit.pause(3)

    address = get(video, "custom_multicast_address")
    both = is_there(address) and is_there(custom_enable)
    if both and is_text(address):
        unit.shell("astparam s cus_multicast_address %s > /dev/null 2>&1" % as_bytes(address))
    unit.pause(1)
    if both:
        switch(unit.shell, custom_enable, "astparam s cus_multicast_enable 1;", "astparam s cus_multicast_enable 0;")


def hdmi_encoder_video(unit, video):
    option = normal_engine_option(unit.snapshot()["v_eng_drv_option"])

    number = text_or_none(get(video, "stream_number"))
    if number is not None and all(c in "0123456789" for c in number):
        unit.shell(("astparam s ch_select %s" % number)[:25])
        unit.pause(3)
    unit.pause(1)

    switch(unit.mcu, get_exact(video, "video_mute_stream"), "videomute,on", "videomute,off")
    unit.pause(1)

    apply_latency(unit, get(video, "latency_mode"), option)
    unit.pause(1)

    send_choice(unit, "setcolorspace,%d", get(video, "color_space"), COLOR_SPACES)
    unit.pause(1)

    switch(unit.mcu, get_exact(video, "hdmi_loopout"), "hdmiloop,on", "hdmiloop,off")
    unit.pause(1)

    switch(unit.shell, get_exact(video, "enable"), "astparam s streamEnable 1;", "astparam s streamEnable 0;")
    unit.pause(1)

    encoder_cast_and_multicast(unit, video, get_exact(video, "custom_multicast"))


def usbc_encoder_video(unit, video):
    option = normal_engine_option(unit.snapshot()["v_eng_drv_option"])

    number = text_or_none(get(video, "stream_number"))
    if number is not None:
        unit.shell("astparam s ch_select %s" % number)
        unit.pause(3)
    unit.pause(1)

    switch(unit.mcu, get_exact(video, "video_mute_stream"), "videomute,on", "videomute,off")
    unit.pause(1)

    apply_latency(unit, get(video, "latency_mode"), option)
    unit.pause(1)

    send_choice(unit, "setcolorspace,%d", get(video, "color_space"), COLOR_SPACES)
    unit.pause(1)

    switch(unit.mcu, get_exact(video, "hdmi_loopout"), "hdmiloop,on", "hdmiloop,off")
    unit.pause(1)

    switch(unit.mcu, get_exact(video, "usbc_charging_enable"), "usbcpower,on", "usbcpower,off")
    unit.pause(1)

    switch(unit.mcu, get_exact(video, "auto_switching_enable"), "autoswitch,on", "autoswitch,off")
    unit.pause(1)

    send_choice(unit, "autoswitchprio,%d", get(video, "auto_switching_prio"), USBC_ENCODER_PRIORITIES)
    unit.pause(1)

    send_choice(unit, "set,%d", get(video, "source_selection"), USBC_ENCODER_SOURCES)
    unit.pause(1)

    switch(unit.shell, get_exact(video, "enable"), "astparam s streamEnable 1;", "astparam s streamEnable 0;")
    unit.pause(3)

    encoder_cast_and_multicast(unit, video, get(video, "custom_multicast"))


# ---------------------------------------------------------------------------------------------------
# Audio

DECODER_STREAM_AUDIO = {"zavo stream audio": 0, "dante/aes67 rx": 1}
DECODER_HDMI_AUDIO = {"afv": 0, "stream audio": 1}
DECODER_ANALOG_AUDIO = {"afv": 0, "stream audio": 1, "local hdmi": 2, "dante/aes67 rx": 3}
DECODER_TRANSMIT = {"": 0, "local hdmi": 1, "analog in": 2, "zavo stream audio output": 3}
HDMI_ENCODER_AUDIO = {"": 0, "hdmi": 1, "analog in": 2}
HDMI_ENCODER_ANALOG = {"hdmi": 0, "dante/aes67 rx": 1}
USBC_ENCODER_AUDIO = {"afv": 0, "usb-c": 1, "hdmi": 2, "analog in": 3}
USBC_ENCODER_ANALOG = {"afv": 0, "usb-c": 1, "hdmi": 2, "dante/aes67 rx": 3}


def audio_path(unit, path, words, present, volume_without_source):
    """Source, volume and mute of one path."""
    source = choice(get(path, "source"), words)
    if source >= 0:
        unit.mcu("seta,%d" % source)
    unit.pause(1)

    volume = get(path, "volume")
    if is_number(volume):
        if source >= 0:
            unit.mcu("livol,%d:%d" % (source, integer(volume)))
        elif volume_without_source:
            unit.mcu("livol,%s:%d" % (present["as_source"], integer(volume)))
        else:
            unit.mcu("")
    unit.pause(1)

    mute = get_exact(path, "mute")
    if is_there(mute):
        which = str(source) if source >= 0 else present["as_source"]
        unit.mcu({True: "mute," + which, False: "unmute," + which}[mute] if is_bool(mute) else "")


def analog_audio(unit, analog, auto, words, present, input_port, output_port):
    """The analog port: auto, direction, source, type, volume, mute, delay, each with its pause."""
    switch(unit.mcu, auto, "setaauto,on", "setaauto,off")
    unit.pause(1)

    given = get(analog, "direction")
    if is_text(given):
        if as_bytes(given).startswith("in"):
            direction = "in"
            unit.mcu("setanalogmode,0")
        elif as_bytes(given).startswith("out"):
            direction = "out"
            unit.mcu("setanalogmode,1")
        else:
            direction = None
    else:
        direction = {"0": "in", "1": "out"}.get(present["a_a_audio_direction"][:1])
    unit.pause(1)

    send_choice(unit, "setanalog,%d", get(analog, "source"), words)
    unit.pause(1)

    kind = get(analog, "type")
    if is_text(kind) and direction is not None:
        command = "libal,%d" if direction == "in" else "lobal,%d"
        if as_bytes(kind).startswith("balanced"):
            unit.mcu(command % 1)
        elif as_bytes(kind).startswith("unbalanced"):
            unit.mcu(command % 0)
    unit.pause(1)

    volume = get(analog, "volume")
    if is_number(volume):
        if direction == "in":
            unit.mcu("livol,%d:%d" % (input_port, integer(volume)))
        elif direction == "out":
            unit.mcu("lovol,%d" % integer(volume))
    unit.pause(1)

    mute = get_exact(analog, "mute")
    if is_there(mute) and direction is not None:
        port = input_port if direction == "in" else output_port
        unit.mcu({True: "mute,%d" % port, False: "unmute,%d" % port}[mute] if is_bool(mute) else "")
    unit.pause(1)

    delay = get(analog, "output_delay")
    if is_number(delay):
        unit.mcu("setanalogdelay,%d" % integer(delay))
    unit.pause(1)


def reconnect(unit, text, suffix):
    if text is not None:
        unit.shell("e e_reconnect::%s::%s" % (text, suffix))
        unit.pause(3)


def decoder_audio(unit, audio):
    present = unit.snapshot()
    unit.pause(1)

    switch(unit.shell, get_exact(audio, "audio_follow_video"), "astparam s audioFlv 1", "astparam s audioFlv 0")

    send_choice(unit, "setstreama,%d", get(audio, "stream_audio"), DECODER_STREAM_AUDIO)
    unit.pause(1)

    hdmi = get(audio, "hdmi_audio")
    if is_there(hdmi):
        send_choice(unit, "sethdmia,%d", get(hdmi, "source"), DECODER_HDMI_AUDIO)
        unit.pause(1)
        mute = get_exact(hdmi, "mute")
        if is_there(mute):
            unit.mcu({True: "mute,4", False: "unmute,4"}[mute] if is_bool(mute) else "")

    unit.pause(1)  # audio_stream_number: a number has no text, so that nothing is told

    analog = get(audio, "analog_audio")
    if is_there(analog):
        analog_audio(unit, analog, get_exact(analog, "auto"), DECODER_ANALOG_AUDIO, present, 2, 3)

    transmit = get(audio, "dante_aes67_tx")
    if is_there(transmit):
        audio_path(unit, transmit, DECODER_TRANSMIT, present, False)

    routing = get(audio, "routing")
    reconnect(unit, text_or_none(get(get(routing, "video"), "number")), "v")
    reconnect(unit, text_or_none(get(get(routing, "audio"), "number")), "a")
    reconnect(unit, text_or_none(get(get(routing, "usb"), "ip_address")), "u")
    reconnect(unit, text_or_none(get(get(routing, "km"), "ip_address")), "u")


def encoder_audio(unit, audio, words, analog_words, input_port, output_port):
    present = unit.snapshot()
    unit.pause(1)

    stream = get(audio, "stream_audio")
    if is_there(stream):
        switch(unit.mcu, get_exact(stream, "analog_priority"), "setaauto,on", "setaauto,off")
        unit.pause(1)
        audio_path(unit, stream, words, present, True)
    unit.pause(1)

    analog = get(audio, "analog_audio")
    if is_there(analog):
        analog_audio(unit, analog, get_exact(stream, "auto"), analog_words, present, input_port, output_port)
    unit.pause(1)

    transmit = get(audio, "dante_aes67_tx")
    if is_there(transmit):
        audio_path(unit, transmit, words, present, True)
    unit.pause(1)


def hdmi_encoder_audio(unit, audio):
    encoder_audio(unit, audio, HDMI_ENCODER_AUDIO, HDMI_ENCODER_ANALOG, 2, 3)


def usbc_encoder_audio(unit, audio):
    encoder_audio(unit, audio, USBC_ENCODER_AUDIO, USBC_ENCODER_ANALOG, 3, 4)


# ---------------------------------------------------------------------------------------------------
# EDID and HDCP

EDIDS = {
    "1920x1080@60 8bit Stereo": 1, "1920x1080@60Hz 8bit Stereo": 1,
    "1920x1080@60 8bit stereo": 1, "1920x1080@60hz 8bit stereo": 1,
    "1920x1080@60 8bit High Definition Audio": 2, "1920x1080@60Hz 8bit High Definition Audio": 2,
    "1920x1080@60 8bit high definition audio": 2, "1920x1080@60hz 8bit high definition audio": 2,
    "3840x2160@30Hz 8bit Stereo Audio": 3, "3840x2160@30hz 8bit stereo audio": 3,
    "3840x2160@30Hz Deep Color High Definition Audio": 4, "3840x2160@30hz deep color high definition audio": 4,
    "3840x2160@60Hz 4:2:0 Deep Color Stereo Audio": 5, "3840x2160@60hz 4:2:0 deep color stereo audio": 5,
    "3840x2160@60Hz Deep Color Stereo Audio": 6, "3840x2160@60hz deep color stereo audio": 6,
    "3840x2160@60Hz Deep Color High Definition Audio": 7, "3840x2160@60hz deep color high definition audio": 7,
    "3840x2160@60Hz Deep Color HDR LPCM 6CH": 8, "3840x2160@60hz deep color hdr lpcm 6ch": 8,
    "User Defined": 9, "user defined": 9,
}
HDCP_MODES = {"": 0, "follow display": 1, "hdcp 1.4": 2, "hdcp 2.2": 3}


def send_edid(unit, command, item):
    if is_text(item) and as_bytes(item) in EDIDS:
        unit.mcu(command % EDIDS[as_bytes(item)])


def store_edid_name(unit, key, item):
    name = text_or_none(item)
    if name is not None:
        unit.shell('astparam s %s "%s"' % (key, name))


def decoder_edid(unit, edid):
    unit.pause(1)
    if is_text(get(edid, "copy_edid")):
        unit.mcu("setedidcopy")
    unit.pause(1)
    send_edid(unit, "setedid,%d", get(edid, "predefined"))
    unit.pause(1)
    store_edid_name(unit, "edid_user_defined2", get(edid, "upload_edid_name"))


def encoder_edid_input(unit, block, port, name_key):
    copy = get(block, "copy_edid")
    if is_text(copy) and not as_bytes(copy).startswith("-"):
        unit.mcu("setedidcopy,%s%s" % (port, as_bytes(copy)))
    unit.pause(1)
    send_edid(unit, "setedid," + port + "%d", get(block, "predefined"))
    unit.pause(1)
    store_edid_name(unit, name_key, get(block, "upload_edid_name"))
    unit.pause(1)


def hdmi_encoder_edid(unit, edid):
    hdmi = get(edid, "hdmi")
    if is_there(hdmi):
        unit.pause(1)
        encoder_edid_input(unit, hdmi, "", "edid_user_defined2")


def usbc_encoder_edid(unit, edid):
    unit.pause(1)
    usbc = get(edid, "usbc")
    if is_there(usbc):
        encoder_edid_input(unit, usbc, "1:", "edid_user_defined1")
    unit.pause(1)
    hdmi = get(edid, "hdmi")
    if is_there(hdmi):
        encoder_edid_input(unit, hdmi, "2:", "edid_user_defined1")


def hdcp_compatibility(unit, item, port):
    if is_there(item):
        unit.mcu({True: "hdcpadvertising,%son" % port, False: "hdcpadvertising,%soff" % port}[item]
                 if is_bool(item) else "")
    unit.pause(1)


def hdcp_mode(unit, hdcp):
    command = {1: "hdcpfollowdisplay", 2: "hdcp1x,on", 3: "hdcp2x,on"}.get(
        choice(get(hdcp, "output_hdcp_mode"), HDCP_MODES))
    if command is not None:
        unit.mcu(command)
        unit.pause(1)


def decoder_hdcp(unit, hdcp):
    unit.pause(1)
    hdcp_compatibility(unit, get_exact(hdcp, "local_hdmi_compatibility"), "")
    hdcp_mode(unit, hdcp)


def hdmi_encoder_hdcp(unit, hdcp):
    unit.pause(1)
    hdcp_compatibility(unit, get_exact(hdcp, "hdmi_compatibility"), "")
    hdcp_mode(unit, hdcp)


def usbc_encoder_hdcp(unit, hdcp):
    unit.pause(1)
    hdcp_compatibility(unit, get_exact(hdcp, "hdmi_compatibility"), "2:")
    hdcp_compatibility(unit, get_exact(hdcp, "usbc_compatibility"), "1:")
    hdcp_mode(unit, hdcp)


# ---------------------------------------------------------------------------------------------------
# Images, routing and preview

def apply_no_stream_image(unit, image):
    switch(unit.shell, get_exact(image, "enable"),
           "astparam s ns_enable 1;e e_no_stream_image 1", "astparam s ns_enable 0;e e_no_stream_image 0")
    unit.pause(1)


def apply_power_on_image(unit, image):
    switch(unit.shell, get_exact(image, "enable"), "astparam s poi_enable 1;", "astparam s poi_enable 0;")
    duration = get(image, "duration_time")
    if is_number(duration):
        unit.shell("astparam s poi_time %d;" % integer(duration))


def apply_routing(unit, routing):
    reconnect(unit, text_or_none(get(get(routing, "video"), "stream_number")), "v")
    reconnect(unit, text_or_none(get(get(routing, "audio"), "stream_number")), "a")
    reconnect(unit, text_or_none(get(get(routing, "usb"), "ip_address")), "u")
    reconnect(unit, text_or_none(get(get(routing, "km"), "ip_address")), "u")


def fields(text, separator, count):
    """The first fields of a text, empty where it has fewer."""
    return (text.split(separator) + [""] * count)[:count]


def apply_preview(unit, preview):
    resolution = text_or_none(get(preview, "resolution"))
    if resolution is not None:
        width, height = fields(resolution, "x", 2)
        _, _, three, four, five, six = fields(unit.snapshot()["SS_STREAM_OPTION"], ",", 6)
        unit.shell("astparam s ss_stream_option %s,%s,%s,%s,%s,%s;astparam s ss_snapshot_option %s,%s,%s,0 ;"
                   % (width, height, three, four, five, six, width, height, three))
        unit.pause(1)

    fps = get(preview, "fps")
    if is_number(fps):
        one, two, _, four, five, six = fields(unit.snapshot()["ss_stream_option"], ",", 6)
        rate = integer(fps)
        unit.shell("astparam s ss_stream_option %s,%s,%d,%s,%s,%s;astparam s ss_snapshot_option %s,%s,%d,0 ;"
                   % (one, two, rate, four, five, six, one, two, rate))
        unit.pause(1)

    enable = get_exact(preview, "enable")
    if enable is True:
        unit.snapshot()
        unit.shell("astparam s ss_en y;")
        unit.pause(1)
    elif enable is False:
        unit.shell("astparam s ss_en n;")
        unit.pause(1)


# ---------------------------------------------------------------------------------------------------
# USB and mouse roaming

USB_HOSTS = {"auto": 0, "usb-c": 1, "hdmi": 2}
ROAMING_FILE = "/var/tmp/roaming_file"
STORED_ROAMING_FILE = "/user_data2/roaming_file"


def apply_usb_host(unit, host):
    enable = get_exact(host, "enable")
    if is_bool(enable):
        unit.shell("astparam s access_on_u y" if enable else "astparam s access_on_u n")
        unit.pause(1)
    unit.pause(1)
    select = get(host, "host_select")
    if is_text(select):
        unit.mcu("setusbhost,%d" % USB_HOSTS.get(as_bytes(select), -1))
    unit.pause(1)


def apply_usb_devices(unit, usb):
    unit.pause(1)

    switch(unit.mcu, get_exact(usb, "enable"), "usbpower,on", "usbpower,off")
    unit.pause(1)

    if is_there(get(usb, "usb_km_enable")):
        unit.pause(1)  # its "enable" tells the unit nothing

    switch(unit.shell, get_exact(usb, "usb_follow_video"), "astparam s usbFlv 1;", "astparam s usbFlv 0;")

    green = get(usb, "green_list")
    apply_green_list(unit, get_exact(green, "enable"), get(green, "lists"))

    roaming = get(usb, "mouse_roaming")
    switch(unit.shell, get_exact(roaming, "enable"),
           "astparam s mouseroam_enable 1;", "astparam s mouseroam_enable 0;")
    rows = get(roaming, "rows")
    if is_number(rows):
        unit.shell("astparam s roaming_rows %d > /dev/null 2>&1" % integer(rows))
    columns = get(roaming, "columns")
    if is_number(columns):
        unit.shell("astparam s roaming_columns %d > /dev/null 2>&1" % integer(columns))
    lists = get(roaming, "lists")
    map_file = get(roaming, "roaming_map_file")
    if is_text(lists):
        unit.shell('astparam s kmoip_roaming_layout "%s" > /dev/null 2>&1' % as_bytes(lists))
        if not is_there(map_file):
            update_roaming_layout(unit, as_bytes(lists))
    if is_text(map_file):
        unit.shell('echo "%s" > /var/tmp/roaming_file;cp /var/tmp/roaming_file /user_data2/roaming_file'
                   % as_bytes(map_file))


def apply_green_list(unit, enable, lists):
    if not is_bool(enable) or not is_there(lists):
        return
    room = (len(elements(lists)) + 1) * 30 - 1  # the list's buffer ends with a NUL
    text = "USB_GREENLIST=y" if enable else "USB_GREENLIST=n"
    for element in elements(lists):
        address = text_or_none(get(element, "ipaddr"))
        if address is not None:
            text += ("\\x0aID:" if len(address) < 5 else "\\x0aIP:") + address
    unit.shell('echo -ne "%s" > /user_data2/usb_greenlist.txt;'
               "cp /user_data2/usb_greenlist.txt /share/usb_greenlist.txt;%s"
               % (text[:room], "" if enable else "e e_stop_link::u;"))
    unit.pause(1)


def grid_number(text):
    """A column or row, 0 to 16 in plain digits, or None."""
    if text == "" or any(c not in "0123456789" for c in text) or int(text) > 16:
        return None
    return int(text)


def update_roaming_layout(unit, text):
    """Rewrites the roaming map of the unit at the origin of the grid. Writes nothing on any doubt."""
    entries = [entry for entry in text[:4095].split(":") if entry != ""]
    if not entries or len(entries) > 18 or any(len(entry) >= 100 for entry in entries):
        return
    if "0,0" not in entries[0]:
        return

    macs = []
    for entry in entries:
        mac = unit.read_command("nice -n 19 ionice -c 3 node_query --match_key MY_IP=%s --match_key IS_HOST=n "
                                "--get_key MY_MAC" % entry.split(",")[0])
        if mac == "":
            return
        macs.append(mac)
    own = unit.read_command("astparam g ethaddr").replace(":", "")

    places = []
    for entry in entries:
        _, column, row = fields(entry, ",", 3)
        column, row = grid_number(column), grid_number(row)
        if column is None or row is None:
            return
        places.append((column, row))
    if (0, 0) not in places or macs[places.index((0, 0))] != own:
        return

    if ROAMING_FILE not in unit.files:
        return
    roaming_map = unit.files[ROAMING_FILE]
    if roaming_map[-1:] in ("\r", "\n"):
        roaming_map = roaming_map[:-1]
    rebuilt = []
    for entry in roaming_map.split(":"):
        parts = entry.split(",")
        for position, part in enumerate(parts):
            if part in macs:
                column, row = places[macs.index(part)]
                parts[position + 1:position + 3] = [str(column), str(row)]
                break
        rebuilt.append(",".join(parts))
    unit.replace_file(ROAMING_FILE, ":".join(rebuilt))
    unit.replace_file(STORED_ROAMING_FILE, ":".join(rebuilt))


# ---------------------------------------------------------------------------------------------------
# OSD and video wall

OSD_POSITIONS = {"top-left": 1, "top": 2, "top-right": 3, "left": 4, "center": 5, "right": 6,
                 "bottom-left": 7, "bottom": 8, "bottom-right": 9}


def store_number(unit, line, item):
    if is_number(item):
        unit.shell(line % integer(item))


def store_text(unit, line, item):
    text = text_or_none(item)
    if text is not None:
        unit.shell(line % text)


def apply_osd(unit, osd):
    custom = get(get(osd, "information"), "custom_text")
    if is_text(custom):
        unit.shell('astparam s osd_cus_text "%s" > /dev/null 2>&1' % as_bytes(custom))
    settings = get(osd, "settings")
    position = get(settings, "position")
    if is_text(position):
        unit.shell("astparam s osd_pos %d;" % OSD_POSITIONS.get(as_bytes(position), -1))
    store_number(unit, "astparam s osd_fs %d;", get(settings, "font_size"))
    store_text(unit, "astparam s osd_fc_at %s > /dev/null 2>&1", get(settings, "font_color_at"))
    store_text(unit, "astparam s osd_fc %s > /dev/null 2>&1", get(settings, "font_color"))
    store_text(unit, "astparam s osd_bgc %s > /dev/null 2>&1", get(settings, "background_color"))
    store_number(unit, "astparam s osd_bg_tran %d;", get(settings, "background_transparency"))
    store_number(unit, "astparam s osd_off_time %d;", get(settings, "osd_off_time"))
    switch(unit.shell, get_exact(settings, "background_color_enable"),
           "astparam s osd_bgc_enable 2;", "astparam s osd_bgc_enable 1;")


def apply_video_wall(unit, wall):
    rows = get(wall, "rows")
    if is_number(rows) and 1 <= integer(rows) <= 19:
        unit.shell("astparam s vw_max_row %d;" % (integer(rows) - 1))
    columns = get(wall, "columns")
    if is_number(columns) and 1 <= integer(columns) <= 19:
        unit.shell("astparam s vw_max_column %d;" % (integer(columns) - 1))
    position = elements(get(wall, "unit_position"))
    if len(position) > 0 and is_number(position[0]) and 0 <= integer(position[0]) <= 18:
        unit.shell("astparam s vw_row %d;" % integer(position[0]))
    if len(position) > 1 and is_number(position[1]) and 0 <= integer(position[1]) <= 18:
        unit.shell("astparam s vw_column %d;" % integer(position[1]))
    store_number(unit, "astparam s vw_v2_x1 %d;", get(wall, "virtual_coordinates_x1"))
    store_number(unit, "astparam s vw_v2_y1 %d;", get(wall, "virtual_coordinates_y1"))
    store_number(unit, "astparam s vw_v2_x2 %d;", get(wall, "virtual_coordinates_x2"))
    store_number(unit, "astparam s vw_v2_y2 %d;", get(wall, "virtual_coordinates_y2"))
    rotation = get(wall, "rotation")
    if is_number(rotation):
        unit.shell("astparam s vw_rotate %s;" % {1: "5", 2: "3", 3: "6"}.get(integer(rotation), "0"))
    stretch = get(wall, "stretch")
    if is_number(stretch):
        unit.shell("astparam s vw_stretch_type %s;" % ("1" if integer(stretch) == 1 else "2"))
    store_number(unit, "astparam s vw_moninfo_ht %d;", get(wall, "outside_width"))
    store_number(unit, "astparam s vw_moninfo_vt %d;", get(wall, "outside_height"))
    store_number(unit, "astparam s vw_moninfo_ha %d;", get(wall, "viewable_width"))
    store_number(unit, "astparam s vw_moninfo_va %d;", get(wall, "viewable_height"))

    enable = get_exact(wall, "enable")
    if enable is False:
        unit.shell("astparam s en_video_wall n;lmparam s EN_VIDEO_WALL n;e e_vw_reset_to_pos_0_0;")
        unit.pause(1)
    elif enable is True:
        unit.shell("astparam s en_video_wall y;lmparam s EN_VIDEO_WALL y;")
        unit.pause(1)
        enable_wall(unit, get(wall, "mode"), unit.snapshot())


def enable_wall(unit, mode, now):
    mode = as_bytes(mode) if is_text(mode) else ""
    if "symmetric" in mode:
        if now["VW_VAR_VER"][:1] == "2":
            unit.shell("e e_chg_video_wall_type;")
            unit.pause(1)
        place = "%s_%s_%s_%s" % (now["vw_max_row"], now["vw_max_column"], now["vw_row"], now["vw_column"])
    elif "mosaic" in mode:
        place = "%s_%s_%s_%s_2" % (now["vw_v2_x1"], now["vw_v2_y1"], now["vw_v2_x2"], now["vw_v2_y2"])
    else:
        return
    unit.shell(
        "e e_vw_pos_layout_%s_%s;" % (now["vw_max_row"], now["vw_max_column"])
        + "e e_vw_enable_%s;" % place
        + "e e_vw_moninfo_%s_%s_%s_%s;" % (now["vw_moninfo_ha"], now["vw_moninfo_ht"],
                                           now["vw_moninfo_va"], now["vw_moninfo_vt"])
        + "e e_vw_refresh_pos_idx_%d_%d;" % (leading_number(now["vw_row"]) + 1,
                                             leading_number(now["vw_column"]) + 1)
        + "e e_vw_rotate_%s;e e_vw_stretch_type_%s;" % (now["vw_rotate"], now["vw_stretch_type"]))
    unit.pause(1)


# ---------------------------------------------------------------------------------------------------
# Dante

AUDIO_ONLY_LINE = ("astparam s a_addon dante;astparam s dante_op_mode audio-only;"
                   "lmparam s A_ADDON dante;lmparam s DANTE_OP_MODE audio-only;")
AVA_LINE = ("astparam s a_addon dante;astparam s dante_op_mode AV-A;"
            "lmparam s A_ADDON dante;lmparam s DANTE_OP_MODE AV-A;")
NO_ADDON_LINE = ("astparam s a_addon none;astparam s dante_op_mode none;"
                 "lmparam s A_ADDON none;lmparam s DANTE_OP_MODE none;")


def set_name_sync(unit, position, item):
    flags = unit.read_command("astparam g device_name_sync_enable")
    unit.shell("astparam s device_name_sync_enable %s;" % set_character(flags, position, "1" if item else "0"))


def apply_dante(unit, dante):
    present = unit.snapshot()
    has_dante = present["a_addon"].startswith("dante")

    name = text_or_none(get(dante, "dante_name"))
    if name is not None:
        unit.shell('astparam s dante_device_name "%s" > /dev/null 2>&1' % name)
        unit.pause(1)
        unit.shell("reaload_dante_config.sh &")

    use_device_name = get(dante, "dante_use_device_name")
    if is_bool(use_device_name):
        set_name_sync(unit, 5, use_device_name)

    switch(unit.shell, get(dante, "tx_video_use_device_name"),
           "astparam s a_d_tx_video_use_dn 1;", "astparam s a_d_tx_video_use_dn 0;")
    switch(unit.shell, get(dante, "rx_video_use_device_name"),
           "astparam s a_d_rx_video_use_dn 1;", "astparam s a_d_rx_video_use_dn 0;")

    ava = get(dante, "dante_ava")
    audio_only = get_exact(dante, "dante_audio_only")
    if ava is False and has_dante and present["dante_op_mode"].startswith("AV-A"):
        unit.shell("astparam s multicast_on y;")

    channel_sent = apply_dante_audio(unit, get(dante, "dante_audio"), has_dante)

    if ava is True:
        unit.shell(AVA_LINE)
        unit.pause(1)
    if audio_only is True:
        unit.shell(AUDIO_ONLY_LINE)
        unit.pause(1)
    if ava is not True and audio_only is not True:
        option = normal_engine_option(unit.stored_value("v_eng_drv_option"))
        if "0x" in option:
            unit.shell("astparam s v_eng_drv_option 0x%s;" % set_character(option.split("0x", 1)[1], 0, "8"))
        unit.shell(NO_ADDON_LINE)
        unit.pause(1)
    unit.pause(5)

    if has_dante or channel_sent:
        unit.shell("echo 1 > /user_data2/no_dante_upgrade_config")


def apply_dante_audio(unit, audio, has_dante):
    """Says whether a channel name was sent, as the members left it."""
    sent = False

    def send_name(option, name):
        unit.shell('dapi --%s "%s" > /dev/null 2>&1' % (option, name))
        unit.pause(3)

    def use_device_name(key, position, direction, channel):
        nonlocal sent
        item = get(audio, key)
        if not is_bool(item):
            return
        name = channel_name(unit.snapshot()["deviceName"], " ")
        set_name_sync(unit, position, item)
        if item:
            unit.shell('astparam s a_d_%s_ch%d_name "%s-%02d"' % (direction, channel, name, channel))
            if len(name) <= 31:
                send_name("%sch%d_name" % (direction, channel), "%s-%02d" % (name, channel))
                sent = True

    name = text_or_none(get(audio, "tx_ch1_name"))
    if name is not None:
        name = channel_name(name, " ")
        unit.shell('astparam s a_d_tx_ch1_name "%s"  > /dev/null 2>&1' % name)
        if len(name) <= 32:
            send_name("txch1_name", name)
        sent = len(name) <= 32

    name = text_or_none(get(audio, "tx_ch2_name"))
    if name is not None:
        name = channel_name(name, " ")
        unit.shell('astparam s a_d_tx_ch2_name "%s" > /dev/null 2>&1' % name)
        if len(name) <= 31:
            send_name("txch2_name", name)
            sent = True

    use_device_name("tx_ch1_use_device_name", 0, "tx", 1)
    use_device_name("tx_ch2_use_device_name", 1, "tx", 2)

    name = text_or_none(get(audio, "rx_ch1_name"))
    if name is not None:
        name = channel_name(name, " ")
        unit.shell('astparam s a_d_rx_ch1_name "%s"  > /dev/null 2>&1' % name)
        if len(name) <= 32:
            send_name("rxch1_name", name)
            sent = True

    name = text_or_none(get(audio, "rx_ch2_name"))
    if name is not None:
        name = channel_name(name, " ")
        unit.shell('astparam s a_d_rx_ch2_name "%s" > /dev/null 2>&1' % name)
        if len(name) <= 31:
            send_name("rxch2_name", name)
            sent = True

    use_device_name("rx_ch1_use_device_name", 3, "rx", 1)
    use_device_name("rx_ch2_use_device_name", 4, "rx", 2)

    bridge = get_exact(audio, "zavo_audio_bridge")
    if is_bool(bridge):
        if has_dante:
            unit.mcu("setzavostreama,%d" % bridge)
        unit.shell("astparam s a_a_stream_source 1;astparam s a_bridge_en y" if bridge
                   else "astparam s a_a_stream_source 0;astparam s a_bridge_en n")

    enable = get_exact(audio, "tx_enable")
    if is_bool(enable):
        unit.shell("astparam s a_d_tx_enable %d" % enable)
        unit.shell("dapi --txonoff %d > /dev/null 2>&1" % enable)
        unit.pause(3)

    return sent
