// The network section: the addressing and discovery of the first port, the switch and power of the
// second, the VLANs of both, and the three service networks.
#include <cstdio>
#include <cstdlib>
#include <cstring>

#include "device/lines.h"
#include "device/snapshot.h"
#include "unitconf/members.h"
#include "unitconf/names.h"
#include "unitconf/numbers.h"
#include "unitconf/sections.h"
#include "unitconf/services/vlan_membership.h"
#include "unitconf/tables.h"

// Whether the unit accepts a text as its address: four numbers between dots, the first and the last
// from 1 to 254, the others from 0 to 254. 255 is refused everywhere, so that no broadcast address
// is ever set. What stands behind a field's digits, empty fields, a fifth field and what comes
// behind the first 63 bytes are not looked at.
static bool is_valid_ipv4_address(const char* text) {
    static constexpr int lowest[] = {1, 0, 0, 1};
    static constexpr int highest = 254;
    char copy[64];
    snprintf(copy, sizeof copy, "%s", text);
    char* rest = nullptr;
    const char* field = strtok_r(copy, ".", &rest);
    for (const int lowest_here : lowest) {
        if (field == nullptr) {
            return false;
        }
        const int value = decimal_value(field);
        if (value < lowest_here || value > highest) {
            return false;
        }
        field = strtok_r(nullptr, ".", &rest);
    }
    return true;
}

// --- The first port ------------------------------------------------------------------------------

static bool apply_use_device_name(const Section& /*section*/, const cJSON* item) {
    if (!cJSON_IsBool(item)) {
        return false;
    }
    store_name_sync_flag(sync_host_name, cJSON_IsTrue(item));
    return true;
}

// The host name is the document's, or the device name where the document says that the unit is to
// follow it. An empty one stores nothing, but the unit is given its empty line and its time.
static bool apply_host_name(const Section& section, const cJSON* item) {
    if (!cJSON_IsString(item)) {
        return false;
    }
    char device_name[output_text_size] = {};
    read_command_output("astparam g deviceName", device_name);
    const bool follows = cJSON_IsTrue(find_member(section.object, "use_device_name", Case::exact));
    const char* name = follows ? device_name : item->valuestring;
    if (name[0] == '\0') {
        run_shell_line("");
        return true;
    }
    char* host_name = plain_name(name, strlen(name), '-');
    if (host_name != nullptr) {
        send_filled_line(Channel::shell, "astparam s hostname_tx_middle %s;", host_name);
        free(host_name);
    }
    return true;
}

static constexpr Member lan1_members[] = {
    not_empty(begins_with("ip_mode", "dhcp", "astparam s ip_mode dhcp;lmparam s IP_MODE dhcp;",
                          "astparam s ip_mode static;lmparam s IP_MODE static;",
                          pause_when_sent(1))),
    tested_text("ip_address", is_valid_ipv4_address, "astparam s ipaddr %s;lmparam s IPADDR %s;",
                pause_when_sent(1)),
    text("subnet", "astparam s netmask %s;lmparam s NETMASK %s;", pause_when_sent(1)),
    // The live store's key is lower case here, unlike its others.
    text("gateway", "astparam s gatewayip %s;lmparam s gatewayip %s;", pause_when_sent(1)),
    text("dns1", "astparam s static_dns_ip1 %s;lmparam s STATIC_DNS_IP1 %s;lmparam s DNS_IP1 %s;",
         pause_when_sent(1)),
    text("dns2", "astparam s static_dns_ip2 %s;lmparam s STATIC_DNS_IP2 %s;lmparam s DNS_IP2 %s;",
         pause_when_sent(1)),
    handled("use_device_name", JsonType::boolean, apply_use_device_name),
    handled("hostname", JsonType::string, apply_host_name, pause_when_sent(1)),
    number("port_vlan_id", "astparam s vlan1ID %d"),
    number_list("tagged_vlans", "astparam s vlan1Tag \"%s\" > /dev/null 2>&1", pause_when_sent(1)),
    number_list("untagged_vlans", "astparam s vlan1Untag %s > /dev/null 2>&1", pause_when_sent(1)),
    number("discovery_send_interval", "astparam s discovery_inter %d;"),
    flag("multicast_discovery", "astparam s discovery_enable 1;", "astparam s discovery_enable 0;",
         pause_when_sent(1)),
    flag("igmp_v3_enable", "astparam s lan1_igmp_v3 1;", "astparam s lan1_igmp_v3 0;"),
};
static_assert(well_formed(lan1_members));

// --- The second port -----------------------------------------------------------------------------

static constexpr Member lan2_members[] = {
    flag("enable", mcu("lan2port,on"), mcu("lan2port,off")),
    flag("multicast_traffic", mcu("multicasttraffic,on"), mcu("multicasttraffic,off")),
    flag("poe_passthrough", mcu("lan2poepass,on"), mcu("lan2poepass,off")),
    number("port_vlan_id", "astparam s vlan2ID %d"),
    number_list("tagged_vlans", "astparam s vlan2Tag %s > /dev/null 2>&1"),
    number_list("untagged_vlans", "astparam s vlan2Untag %s > /dev/null 2>&1"),
};
static_assert(well_formed(lan2_members));

// --- The service networks ------------------------------------------------------------------------

// The lines of one service network.
struct ServiceLines {
    Line lan1_tagged;
    Line lan1_untagged;
    Line lan2_tagged;
    Line lan2_untagged;
    Line own_vlan;
    Line no_vlan;
    Line vlan_id;
    Line ttl;
    Line dscp;
    Line lan_port;
    Line ip_dhcp;
    Line ip_static;
    Line ip_address;
    Line subnet;
    Line gateway;
    const char* address_displaced_by;  // the object of the section that sets this address instead
};

