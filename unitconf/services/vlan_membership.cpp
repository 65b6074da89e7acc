#include "unitconf/services/vlan_membership.h"

#include <cstdio>
#include <cstdlib>
#include <cstring>

#include "device/lines.h"
#include "unitconf/members.h"
#include "unitconf/numbers.h"

// One network port: its number in a service's port choice, its key in a service of the document,
// and the lines of its port VLAN ID and member lists.
struct LanPort {
    char number;
    const char* document_key;
    const char* set_id;
    const char* set_untagged;
    const char* set_tagged;
};

static constexpr LanPort ports[lan_ports] = {
    {'1', "lan_1", "astparam s vlan1ID %d", "astparam s vlan1Untag %s", "astparam s vlan1Tag %s"},
    {'2', "lan_2", "astparam s vlan2ID %d", "astparam s vlan2Untag %s", "astparam s vlan2Tag %s"},
};

// --- One list ------------------------------------------------------------------------------------

static bool wants(const ServiceVlan& service, size_t port, Membership kind) {
    const char choice = service.lan_port[0];
    return service.mode[0] == 'y' && (choice == '0' || choice == ports[port].number) &&
           service.membership[port][0] == static_cast<char>(kind);
}

// The VLANs that leave a list, by number: a stored "007" is VLAN 7.
struct LeavingVlans {
    int ids[service_networks];
    size_t count;
};

static bool leaves(const LeavingVlans& leaving, const char* entry) {
    const int id = decimal_value(entry);
    for (size_t i = 0; i < leaving.count; i++) {
        if (leaving.ids[i] == id) {
            return true;
        }
    }
    return false;
}

// Takes the empty entries and the leaving VLANs out of a list, in one pass and in place: what stays
// never reaches beyond where it was read.
static void prune(char* list, const LeavingVlans& leaving) {
    char* end = list;
    const char* entry = list;
    while (*entry != '\0') {
        const size_t length = strcspn(entry, ",");
        const char* next = entry + length + (entry[length] == ',' ? 1 : 0);
        if (length > 0 && !leaves(leaving, entry)) {
            if (end != list) {
                *end++ = ',';
            }
            memmove(end, entry, length);
            end += length;
        }
        entry = next;
    }
    *end = '\0';
}

char* merged_member_list(const ServiceVlan (&services)[service_networks], size_t port,
                         Membership kind, const char* present) {
    const size_t present_size = strlen(present) + 1;
    size_t wanted_size = 0;
    for (const ServiceVlan& service : services) {
        wanted_size += strlen(service.id) + 1;
    }
    char* list = static_cast<char*>(malloc(wanted_size + present_size));
    if (list == nullptr) {
        return nullptr;
    }
    char* end = list;
    LeavingVlans leaving = {};
    for (const ServiceVlan& service : services) {
        if (wants(service, port, kind)) {
            end = stpcpy(end, service.id);
            *end++ = ',';
        } else {
            leaving.ids[leaving.count++] = decimal_value(service.id);
        }
    }
    memcpy(end, present, present_size);
    prune(list, leaving);
    return list;
}

// --- Both ports ----------------------------------------------------------------------------------

// The services in the order in which their IDs enter a list.
enum ServiceIndex : size_t { stream, dante, control };

struct StoredVlans {
    ServiceVlan services[service_networks];
    char tagged[lan_ports][output_text_size];
    char untagged[lan_ports][output_text_size];
};

// A value that the store does not have stays empty: `stored` is cleared by the caller.
static void read_stored_vlans(StoredVlans* stored) {
    ServiceVlan* const services = stored->services;
    const struct {
        const char* command;
        char* value;
    } reads[] = {
        {"astparam g vlan1Tag", stored->tagged[0]},
        {"astparam g vlan2Tag", stored->tagged[1]},
        {"astparam g streamLanPort", services[stream].lan_port},
        {"astparam g danteLanPort", services[dante].lan_port},
        {"astparam g controlLanPort", services[control].lan_port},
        {"astparam g streamVlanID", services[stream].id},
        {"astparam g danteVlanID", services[dante].id},
        {"astparam g controlVlanID", services[control].id},
        {"astparam g streamVlanMode", services[stream].mode},
        {"astparam g danteVlanMode", services[dante].mode},
        {"astparam g controlVlanMode", services[control].mode},
        {"astparam g lan1stream", services[stream].membership[0]},
        {"astparam g lan2stream", services[stream].membership[1]},
        {"astparam g lan1control", services[control].membership[0]},
        {"astparam g lan2control", services[control].membership[1]},
        {"astparam g lan1dante", services[dante].membership[0]},
        {"astparam g lan2dante", services[dante].membership[1]},
        {"astparam g vlan1Untag", stored->untagged[0]},
        {"astparam g vlan2Untag", stored->untagged[1]},
    };
    for (const auto& read : reads) {
        read_command_output(read.command, read.value);
    }
}

struct PortLists {
    char* untagged;
    char* tagged;
};

static void store_port_vlan_id(const LanPort& port, int id) {
    char digits[16];
    snprintf(digits, sizeof digits, "%d", id);
    send_filled_line(Channel::shell, port.set_id, digits);
}

// A port takes the VLAN of a service that the document enables and makes untagged there, whatever
// port the service is sent through.
static void follow_untagged_service(const cJSON* service) {
    const cJSON* id = find_member(service, "vlan_id");
    if (!cJSON_IsTrue(find_member(service, "enable", Case::exact)) || !cJSON_IsNumber(id)) {
        return;
    }
    for (const LanPort& port : ports) {
        const char* membership = nonempty_text(find_member(service, port.document_key));
        if (membership != nullptr && strncmp(membership, "untagged", strlen("untagged")) == 0) {
            store_port_vlan_id(port, id->valueint);
        }
    }
}

static void store_member_lists(const PortLists (&lists)[lan_ports],
                               const cJSON* services_settings) {
    static constexpr const char* document_services[] = {"stream", "control", "dante_aes67"};
    for (size_t i = 0; i < lan_ports; i++) {
        if (lists[i].untagged[0] == '\0') {
            store_port_vlan_id(ports[i], 1);
        }
    }
    for (const char* service : document_services) {
        follow_untagged_service(find_member(services_settings, service));
    }
    for (size_t i = 0; i < lan_ports; i++) {
        const char* untagged = lists[i].untagged[0] == '\0' ? "1" : lists[i].untagged;
        send_filled_line(Channel::shell, ports[i].set_untagged, untagged);
        if (lists[i].tagged[0] != '\0') {
            send_filled_line(Channel::shell, ports[i].set_tagged, lists[i].tagged);
        }
    }
}

bool merge_vlan_memberships(const cJSON* services_settings) {
    if (!cJSON_IsObject(services_settings)) {
        return false;
    }
    StoredVlans stored = {};
    read_stored_vlans(&stored);
    PortLists lists[lan_ports];
    bool complete = true;
    for (size_t i = 0; i < lan_ports; i++) {
        lists[i].untagged =
            merged_member_list(stored.services, i, Membership::untagged, stored.untagged[i]);
        lists[i].tagged =
            merged_member_list(stored.services, i, Membership::tagged, stored.tagged[i]);
        complete = complete && lists[i].untagged != nullptr && lists[i].tagged != nullptr;
    }
    // Some lists without the others would leave a port in VLANs that nobody asked for.
    if (complete) {
        store_member_lists(lists, services_settings);
    }
    for (const PortLists& port : lists) {
        free(port.untagged);
        free(port.tagged);
    }
    return complete;
}
