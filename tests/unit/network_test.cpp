#include <gtest/gtest.h>

#include <string>
#include <vector>

#include "tests/support/applying.h"
#include "tests/support/recorder.h"
#include "unitconf/sections.h"
#include "unitconf/tables.h"

namespace {

// What is read before the VLAN member lists are merged.
const std::string merge_reads =
    "read astparam g vlan1Tag\n"
    "read astparam g vlan2Tag\n"
    "read astparam g streamLanPort\n"
    "read astparam g danteLanPort\n"
    "read astparam g controlLanPort\n"
    "read astparam g streamVlanID\n"
    "read astparam g danteVlanID\n"
    "read astparam g controlVlanID\n"
    "read astparam g streamVlanMode\n"
    "read astparam g danteVlanMode\n"
    "read astparam g controlVlanMode\n"
    "read astparam g lan1stream\n"
    "read astparam g lan2stream\n"
    "read astparam g lan1control\n"
    "read astparam g lan2control\n"
    "read astparam g lan1dante\n"
    "read astparam g lan2dante\n"
    "read astparam g vlan1Untag\n"
    "read astparam g vlan2Untag\n";

// The merge on a unit whose store holds none of these values.
const std::string empty_merge = merge_reads +
                                "shell astparam s vlan1ID 1\n"
                                "shell astparam s vlan2ID 1\n"
                                "shell astparam s vlan1Untag 1\n"
                                "shell astparam s vlan2Untag 1\n"
                                "pause 1\n";

const char* const wrong_objects[] = {"[]", "true", "false", "null", "3", "\"x\"", "[{\"a\":1}]"};

std::string trace_of_section(const std::string& json) {
    return trace_of(apply_network_section, json);
}

// What the member of one port sends.
std::string lan1(const std::string& members) {
    reset_recorder();
    return trace_of_section("{\"lan1\":{" + members + "}}");
}

std::string lan2(const std::string& members) {
    reset_recorder();
    return trace_of_section("{\"lan2\":{" + members + "}}");
}

// What one service network sends, on a unit without stored values.
std::string service(const std::string& name, const std::string& members) {
    reset_recorder();
    return trace_of_section("{\"services_settings\":{\"" + name + "\":{" + members + "}}}");
}

// The trace of a section that sends these lines, and of one whose services send them.
std::string sends(const std::string& lines) {
    return snapshot_trace + lines;
}

std::string sends_and_merges(const std::string& lines) {
    return snapshot_trace + lines + empty_merge;
}

// --- The section as a whole
// ----------------------------------------------------------------------------

TEST(NetworkSection, TakesASnapshotWhateverItHolds) {
    for (const std::string section : {"{}", "[]", "true", "false", "null", "3", "\"x\"", "[{}]"}) {
        reset_recorder();
        EXPECT_EQ(trace_of_section(section), snapshot_trace) << section;
    }
}

TEST(NetworkSection, SendsNothingForEmptyAndWronglyTypedParts) {
    for (const std::string part : {"lan1", "lan2"}) {
        reset_recorder();
        EXPECT_EQ(trace_of_section("{\"" + part + "\":{}}"), snapshot_trace) << part;
    }
    for (const std::string part : {"lan1", "lan2", "services_settings"}) {
        for (const std::string value : wrong_objects) {
            reset_recorder();
            EXPECT_EQ(trace_of_section("{\"" + part + "\":" + value + "}"), snapshot_trace)
                << part << " " << value;
        }
    }
}

TEST(NetworkSection, AppliesSettingsThatTheUnitAlreadyHas) {
    reset_recorder();
    set_lm_value("IP_MODE", "dhcp");
    EXPECT_EQ(trace_of_section(R"({"lan1":{"ip_mode":"dhcp"}})"),
              sends("shell astparam s ip_mode dhcp;lmparam s IP_MODE dhcp;\npause 1\n"));
}

TEST(NetworkSection, AppliesAWholeDocumentInTheUnitsOrder) {
    reset_recorder();
    answer_command("astparam g deviceName", "Lectern");
    answer_command("astparam g device_name_sync_enable", "111111");
    answer_command("astparam g vlan1Tag", "50,60");
    answer_command("astparam g vlan1Untag", "5");
    answer_command("astparam g vlan2Tag", "50");
    answer_command("astparam g vlan2Untag", "40");
    answer_command("astparam g streamLanPort", "1");
    answer_command("astparam g streamVlanID", "20");
    answer_command("astparam g streamVlanMode", "y");
    answer_command("astparam g lan1stream", "1");
    answer_command("astparam g lan2stream", "1");
    answer_command("astparam g controlLanPort", "0");
    answer_command("astparam g controlVlanID", "10");
    answer_command("astparam g controlVlanMode", "y");
    answer_command("astparam g lan1control", "1");
    answer_command("astparam g lan2control", "1");
    answer_command("astparam g danteLanPort", "2");
    answer_command("astparam g danteVlanID", "30");
    answer_command("astparam g danteVlanMode", "y");
    answer_command("astparam g lan1dante", "1");
    answer_command("astparam g lan2dante", "0");
    // The keys stand in another order than the unit's.
    EXPECT_EQ(trace_of_section(R"({
        "services_settings": {
            "dante_aes67": {
                "gateway": "10.20.30.1", "subnet": "255.255.255.0", "ip_address": "10.20.30.11",
                "ip_mode": "static", "lan_port": "lan 2", "dscp": 46, "ttl": 16, "vlan_id": 30,
                "enable": true, "lan_2": "untagged", "lan_1": "tagged"
            },
            "control": {
                "gateway": "10.20.10.1", "subnet": "255.255.255.0", "ip_address": "10.20.10.11",
                "ip_mode": "dhcp", "lan_port": "lan 1 + lan 2", "dscp": 16, "ttl": 64,
                "vlan_id": 10, "enable": true, "lan_2": "tagged", "lan_1": "tagged"
            },
            "stream": {
                "gateway": "10.20.20.1", "subnet": "255.255.255.0", "ip_address": "10.20.20.11",
                "ip_mode": "static", "lan_port": "lan 1", "dscp": 34, "ttl": 16, "vlan_id": 20,
                "enable": true, "lan_2": "tagged", "lan_1": "tagged"
            }
        },
        "lan2": {
            "untagged_vlans": [40], "tagged_vlans": [50], "port_vlan_id": 40,
            "poe_passthrough": false, "multicast_traffic": false, "enable": true
        },
        "lan1": {
            "igmp_v3_enable": true, "multicast_discovery": true, "discovery_send_interval": 30,
            "untagged_vlans": [5], "tagged_vlans": [50, 60], "port_vlan_id": 5,
            "hostname": "hall1-lectern", "use_device_name": false, "dns2": "10.20.10.3",
            "dns1": "10.20.10.2", "gateway": "10.20.20.1", "subnet": "255.255.255.0",
            "ip_address": "10.20.20.11", "ip_mode": "static"
        }})"),
              snapshot_trace +
                  "shell astparam s ip_mode static;lmparam s IP_MODE static;\n"
                  "pause 1\n"
                  "shell astparam s ipaddr 10.20.20.11;lmparam s IPADDR 10.20.20.11;\n"
                  "pause 1\n"
                  "shell astparam s netmask 255.255.255.0;lmparam s NETMASK 255.255.255.0;\n"
                  "pause 1\n"
                  "shell astparam s gatewayip 10.20.20.1;lmparam s gatewayip 10.20.20.1;\n"
                  "pause 1\n"
                  "shell astparam s static_dns_ip1 10.20.10.2;lmparam s STATIC_DNS_IP1 10.20.10.2;"
                  "lmparam s DNS_IP1 10.20.10.2;\n"
                  "pause 1\n"
                  "shell astparam s static_dns_ip2 10.20.10.3;lmparam s STATIC_DNS_IP2 10.20.10.3;"
                  "lmparam s DNS_IP2 10.20.10.3;\n"
                  "pause 1\n"
                  "read astparam g device_name_sync_enable\n"
                  "shell astparam s device_name_sync_enable 110111;\n"
                  "read astparam g deviceName\n"
                  "shell astparam s hostname_tx_middle hall1-lectern;\n"
                  "pause 1\n"
                  "shell astparam s vlan1ID 5\n"
                  "shell astparam s vlan1Tag \"50,60\" > /dev/null 2>&1\n"
                  "pause 1\n"
                  "shell astparam s vlan1Untag 5 > /dev/null 2>&1\n"
                  "pause 1\n"
                  "shell astparam s discovery_inter 30;\n"
                  "shell astparam s discovery_enable 1;\n"
                  "pause 1\n"
                  "shell astparam s lan1_igmp_v3 1;\n"
                  "mcu lan2port,on\n"
                  "mcu multicasttraffic,off\n"
                  "mcu lan2poepass,off\n"
                  "shell astparam s vlan2ID 40\n"
                  "shell astparam s vlan2Tag 50 > /dev/null 2>&1\n"
                  "shell astparam s vlan2Untag 40 > /dev/null 2>&1\n"
                  "shell astparam s lan1stream 1;\n"
                  "shell astparam s lan2stream 1;\n"
                  "shell astparam s streamVlanMode y;\n"
                  "shell astparam s streamVlanID 20;\n"
                  "shell astparam s streamVlanTTL 16;\n"
                  "shell astparam s streamVlanDSCP 34;\n"
                  "shell astparam s streamLanPort 1;\n"
                  "shell astparam s lan1control 1;\n"
                  "shell astparam s lan2control 1;\n"
                  "shell astparam s controlVlanMode y;\n"
                  "shell astparam s controlVlanID 10;\n"
                  "shell astparam s controlVlanTTL 64;\n"
                  "shell astparam s controlVlanDSCP 16;\n"
                  "shell astparam s controlLanPort 0;\n"
                  "shell astparam s control_ip_Mode dhcp;\n"
                  "pause 1\n"
                  "shell astparam s control_ipaddr 10.20.10.11;\n"
                  "pause 1\n"
                  "shell astparam s control_netmask 255.255.255.0;\n"
                  "shell astparam s control_gatewayip 10.20.10.1;\n"
                  "shell astparam s lan1dante 1;\n"
                  "shell astparam s lan2dante 0;\n"
                  "shell astparam s danteVlanMode y;\n"
                  "shell astparam s danteVlanID 30;\n"
                  "shell astparam s danteVlanTTL 16;\n"
                  "shell astparam s danteVlanDSCP 46;\n"
                  "shell astparam s danteLanPort 2;\n"
                  "shell astparam s dante_ip_Mode static;\n"
                  "pause 1\n"
                  "shell astparam s dante_ipaddr 10.20.30.11;\n"
                  "pause 1\n"
                  "shell astparam s dante_netmask 255.255.255.0;\n"
                  "shell astparam s dante_gatewayip 10.20.30.1;\n" +
                  merge_reads +
                  "shell astparam s vlan2ID 30\n"
                  "shell astparam s vlan1Untag 5\n"
                  "shell astparam s vlan1Tag 20,10,50,60\n"
                  "shell astparam s vlan2Untag 30,40\n"
                  "shell astparam s vlan2Tag 10,50\n"
                  "pause 1\n");
}

