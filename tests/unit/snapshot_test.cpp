#include "device/snapshot.h"

#include <gtest/gtest.h>

#include <cstring>
#include <map>
#include <memory>
#include <random>
#include <set>
#include <sstream>
#include <string>
#include <vector>

#include "tests/support/applying.h"
#include "tests/support/recorder.h"

namespace {

using Slots = std::map<int, std::string>;

// The stores' own names, odd spellings included, each behind its slot.
constexpr char rw_slot_names[] = R"(
    1 fm_version  8 v_hdmi_singal_sta  9 v_hdmi_lock_sta  10 v_usbc_singal_sta  11 v_usbc_lock_sta
    12 v_usbc_charging_enable  13 v_source_selection  14 auto_switching_enable
    15 v_auto_switching_prio  16 v_color_space  17 v_hdmi_loopout_enable
    18 v_hdmi_loopout_video_mute  19 streamEnable  21 stream_video_mute_stream  22 as_source
    23 as_out_audio_stream  24 a_a_audio_direction  25 a_a_in_1_vol  26 a_a_in_2_vol
    27 a_a_in_3_vol  28 a_a_in_1_mute  29 a_a_in_2_mute  30 a_a_in_3_mute  31 a_a_audio_source
    32 a_a_out_vol  33 a_a_out_mute  34 a_a_output_delay  35 u_h_enable  36 u_h_select
    37 h_h_compatibility  38 h_u_compatibility  39 deviceName  40 tmperature  41 multicast_on
    42 user_def_multicast_ip  43 user_def_multicast_enable  46 a_addon  47 v_eng_drv_option
    48 source_detect  52 edid_set_u  53 edid_set_h  54 edid_copy_set_u  55 edid_copy_set_h
    56 edid_user_defined1  57 edid_user_defined2  59 v_stream_singal_sta  60 v_stream_lock_sta
    62 audioFlv  64 o_d_always_on  65 o_d_line_time  66 o_d_is_device_name  67 o_d_is_ip
    68 o_d_is_mac  69 o_d_is_fwversion  70 o_d_is_serial_number  71 o_d_is_stream_number
    72 o_d_is_resolution  73 o_d_is_custom  74 o_d_is_custom_text  75 auto_status_enable
    76 auto_status_port  77 auto_status_ipaddr  78 auto_status_interval  79 fplock
    82 device_name_sync_enable  84 snmpStatu  85 EnableSnmpV1Get  86 EnableSnmpV1Set  87 SnmpPort
    88 SnmpSysContact  89 SnmpSysName  90 SnmpSysLocation  91 EnableSnmpV2  92 EnableSnmpV2public
    93 EnableSnmpV2private  94 EnableSnmpV3  95 SnmpV3Username  96 SnmpV3Algorithm
    97 SnmpV3AuthPassword  98 SnmpV3PrivacyAlg  99 SnmpV3Privacypassword  100 EnableSnmpTrap
    101 SnmpTrapreceiver1  102 SnmpTrapreceiver2  103 TrapV3Name  104 TrapV3AA  105 TrapV3AP
    106 TrapV3PA  107 TrapV3PP  108 mqttStatu  109 mqttHost  110 mqttPort  111 mqttSSLStatus
    112 mqttUseCredentials  113 mqttUsername  114 mqttPassword  115 mqttClientID  116 mqttTopic
    117 mqttQos  118 mqttInterval  119 mqttPubInterval  120 ldapStatu  121 ldapInfoDn
    122 ldapInfoUseOpenLDAP  123 ldapInfoUsername  124 ldapInfoPassword  125 ldapInfoServer
    126 ldapInfoPort  127 ldapInfoTls  128 ldapInfoAllowUser  129 lan_2_poe  130 osd_cus_text
    131 osd_pos  132 osd_fs  133 osd_fc  134 osd_fc_at  135 osd_bgc  136 osd_bg_tran
    137 osd_off_time  141 vw_moninfo_ha  142 vw_moninfo_ht  143 vw_moninfo_va  144 vw_moninfo_vt
    145 vw_rotate  146 vw_stretch_type  147 vw_max_row  148 vw_max_column  149 vw_row
    150 vw_column  151 vw_v2_x1  152 vw_v2_y1  153 vw_v2_x2  154 vw_v2_y2  155 usbpower
    158 ir_pass_enable  159 ir_unit_conn  160 serial_pass_enable  161 serial_unit_conn  162 irread
    163 usbconnectip  164 fancontrol  165 dante_op_mode  168 a_d_tx_enable  169 a_d_tx_ch1_name
    170 a_d_tx_ch2_name  172 a_d_tx_ch1_sub_sta  173 a_d_tx_ch2_sub_sta  174 a_d_tx_audio_mute
    175 a_d_rx_ch1_subscription  176 a_d_rx_ch2_subscription  177 a_d_lock  181 ip_rs232_tunneling
    182 ip_ssh_rs232_tunneling  183 a_a_audio_auto  187 ss_stream_option  188 ss_snapshot_option
    189 ss_en
)";

