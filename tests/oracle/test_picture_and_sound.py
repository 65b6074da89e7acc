"""Random unit configurations of the picture and sound half, run through the appliers and through a
second statement of what they must tell a unit; the traces must be equal, whole.

By hand, with another seed and more documents:  python3 tests/oracle/test_picture_and_sound.py 7 20000
"""

import functools
import random
import sys

import pytest

import harness
import picture_and_sound
from harness import array, flag, mostly, number, odd_text, section, text, word
from picture_and_sound import D200, E100, MODELS, U300

STREAMS = text("1", "11", "0012", "999", "12345", "12a", "4294967296", "1 2", "-1", sizes=(4, 25))
ADDRESSES = text("10.20.20.11", "10.0.0.5", "host", "x", sizes=(4, 5, 29))
LATENCIES = word("ull", "normal", numbers=(0, 1, 2, 7, -1, -0.5, 1.9))
COLORS = word("auto", "rgb", "ycbcr", numbers=(0, 1, 2, 3))
CASTS = word("unicast", "multicast", "multicast(custom)", "broadcast", "unicast multicast", "multicastunicast",
             "x multicast y", "unicas", "multicas")
SCALINGS = word(*picture_and_sound.OUTPUT_SCALINGS, numbers=tuple(range(-1, 32)))
DIRECTIONS = word("in", "out", "input", "output", "i", "ou", "IN", "inner", "bin", "")
VOLUMES = number(0, 1, 50, 80, 100)
# A text that a unit's tool could print, and what a caller might find instead.
PATH_SOURCES = ("", "afv", "usb-c", "hdmi", "analog in", "local hdmi", "zavo stream audio output")


def analog(*sources):
    return section({
        "auto": flag(), "direction": DIRECTIONS, "source": word(*sources, numbers=(0, 1, 2, 3)),
        "type": word("balanced", "unbalanced", "balanced line", "unbalanced2", "Balanced", "balance"),
        "volume": VOLUMES, "mute": flag(), "output_delay": number(0, 40, 200),
    })


def path(**more):
    return section({**more, "source": word(*PATH_SOURCES, numbers=(0, 1, 2, 3, 4)), "volume": VOLUMES,
                    "mute": flag()})


def edid_input():
    return section({
        "copy_edid": text("hdmi", "-", "-copy", "copy", "display 1", sizes=(1009, 1011, 1023)),
        "predefined": word(*picture_and_sound.EDIDS, numbers=(1, 9)),
        "upload_edid_name": text("Hall 1", "x.bin"),
    })


ENCODER_VIDEO = {
    "stream_number": STREAMS, "video_mute_stream": flag(), "latency_mode": LATENCIES, "color_space": COLORS,
    "hdmi_loopout": flag(), "enable": flag(), "cast_mode": CASTS,
    "custom_multicast_address": text("239.1.2.3", "239.1.2.3:5000"), "custom_multicast": flag(),
}
VIDEO = {
    E100: section(ENCODER_VIDEO),
    U300: section({
        **ENCODER_VIDEO, "usbc_charging_enable": flag(), "auto_switching_enable": flag(),
        "auto_switching_prio": word("last connect", "prio usb-c, hdmi", "prio hdmi, usb-c", numbers=(0, 1, 2, 3)),
        "source_selection": word("", "usb-c", "hdmi", numbers=(0, 1, 2, 3)),
    }),
    D200: section({
        "stream_number": STREAMS, "video_mute": flag(), "latency_mode": LATENCIES, "output_scaling": SCALINGS,
        "output_selection": word("", "enc stream", "hdmi", numbers=(0, 1, 2, 5)),
        "auto_switching_enable": flag(),
        "auto_switching_prio": word("last connect", "prio hdmi, stream", numbers=(0, 1, 2)),
        "color_space": COLORS, "cast_mode": CASTS, "hdmi_out_enable": flag(),
        "no_stream_setting": text("image"),
    }),
}


def encoder_audio(*analog_sources):
    return section({
        "stream_audio": path(analog_priority=flag(), auto=flag()),
        "analog_audio": analog(*analog_sources), "dante_aes67_tx": path(),
    })


def reconnects(stream_key):
    return section({
        "video": section({stream_key: STREAMS}), "audio": section({stream_key: STREAMS}),
        "usb": section({"ip_address": ADDRESSES}), "km": section({"ip_address": ADDRESSES}),
        "serial": flag(), "ir": flag(),
    })


