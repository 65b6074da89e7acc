#include "unitconf/services/vlan_membership.h"

#include <gtest/gtest.h>

#include <algorithm>
#include <cstdio>
#include <cstdlib>
#include <map>
#include <random>
#include <set>
#include <sstream>
#include <string>
#include <utility>
#include <vector>

#include "tests/support/applying.h"
#include "tests/support/recorder.h"

namespace {

// A unit's stored values by key; a key that is missing has no value.
using Store = std::map<std::string, std::string>;

const char* const keys_in_reading_order[] = {
    "vlan1Tag",        "vlan2Tag",    "streamLanPort", "danteLanPort",   "controlLanPort",
    "streamVlanID",    "danteVlanID", "controlVlanID", "streamVlanMode", "danteVlanMode",
    "controlVlanMode", "lan1stream",  "lan2stream",    "lan1control",    "lan2control",
    "lan1dante",       "lan2dante",   "vlan1Untag",    "vlan2Untag",
};

std::string merge_reads() {
    std::string reads;
    for (const char* key : keys_in_reading_order) {
        reads += std::string("read astparam g ") + key + "\n";
    }
    return reads;
}

void merge(const cJSON* services_settings) {
    merge_vlan_memberships(services_settings);
}

// The trace of a merge behind its reads, on a unit with these values.
std::string merged(const Store& store, const std::string& document = "{}") {
    reset_recorder();
    for (const auto& [key, value] : store) {
        answer_command("astparam g " + key, value);
    }
    const std::string trace = trace_of(merge, document);
    const std::string reads = merge_reads();
    EXPECT_EQ(trace.substr(0, reads.size()), reads);
    return trace.substr(std::min(trace.size(), reads.size()));
}

// Values of one service that puts its VLAN on both ports.
Store on_both_ports(const std::string& stem, const std::string& id, const std::string& lan1,
                    const std::string& lan2) {
    return {{stem + "LanPort", "0"},
            {stem + "VlanID", id},
            {stem + "VlanMode", "y"},
            {"lan1" + stem, lan1},
            {"lan2" + stem, lan2}};
}

Store together(std::initializer_list<Store> stores) {
    Store all;
    for (const Store& each : stores) {
        all.insert(each.begin(), each.end());
    }
    return all;
}

// --- Single rules --------------------------------------------------------------------------------

TEST(VlanMembership, ReadsAllValuesInTheirOrderAndWritesVlan1OnAnEmptyUnit) {
    EXPECT_EQ(merged({}),
              "shell astparam s vlan1ID 1\n"
              "shell astparam s vlan2ID 1\n"
              "shell astparam s vlan1Untag 1\n"
              "shell astparam s vlan2Untag 1\n");
}

TEST(VlanMembership, TouchesNothingWithoutAServicesObject) {
    for (const char* document : {"[]", "true", "null", "3", "\"x\"", "[{}]"}) {
        reset_recorder();
        EXPECT_EQ(trace_of(merge, document), "") << document;
    }
    reset_recorder();
    EXPECT_FALSE(merge_vlan_memberships(nullptr));
    EXPECT_EQ(recorded_trace(), "");
}

TEST(VlanMembership, KeepsListsThatNoServiceTouches) {
    EXPECT_EQ(merged({{"streamVlanID", "20"},
                      {"danteVlanID", "30"},
                      {"controlVlanID", "10"},
                      {"vlan1Tag", "50,60"},
                      {"vlan1Untag", "5"},
                      {"vlan2Tag", "50"},
                      {"vlan2Untag", "40,41"}}),
              "shell astparam s vlan1Untag 5\n"
              "shell astparam s vlan1Tag 50,60\n"
              "shell astparam s vlan2Untag 40,41\n"
              "shell astparam s vlan2Tag 50\n");
}

TEST(VlanMembership, PutsServicesInFrontInTheOrderStreamDanteControl) {
    EXPECT_EQ(
        merged(together(
            {on_both_ports("stream", "20", "1", "0"),
             on_both_ports("dante", "30", "1", "0"),
             on_both_ports("control", "10", "1", "0"),
             {{"vlan1Tag", "50"}, {"vlan2Tag", "50"}, {"vlan1Untag", "5"}, {"vlan2Untag", "40"}}})),
        "shell astparam s vlan1Untag 5\n"
        "shell astparam s vlan1Tag 20,30,10,50\n"
        "shell astparam s vlan2Untag 20,30,10,40\n"
        "shell astparam s vlan2Tag 50\n");
}

TEST(VlanMembership, MovesAVlanFromOneKindToTheOther) {
    const Store lists = {{"vlan1Untag", "20,5"},
                         {"vlan1Tag", "50,20"},
                         {"vlan2Untag", "20,40,20"},
                         {"vlan2Tag", "20"}};
    EXPECT_EQ(merged(together({on_both_ports("stream", "20", "1", "0"),
                               {{"danteVlanID", "30"}, {"controlVlanID", "10"}},
                               lists})),
              "shell astparam s vlan1Untag 5\n"
              "shell astparam s vlan1Tag 20,50,20\n"
              "shell astparam s vlan2Untag 20,20,40,20\n");
}

TEST(VlanMembership, IsLeftByAServiceWithoutItsVlanOrOnAnotherPort) {
    const Store lists = {{"vlan1Untag", "5,20"}, {"vlan1Tag", "20,50"}, {"vlan2Untag", "40,20"},
                         {"vlan2Tag", "20,51"},  {"danteVlanID", "30"}, {"controlVlanID", "10"}};
    const std::string left =
        "shell astparam s vlan1Untag 5\n"
        "shell astparam s vlan1Tag 50\n"
        "shell astparam s vlan2Untag 40\n"
        "shell astparam s vlan2Tag 51\n";
    Store stream = on_both_ports("stream", "20", "1", "1");
    for (const std::string mode : {"n", "", "Y", "no", " y"}) {
        stream["streamVlanMode"] = mode;
        EXPECT_EQ(merged(together({stream, lists})), left) << mode;
    }
    stream["streamVlanMode"] = "y";
    for (const std::string port : {"3", "", "lan1", " 0"}) {
        stream["streamLanPort"] = port;
        EXPECT_EQ(merged(together({stream, lists})), left) << port;
    }
    for (const std::string port : {"1", "1x"}) {
        stream["streamLanPort"] = port;
        EXPECT_EQ(merged(together({stream, lists})),
                  "shell astparam s vlan1Untag 5\n"
                  "shell astparam s vlan1Tag 20,20,50\n"
                  "shell astparam s vlan2Untag 40\n"
                  "shell astparam s vlan2Tag 51\n");
    }
    for (const std::string port : {"2", "21"}) {
        stream["streamLanPort"] = port;
        EXPECT_EQ(merged(together({stream, lists})),
                  "shell astparam s vlan1Untag 5\n"
                  "shell astparam s vlan1Tag 50\n"
                  "shell astparam s vlan2Untag 40\n"
                  "shell astparam s vlan2Tag 20,20,51\n");
    }
    stream["streamLanPort"] = "0";
    for (const std::string membership : {"", "2", "t", " 1"}) {
        stream["lan1stream"] = stream["lan2stream"] = membership;
        EXPECT_EQ(merged(together({stream, lists})), left) << membership;
    }
}

TEST(VlanMembership, GoesByFirstCharactersOnly) {
    EXPECT_EQ(merged({{"streamLanPort", "0 (both)"},
                      {"streamVlanID", "20"},
                      {"streamVlanMode", "yes"},
                      {"lan1stream", "10"},
                      {"lan2stream", "01"},
                      {"vlan1Untag", "5"}}),
              "shell astparam s vlan1Untag 5\n"
              "shell astparam s vlan1Tag 20\n"
              "shell astparam s vlan2Untag 20\n");
}

TEST(VlanMembership, IsPrunedByNumberAndKeepsTheTextsThatStay) {
    EXPECT_EQ(merged({{"streamVlanID", "20"},
                      {"danteVlanID", "30"},
                      {"controlVlanID", "10"},
                      {"vlan1Untag", "020,20x, 20,+20,200,2,-20,05,5 a"},
                      {"vlan2Untag", "x,0,,7,"},
                      {"vlan1Tag", "30,10,20,"},
                      {"vlan2Tag", ",,1,,"}}),
              "shell astparam s vlan1Untag 200,2,-20,05,5 a\n"
              "shell astparam s vlan2Untag x,0,7\n"
              "shell astparam s vlan2Tag 1\n");
}

TEST(VlanMembership, OfAServiceWithoutANumberCountsAsZero) {
    const Store lists = {{"vlan1Untag", "x,0,5,00, ,-,-0"}, {"vlan2Untag", "0"}};
    for (const std::string id : {"", "x", "0", "-", " "}) {
        EXPECT_EQ(
            merged(together(
                {{{"streamVlanID", id}, {"danteVlanID", "30"}}, lists, {{"controlVlanID", "10"}}})),
            "shell astparam s vlan2ID 1\n"
            "shell astparam s vlan1Untag 5\n"
            "shell astparam s vlan2Untag 1\n")
            << id;
    }
    // The IDs that are not stored at all count so, too.
    EXPECT_EQ(merged({{"vlan1Tag", "0,50,x"}, {"vlan1Untag", "5"}, {"vlan2Untag", "6"}}),
              "shell astparam s vlan1Untag 5\n"
              "shell astparam s vlan1Tag 50\n"
              "shell astparam s vlan2Untag 6\n");
}

TEST(VlanMembership, OfAWantingServiceWithoutANumberAddsItsText) {
    EXPECT_EQ(merged(together({on_both_ports("stream", "x", "1", "0"),
                               on_both_ports("dante", "", "1", "0"),
                               on_both_ports("control", "0", "1", "0"),
                               {{"vlan1Tag", "0"}, {"vlan1Untag", "5,0"}}})),
              "shell astparam s vlan1Untag 5\n"
              "shell astparam s vlan1Tag x,0,0\n"
              "shell astparam s vlan2Untag x,0\n");
}

TEST(VlanMembership, OfOneServiceIsTakenAwayByAnotherWithTheSameId) {
    // Control shares the stream's VLAN and is not on the first port's tagged list.
    EXPECT_EQ(merged(together({on_both_ports("stream", "20", "1", "1"),
                               on_both_ports("control", "20", "0", "1"),
                               {{"danteVlanID", "30"}, {"vlan1Tag", "50"}, {"vlan2Tag", "51"}}})),
              "shell astparam s vlan1ID 1\n"
              "shell astparam s vlan2ID 1\n"
              "shell astparam s vlan1Untag 1\n"
              "shell astparam s vlan1Tag 50\n"
              "shell astparam s vlan2Untag 1\n"
              "shell astparam s vlan2Tag 20,20,51\n");
}

TEST(VlanMembership, HoldsNumbersAtThe32BitLimits) {
    EXPECT_EQ(merged({{"streamVlanID", "99999999999"},
                      {"danteVlanID", "-99999999999"},
                      {"controlVlanID", "10"},
                      {"vlan1Untag", "2147483647,2147483646,-2147483648,-2147483647,4294967306"},
                      {"vlan2Untag", "2147483648,-2147483649,7"}}),
              "shell astparam s vlan1Untag 2147483646,-2147483647\n"
              "shell astparam s vlan2Untag 7\n");
}

TEST(VlanMembership, OfAPortWithoutUntaggedVlansIsVlan1) {
    const Store ids = {{"streamVlanID", "20"}, {"danteVlanID", "30"}, {"controlVlanID", "10"}};
    EXPECT_EQ(merged(together({ids, {{"vlan1Untag", "20"}, {"vlan2Untag", "40"}}})),
              "shell astparam s vlan1ID 1\n"
              "shell astparam s vlan1Untag 1\n"
              "shell astparam s vlan2Untag 40\n");
    EXPECT_EQ(merged(together({ids, {{"vlan1Untag", "5"}, {"vlan2Untag", ",10,,30,"}}})),
              "shell astparam s vlan2ID 1\n"
              "shell astparam s vlan1Untag 5\n"
              "shell astparam s vlan2Untag 1\n");
}

// --- The port VLAN IDs ---------------------------------------------------------------------------

const Store two_untagged_lists = {{"vlan1Untag", "5"}, {"vlan2Untag", "6"}};
const std::string two_untagged_lines =
    "shell astparam s vlan1Untag 5\nshell astparam s vlan2Untag 6\n";

TEST(PortVlanId, FollowsTheUntaggedServicesOfTheDocumentInOrder) {
    EXPECT_EQ(merged(two_untagged_lists, R"({
                  "dante_aes67": {"vlan_id": 30, "lan_2": "untagged", "enable": true},
                  "control": {"vlan_id": 10, "lan_2": "untagged", "lan_1": "untagged 1",
                              "enable": true},
                  "stream": {"enable": true, "lan_1": "untagged", "vlan_id": 20}})"),
              "shell astparam s vlan1ID 20\n"
              "shell astparam s vlan1ID 10\n"
              "shell astparam s vlan2ID 10\n"
              "shell astparam s vlan2ID 30\n" +
                  two_untagged_lines);
}