constexpr char lm_slot_names[] = R"(
    0 HOSTNAME  2 SERIALNUMBER  3 IP_MODE  4 MY_IP  5 MY_NETMASK  6 MY_GATEWAYIP
    43 MULTICAST_IP_PREFIX  44 MCIP_SRV_MAP_V  79 S0_BAUDRATE  80 HOSTNAME  138 EN_VIDEO_WALL
    139 VW_VAR_VER  155 NO_KMOIP  156 NO_USB  184 SS_STREAM_OPTION  185 SS_SNAPSHOT_OPTION
    186 SS_EN
)";

Slots slots_of(const char* names) {
    Slots slots;
    std::istringstream input(names);
    int slot = 0;
    std::string key;
    while (input >> slot >> key) {
        slots[slot] = key;
    }
    return slots;
}

class Snapshot : public testing::Test {
  protected:
    void SetUp() override {
        reset_recorder();
    }

    std::unique_ptr<ParameterSnapshot> snapshot = std::make_unique<ParameterSnapshot>();

    // The slots that are not empty.
    Slots filled() const {
        Slots slots;
        for (int slot = 0; slot < snapshot_slots; slot++) {
            const char* value = snapshot->value[slot];
            EXPECT_NE(memchr(value, '\0', output_text_size), nullptr) << "slot " << slot;
            if (value[0] != '\0') {
                slots[slot] = value;
            }
        }
        return slots;
    }

    Slots taken() {
        take_snapshot(snapshot.get());
        return filled();
    }

    // Every slot holds a text that neither store ever holds.
    void fill_with_old_texts() {
        for (int slot = 0; slot < snapshot_slots; slot++) {
            strcpy(snapshot->value[slot], "old");
        }
    }
};

void provide_rw_dump(const std::string& behind_header) {
    provide_file("/dev/shm/rwparam_temp", std::string("\xff=\n\0", 4) + behind_header);
}

void provide_lm_dump(const std::string& text) {
    provide_file("/var/tmp/lmparam_dump", text);
}

std::string rw_dump_of(const std::vector<std::string>& entries) {
    std::string dump;
    for (const std::string& entry : entries) {
        dump += entry + '\0';
    }
    return dump + '\0';
}

// --- The slots
// ------------------------------------------------------------------------------------

TEST_F(Snapshot, EveryRunTimeKeyHasItsSlot) {
    const Slots names = slots_of(rw_slot_names);
    ASSERT_EQ(names.size(), 157U);
    for (const auto& [slot, key] : names) {
        reset_recorder();
        set_rw_value(key, "value");
        EXPECT_EQ(taken(), (Slots{{slot, "value"}})) << key;
    }
}

TEST_F(Snapshot, EveryLiveStoreKeyHasItsSlot) {
    const Slots names = slots_of(lm_slot_names);
    ASSERT_EQ(names.size(), 17U);
    for (const auto& [slot, key] : names) {
        reset_recorder();
        set_lm_value(key, "value");
        EXPECT_EQ(taken(), key == "HOSTNAME" ? (Slots{{0, "value"}, {80, "value"}})
                                             : (Slots{{slot, "value"}}))
            << key;
    }
}

TEST_F(Snapshot, FullStoresFillEverySlotAndTheLiveStoreWinsWhereBothHaveOne) {
    Slots expected;
    for (const auto& [slot, key] : slots_of(rw_slot_names)) {
        set_rw_value(key, "rw " + std::to_string(slot));
        expected[slot] = "rw " + std::to_string(slot);
    }
    for (const auto& [slot, key] : slots_of(lm_slot_names)) {
        if (slot != 80) {
            set_lm_value(key, "lm " + std::to_string(slot));
        }
        expected[slot] = "lm " + std::to_string(slot);
    }
    expected[80] = "lm 0";
    EXPECT_EQ(expected.size(), 171U);
    EXPECT_EQ(expected[43] + ", " + expected[79] + ", " + expected[155], "lm 43, lm 79, lm 155");
    EXPECT_EQ(taken(), expected);
}

TEST_F(Snapshot, TakingOneCopiesTheRunTimeStoreFirst) {
    taken();
    EXPECT_EQ(recorded_trace(), snapshot_trace);
}