TEST(NetworkSection, WithOnlyTheSecondPortMergesNothing) {
    EXPECT_EQ(lan2(R"("enable":true,"port_vlan_id":40,"tagged_vlans":[50],"untagged_vlans":[40])"),
              sends("mcu lan2port,on\n"
                    "shell astparam s vlan2ID 40\n"
                    "shell astparam s vlan2Tag 50 > /dev/null 2>&1\n"
                    "shell astparam s vlan2Untag 40 > /dev/null 2>&1\n"));
}

TEST(NetworkSection, IsServedOnEveryModel) {
    EXPECT_STREQ(network_table.section, "network");
    EXPECT_EQ(network_table.models, static_cast<unsigned>(every_model));
}

// --- Every member with every type
// ----------------------------------------------------------------------

struct MemberCase {
    const char* key;
    JsonType type;      // the type it takes
    bool exact_case;    // whether the key is looked up by exact case
    const char* value;  // a value it takes
    std::string lines;  // what that sends
};

// A value of each JSON type that no member takes for a reason other than its type.
struct TypedValue {
    JsonType type;
    const char* value;
};

const TypedValue typed_values[] = {
    {JsonType::boolean, "true"}, {JsonType::boolean, "false"},
    {JsonType::number, "5"},     {JsonType::string, "\"10.0.0.1\""},
    {JsonType::array, "[1]"},    {JsonType::object, "{\"a\":1}"},
    {JsonType::none, "null"},
};