TEST(PortVlanId, ComesBehindTheDefaultOfAnEmptyList) {
    EXPECT_EQ(merged({}, R"({"stream":{"enable":true,"vlan_id":20,"lan_1":"untagged"}})"),
              "shell astparam s vlan1ID 1\n"
              "shell astparam s vlan2ID 1\n"
              "shell astparam s vlan1ID 20\n"
              "shell astparam s vlan1Untag 1\n"
              "shell astparam s vlan2Untag 1\n");
}

TEST(PortVlanId, GoesByTheDocumentAndNotByWhatIsStored) {
    // Stored as tagged, on the other port and without a VLAN of its own.
    EXPECT_EQ(merged(together({two_untagged_lists,
                               {{"streamVlanMode", "n"},
                                {"streamLanPort", "2"},
                                {"streamVlanID", "21"},
                                {"lan1stream", "1"}}}),
                     R"({"stream":{"enable":true,"vlan_id":20,"lan_1":"untagged",)"
                     R"("lan_port":"lan 2"}})"),
              "shell astparam s vlan1ID 20\n" + two_untagged_lines);
}

TEST(PortVlanId, NeedsEnableTrueAndANumber) {
    for (const std::string members :
         {R"("vlan_id":20)", R"("enable":false,"vlan_id":20)", R"("enable":1,"vlan_id":20)",
          R"("enable":"true","vlan_id":20)", R"("Enable":true,"vlan_id":20)", R"("enable":true)",
          R"("enable":true,"vlan_id":"20")", R"("enable":true,"vlan_id":null)",
          R"("enable":true,"vlan_id":true)", R"("enable":true,"vlan_id":[20])"}) {
        EXPECT_EQ(merged(two_untagged_lists, R"({"stream":{"lan_1":"untagged",)" + members + "}}"),
                  two_untagged_lines)
            << members;
    }
    for (const std::string membership :
         {R"("tagged")", R"("Untagged")", R"("untagge")", R"("")", R"(" untagged")", "0", "false",
          "null", R"(["untagged"])"}) {
        EXPECT_EQ(merged(two_untagged_lists, R"({"stream":{"enable":true,"vlan_id":20,"lan_1":)" +
                                                 membership + R"(,"lan_2":)" + membership + "}}"),
                  two_untagged_lines)
            << membership;
    }
}