TEST_F(Snapshot, TakingOneForgetsWhatTheSlotsHeld) {
    fill_with_old_texts();
    EXPECT_EQ(taken(), Slots());
}

// --- Missing files and keys
// -----------------------------------------------------------------------

TEST_F(Snapshot, AMissingDumpLeavesTheSlots) {
    fill_with_old_texts();
    load_rw_snapshot(snapshot.get());
    load_lm_snapshot(snapshot.get());
    const Slots slots = filled();
    EXPECT_EQ(slots.size(), 200U);
    EXPECT_EQ(std::set<std::string>({slots.at(0), slots.at(1), slots.at(199)}),
              std::set<std::string>({"old"}));
}

TEST_F(Snapshot, OnlyTheCopyOfTheRunTimeStoreIsRead) {
    provide_file("/dev/shm/rwparam", std::string("\1\2\3\4deviceName=name\0\0", 22));
    EXPECT_EQ(taken(), Slots());
}

TEST_F(Snapshot, APresentDumpEmptiesTheSlotsOfTheKeysThatItDoesNotHold) {
    fill_with_old_texts();
    provide_rw_dump(rw_dump_of({"deviceName=name"}));
    load_rw_snapshot(snapshot.get());
    Slots expected;
    const Slots named = slots_of(rw_slot_names);
    for (int slot = 0; slot < snapshot_slots; slot++) {
        if (!named.contains(slot)) {
            expected[slot] = "old";
        }
    }
    expected[39] = "name";
    EXPECT_EQ(filled(), expected);

    provide_lm_dump("MY_IP=10.0.0.2\n");
    load_lm_snapshot(snapshot.get());
    for (const auto& [slot, key] : slots_of(lm_slot_names)) {
        expected.erase(slot);
    }
    expected[4] = "10.0.0.2";
    EXPECT_EQ(filled(), expected);
}

TEST_F(Snapshot, ADumpShorterThanItsHeaderOrWithoutEntriesEmptiesTheSlots) {
    for (const size_t size : {0UL, 1UL, 3UL, 4UL, 5UL}) {
        fill_with_old_texts();
        provide_file("/dev/shm/rwparam_temp", std::string("abcd\0", size));
        load_rw_snapshot(snapshot.get());
        EXPECT_EQ(filled().size(), 200U - 157U) << size << " bytes";
    }
    fill_with_old_texts();
    provide_lm_dump("");
    load_lm_snapshot(snapshot.get());
    EXPECT_EQ(filled().size(), 200U - 17U);
}

// --- Entries
// --------------------------------------------------------------------------------------

TEST_F(Snapshot, TheHeaderIsNeverLookedAt) {
    provide_file("/dev/shm/rwparam_temp", std::string("\0\0\0\0deviceName=a\0", 17));
    EXPECT_EQ(taken(), (Slots{{39, "a"}}));
    provide_file("/dev/shm/rwparam_temp", "devideviceName=b");
    EXPECT_EQ(taken(), (Slots{{39, "b"}}));
}

TEST_F(Snapshot, AnEmptyEntryEndsTheRunTimeStore) {
    provide_rw_dump(std::string("deviceName=a\0\0fm_version=1.0\0\0", 29));
    EXPECT_EQ(taken(), (Slots{{39, "a"}}));
    provide_rw_dump(std::string("\0deviceName=a\0\0", 15));
    EXPECT_EQ(taken(), Slots());
}

TEST_F(Snapshot, TheEndOfTheDumpEndsTheListAsWell) {
    provide_rw_dump("deviceName=a");
    EXPECT_EQ(taken(), (Slots{{39, "a"}}));
    provide_rw_dump(std::string("deviceName=a\0fm_version=1.0", 27));
    EXPECT_EQ(taken(), (Slots{{1, "1.0"}, {39, "a"}}));
    provide_rw_dump("");
    provide_lm_dump("HOSTNAME=host");
    EXPECT_EQ(taken(), (Slots{{0, "host"}, {80, "host"}}));
}

TEST_F(Snapshot, AnEmptyLineEndsTheLiveStore) {
    provide_lm_dump("HOSTNAME=a\n\nMY_IP=10.0.0.2\n");
    EXPECT_EQ(taken(), (Slots{{0, "a"}, {80, "a"}}));
    provide_lm_dump("\nHOSTNAME=a\n");
    EXPECT_EQ(taken(), Slots());
}

TEST_F(Snapshot, LineEndsOfCrLfEndTheLiveStoreAtItsFirstLine) {
    provide_lm_dump("HOSTNAME=a\r\nMY_IP=10.0.0.2\r\n");
    EXPECT_EQ(taken(), (Slots{{0, "a"}, {80, "a"}}));
}