const MemberCase lan1_cases[] = {
    {"ip_mode", JsonType::string, false, "\"static\"",
     "shell astparam s ip_mode static;lmparam s IP_MODE static;\npause 1\n"},
    {"ip_address", JsonType::string, false, "\"10.0.0.2\"",
     "shell astparam s ipaddr 10.0.0.2;lmparam s IPADDR 10.0.0.2;\npause 1\n"},
    {"subnet", JsonType::string, false, "\"255.0.0.0\"",
     "shell astparam s netmask 255.0.0.0;lmparam s NETMASK 255.0.0.0;\npause 1\n"},
    {"gateway", JsonType::string, false, "\"10.0.0.1\"",
     "shell astparam s gatewayip 10.0.0.1;lmparam s gatewayip 10.0.0.1;\npause 1\n"},
    {"dns1", JsonType::string, false, "\"8.8.8.8\"",
     "shell astparam s static_dns_ip1 8.8.8.8;lmparam s STATIC_DNS_IP1 8.8.8.8;"
     "lmparam s DNS_IP1 8.8.8.8;\npause 1\n"},
    {"dns2", JsonType::string, false, "\"8.8.4.4\"",
     "shell astparam s static_dns_ip2 8.8.4.4;lmparam s STATIC_DNS_IP2 8.8.4.4;"
     "lmparam s DNS_IP2 8.8.4.4;\npause 1\n"},
    {"use_device_name", JsonType::boolean, true, "true",
     "read astparam g device_name_sync_enable\nshell astparam s device_name_sync_enable ;\n"},
    {"hostname", JsonType::string, false, "\"room\"",
     "read astparam g deviceName\nshell astparam s hostname_tx_middle room;\npause 1\n"},
    {"port_vlan_id", JsonType::number, false, "5", "shell astparam s vlan1ID 5\n"},
    {"tagged_vlans", JsonType::array, false, "[1,2]",
     "shell astparam s vlan1Tag \"1,2\" > /dev/null 2>&1\npause 1\n"},
    {"untagged_vlans", JsonType::array, false, "[1,2]",
     "shell astparam s vlan1Untag 1,2 > /dev/null 2>&1\npause 1\n"},
    {"discovery_send_interval", JsonType::number, false, "30",
     "shell astparam s discovery_inter 30;\n"},
    {"multicast_discovery", JsonType::boolean, true, "true",
     "shell astparam s discovery_enable 1;\npause 1\n"},
    {"igmp_v3_enable", JsonType::boolean, true, "true", "shell astparam s lan1_igmp_v3 1;\n"},
};

const MemberCase lan2_cases[] = {
    {"enable", JsonType::boolean, true, "true", "mcu lan2port,on\n"},
    {"multicast_traffic", JsonType::boolean, true, "true", "mcu multicasttraffic,on\n"},
    {"poe_passthrough", JsonType::boolean, true, "true", "mcu lan2poepass,on\n"},
    {"port_vlan_id", JsonType::number, false, "40", "shell astparam s vlan2ID 40\n"},
    {"tagged_vlans", JsonType::array, false, "[1,2]",
     "shell astparam s vlan2Tag 1,2 > /dev/null 2>&1\n"},
    {"untagged_vlans", JsonType::array, false, "[1,2]",
     "shell astparam s vlan2Untag 1,2 > /dev/null 2>&1\n"},
};

const MemberCase stream_cases[] = {
    {"lan_1", JsonType::string, false, "\"tagged\"", "shell astparam s lan1stream 1;\n"},
    {"lan_2", JsonType::string, false, "\"tagged\"", "shell astparam s lan2stream 1;\n"},
    {"enable", JsonType::boolean, true, "true", "shell astparam s streamVlanMode y;\n"},
    {"vlan_id", JsonType::number, false, "20", "shell astparam s streamVlanID 20;\n"},
    {"ttl", JsonType::number, false, "16", "shell astparam s streamVlanTTL 16;\n"},
    {"dscp", JsonType::number, false, "34", "shell astparam s streamVlanDSCP 34;\n"},
    {"lan_port", JsonType::number_or_string, false, "\"lan 1\"",
     "shell astparam s streamLanPort 1;\n"},
    {"ip_mode", JsonType::string, false, "\"static\"",
     "shell astparam s ip_mode static;\npause 1\n"},
    {"ip_address", JsonType::string, false, "\"10.0.0.2\"",
     "shell astparam s ipaddr 10.0.0.2;\npause 1\n"},
    {"subnet", JsonType::string, false, "\"255.0.0.0\"", "shell astparam s netmask 255.0.0.0;\n"},
    {"gateway", JsonType::string, false, "\"10.0.0.1\"", "shell astparam s gatewayip 10.0.0.1;\n"},
};