TEST(PortVlanId, TakesAnyNumberAndKeysOfAnyCaseButEnable) {
    EXPECT_EQ(merged(two_untagged_lists,
                     R"({"STREAM":{"enable":true,"VLAN_ID":-7.5,"LAN_1":"untagged"},)"
                     R"("Dante_AES67":{"enable":true,"vlan_id":1e99,"Lan_2":"untagged"}})"),
              "shell astparam s vlan1ID -7\n"
              "shell astparam s vlan2ID 2147483647\n" +
                  two_untagged_lines);
}

// --- Long lists ----------------------------------------------------------------------------------

TEST(LongMemberLists, AreReadAndWrittenWholeUpToAValuesLength) {
    // 1023 bytes: one hundred entries are not the limit, and what the services add comes on top.
    std::string list = "1";
    while (list.size() + 4 <= 1023) {
        list += ",999";
    }
    list += ",7";
    ASSERT_EQ(list.size(), 1023U);
    const std::string longest_id = "20" + std::string(1021, 'x');
    EXPECT_EQ(merged(together({on_both_ports("stream", longest_id, "0", "0"),
                               on_both_ports("dante", longest_id, "0", "0"),
                               on_both_ports("control", longest_id, "0", "0"),
                               {{"vlan1Untag", list}, {"vlan2Untag", list}}})),
              "shell astparam s vlan1Untag " + longest_id + "," + longest_id + "," + longest_id +
                  "," + list + "\nshell astparam s vlan2Untag " + longest_id + "," + longest_id +
                  "," + longest_id + "," + list + "\n");
}