TEST_F(Snapshot, LinesOfTheLiveStoreMayEndInCrOrLf) {
    provide_lm_dump("HOSTNAME=a\rMY_IP=10.0.0.2\nNO_USB=1\r");
    EXPECT_EQ(taken(), (Slots{{0, "a"}, {4, "10.0.0.2"}, {80, "a"}, {156, "1"}}));
}

TEST_F(Snapshot, LineEndsAreOrdinaryBytesInTheRunTimeStore) {
    provide_rw_dump(rw_dump_of({"osd_cus_text=a\r\nb\n", "deviceName=c"}));
    EXPECT_EQ(taken(), (Slots{{39, "c"}, {130, "a\r\nb\n"}}));
}

TEST_F(Snapshot, TheValueIsAllBehindTheFirstEqualsSign) {
    provide_rw_dump(rw_dump_of({"deviceName=a=b= c ", "fm_version="}));
    provide_lm_dump("HOSTNAME==x=\nMY_IP\nMY_NETMASK 255=0\n");
    EXPECT_EQ(taken(), (Slots{{0, "=x="}, {39, "a=b= c "}, {80, "=x="}}));
}

TEST_F(Snapshot, ValuesAreBoundAtTheSizeOfASlot) {
    for (const size_t length : {1022UL, 1023UL, 1024UL, 5000UL}) {
        const std::string value(length, 'v');
        const std::string kept = value.substr(0, 1023);
        provide_rw_dump(rw_dump_of({"deviceName=" + value, "tmperature=40"}));
        provide_lm_dump("SERIALNUMBER=" + value + "\nIP_MODE=dhcp\n");
        EXPECT_EQ(taken(), (Slots{{2, kept}, {3, "dhcp"}, {39, kept}, {40, "40"}})) << length;
    }
}

// --- What matches
// ---------------------------------------------------------------------------------

TEST_F(Snapshot, ARunTimeKeyMatchesAnywhereInAnEntry) {
    // The custom text comes first and holds another key; the value is then all of the text.
    provide_rw_dump(rw_dump_of({"osd_cus_text=set ss_en=1", "ss_en=0", "ss_snapshot_option=2"}));
    EXPECT_EQ(taken(), (Slots{{130, "set ss_en=1"}, {188, "2"}, {189, "set ss_en=1"}}));
    reset_recorder();
    provide_rw_dump(rw_dump_of({"xdeviceName=a"}));
    EXPECT_EQ(taken(), (Slots{{39, "a"}}));
}

TEST_F(Snapshot, ALiveStoreKeyMatchesOnlyAtTheStartOfALine) {
    provide_lm_dump("X_MY_IP=1\nHOSTNAME=MY_IP=2\n MY_IP=3\nMY_IP =4\nmy_ip=5\n");
    EXPECT_EQ(taken(), (Slots{{0, "MY_IP=2"}, {80, "MY_IP=2"}}));
}

TEST_F(Snapshot, OfAKeyThatIsThereTwiceTheFirstCounts) {
    provide_rw_dump(rw_dump_of({"fm_version=1", "v_hdmi_singal_sta=a", "v_hdmi_singal_sta=b"}));
    provide_lm_dump("HOSTNAME=a\nHOSTNAME=b\nS0_BAUDRATE=57600-8n1\n");
    EXPECT_EQ(taken(), (Slots{{0, "a"}, {1, "1"}, {8, "a"}, {79, "57600-8n1"}, {80, "a"}}));
}

TEST_F(Snapshot, BehindAMissTheFirstEntryIsTriedLast) {
    // Slot 1 is the first key. When it is missing, the walk for the next one begins at the second
    // entry, and the same entries give another value.
    provide_rw_dump(rw_dump_of({"v_hdmi_singal_sta=first", "v_hdmi_singal_sta=second"}));
    EXPECT_EQ(taken(), (Slots{{8, "second"}}));
    provide_lm_dump("HOSTNAME=first\nHOSTNAME=second\n");
    EXPECT_EQ(taken(), (Slots{{0, "first"}, {8, "second"}, {80, "second"}}));
    // The only entry is still found, at the end of the walk.
    provide_lm_dump("");
    provide_rw_dump(rw_dump_of({"v_hdmi_singal_sta=first"}));
    EXPECT_EQ(taken(), (Slots{{8, "first"}}));
}