const MemberCase control_cases[] = {
    {"lan_1", JsonType::string, false, "\"tagged\"", "shell astparam s lan1control 1;\n"},
    {"lan_2", JsonType::string, false, "\"tagged\"", "shell astparam s lan2control 1;\n"},
    {"enable", JsonType::boolean, true, "true", "shell astparam s controlVlanMode y;\n"},
    {"vlan_id", JsonType::number, false, "10", "shell astparam s controlVlanID 10;\n"},
    {"ttl", JsonType::number, false, "64", "shell astparam s controlVlanTTL 64;\n"},
    {"dscp", JsonType::number, false, "16", "shell astparam s controlVlanDSCP 16;\n"},
    {"lan_port", JsonType::number_or_string, false, "\"lan 1\"",
     "shell astparam s controlLanPort 1;\n"},
    {"ip_mode", JsonType::string, false, "\"static\"",
     "shell astparam s control_ip_Mode static;\npause 1\n"},
    {"ip_address", JsonType::string, false, "\"10.0.0.2\"",
     "shell astparam s control_ipaddr 10.0.0.2;\npause 1\n"},
    {"subnet", JsonType::string, false, "\"255.0.0.0\"",
     "shell astparam s control_netmask 255.0.0.0;\n"},
    {"gateway", JsonType::string, false, "\"10.0.0.1\"",
     "shell astparam s control_gatewayip 10.0.0.1;\n"},
};

const MemberCase dante_cases[] = {
    {"lan_1", JsonType::string, false, "\"tagged\"", "shell astparam s lan1dante 1;\n"},
    {"lan_2", JsonType::string, false, "\"tagged\"", "shell astparam s lan2dante 1;\n"},
    {"enable", JsonType::boolean, true, "true", "shell astparam s danteVlanMode y;\n"},
    {"vlan_id", JsonType::number, false, "30", "shell astparam s danteVlanID 30;\n"},
    {"ttl", JsonType::number, false, "16", "shell astparam s danteVlanTTL 16;\n"},
    {"dscp", JsonType::number, false, "46", "shell astparam s danteVlanDSCP 46;\n"},
    {"lan_port", JsonType::number_or_string, false, "\"lan 1\"",
     "shell astparam s danteLanPort 1;\n"},
    {"ip_mode", JsonType::string, false, "\"static\"",
     "shell astparam s dante_ip_Mode static;\npause 1\n"},
    {"ip_address", JsonType::string, false, "\"10.0.0.2\"",
     "shell astparam s dante_ipaddr 10.0.0.2;\npause 1\n"},
    {"subnet", JsonType::string, false, "\"255.0.0.0\"",
     "shell astparam s dante_netmask 255.0.0.0;\n"},
    {"gateway", JsonType::string, false, "\"10.0.0.1\"",
     "shell astparam s dante_gatewayip 10.0.0.1;\n"},
};

struct PartCases {
    const char* before;  // what stands before and behind the member in the document
    const char* behind;
    const MemberCase* cases;
    size_t count;
    std::string then;  // what follows whatever the member sends

    template <size_t case_count>
    PartCases(const char* opening, const char* closing, const MemberCase (&members)[case_count],
              std::string always)
        : before(opening),
          behind(closing),
          cases(members),
          count(case_count),
          then(std::move(always)) {}
};

const PartCases parts[] = {
    {R"({"lan1":{)", "}}", lan1_cases, ""},
    {R"({"lan2":{)", "}}", lan2_cases, ""},
    {R"({"services_settings":{"stream":{)", "}}}", stream_cases, empty_merge},
    {R"({"services_settings":{"control":{)", "}}}", control_cases, empty_merge},
    {R"({"services_settings":{"dante_aes67":{)", "}}}", dante_cases, empty_merge},
};

std::string with_other_case(std::string key) {
    key[0] = static_cast<char>(key[0] - 'a' + 'A');
    return key;
}

bool takes(JsonType wanted, JsonType given) {
    return wanted == given || (wanted == JsonType::number_or_string &&
                               (given == JsonType::number || given == JsonType::string));
}

TEST(NetworkMembers, EachSendsItsLineAndPause) {
    for (const PartCases& part : parts) {
        for (size_t i = 0; i < part.count; i++) {
            const MemberCase& member = part.cases[i];
            const std::string document =
                std::string(part.before) + "\"" + member.key + "\":" + member.value + part.behind;
            reset_recorder();
            EXPECT_EQ(trace_of_section(document), snapshot_trace + member.lines + part.then)
                << document;
        }
    }
}

TEST(NetworkMembers, OnlyBooleansNeedTheirExactKey) {
    for (const PartCases& part : parts) {
        for (size_t i = 0; i < part.count; i++) {
            const MemberCase& member = part.cases[i];
            const std::string document = std::string(part.before) + "\"" +
                                         with_other_case(member.key) + "\":" + member.value +
                                         part.behind;
            reset_recorder();
            EXPECT_EQ(trace_of_section(document),
                      snapshot_trace + (member.exact_case ? "" : member.lines) + part.then)
                << document;
        }
    }
}

TEST(NetworkMembers, OfAnotherTypeSendNothing) {
    for (const PartCases& part : parts) {
        for (size_t i = 0; i < part.count; i++) {
            const MemberCase& member = part.cases[i];
            for (const TypedValue& given : typed_values) {
                if (takes(member.type, given.type)) {
                    continue;
                }
                const std::string document = std::string(part.before) + "\"" + member.key +
                                             "\":" + given.value + part.behind;
                reset_recorder();
                EXPECT_EQ(trace_of_section(document), snapshot_trace + part.then) << document;
            }
        }
    }
}

TEST(NetworkMembers, EmptyTextsOfAddressingSendNothing) {
    for (const PartCases& part : parts) {
        for (const std::string key :
             {"ip_mode", "ip_address", "subnet", "gateway", "dns1", "dns2", "lan_port"}) {
            const std::string document =
                std::string(part.before) + "\"" + key + "\":\"\"" + part.behind;
            reset_recorder();
            EXPECT_EQ(trace_of_section(document), snapshot_trace + part.then) << document;
        }
    }
}