ServiceVlan service_vlan(const std::string& mode, const std::string& lan_port,
                         const std::string& id, const std::string& lan1, const std::string& lan2) {
    ServiceVlan service = {};
    snprintf(service.mode, sizeof service.mode, "%s", mode.c_str());
    snprintf(service.lan_port, sizeof service.lan_port, "%s", lan_port.c_str());
    snprintf(service.id, sizeof service.id, "%s", id.c_str());
    snprintf(service.membership[0], sizeof service.membership[0], "%s", lan1.c_str());
    snprintf(service.membership[1], sizeof service.membership[1], "%s", lan2.c_str());
    return service;
}

std::string merged_list(const ServiceVlan (&services)[service_networks], size_t port,
                        Membership kind, const std::string& present) {
    char* list = merged_member_list(services, port, kind, present.c_str());
    const std::string text = list == nullptr ? "no memory" : list;
    free(list);
    return text;
}

TEST(LongMemberLists, OfEveryVlanArePrunedWhole) {
    const ServiceVlan services[] = {service_vlan("y", "0", "4094", "1", "0"),
                                    service_vlan("n", "0", "2000", "1", "1"),
                                    service_vlan("y", "2", "1", "1", "1")};
    std::string present;
    std::string expected = "4094";
    for (int round = 0; round < 3; round++) {
        for (int id = 1; id <= 4094; id++) {
            present.append(",").append(std::to_string(id));
            if (id != 1 && id != 2000) {
                expected.append(",").append(std::to_string(id));
            }
        }
    }
    EXPECT_EQ(merged_list(services, 0, Membership::tagged, present), expected);
}