// The walk once more, as plainly as it can be said: entries by their index, end of list included.
Slots plainly_walked(const std::vector<std::string>& entries, const Slots& names, bool anywhere) {
    Slots slots;
    size_t position = 0;
    for (const auto& [slot, name] : names) {
        const std::string key = name + "=";
        const auto matches = [&](size_t index) {
            const size_t at = entries[index].find(key);
            return anywhere ? at != std::string::npos : at == 0;
        };
        size_t found = position;
        while (found < entries.size() && !matches(found)) {
            found++;
        }
        if (found == entries.size() && !entries.empty() && matches(0)) {
            found = 0;
        }
        if (found < entries.size()) {
            const std::string value = entries[found].substr(entries[found].find('=') + 1);
            if (!value.empty()) {
                slots[slot] = value;
            }
            position = 0;
        } else {
            position = entries.empty() ? 0 : 1;
        }
    }
    return slots;
}

TEST_F(Snapshot, RandomStoresAreWalkedAsTheRulesSay) {
    std::mt19937 random(20240229);
    const auto below = [&](size_t count) { return random() % count; };
    const auto random_entries = [&](const Slots& names) {
        std::vector<std::string> keys;
        for (const auto& [slot, key] : names) {
            keys.push_back(key);
        }
        std::vector<std::string> entries(below(8));
        for (std::string& entry : entries) {
            // Few of the keys, so that they repeat, and values that may hold other keys.
            entry = keys[below(6)] + "=" + std::to_string(below(1000));
            if (below(4) == 0) {
                entry += keys[below(6)] + "=" + std::to_string(below(1000));
            }
            if (below(6) == 0) {
                entry = "other " + entry;
            }
        }
        return entries;
    };
    const Slots rw_names = slots_of(rw_slot_names);
    const Slots lm_names = slots_of(lm_slot_names);
    for (int round = 0; round < 5000; round++) {
        const std::vector<std::string> rw_entries = random_entries(rw_names);
        const std::vector<std::string> lm_entries = random_entries(lm_names);
        provide_rw_dump(rw_dump_of(rw_entries));
        std::string lines;
        for (const std::string& line : lm_entries) {
            lines.append(line).append("\n");
        }
        provide_lm_dump(lines);
        Slots expected = plainly_walked(rw_entries, rw_names, true);
        const Slots live = plainly_walked(lm_entries, lm_names, false);
        for (const auto& [slot, key] : lm_names) {
            expected.erase(slot);
        }
        expected.insert(live.begin(), live.end());
        ASSERT_EQ(taken(), expected) << "round " << round;
        reset_recorder();
    }
}

// The slots by the names that the appliers use.
TEST_F(Snapshot, TheNamedSlotsAreThoseOfTheirKeys) {
    const std::map<int, std::string> named = {
        {slot_as_source, "as_source"},
        {slot_a_a_audio_direction, "a_a_audio_direction"},
        {slot_device_name, "deviceName"},
        {slot_a_addon, "a_addon"},
        {slot_v_eng_drv_option, "v_eng_drv_option"},
        {slot_device_name_sync_enable, "device_name_sync_enable"},
        {slot_vw_moninfo_ha, "vw_moninfo_ha"},
        {slot_vw_moninfo_ht, "vw_moninfo_ht"},
        {slot_vw_moninfo_va, "vw_moninfo_va"},
        {slot_vw_moninfo_vt, "vw_moninfo_vt"},
        {slot_vw_rotate, "vw_rotate"},
        {slot_vw_stretch_type, "vw_stretch_type"},
        {slot_vw_max_row, "vw_max_row"},
        {slot_vw_max_column, "vw_max_column"},
        {slot_vw_row, "vw_row"},
        {slot_vw_column, "vw_column"},
        {slot_vw_v2_x1, "vw_v2_x1"},
        {slot_vw_v2_y1, "vw_v2_y1"},
        {slot_vw_v2_x2, "vw_v2_x2"},
        {slot_vw_v2_y2, "vw_v2_y2"},
        {slot_dante_op_mode, "dante_op_mode"},
        {slot_rw_ss_stream_option, "ss_stream_option"},
    };
    const Slots rw_names = slots_of(rw_slot_names);
    for (const auto& [slot, key] : named) {
        EXPECT_EQ(rw_names.at(slot), key);
    }
    const Slots lm_names = slots_of(lm_slot_names);
    EXPECT_EQ(lm_names.at(slot_s0_baudrate), "S0_BAUDRATE");
    EXPECT_EQ(lm_names.at(slot_vw_var_ver), "VW_VAR_VER");
    EXPECT_EQ(lm_names.at(slot_lm_ss_stream_option), "SS_STREAM_OPTION");
}

}  // namespace