// --- The first port
// -------------------------------------------------------------------------------

TEST(FirstPort, IsOnDhcpWhenTheModeBeginsSo) {
    const std::string dhcp =
        sends("shell astparam s ip_mode dhcp;lmparam s IP_MODE dhcp;\npause 1\n");
    const std::string fixed =
        sends("shell astparam s ip_mode static;lmparam s IP_MODE static;\npause 1\n");
    EXPECT_EQ(lan1(R"("ip_mode":"dhcp")"), dhcp);
    EXPECT_EQ(lan1(R"("ip_mode":"dhcpv4")"), dhcp);
    for (const std::string mode : {"static", "DHCP", "dhc", " dhcp", "auto"}) {
        EXPECT_EQ(lan1("\"ip_mode\":\"" + mode + "\""), fixed) << mode;
    }
}

TEST(FirstPort, TakesMaskGatewayAndNameServersUnchecked) {
    EXPECT_EQ(lan1(R"("subnet":"a b","gateway":"255.255.255.255","dns1":"%s%n","dns2":"x")"),
              sends("shell astparam s netmask a b;lmparam s NETMASK a b;\n"
                    "pause 1\n"
                    "shell astparam s gatewayip 255.255.255.255;"
                    "lmparam s gatewayip 255.255.255.255;\n"
                    "pause 1\n"
                    "shell astparam s static_dns_ip1 %s%n;lmparam s STATIC_DNS_IP1 %s%n;"
                    "lmparam s DNS_IP1 %s%n;\n"
                    "pause 1\n"
                    "shell astparam s static_dns_ip2 x;lmparam s STATIC_DNS_IP2 x;"
                    "lmparam s DNS_IP2 x;\n"
                    "pause 1\n"));
}

TEST(FirstPort, SwitchesDiscoveryAndIgmpOff) {
    EXPECT_EQ(lan1(R"("igmp_v3_enable":false,"multicast_discovery":false)"),
              sends("shell astparam s discovery_enable 0;\n"
                    "pause 1\n"
                    "shell astparam s lan1_igmp_v3 0;\n"));
}

TEST(FirstPort, TakesAnyNumberHeldAtThe32BitLimits) {
    EXPECT_EQ(lan1(R"("port_vlan_id":-3,"discovery_send_interval":0)"),
              sends("shell astparam s vlan1ID -3\nshell astparam s discovery_inter 0;\n"));
    EXPECT_EQ(lan1(R"("port_vlan_id":1e99,"discovery_send_interval":-1e99)"),
              sends("shell astparam s vlan1ID 2147483647\n"
                    "shell astparam s discovery_inter -2147483648;\n"));
    EXPECT_EQ(lan1(R"("port_vlan_id":4094.9)"), sends("shell astparam s vlan1ID 4094\n"));
}

TEST(FirstPort, ClearsItsMemberListsWithEmptyArrays) {
    EXPECT_EQ(lan1(R"("tagged_vlans":[],"untagged_vlans":[])"),
              sends("shell astparam s vlan1Tag \"\" > /dev/null 2>&1\n"
                    "pause 1\n"
                    "shell astparam s vlan1Untag  > /dev/null 2>&1\n"
                    "pause 1\n"));
}

TEST(FirstPort, TakesTheNumbersOfMixedMemberLists) {
    EXPECT_EQ(lan1(R"("tagged_vlans":["1",2,null,3],"untagged_vlans":[4,"5"])"),
              sends("shell astparam s vlan1Tag \"2,3\" > /dev/null 2>&1\n"
                    "pause 1\n"
                    "shell astparam s vlan1Untag 4, > /dev/null 2>&1\n"
                    "pause 1\n"));
}

TEST(FirstPort, TakesMemberListsOfThousandsWhole) {
    std::string list;
    for (int id = 1; id <= 4094; id++) {
        list.append(id > 1 ? "," : "").append(std::to_string(id));
    }
    EXPECT_EQ(lan1("\"tagged_vlans\":[" + list + "],\"untagged_vlans\":[" + list + "]"),
              sends("shell astparam s vlan1Tag \"" + list +
                    "\" > /dev/null 2>&1\n"
                    "pause 1\n"
                    "shell astparam s vlan1Untag " +
                    list +
                    " > /dev/null 2>&1\n"
                    "pause 1\n"));
}

TEST(IpAddress, IsTakenWithinItsLimits) {
    for (const std::string address :
         {"1.0.0.1", "254.254.254.254", "192.168.1.10", "10.0.254.1",
          // As the unit has always read them: digits count, what is behind them does not.
          "010.000.000.001", "10.0.0.1x", "10.0.0.1.255", "10.0.0.1.", "10..0.0...1", ".10.0.0.1",
          "+10.0.0.1", " 10.0.0.1", "10.-0.x.1",
          // Only 63 bytes are looked at, all are stored.
          "10.0.0.1 234567890123456789012345678901234567890123456789012345678901234567890"}) {
        EXPECT_EQ(lan1("\"ip_address\":\"" + address + "\""),
                  sends("shell astparam s ipaddr " + address + ";lmparam s IPADDR " + address +
                        ";\npause 1\n"))
            << address;
    }
}

TEST(IpAddress, IsSkippedWithItsPauseOutsideItsLimits) {
    for (const std::string address : {"0.1.2.3",
                                      "192.168.1.255",
                                      "255.0.0.1",
                                      "1.255.0.1",
                                      "1.0.255.1",
                                      "1.0.0.0",
                                      "1.-1.0.1",
                                      "1.0.-1.1",
                                      "-1.0.0.1",
                                      "1.0.0.-1",
                                      "1.0.0.256",
                                      "4294967297.0.0.1",
                                      "1.4294967296.0.1",
                                      "1.0.18446744073709551616.1",
                                      "1.0.0",
                                      "1.0.0.",
                                      "1.2",
                                      "....",
                                      "1..2.3",
                                      "10",
                                      "x",
                                      "dhcp",
                                      "a.b.c.d",
                                      "1.1.1",
                                      "10,0,0,1"}) {
        EXPECT_EQ(lan1("\"ip_address\":\"" + address + "\",\"port_vlan_id\":5"),
                  sends("shell astparam s vlan1ID 5\n"))
            << address;
    }
}