TEST(LongMemberLists, OfMillionsOfEntriesArePrunedInOnePass) {
    const ServiceVlan services[] = {service_vlan("y", "0", "20", "1", "0"),
                                    service_vlan("n", "0", "30", "1", "1"),
                                    service_vlan("n", "0", "10", "1", "1")};
    std::string present;
    std::string expected = "20";
    for (int i = 0; i < 2000000; i++) {
        present.append(i % 3 == 0 ? ",30" : ",31");
        if (i % 3 != 0) {
            expected.append(",31");
        }
    }
    // Some tens of milliseconds in one pass; in time that grows with the square it would take
    // hours.
    EXPECT_TRUE(merged_list(services, 0, Membership::tagged, present) == expected);
}

// --- The rules once more, plainly ----------------------------------------------------------------
//
// For each port and kind there is the set of the services that want it and the set of the numbers
// that the others take out of its list.

const char* const stems_in_list_order[] = {"stream", "dante", "control"};

std::string value_of(const Store& store, const std::string& key) {
    const auto found = store.find(key);
    return found == store.end() ? "" : found->second;
}

long long plain_number(const std::string& text) {
    long double number = 0;  // wide enough for any text of the test
    size_t at = text.find_first_not_of(" ");
    if (at == std::string::npos) {
        return 0;
    }
    const bool negative = text[at] == '-';
    if (text[at] == '-' || text[at] == '+') {
        at++;
    }
    while (at < text.size() && text[at] >= '0' && text[at] <= '9') {
        number = number * 10 + (text[at] - '0');
        at++;
    }
    number = negative ? -number : number;
    return static_cast<long long>(std::clamp(number, -2147483648.0L, 2147483647.0L));
}