AUDIO = {
    E100: encoder_audio("hdmi", "dante/aes67 rx"),
    U300: encoder_audio("afv", "usb-c", "hdmi", "dante/aes67 rx"),
    D200: section({
        "audio_follow_video": flag(),
        "stream_audio": word("zavo stream audio", "dante/aes67 rx", numbers=(0, 1, 2)),
        "hdmi_audio": section({"source": word("afv", "stream audio", numbers=(0, 1, 2)), "mute": flag()}),
        "audio_stream_number": number(11), "analog_audio": analog("afv", "stream audio", "local hdmi",
                                                                  "dante/aes67 rx"),
        "dante_aes67_tx": path(), "routing": reconnects("number"),
    }),
}
EDID = {
    D200: edid_input(),
    E100: section({"hdmi": edid_input()}),
    U300: section({"usbc": edid_input(), "hdmi": edid_input()}),
}
HDCP_MODES = word("", "follow display", "hdcp 1.4", "hdcp 2.2", "HDCP 2.2", numbers=(-1, 0, 1, 2, 3, 4, 2.9))
HDCP = section({"hdmi_compatibility": flag(), "usbc_compatibility": flag(), "local_hdmi_compatibility": flag(),
                "output_hdcp_mode": HDCP_MODES})
PREVIEW = section({
    "resolution": text("1280x720", "1920x1080", "640", "x", "x720", "640x", "640x360x2", "640X360", "xx"),
    "fps": number(15, 30, 60), "enable": flag(),
})


ENTRY_TAILS = ("0,0", "1,0", "0,1", "16,16", "16,0", "17,0", "0,-1", "-1,0", "00,1", "1,01", "", "1", "1,", ",1",
               "1,2,3", "a,1", "1 ,2", "+1,0", "0,0,9", "00,00", "4294967296,0", "0,18446744073709551616")


