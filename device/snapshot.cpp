#include "device/snapshot.h"

#include <cstdio>
#include <cstdlib>
#include <cstring>

#include "device/parameters.h"

struct SlotKey {
    unsigned char slot;
    const char* key;
};

static constexpr SlotKey rw_keys[] = {
    {1, "fm_version="},
    {8, "v_hdmi_singal_sta="},
    {9, "v_hdmi_lock_sta="},
    {10, "v_usbc_singal_sta="},
    {11, "v_usbc_lock_sta="},
    {12, "v_usbc_charging_enable="},
    {13, "v_source_selection="},
    {14, "auto_switching_enable="},
    {15, "v_auto_switching_prio="},
    {16, "v_color_space="},
    {17, "v_hdmi_loopout_enable="},
    {18, "v_hdmi_loopout_video_mute="},
    {19, "streamEnable="},
    {21, "stream_video_mute_stream="},
    {22, "as_source="},
    {23, "as_out_audio_stream="},
    {24, "a_a_audio_direction="},
    {25, "a_a_in_1_vol="},
    {26, "a_a_in_2_vol="},
    {27, "a_a_in_3_vol="},
    {28, "a_a_in_1_mute="},
    {29, "a_a_in_2_mute="},
    {30, "a_a_in_3_mute="},
    {31, "a_a_audio_source="},
    {32, "a_a_out_vol="},
    {33, "a_a_out_mute="},
    {34, "a_a_output_delay="},
    {35, "u_h_enable="},
    {36, "u_h_select="},
    {37, "h_h_compatibility="},
    {38, "h_u_compatibility="},
    {39, "deviceName="},
    {40, "tmperature="},
    {41, "multicast_on="},
    {42, "user_def_multicast_ip="},
    {43, "user_def_multicast_enable="},
    {46, "a_addon="},
    {47, "v_eng_drv_option="},
    {48, "source_detect="},
    {52, "edid_set_u="},
    {53, "edid_set_h="},
    {54, "edid_copy_set_u="},
    {55, "edid_copy_set_h="},
    {56, "edid_user_defined1="},
    {57, "edid_user_defined2="},
    {59, "v_stream_singal_sta="},
    {60, "v_stream_lock_sta="},
    {62, "audioFlv="},
    {64, "o_d_always_on="},
    {65, "o_d_line_time="},
    {66, "o_d_is_device_name="},
    {67, "o_d_is_ip="},
    {68, "o_d_is_mac="},
    {69, "o_d_is_fwversion="},
    {70, "o_d_is_serial_number="},
    {71, "o_d_is_stream_number="},
    {72, "o_d_is_resolution="},
    {73, "o_d_is_custom="},
    {74, "o_d_is_custom_text="},
    {75, "auto_status_enable="},
    {76, "auto_status_port="},
    {77, "auto_status_ipaddr="},
    {78, "auto_status_interval="},
    {79, "fplock="},
    {82, "device_name_sync_enable="},
    {84, "snmpStatu="},
    {85, "EnableSnmpV1Get="},
    {86, "EnableSnmpV1Set="},
    {87, "SnmpPort="},
    {88, "SnmpSysContact="},
    {89, "SnmpSysName="},
    {90, "SnmpSysLocation="},
    {91, "EnableSnmpV2="},
    {92, "EnableSnmpV2public="},
    {93, "EnableSnmpV2private="},
    {94, "EnableSnmpV3="},
    {95, "SnmpV3Username="},
    {96, "SnmpV3Algorithm="},
    {97, "SnmpV3AuthPassword="},
    {98, "SnmpV3PrivacyAlg="},
    {99, "SnmpV3Privacypassword="},
    {100, "EnableSnmpTrap="},
    {101, "SnmpTrapreceiver1="},
    {102, "SnmpTrapreceiver2="},
    {103, "TrapV3Name="},
    {104, "TrapV3AA="},
    {105, "TrapV3AP="},
    {106, "TrapV3PA="},
    {107, "TrapV3PP="},
    {108, "mqttStatu="},
    {109, "mqttHost="},
    {110, "mqttPort="},
    {111, "mqttSSLStatus="},
    {112, "mqttUseCredentials="},
    {113, "mqttUsername="},
    {114, "mqttPassword="},
    {115, "mqttClientID="},
    {116, "mqttTopic="},
    {117, "mqttQos="},
    {118, "mqttInterval="},
    {119, "mqttPubInterval="},
    {120, "ldapStatu="},
    {121, "ldapInfoDn="},
    {122, "ldapInfoUseOpenLDAP="},
    {123, "ldapInfoUsername="},
    {124, "ldapInfoPassword="},
    {125, "ldapInfoServer="},
    {126, "ldapInfoPort="},
    {127, "ldapInfoTls="},
    {128, "ldapInfoAllowUser="},
    {129, "lan_2_poe="},
    {130, "osd_cus_text="},
    {131, "osd_pos="},
    {132, "osd_fs="},
    {133, "osd_fc="},
    {134, "osd_fc_at="},
    {135, "osd_bgc="},
    {136, "osd_bg_tran="},
    {137, "osd_off_time="},
    {141, "vw_moninfo_ha="},
    {142, "vw_moninfo_ht="},
    {143, "vw_moninfo_va="},
    {144, "vw_moninfo_vt="},
    {145, "vw_rotate="},
    {146, "vw_stretch_type="},
    {147, "vw_max_row="},
    {148, "vw_max_column="},
    {149, "vw_row="},
    {150, "vw_column="},
    {151, "vw_v2_x1="},
    {152, "vw_v2_y1="},
    {153, "vw_v2_x2="},
    {154, "vw_v2_y2="},
    {155, "usbpower="},
    {158, "ir_pass_enable="},
    {159, "ir_unit_conn="},
    {160, "serial_pass_enable="},
    {161, "serial_unit_conn="},
    {162, "irread="},
    {163, "usbconnectip="},
    {164, "fancontrol="},
    {165, "dante_op_mode="},
    {168, "a_d_tx_enable="},
    {169, "a_d_tx_ch1_name="},
    {170, "a_d_tx_ch2_name="},
    {172, "a_d_tx_ch1_sub_sta="},
    {173, "a_d_tx_ch2_sub_sta="},
    {174, "a_d_tx_audio_mute="},
    {175, "a_d_rx_ch1_subscription="},
    {176, "a_d_rx_ch2_subscription="},
    {177, "a_d_lock="},
    {181, "ip_rs232_tunneling="},
    {182, "ip_ssh_rs232_tunneling="},
    {183, "a_a_audio_auto="},
    {187, "ss_stream_option="},
    {188, "ss_snapshot_option="},
    {189, "ss_en="},
};