struct ServiceMembers {
    Member rows[11];
};

static constexpr Word lan_port_words[] = {
    {"lan 1", 1}, {"lan1", 1}, {"lan 2", 2}, {"lan2", 2}, {"lan 1 + lan 2", 0}, {"lan1 + lan2", 0},
};

static constexpr ServiceMembers service_members(const ServiceLines& lines) {
    const char* const other = lines.address_displaced_by;
    return {{
        begins_with("lan_1", "tagged", lines.lan1_tagged, lines.lan1_untagged),
        begins_with("lan_2", "tagged", lines.lan2_tagged, lines.lan2_untagged),
        flag("enable", lines.own_vlan, lines.no_vlan),
        number("vlan_id", lines.vlan_id),
        number("ttl", lines.ttl),
        number("dscp", lines.dscp),
        choice("lan_port", lan_port_words, lines.lan_port),
        displaced(other, not_empty(begins_with("ip_mode", "dhcp", lines.ip_dhcp, lines.ip_static,
                                               pause_when_sent(1)))),
        displaced(other, tested_text("ip_address", is_valid_ipv4_address, lines.ip_address,
                                     pause_when_sent(1))),
        displaced(other, text("subnet", lines.subnet)),
        displaced(other, text("gateway", lines.gateway)),
    }};
}

// The stream network has the unit's own address, which "lan1" sets where the document has it.
static constexpr ServiceMembers stream_members = service_members({
    .lan1_tagged = "astparam s lan1stream 1;",
    .lan1_untagged = "astparam s lan1stream 0;",
    .lan2_tagged = "astparam s lan2stream 1;",
    .lan2_untagged = "astparam s lan2stream 0;",
    .own_vlan = "astparam s streamVlanMode y;",
    .no_vlan = "astparam s streamVlanMode n;",
    .vlan_id = "astparam s streamVlanID %d;",
    .ttl = "astparam s streamVlanTTL %d;",
    .dscp = "astparam s streamVlanDSCP %d;",
    .lan_port = "astparam s streamLanPort %d;",
    .ip_dhcp = "astparam s ip_mode dhcp;",
    .ip_static = "astparam s ip_mode static;",
    .ip_address = "astparam s ipaddr %s;",
    .subnet = "astparam s netmask %s;",
    .gateway = "astparam s gatewayip %s;",
    .address_displaced_by = "lan1",
});
static_assert(well_formed(stream_members.rows));

static constexpr ServiceMembers control_members = service_members({
    .lan1_tagged = "astparam s lan1control 1;",
    .lan1_untagged = "astparam s lan1control 0;",
    .lan2_tagged = "astparam s lan2control 1;",
    .lan2_untagged = "astparam s lan2control 0;",
    .own_vlan = "astparam s controlVlanMode y;",
    .no_vlan = "astparam s controlVlanMode n;",
    .vlan_id = "astparam s controlVlanID %d;",
    .ttl = "astparam s controlVlanTTL %d;",
    .dscp = "astparam s controlVlanDSCP %d;",
    .lan_port = "astparam s controlLanPort %d;",
    .ip_dhcp = "astparam s control_ip_Mode dhcp;",
    .ip_static = "astparam s control_ip_Mode static;",
    .ip_address = "astparam s control_ipaddr %s;",
    .subnet = "astparam s control_netmask %s;",
    .gateway = "astparam s control_gatewayip %s;",
    .address_displaced_by = nullptr,
});
static_assert(well_formed(control_members.rows));

static constexpr ServiceMembers dante_members = service_members({
    .lan1_tagged = "astparam s lan1dante 1;",
    .lan1_untagged = "astparam s lan1dante 0;",
    .lan2_tagged = "astparam s lan2dante 1;",
    .lan2_untagged = "astparam s lan2dante 0;",
    .own_vlan = "astparam s danteVlanMode y;",
    .no_vlan = "astparam s danteVlanMode n;",
    .vlan_id = "astparam s danteVlanID %d;",
    .ttl = "astparam s danteVlanTTL %d;",
    .dscp = "astparam s danteVlanDSCP %d;",
    .lan_port = "astparam s danteLanPort %d;",
    .ip_dhcp = "astparam s dante_ip_Mode dhcp;",
    .ip_static = "astparam s dante_ip_Mode static;",
    .ip_address = "astparam s dante_ipaddr %s;",
    .subnet = "astparam s dante_netmask %s;",
    .gateway = "astparam s dante_gatewayip %s;",
    .address_displaced_by = nullptr,
});
static_assert(well_formed(dante_members.rows));

static bool apply_memberships(const Section& /*section*/, const cJSON* services_settings) {
    return merge_vlan_memberships(services_settings);
}

static constexpr Member service_network_members[] = {
    object("stream", stream_members.rows),
    object("control", control_members.rows),
    object("dante_aes67", dante_members.rows),
};
static_assert(well_formed(service_network_members));

// --- The section ---------------------------------------------------------------------------------

// The member lists are merged once all services are set, from what the store then holds.
static constexpr Member network_members[] = {
    object("lan1", lan1_members),
    object("lan2", lan2_members),
    object("services_settings", service_network_members),
    handled("services_settings", JsonType::object, apply_memberships, pause_when_sent(1)),
};
static_assert(well_formed(network_members));

const SectionTable network_table = {"network", every_model, network_members};

// No setting depends on a present one: every member that is there is applied. Taking the present
// values is part of what the unit sees.
void apply_network_section(const cJSON* section) {
    apply_members_with_snapshot(section, network_members);
}