def layout(random):
    """Layout texts of a grid: mostly whole, at times broken in one way or another."""
    count = random.choice([0, 1, 2, 2, 3, 3, 4, 17, 18, 19])
    broken = random.random() < 0.4
    entries = []
    for i in range(count):
        tail = random.choice(ENTRY_TAILS) if broken and random.random() < 0.4 else "%d,%d" % (i % 4, i // 4)
        entries.append("10.0.0.%d,%s" % (random.choice([i, i, i, random.randint(0, 4)]), tail))
    if broken and entries and random.random() < 0.2:
        i = random.randrange(len(entries))
        entries[i] = random.choice(["", "10.0.0.1", ",0,0", "y" * random.choice([95, 96, 97]) + ",0,0",
                                    "10.0,0.1,0,0", "ä,0,0", "10.0.0.2,10,0", "10.0.0.0,0,0" + "," * 87])
    if entries and random.random() < 0.1:
        # An entry just short enough, or just too long: behind the third field anything may stand.
        i = random.randrange(len(entries))
        entries[i] = (entries[i] + ",").ljust(random.choice([98, 99, 100, 101]), "z")
    if random.random() < 0.15:
        random.shuffle(entries)
    joined = random.choice([":", ":", ":", ":", "::"]).join(entries) + random.choice(["", ":", ""])
    if random.random() < 0.04:
        joined += ":" * random.choice([4000, 4060, 4095, 4096]) + "10.0.0.1,9,9"
    return joined


def lists_text(random):
    return layout(random) if random.random() < 0.85 else odd_text(random)


USB_DEVICES = section({
    "enable": flag(), "usb_km_enable": section({"enable": flag()}, 0.8), "usb_follow_video": flag(),
    "usb_2_enable": section({"enable": flag(), "usb_follow_video": flag()}, 0.8),
    "green_list": section({
        "enable": flag(),
        "lists": array(section({"ipaddr": text("10.0.0.5", "172.16.254.100", "abc", "abcd", "abcde",
                                               sizes=(4, 5, 14, 20, 21, 22, 23, 29, 50))}), range(6)),
    }),
    "mouse_roaming": section({
        "enable": flag(), "rows": number(0, 1, 4, 16), "columns": number(0, 1, 4, 16),
        "lists": mostly(lists_text, 0.93),
    }),
})
MAP_FILES = text("AABBCC000000,0,0:AABBCC000001,1,0", "x:y")
USB_HOST = section({"enable": flag(), "host_select": word("auto", "usb-c", "hdmi", "USB-C", numbers=(0, 1, 2))})

OSD = section({
    "information": section({"custom_text": text("Hall 1 - lectern")}),
    "settings": section({
        "position": word(*picture_and_sound.OSD_POSITIONS, numbers=(1, 5, 9)), "font_size": number(0, 24),
        "font_color_at": text("custom"), "font_color": text("FFFFFF"), "background_color": text("202020"),
        "background_transparency": number(0, 50, 100), "osd_off_time": number(0, 15),
        "background_color_enable": flag(),
    }),
})
GRID_EDGES = number(-1, 0, 0.9, 1, 2, 17, 18, 18.9, 19, 19.9, 20)
VIDEO_WALL = section({
    "rows": GRID_EDGES, "columns": GRID_EDGES, "unit_position": array(GRID_EDGES, (0, 1, 2, 2, 2, 3)),
    "virtual_coordinates_x1": number(), "virtual_coordinates_y1": number(), "virtual_coordinates_x2": number(),
    "virtual_coordinates_y2": number(), "rotation": number(0, 1, 2, 3, 4, 7, -1, 1.9), "stretch": number(0, 1, 2, 1.9),
    "outside_width": number(1213), "outside_height": number(684), "viewable_width": number(1210),
    "viewable_height": number(681), "enable": flag(),
    "mode": word("symmetric", "mosaic", "asymmetric", "symmetric mosaic", "mosaic symmetric", "mosaics",
                 "Symmetric", "symmetri", "mosai"),
})

NAMES = text("Room 1_A", "Hall 1/A", "é1", "Display 2 out L", sizes=(29, 31, 32, 33))
DANTE = section({
    "dante_name": text("HALL1-DISPLAY2", "Hall 1/A"), "dante_use_device_name": flag(),
    "dante_audio": section({
        "tx_enable": flag(), "tx_ch1_name": NAMES, "tx_ch2_name": NAMES, "tx_ch1_use_device_name": flag(),
        "tx_ch2_use_device_name": flag(), "zavo_audio_bridge": flag(), "tx_audio_mute": flag(),
        "rx_enable": flag(), "rx_ch1_name": NAMES, "rx_ch2_name": NAMES, "rx_ch1_use_device_name": flag(),
        "rx_ch2_use_device_name": flag(),
    }),
    "dante_ava": flag(), "dante_audio_only": flag(), "tx_video_ch_name": NAMES, "rx_video_ch_name": NAMES,
    "information": section({}), "tx_video_use_device_name": flag(), "rx_video_use_device_name": flag(),
})


def usb_devices(random):
    """With a map file now and then: where there is one, the layout is not worked out."""
    made = USB_DEVICES(random)
    roaming = made.get("mouse_roaming") if isinstance(made, dict) else None
    if isinstance(roaming, dict) and random.random() < 0.3:
        roaming[random.choice(["roaming_map_file", "roaming_map_file", "Roaming_Map_File"])] = MAP_FILES(random)
    return made


def stream(model):
    return section({"video": VIDEO[model], "audio": AUDIO[model], "preview": PREVIEW}, 0.97)


DECODER_ONLY = {"no_stream_image", "power_on_image", "osd", "video_wall", "routing"}
ENCODER_ONLY = {"usb_host"}


def sections_of(model):
    return {
        "device_name": NAMES, "serial_number": text("D200-2507-00058"), "stream": stream(model),
        "edid": EDID[model], "hdcp": HDCP, "usb_host": USB_HOST, "no_stream_image": section({
            "enable": flag(), "playlist_mode": text("single")}),
        "power_on_image": section({"enable": flag(), "duration_time": number(0, 10)}), "osd": OSD,
        "video_wall": VIDEO_WALL, "dante": DANTE, "routing": reconnects("stream_number"),
        "usb_devices": usb_devices,
    }


ALL_SECTIONS = {model: sections_of(model) for model in MODELS}


def document_of(random, model):
    """One section alone, a few, or all; mostly with the right model."""
    kinds = ALL_SECTIONS[model]
    foreign = ENCODER_ONLY if model == D200 else DECODER_ONLY
    # A section of another model's, now and then: it must tell this one nothing.
    keys = [key for key in kinds if key not in foreign or random.random() < 0.05]
    keys = random.sample(keys, min(random.choice([1, 2, 3, 4, 6, 20]), len(keys)))
    if random.random() < 0.3 and "stream" not in keys:
        keys.append("stream")
    if random.random() < 0.5:
        keys.sort(key=list(kinds).index)
    document = {key if random.random() < 0.97 else key.upper(): kinds[key](random) for key in keys}
    if random.random() < 0.98:
        named = {random.choice(["model"] * 19 + ["Model"]): model + random.choice([""] * 9 + ["-x", " ", "2"])}
    else:
        named = random.choice([{}, {"model": 1}, {"model": None}, {"model": model[:15]}, {"model": model.lower()},
                               {"model": random.choice(MODELS)}, {"model": ""}, {"model": [model]}])
    if random.random() < 0.01:
        return random.choice([[], 1, "text", None, True, [document]])
    return {**named, **document} if random.random() < 0.7 else {**document, **named}


# ---------------------------------------------------------------------------------------------------
# Present values

def digit(random):
    return random.choice(["0", "1", "2", "3", "5", "10", "-1", "18", " 4", "+2", "1a", "x", "", "007"])


def option_text(random):
    return random.choice(["1280,720,30,a,b,c", "640,360,15,1,2,3", "", ",", "1,2,3", "1,2,3,4,5", "1,2,3,4,5,6,7,8",
                          "1,,3,,5,", ",,,,,", "x" * 600 + ",1," + "y" * 400, "ä,ö,ü,1,2,3"])


def addon(random):
    return random.choice(["dante", "none", "", "dante2", "dant", "Dante", "dante,x", " dante"])


def engine_option(random):
    return random.choice(["0x80000000", "0x80100000", "0x00100000", "0x00000000", "0x0", "0x8", "", "0x", "0", "abcd",
                          "abc", "0x12", "0x123", "xx0xabcdef", "0xF0x1", "0X80000000", "x" * 1000, "0x" + "7" * 1020, "0x" + "7" * 1021, "0x" + "7" * 1022, "0x0" + "y" * 1200, "80100000",
                          "0x801000000", "ab0x"])


def device_name(random):
    return random.choice(["Hall 1 Display 2", "", "Room 1_A", "é1", "日本語", "a" * 31, "a" * 32, "b" * 30 + "_",
                          "ä" * 31, "ä" * 16, "x" * 1000, "é" * 511 + "z", "é" * 512, "z" * 1030])


RW_VALUES = {
    "as_source": lambda random: random.choice(["", "0", "1", "3", "afv", "x" * 900]),
    "a_a_audio_direction": lambda random: random.choice(["0", "1", "0x", "10", "2", "", " 0"]),
    "a_addon": addon,
    "dante_op_mode": lambda random: random.choice(["AV-A", "AV-A2", "audio-only", "none", "", "av-a", "AV-"]),
    "deviceName": device_name,
    "device_name_sync_enable": lambda random: random.choice(["", "1", "11", "001", "110", "111111", "010", "x1", "2"]),
    "v_eng_drv_option": engine_option,
    "ss_stream_option": option_text,
    **{"vw_" + key: digit for key in ("max_row", "max_column", "row", "column", "rotate", "stretch_type",
                                      "moninfo_ha", "moninfo_ht", "moninfo_va", "moninfo_vt", "v2_x1", "v2_y1",
                                      "v2_x2", "v2_y2")},
}
LM_VALUES = {
    "VW_VAR_VER": lambda random: random.choice(["1", "2", "2.0", "", "12", "02"]),
    "SS_STREAM_OPTION": option_text,
}


def present_values(random, kinds, fillers):
    made = [[key, kind(random)] for key, kind in kinds.items() if random.random() < 0.85]
    made += [[key, "1"] for key in fillers if random.random() < 0.7]
    if random.random() < 0.5:
        random.shuffle(made)
    else:
        made.reverse()  # the fillers first, as in a store that begins with other values
    if random.random() < 0.02:
        # A value that holds another key: whichever entry is met first is taken.
        made.insert(random.randrange(len(made) + 1), ["osd_cus_text", "x" + random.choice(list(kinds)) + "=9"])
    if random.random() < 0.03:
        # Line ends in a value: where they count, they end it.
        pair = random.choice(made) if made else ["x", ""]
        pair[1] += random.choice(["\r", "\n", "\r\n", "\n1", "\nSS_STREAM_OPTION=a,b,c,d,e,f",
                                  "\rv_eng_drv_option=0x5", "\n\nVW_VAR_VER=2"])
    return made


FLAGS = ("", "0", "1", "11", "111", "1111", "11111", "000000", "111111", "0101010", "xyz", "日本")


def macs_and_files(random):
    answers = {}
    if random.random() < 0.9:
        answers["astparam g device_name_sync_enable"] = random.choice(FLAGS)
    known = 0.97 if random.random() < 0.8 else 0.6
    for i in range(20):
        if random.random() < known:
            answers["nice -n 19 ionice -c 3 node_query --match_key MY_IP=10.0.0.%d --match_key IS_HOST=n "
                    "--get_key MY_MAC" % i] = "AABBCC%06d" % i
    if random.random() < 0.95:
        answers["astparam g ethaddr"] = random.choice(["AA:BB:CC:00:00:00"] * 6 + ["AA:BB:CC:00:00:01", "", ":",
                                                                                  "AABBCC000000"])
    files = {}
    if random.random() < 0.9:
        entries = []
        for _ in range(random.choice([0, 1, 2, 3, 5, 20])):
            mac = "AABBCC%06d" % random.randrange(6)
            entries.append(random.choice([mac + ",5,5", mac + ",5,5", "10.0.0.1,%s,7,8,tail" % mac, mac, mac + ",9",
                                          mac + ",,", "x,y,z", "", "%s,%s,1,2" % (mac, mac), mac + "x,1,1",
                                          mac.lower() + ",1,1", "a,b,c,%s,1" % mac]))
        # No file ends in more than one line end: how many of them are dropped is nobody's promise.
        files["/var/tmp/roaming_file"] = ":".join(entries) + random.choice(["", "", "\n", "\r", ":", ":\n"])
    return answers, files


def case_of(random, model):
    answers, files = macs_and_files(random)
    return {
        "model": model, "document": document_of(random, model),
        "rw": present_values(random, RW_VALUES, ("fm_version", "multicast_on", "ss_en", "hostname_tx_middle")),
        "lm": present_values(random, LM_VALUES, ("HOSTNAME", "MY_IP", "SS_EN")),
        "answers": answers, "files": files,
        "refuse": random.choice([[]] * 18 + [["/var/tmp/roaming_file"], ["/user_data2/roaming_file"]]),
    }


def expected(case):
    return picture_and_sound.expected(case["model"], case["document"], **harness.present_of(case))


def cases_of(model, seed, count):
    made = random.Random("%s %s" % (model, seed))
    return [case_of(made, model) for _ in range(count)]


@functools.lru_cache(maxsize=None)
def committed_cases(model):
    """The documents that every run of the tests takes, and what is expected of each."""
    cases = cases_of(model, 1, 1500)
    return cases, [expected(case) for case in cases]


@pytest.mark.parametrize("model", MODELS)
def test_RandomDocumentsTellTheUnitWhatTheStatementSays(model):
    cases, wanted = committed_cases(model)
    for case, want, seen in zip(cases, wanted, harness.run(cases)):
        if want != seen:
            pytest.fail(harness.report(case, expected), pytrace=False)


@pytest.mark.parametrize("model", MODELS)
def test_RandomDocumentsReachEverySection(model):
    """The documents would prove little if most of them told the unit nothing."""
    told = [trace for _, trace in committed_cases(model)[1]]
    assert len(set(told)) > 1200
    for kind in ("mcu ", "shell astparam s deviceName ", "shell e e_", "shell dapi ", "read astparam g ",
                 "read nice -n 19 ", "replace /user_data2/roaming_file ", "mcu \n", "shell echo -ne "):
        assert sum(kind in trace for trace in told) > 5, kind


def main(seed, count):
    for model in MODELS:
        ran = 0
        while ran < count:
            batch = cases_of(model, "%s/%d" % (seed, ran), min(2000, count - ran))
            ran += len(batch)
            differing = harness.differing(batch, expected)
            print("%s: %d documents, %d of the last %d differ" % (model, ran, len(differing), len(batch)), flush=True)
            for case in differing[:2]:
                print(harness.report(case, expected), flush=True)
            if differing:
                break


if __name__ == "__main__":
    main(sys.argv[1], int(sys.argv[2]))
