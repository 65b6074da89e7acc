// The example configurations name every member, and the deployment guide their pauses.
#include <cjson/cJSON.h>
#include <gtest/gtest.h>

#include <fstream>
#include <set>
#include <sstream>
#include <string>
#include <vector>

#include "docs/reference/notes.h"
#include "tests/support/any_model.h"
#include "tests/support/recorder.h"
#include "unitconf/configuration.h"
#include "unitconf/models.h"

namespace {

struct ModelUnderTest {
    const char* name;
    unsigned model;
    std::vector<std::string> sections;  // "" stands for the place that has only its message
};

const std::vector<std::string> control_and_services = {
    "oled_display", "auto_status",      "fan_control", "serial", "ir",    "trigger",
    "network",      "aes256",           "snmp",        "mqtt",   "https", "ldap",
    "auth_8021x",   "front_panel_lock", "usb_devices", "debug",  "ssh",   "power",
};

std::vector<std::string> joined(std::vector<std::string> first,
                                const std::vector<std::string>& then) {
    first.insert(first.end(), then.begin(), then.end());
    return first;
}

const ModelUnderTest models[] = {
    {"ZAVO-ENC-U300-DA", usbc_encoder,
     joined({"stream", "", "edid", "hdcp", "usb_host", "aes67", "date_and_time", "dante"},
            control_and_services)},
    {"ZAVO-ENC-E100-DA", hdmi_encoder,
     joined({"stream", "", "edid", "hdcp", "usb_host", "aes67", "date_and_time", "dante"},
            control_and_services)},
    {"ZAVO-DEC-D200-DA", decoder,
     joined({"stream", "", "edid", "hdcp", "no_stream_image", "power_on_image", "osd", "video_wall",
             "aes67", "date_and_time", "dante", "routing"},
            control_and_services)},
};

std::string file_text(const std::string& path) {
    std::ifstream file(path);
    std::stringstream text;
    text << file.rdbuf();
    return text.str();
}

std::string example_text(const ModelUnderTest& model) {
    return file_text(std::string(EXAMPLES_DIR) + "/unit-configuration." + model.name + ".json");
}

std::string trace_of_document(const ModelUnderTest& model, const std::string& text) {
    reset_recorder();
    set_lm_value("VW_VAR_VER", "2");  // the newer wall, which takes a pause more
    EXPECT_EQ(apply_configuration_to_model(model.name, text.c_str()), configuration_applied);
    return recorded_trace();
}

unsigned pauses_in(const std::string& trace) {
    unsigned seconds = 0;
    std::istringstream lines(trace);
    for (std::string line; std::getline(lines, line);) {
        if (line.starts_with("pause ")) {
            seconds += static_cast<unsigned>(std::stoul(line.substr(6)));
        }
    }
    return seconds;
}

// --- Every member --------------------------------------------------------------------------------

const cJSON* part_of(const cJSON* document, const std::string& path) {
    std::istringstream keys(path);
    for (std::string key; std::getline(keys, key, '.');) {
        document = cJSON_GetObjectItemCaseSensitive(document, key.c_str());
    }
    return document;
}

void expect_members(const cJSON* section, const cJSON* object, const Member* rows, size_t count,
                    const std::string& path) {
    for (size_t i = 0; i < count; i++) {
        const Member& row = rows[i];
        if (row.key == nullptr) {
            continue;
        }
        const cJSON* holder = row.of_whole_section ? section : object;
        if (row.parent != nullptr) {
            holder = cJSON_GetObjectItemCaseSensitive(holder, row.parent);
        }
        const cJSON* item = cJSON_GetObjectItemCaseSensitive(holder, row.key);
        EXPECT_NE(item, nullptr) << path << "." << row.key;
        if (item != nullptr && row.member_count > 0) {
            expect_members(section, item, row.own.members, row.member_count, path + "." + row.key);
        }
    }
}

// The tables of a model, from the chapters of the reference.
std::vector<const SectionTable*> tables_of(unsigned model) {
    std::vector<const SectionTable*> tables;
    for (const Chapter& chapter : chapters) {
        for (const SectionTable* table : chapter.tables) {
            if (table != nullptr && (table->models & model) != 0) {
                tables.push_back(table);
            }
        }
    }
    return tables;
}

TEST(Examples, HoldEveryMemberOfTheirModelsTables) {
    for (const ModelUnderTest& model : models) {
        cJSON* document = cJSON_Parse(example_text(model).c_str());
        ASSERT_NE(document, nullptr) << model.name;
        for (const SectionTable* table : tables_of(model.model)) {
            const cJSON* section = part_of(document, table->section);
            ASSERT_NE(section, nullptr) << model.name << " " << table->section;
            expect_members(section, section, table->rows, table->count, table->section);
        }
        cJSON_Delete(document);
    }
}

TEST(Examples, EverySectionOfAModelHasATableInTheReference) {
    for (const ModelUnderTest& model : models) {
        // Looked up and never applied; itself a boolean.
        std::set<std::string> described = {"aes67", "front_panel_lock"};
        for (const SectionTable* table : tables_of(model.model)) {
            described.insert(table->section);
        }
        for (const SectionRun& run : sections_of_model(model.name).runs) {
            for (size_t i = 0; i < run.count; i++) {
                const SectionRow& row = run.rows[i];
                if (row.key != nullptr) {
                    const std::string path =
                        (row.parent == nullptr ? "" : std::string(row.parent) + ".") + row.key;
                    EXPECT_TRUE(described.contains(path)) << model.name << " " << path;
                }
            }
        }
    }
}

// --- Every section in its place ------------------------------------------------------------------

std::string progress(size_t step) {
    return "shell echo \"upgradeUnitSetting:" + std::to_string(step) +
           ",26\" | nc 127.0.0.1 4445\n";
}

const std::string ending = "shell astparam save;\npause 1\nshell e e_reboot &\n";

// What the unit is told of the example's `key` when the document holds nothing else.
TEST(Examples, EachSectionIsAppliedBetweenItsProgressMessages) {
    for (const ModelUnderTest& model : models) {
        cJSON* example = cJSON_Parse(example_text(model).c_str());
        for (const std::string& key : model.sections) {
            if (key.empty()) {
                continue;
            }
            cJSON* document = cJSON_CreateObject();
            cJSON_AddStringToObject(document, "model", model.name);
            const cJSON* section = cJSON_GetObjectItemCaseSensitive(example, key.c_str());
            cJSON_AddItemToObject(document, key.c_str(), cJSON_Duplicate(section, true));
            char* text = cJSON_PrintUnformatted(document);
            const std::string trace = trace_of_document(model, text);
            cJSON_free(text);
            cJSON_Delete(document);

            std::string before;
            std::string behind;
            size_t step = 0;
            bool reached = false;
            for (const std::string& place : model.sections) {
                reached = reached || place == key;
                if (place != "stream" || key == "stream") {
                    step++;
                    (reached ? behind : before) += progress(step);
                }
            }
            EXPECT_TRUE(trace.starts_with(before)) << model.name << " " << key << "\n" << trace;
            EXPECT_TRUE(trace.ends_with(behind + ending)) << model.name << " " << key << "\n"
                                                          << trace;
            const bool reserved = key == "aes67";
            EXPECT_EQ(trace.size() > before.size() + behind.size() + ending.size(), !reserved)
                << model.name << " " << key;
        }
        cJSON_Delete(example);
    }
}

TEST(Examples, SectionsOfOtherModelsAreIgnored) {
    std::set<std::string> keys;
    for (const ModelUnderTest& model : models) {
        keys.insert(model.sections.begin(), model.sections.end());
    }
    keys.erase("");
    for (const ModelUnderTest& model : models) {
        const std::string bare =
            trace_of_document(model, std::string("{\"model\":\"") + model.name + "\"}");
        for (const std::string& key : keys) {
            if (std::find(model.sections.begin(), model.sections.end(), key) ==
                model.sections.end()) {
                EXPECT_EQ(
                    trace_of_document(model, std::string("{\"model\":\"") + model.name + "\",\"" +
                                                 key + "\":{\"enable\":true,\"rows\":2}}"),
                    bare)
                    << model.name << " " << key;
            }
        }
    }
}

// --- The pauses ----------------------------------------------------------------------------------

TEST(Examples, TheDeploymentGuideTellsThePausesOfEachModel) {
    const std::string guide = file_text(std::string(EXAMPLES_DIR) + "/../docs/deployment.md");
    for (const ModelUnderTest& model : models) {
        const unsigned seconds = pauses_in(trace_of_document(model, example_text(model)));
        EXPECT_NE(
            guide.find(std::string("| ") + model.name + " | " + std::to_string(seconds) + " s |"),
            std::string::npos)
            << model.name << " pauses " << seconds << " s";
    }
}

}  // namespace