TEST(IpAddress, IsCheckedInItsFirst63BytesOnly) {
    // The fourth field is byte 64; one byte earlier it is seen.
    const std::string blanks(56, ' ');
    EXPECT_EQ(lan1("\"ip_address\":\"" + blanks + "10.0.0.1\""), sends(""));
    const std::string fewer(55, ' ');
    EXPECT_EQ(lan1("\"ip_address\":\"" + fewer + "10.0.0.1\""),
              sends("shell astparam s ipaddr " + fewer + "10.0.0.1;lmparam s IPADDR " + fewer +
                    "10.0.0.1;\npause 1\n"));
}

// --- The host name and the device name
// -----------------------------------------------------------------

// What the first port sends on a unit of that device name and those name flags.
std::string host_name(const std::string& members, const std::string& device_name,
                      const std::string& flags) {
    reset_recorder();
    answer_command("astparam g deviceName", device_name);
    answer_command("astparam g device_name_sync_enable", flags);
    return trace_of_section("{\"lan1\":{" + members + "}}");
}

TEST(HostName, KeepsLettersDigitsAndDashes) {
    EXPECT_EQ(host_name(R"("hostname":"Room 4/B","use_device_name":false)", "Lectern", "111"),
              sends("read astparam g device_name_sync_enable\n"
                    "shell astparam s device_name_sync_enable 110;\n"
                    "read astparam g deviceName\n"
                    "shell astparam s hostname_tx_middle Room-4OB;\n"
                    "pause 1\n"));
    EXPECT_EQ(host_name(R"("hostname":"azAZ09-_.@`[{/:é")", "Lectern", "111"),
              sends("read astparam g deviceName\n"
                    "shell astparam s hostname_tx_middle azAZ09-OOOOOOOOOO;\n"
                    "pause 1\n"));
}

TEST(HostName, IsTheDeviceNameWhenTheUnitFollowsIt) {
    EXPECT_EQ(host_name(R"("hostname":"other","use_device_name":true)", "Hall 1", "000000"),
              sends("read astparam g device_name_sync_enable\n"
                    "shell astparam s device_name_sync_enable 001000;\n"
                    "read astparam g deviceName\n"
                    "shell astparam s hostname_tx_middle Hall-1;\n"
                    "pause 1\n"));
    EXPECT_EQ(host_name(R"("hostname":"","use_device_name":true)", "Hall 1", "000000"),
              sends("read astparam g device_name_sync_enable\n"
                    "shell astparam s device_name_sync_enable 001000;\n"
                    "read astparam g deviceName\n"
                    "shell astparam s hostname_tx_middle Hall-1;\n"
                    "pause 1\n"));
}

TEST(HostName, ThatIsEmptyRunsAnEmptyLine) {
    EXPECT_EQ(host_name(R"("hostname":"")", "Hall 1", ""),
              sends("read astparam g deviceName\nshell \npause 1\n"));
    EXPECT_EQ(host_name(R"("hostname":"other","use_device_name":true)", "", "000"),
              sends("read astparam g device_name_sync_enable\n"
                    "shell astparam s device_name_sync_enable 001;\n"
                    "read astparam g deviceName\n"
                    "shell \n"
                    "pause 1\n"));
    // A unit that has no device name stored at all.
    EXPECT_EQ(lan1(R"("hostname":"other","use_device_name":true)"),
              sends("read astparam g device_name_sync_enable\n"
                    "shell astparam s device_name_sync_enable ;\n"
                    "read astparam g deviceName\n"
                    "shell \n"
                    "pause 1\n"));
}

TEST(HostName, IsLeftAloneWithoutAText) {
    EXPECT_EQ(host_name(R"("use_device_name":true)", "Hall 1", "000"),
              sends("read astparam g device_name_sync_enable\n"
                    "shell astparam s device_name_sync_enable 001;\n"));
    for (const std::string value : {"null", "true", "5", "[]", "{}"}) {
        EXPECT_EQ(host_name("\"use_device_name\":true,\"hostname\":" + value, "Hall 1", "000"),
                  sends("read astparam g device_name_sync_enable\n"
                        "shell astparam s device_name_sync_enable 001;\n"))
            << value;
    }
}

TEST(HostName, FollowsTheDeviceNameOnlyForTheBooleanTrue) {
    for (const std::string member :
         {R"("use_device_name":1)", R"("use_device_name":"true")", R"("use_device_name":null)",
          R"("Use_Device_Name":true)", R"("x":true)"}) {
        EXPECT_EQ(host_name(member + R"(,"hostname":"other")", "Hall 1", "000"),
                  sends("read astparam g deviceName\n"
                        "shell astparam s hostname_tx_middle other;\n"
                        "pause 1\n"))
            << member;
    }
    // Only the port's own member counts.
    reset_recorder();
    answer_command("astparam g deviceName", "Hall 1");
    EXPECT_EQ(trace_of_section(R"({"use_device_name":true,"lan1":{"hostname":"other"}})"),
              sends("read astparam g deviceName\n"
                    "shell astparam s hostname_tx_middle other;\n"
                    "pause 1\n"));
}

TEST(HostName, OfAnyLengthIsStoredWhole) {
    const std::string longest_device_name(1023, 'd');
    EXPECT_EQ(host_name(R"("hostname":"x","use_device_name":true)", longest_device_name, "000"),
              sends("read astparam g device_name_sync_enable\n"
                    "shell astparam s device_name_sync_enable 001;\n"
                    "read astparam g deviceName\n"
                    "shell astparam s hostname_tx_middle " +
                    longest_device_name + ";\npause 1\n"));
    const std::string given(5000, 'h');
    EXPECT_EQ(host_name("\"hostname\":\"" + given + "\"", "", "000"),
              sends("read astparam g deviceName\nshell astparam s hostname_tx_middle " + given +
                    ";\npause 1\n"));
}

TEST(NameFlags, HaveTheirThirdCharacterReplacedWhereItStands) {
    struct Case {
        std::string present;
        std::string stored;
    };
    for (const Case& each :
         {Case{"000000", "001000"}, Case{"111111", "111111"}, Case{"000", "001"},
          // At the end of a text it lengthens it, behind the end it does not show.
          Case{"00", "001"}, Case{"0", "0"}, Case{"", ""}}) {
        EXPECT_EQ(host_name(R"("use_device_name":true)", "Hall 1", each.present),
                  sends("read astparam g device_name_sync_enable\n"
                        "shell astparam s device_name_sync_enable " +
                        each.stored + ";\n"))
            << each.present;
    }
    EXPECT_EQ(host_name(R"("use_device_name":false)", "Hall 1", "1111"),
              sends("read astparam g device_name_sync_enable\n"
                    "shell astparam s device_name_sync_enable 1101;\n"));
}

// --- The second port
// ------------------------------------------------------------------------------

TEST(SecondPort, SwitchesOffWithoutPauses) {
    EXPECT_EQ(lan2(R"("poe_passthrough":false,"multicast_traffic":false,"enable":false)"),
              sends("mcu lan2port,off\nmcu multicasttraffic,off\nmcu lan2poepass,off\n"));
    EXPECT_EQ(lan2(R"("poe_passthrough":true,"multicast_traffic":true,"enable":true)"),
              sends("mcu lan2port,on\nmcu multicasttraffic,on\nmcu lan2poepass,on\n"));
}

TEST(SecondPort, ClearsItsMemberListsWithEmptyArrays) {
    EXPECT_EQ(lan2(R"("tagged_vlans":[],"untagged_vlans":[])"),
              sends("shell astparam s vlan2Tag  > /dev/null 2>&1\n"
                    "shell astparam s vlan2Untag  > /dev/null 2>&1\n"));
    EXPECT_EQ(lan2(R"("port_vlan_id":-2147483648,"tagged_vlans":[7,{}])"),
              sends("shell astparam s vlan2ID -2147483648\n"
                    "shell astparam s vlan2Tag 7, > /dev/null 2>&1\n"));
}

// --- The service networks
// -------------------------------------------------------------------------

struct Service {
    const char* name;
    const char* stem;     // of its VLAN keys and, behind "lan1" and "lan2", of its memberships
    const char* address;  // what stands before "mask" and the like in its address keys
};

const Service services[] = {{"stream", "stream", ""},
                            {"control", "control", "control_"},
                            {"dante_aes67", "dante", "dante_"}};

TEST(ServiceNetwork, IsTaggedWhereTheTextBeginsSo) {
    struct Case {
        const char* text;
        const char* code;
    };
    for (const Service& each : services) {
        const std::string stem = each.stem;
        for (const Case& word :
             {Case{"tagged", "1"}, Case{"tagged2", "1"}, Case{"untagged", "0"}, Case{"Tagged", "0"},
              Case{"tagge", "0"}, Case{"", "0"}, Case{" tagged", "0"}, Case{"1", "0"}}) {
            const std::string text = word.text;
            EXPECT_EQ(service(each.name, "\"lan_2\":\"" + text + "\",\"lan_1\":\"" + text + "\""),
                      sends_and_merges("shell astparam s lan1" + stem + " " + word.code +
                                       ";\nshell astparam s lan2" + stem + " " + word.code + ";\n"))
                << text;
        }
    }
}

TEST(ServiceNetwork, LeavesItsVlanWhenItIsNotEnabled) {
    for (const Service& each : services) {
        EXPECT_EQ(service(each.name, R"("enable":false)"),
                  sends_and_merges("shell astparam s " + std::string(each.stem) + "VlanMode n;\n"));
    }
}

TEST(ServiceNetwork, TakesAnyNumberHeldAtThe32BitLimits) {
    for (const Service& each : services) {
        const std::string stem = each.stem;
        EXPECT_EQ(service(each.name, R"("vlan_id":-1,"ttl":1e99,"dscp":-1e99)"),
                  sends_and_merges("shell astparam s " + stem + "VlanID -1;\nshell astparam s " +
                                   stem + "VlanTTL 2147483647;\nshell astparam s " + stem +
                                   "VlanDSCP -2147483648;\n"));
        EXPECT_EQ(
            service(each.name, R"("vlan_id":0,"ttl":-0.5,"dscp":63.9)"),
            sends_and_merges("shell astparam s " + stem + "VlanID 0;\nshell astparam s " + stem +
                             "VlanTTL 0;\nshell astparam s " + stem + "VlanDSCP 63;\n"));
    }
}

TEST(ServiceNetwork, ChoosesItsPortByWordOrNumber) {
    struct Case {
        const char* value;
        const char* code;
    };
    for (const Service& each : services) {
        for (const Case& port :
             {Case{"\"lan 1\"", "1"}, Case{"\"lan1\"", "1"}, Case{"\"lan 2\"", "2"},
              Case{"\"lan2\"", "2"}, Case{"\"lan 1 + lan 2\"", "0"}, Case{"\"lan1 + lan2\"", "0"},
              Case{"0", "0"}, Case{"1", "1"}, Case{"2", "2"}, Case{"7", "7"}, Case{"-0.5", "0"},
              Case{"1e99", "2147483647"}}) {
            EXPECT_EQ(service(each.name, std::string("\"lan_port\":") + port.value),
                      sends_and_merges("shell astparam s " + std::string(each.stem) + "LanPort " +
                                       port.code + ";\n"))
                << port.value;
        }
        for (const std::string value :
             {"\"LAN1\"", "\"Lan 1\"", "\"lan 1+lan 2\"", "\"lan 1 + lan2\"", "\"lan 3\"", "\"1\"",
              "\"lan 1 \"", "\"\"", "-1", "-1e99", "true", "null", "[1]", "{}"}) {
            EXPECT_EQ(service(each.name, "\"lan_port\":" + value), sends_and_merges("")) << value;
        }
    }
}

TEST(ServiceNetwork, HasItsOwnAddressing) {
    for (const Service& each : services) {
        const std::string prefix = "shell astparam s " + std::string(each.address);
        const std::string mode_key = each.address[0] == '\0' ? "ip_mode" : "ip_Mode";
        EXPECT_EQ(service(each.name, R"("gateway":"g","subnet":"m","ip_address":"10.0.0.5",)"
                                     R"("ip_mode":"dhcp")"),
                  sends_and_merges(prefix + mode_key + " dhcp;\npause 1\n" + prefix +
                                   "ipaddr 10.0.0.5;\npause 1\n" + prefix + "netmask m;\n" +
                                   prefix + "gatewayip g;\n"));
        for (const std::string mode : {"static", "DHCP", "dhc", "x"}) {
            EXPECT_EQ(service(each.name, "\"ip_mode\":\"" + mode + "\""),
                      sends_and_merges(prefix + mode_key + " static;\npause 1\n"))
                << mode;
        }
        for (const std::string address : {"192.168.1.255", "0.1.2.3", "1.2.3", "x"}) {
            EXPECT_EQ(service(each.name, "\"ip_address\":\"" + address + "\",\"gateway\":\"g\""),
                      sends_and_merges(prefix + "gatewayip g;\n"))
                << address;
        }
    }
}

TEST(ServiceNetwork, StreamLeavesTheAddressToTheFirstPort) {
    const std::string stream =
        R"("services_settings":{"stream":{"ttl":3,"ip_mode":"dhcp","ip_address":"10.0.0.5",)"
        R"("subnet":"m","gateway":"g"}})";
    for (const std::string lan1_object : {R"("lan1":{})", R"("LAN1":{"x":1})"}) {
        reset_recorder();
        EXPECT_EQ(trace_of_section("{" + stream + "," + lan1_object + "}"),
                  sends_and_merges("shell astparam s streamVlanTTL 3;\n"))
            << lan1_object;
    }
    const std::string whole = sends_and_merges(
        "shell astparam s streamVlanTTL 3;\n"
        "shell astparam s ip_mode dhcp;\n"
        "pause 1\n"
        "shell astparam s ipaddr 10.0.0.5;\n"
        "pause 1\n"
        "shell astparam s netmask m;\n"
        "shell astparam s gatewayip g;\n");
    for (const std::string value : wrong_objects) {
        reset_recorder();
        EXPECT_EQ(trace_of_section("{\"lan1\":" + value + "," + stream + "}"), whole) << value;
    }
    reset_recorder();
    EXPECT_EQ(trace_of_section("{\"lan2\":{}," + stream + "}"), whole);
}

TEST(ServiceNetwork, OtherThanStreamKeepsItsAddressBesideTheFirstPort) {
    reset_recorder();
    EXPECT_EQ(
        trace_of_section(R"({"lan1":{},"services_settings":{"control":{"ip_address":"10.0.0.5"},)"
                         R"("dante_aes67":{"ip_address":"10.0.0.6"}}})"),
        sends_and_merges("shell astparam s control_ipaddr 10.0.0.5;\n"
                         "pause 1\n"
                         "shell astparam s dante_ipaddr 10.0.0.6;\n"
                         "pause 1\n"));
}

TEST(ServiceNetwork, OfAnotherTypeOnlyMerges) {
    for (const Service& each : services) {
        for (const std::string value : wrong_objects) {
            reset_recorder();
            EXPECT_EQ(trace_of_section("{\"services_settings\":{\"" + std::string(each.name) +
                                       "\":" + value + "}}"),
                      sends_and_merges(""))
                << value;
        }
    }
}

TEST(ServiceNetwork, MergesWithoutAnyService) {
    reset_recorder();
    EXPECT_EQ(trace_of_section(R"({"services_settings":{}})"), sends_and_merges(""));
    reset_recorder();
    EXPECT_EQ(trace_of_section(R"({"Services_Settings":{"STREAM":{}}})"), sends_and_merges(""));
}

TEST(ServiceNetwork, ThatIsNewJoinsEmptyMemberLists) {
    reset_recorder();
    answer_command("astparam g streamLanPort", "0");
    answer_command("astparam g streamVlanID", "20");
    answer_command("astparam g streamVlanMode", "y");
    answer_command("astparam g lan1stream", "1");
    answer_command("astparam g lan2stream", "0");
    EXPECT_EQ(
        trace_of_section(R"({"services_settings":{"stream":{"enable":true,"vlan_id":20,)"
                         R"("lan_port":"lan1 + lan2","lan_1":"tagged","lan_2":"untagged"}}})"),
        snapshot_trace +
            "shell astparam s lan1stream 1;\n"
            "shell astparam s lan2stream 0;\n"
            "shell astparam s streamVlanMode y;\n"
            "shell astparam s streamVlanID 20;\n"
            "shell astparam s streamLanPort 0;\n" +
            merge_reads +
            "shell astparam s vlan1ID 1\n"
            "shell astparam s vlan2ID 20\n"
            "shell astparam s vlan1Untag 1\n"
            "shell astparam s vlan1Tag 20\n"
            "shell astparam s vlan2Untag 20\n"
            "pause 1\n");
}

}  // namespace