std::vector<std::string> plain_entries(const std::string& list) {
    std::vector<std::string> entries;
    std::istringstream rest(list);
    for (std::string entry; std::getline(rest, entry, ',');) {
        if (!entry.empty()) {
            entries.push_back(entry);
        }
    }
    return entries;
}

std::string plain_list(const Store& store, char port, char kind) {
    std::set<std::string> wanting;
    std::set<long long> leaving;
    for (const std::string stem : stems_in_list_order) {
        const std::string mode = value_of(store, stem + "VlanMode").substr(0, 1);
        const std::string choice = value_of(store, stem + "LanPort").substr(0, 1);
        const std::string membership =
            value_of(store, std::string("lan") + port + stem).substr(0, 1);
        if (mode == "y" && (choice == "0" || choice == std::string(1, port)) &&
            membership == std::string(1, kind)) {
            wanting.insert(stem);
        } else {
            leaving.insert(plain_number(value_of(store, stem + "VlanID")));
        }
    }
    std::vector<std::string> entries;
    const auto add = [&entries, &leaving](const std::string& list) {
        for (const std::string& entry : plain_entries(list)) {
            if (!leaving.contains(plain_number(entry))) {
                entries.push_back(entry);
            }
        }
    };
    for (const std::string stem : stems_in_list_order) {
        if (wanting.contains(stem)) {
            add(value_of(store, stem + "VlanID"));
        }
    }
    add(value_of(store, std::string("vlan") + port + (kind == '1' ? "Tag" : "Untag")));
    std::string list;
    for (const std::string& entry : entries) {
        list += list.empty() ? entry : "," + entry;
    }
    return list;
}

// A service of the document as the random documents make it.
struct DocumentService {
    std::string name;
    std::string enable, lan_1, lan_2, vlan_id;  // JSON texts, empty for an absent member
};

std::string plain_trace(const Store& store, const std::vector<DocumentService>& document) {
    std::string trace;
    for (const char port : {'1', '2'}) {
        if (plain_list(store, port, '0').empty()) {
            trace += std::string("shell astparam s vlan") + port + "ID 1\n";
        }
    }
    for (const std::string name : {"stream", "control", "dante_aes67"}) {
        for (const DocumentService& service : document) {
            if (service.name != name || service.enable != "true" || service.vlan_id.empty() ||
                service.vlan_id[0] == '"') {
                continue;
            }
            for (const auto& [port, text] :
                 {std::pair('1', service.lan_1), std::pair('2', service.lan_2)}) {
                if (text.starts_with("\"untagged")) {
                    trace += std::string("shell astparam s vlan") + port + "ID " + service.vlan_id +
                             "\n";
                }
            }
        }
    }
    for (const char port : {'1', '2'}) {
        const std::string untagged = plain_list(store, port, '0');
        const std::string tagged = plain_list(store, port, '1');
        const std::string line = std::string("shell astparam s vlan") + port;
        trace += line + "Untag " + (untagged.empty() ? "1" : untagged) + "\n";
        if (!tagged.empty()) {
            trace += line + "Tag " + tagged + "\n";
        }
    }
    return trace;
}

class RandomUnit {
  public:
    explicit RandomUnit(unsigned seed) : generator_(seed) {}

    template <size_t count>
    std::string one_of(const char* const (&texts)[count]) {
        return texts[generator_() % count];
    }

    bool chance(unsigned percent) {
        return generator_() % 100 < percent;
    }

    std::string list() {
        std::string text;
        for (auto left = generator_() % 9; left > 0; left--) {
            text.append(text.empty() ? "" : ",").append(one_of(ids));
        }
        return chance(10) ? text + "," : text;
    }