static constexpr SlotKey lm_keys[] = {
    {0, "HOSTNAME="},
    {2, "SERIALNUMBER="},
    {3, "IP_MODE="},
    {4, "MY_IP="},
    {5, "MY_NETMASK="},
    {6, "MY_GATEWAYIP="},
    {43, "MULTICAST_IP_PREFIX="},
    {44, "MCIP_SRV_MAP_V="},
    {79, "S0_BAUDRATE="},
    {80, "HOSTNAME="},
    {138, "EN_VIDEO_WALL="},
    {139, "VW_VAR_VER="},
    {155, "NO_KMOIP="},
    {156, "NO_USB="},
    {184, "SS_STREAM_OPTION="},
    {185, "SS_SNAPSHOT_OPTION="},
    {186, "SS_EN="},
};

template <size_t count>
static constexpr bool slots_rise_and_fit(const SlotKey (&keys)[count]) {
    for (size_t i = 0; i < count; i++) {
        if (keys[i].slot >= snapshot_slots || (i > 0 && keys[i].slot <= keys[i - 1].slot)) {
            return false;
        }
    }
    return true;
}
static_assert(slots_rise_and_fit(rw_keys) && slots_rise_and_fit(lm_keys));

// The entries of a dump, one NUL-terminated text behind the other. An empty entry ends the list,
// and so does the end of the dump.
struct Entries {
    const char* first;
    const char* end;
};

static bool ends_list(const Entries& entries, const char* entry) {
    return entry >= entries.end || *entry == '\0';
}

static const char* next_entry(const char* entry) {
    return entry + strlen(entry) + 1;
}

using Match = bool (*)(const char* entry, const char* key);

static bool holds_key(const char* entry, const char* key) {
    return strstr(entry, key) != nullptr;
}

static bool begins_with_key(const char* entry, const char* key) {
    return strncmp(entry, key, strlen(key)) == 0;
}

static void copy_entry_value(char* slot, const char* entry) {
    snprintf(slot, output_text_size, "%s", strchr(entry, '=') + 1);
}

// Finds each key's value. The walk for a key begins where the one before left off: at the first
// entry after a hit, at the second after a miss, and a miss tries the first entry last. So with a
// key that several entries match, the order of the keys decides which one is taken.
template <size_t count>
static void fill_slots(ParameterSnapshot* snapshot, const SlotKey (&keys)[count],
                       const Entries& entries, Match matches) {
    const char* position = entries.first;
    for (const SlotKey& wanted : keys) {
        char* slot = snapshot->value[wanted.slot];
        const char* entry = position;
        while (!ends_list(entries, entry) && !matches(entry, wanted.key)) {
            entry = next_entry(entry);
        }
        position = entries.first;
        if (!ends_list(entries, entry)) {
            copy_entry_value(slot, entry);
        } else if (ends_list(entries, entries.first)) {
            slot[0] = '\0';
        } else if (matches(entries.first, wanted.key)) {
            copy_entry_value(slot, entries.first);
        } else {
            slot[0] = '\0';
            position = next_entry(entries.first);
        }
    }
}

void load_rw_snapshot(ParameterSnapshot* snapshot) {
    static constexpr size_t header_size = 4;
    run_shell_line("cp /dev/shm/rwparam /dev/shm/rwparam_temp");
    FileBytes dump = {};
    if (!read_file("/dev/shm/rwparam_temp", &dump) || dump.bytes == nullptr) {
        return;
    }
    const char* end = dump.bytes + dump.size;
    const char* first = dump.size < header_size ? end : dump.bytes + header_size;
    fill_slots(snapshot, rw_keys, {first, end}, holds_key);
    free(dump.bytes);
}

void load_lm_snapshot(ParameterSnapshot* snapshot) {
    FileBytes dump = {};
    if (!read_file("/var/tmp/lmparam_dump", &dump) || dump.bytes == nullptr) {
        return;
    }
    split_lines(dump);
    fill_slots(snapshot, lm_keys, {dump.bytes, dump.bytes + dump.size}, begins_with_key);
    free(dump.bytes);
}

void take_snapshot(ParameterSnapshot* snapshot) {
    memset(snapshot, 0, sizeof *snapshot);
    load_rw_snapshot(snapshot);
    load_lm_snapshot(snapshot);
}
