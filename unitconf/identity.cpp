// Who the unit is: its device name, which the Dante transmit channels may follow, and its serial
// number.
#include <cstdlib>
#include <cstring>

#include "device/lines.h"
#include "device/snapshot.h"
#include "unitconf/names.h"
#include "unitconf/sections.h"

static constexpr size_t longest_device_name = 32;
static constexpr size_t longest_dante_source = 29;

// The lines of a Dante transmit channel that takes the device name when its own character of the
// unit's name synchronisation flags is "1". The third flag, the host name's, leads to no line: the
// host name keeps what it has until the network section sets it.
struct FollowingChannel {
    NameSyncFlag flag;
    const char* store;
    const char* dante;
};

static constexpr FollowingChannel following_channels[] = {
    {sync_tx_channel_1, "astparam s a_d_tx_ch1_name \"%s-01\"",
     "dapi --txch1_name \"%s-01\" > /dev/null 2>&1"},
    {sync_tx_channel_2, "astparam s a_d_tx_ch2_name \"%s-02\"",
     "dapi --txch2_name \"%s-02\" > /dev/null 2>&1"},
};

// The store takes the name as given, Dante a plain form of it and no long ones. The plain form is
// made of as many bytes as the name has characters, so a multi-byte name loses its tail.
static void name_channel(const FollowingChannel& channel, const char* name) {
    send_filled_line(Channel::shell, channel.store, name);
    if (strlen(name) > longest_dante_source) {
        return;
    }
    char* plain = plain_name(name, utf8_characters(name), '-');
    if (plain != nullptr) {
        send_filled_line(Channel::shell, channel.dante, plain);
        free(plain);
    }
}

void apply_device_name(const cJSON* item) {
    if (!cJSON_IsString(item)) {
        return;
    }
    const char* name = item->valuestring;
    ParameterSnapshot present;
    take_snapshot(&present);
    if (strlen(name) <= longest_device_name) {
        send_filled_line(Channel::shell, "astparam s deviceName \"%s\" > /dev/null 2>&1", name);
    }
    const char* flags = present.value[slot_device_name_sync_enable];
    const size_t count = strlen(flags);
    for (const FollowingChannel& channel : following_channels) {
        if (channel.flag < count && flags[channel.flag] == '1') {
            name_channel(channel, name);
        }
    }
}

void apply_serial_number(const cJSON* item) {
    if (!cJSON_IsString(item)) {
        return;
    }
    send_filled_line(
        Channel::shell,
        "astparam s serialNumber \"%s\"  > /dev/null 2>&1;lmparam s SERIALNUMBER \"%s\";",
        item->valuestring);
    pause_seconds(1);
}