    Store store() {
        static constexpr const char* modes[] = {"y", "y", "y", "y", "n", "", "yes", "Y"};
        static constexpr const char* choices[] = {"0", "0", "1", "2", "1", "2", "3", "", "01"};
        static constexpr const char* memberships[] = {"0", "1", "0", "1", "", "2", "10"};
        Store store;
        for (const std::string stem : stems_in_list_order) {
            store[stem + "VlanMode"] = one_of(modes);
            store[stem + "LanPort"] = one_of(choices);
            store[stem + "VlanID"] = one_of(ids);
            store["lan1" + stem] = one_of(memberships);
            store["lan2" + stem] = one_of(memberships);
        }
        for (const char* key : {"vlan1Tag", "vlan1Untag", "vlan2Tag", "vlan2Untag"}) {
            store[key] = list();
        }
        for (auto value = store.begin(); value != store.end();) {
            value = chance(3) ? store.erase(value) : std::next(value);
        }
        return store;
    }

    std::vector<DocumentService> document() {
        static constexpr const char* enables[] = {"true", "true", "true", "false", "1", ""};
        static constexpr const char* memberships[] = {
            "\"untagged\"", "\"untagged\"", "\"tagged\"", "\"untagged2\"", "\"Untagged\"", "0", ""};
        static constexpr const char* numbers[] = {"20", "30", "10", "0", "-4", "\"20\"", ""};
        std::vector<DocumentService> services;
        for (const char* name : {"dante_aes67", "stream", "control"}) {
            if (chance(70)) {
                services.push_back({name, one_of(enables), one_of(memberships), one_of(memberships),
                                    one_of(numbers)});
            }
        }
        return services;
    }

  private:
    static constexpr const char* ids[] = {
        "10",  "20",  "30",  "20",    "30",           "10",          "40",         "0",
        "1",   "",    "x",   "020",   "20x",          "4294967306",  "2147483647", "99999999999",
        "-20", " 30", "+10", "10,20", "-99999999999", "-2147483648", " ",          "200"};

    std::mt19937 generator_;
};

std::string document_text(const std::vector<DocumentService>& services) {
    std::string text = "{";
    for (const DocumentService& service : services) {
        text.append(text.size() > 1 ? ",\"" : "\"").append(service.name).append("\":{\"ttl\":1");
        for (const auto& [key, value] :
             {std::pair<const char*, const std::string&>("enable", service.enable),
              {"lan_1", service.lan_1},
              {"lan_2", service.lan_2},
              {"vlan_id", service.vlan_id}}) {
            if (!value.empty()) {
                text += std::string(",\"") + key + "\":" + value;
            }
        }
        text += "}";
    }
    return text + "}";
}

// Under sanitizers, in builds without NDEBUG, and on an emulated processor a round takes many times
// as long.
#if defined(NDEBUG) && !defined(__arm__)
constexpr int random_rounds = 120000;
#else
constexpr int random_rounds = 10000;
#endif

TEST(VlanMembership, FollowsItsRulesOnRandomUnitsAndDocuments) {
    RandomUnit unit(4094);
    std::map<std::string, int> seen;
    for (int round = 0; round < random_rounds; round++) {
        const Store store = unit.store();
        const std::vector<DocumentService> document = unit.document();
        const std::string expected = plain_trace(store, document);
        seen["port id"] += expected.find("ID 20\n") != std::string::npos;
        seen["vlan 1"] += expected.find("vlan1ID 1\n") != std::string::npos;
        seen["no tagged list"] += expected.find("vlan2Tag") == std::string::npos;
        seen["long list"] += expected.size() > 200;
        const std::string trace = merged(store, document_text(document));
        if (trace != expected) {
            std::string state;
            for (const auto& [key, value] : store) {
                state.append(key).append("=").append(value).append("\n");
            }
            FAIL() << "round " << round << " with " << document_text(document) << " on\n"
                   << state << "sent\n"
                   << trace << "and not\n"
                   << expected;
        }
    }
    // The rounds reach what they are for.
    EXPECT_EQ(seen.size(), 4U);
    for (const auto& [what, times] : seen) {
        EXPECT_GT(times, random_rounds / 100) << what;
    }
}

}  // namespace
