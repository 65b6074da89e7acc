// Which VLANs each network port is a member of, tagged or untagged, as far as the service networks
// decide it.
#pragma once

#include <cjson/cJSON.h>

#include <cstddef>

#include "device/unit.h"

// How a port is a member of a VLAN, as a service's membership value writes it.
enum class Membership : char { untagged = '0', tagged = '1' };

inline constexpr size_t lan_ports = 2;
inline constexpr size_t service_networks = 3;

// The VLAN settings of one service network, each the text that the store holds; of all but the ID
// only the first character counts. An empty text is a value that the store does not have.
struct ServiceVlan {
    char mode[output_text_size];                   // "y": the service has its own VLAN
    char lan_port[output_text_size];               // "0" both ports, "1" the first, "2" the second
    char id[output_text_size];                     // the VLAN's ID in decimal
    char membership[lan_ports][output_text_size];  // "1" tagged, "0" untagged
};

// The member list of one port (0 or 1) and one kind, from the list that the store holds now (IDs
// separated by ",", any number of them) and the services in the order in which their IDs are put in
// front of it. The IDs of the services that do not want this membership leave the list: every entry
// of the same number does, also one that another service has put there. Empty entries leave it too;
// the others keep their text and order, repeated ones included. A service without a readable ID has
// the number 0. Allocated, freed by the caller; null when memory runs out.
char* merged_member_list(const ServiceVlan (&services)[service_networks], size_t port,
                         Membership kind, const char* present);

// Brings the tagged and untagged VLAN lists of both ports in line with the service networks, from
// what the store holds once those are set; of a list beyond 1023 bytes only the end is read, as of
// any value. A port without an untagged VLAN gets VLAN 1, and the port VLAN IDs follow the services
// of the document that are enabled and untagged on the port, the last one winning.
// `services_settings` is the document's object of that name. False, with nothing read, when it is
// anything else, and false, with nothing written, when memory runs out.
bool merge_vlan_memberships(const cJSON* services_settings);
