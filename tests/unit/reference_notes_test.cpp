// The reference of the configuration document quotes lines that functions make, not tables. Each
// one that it quotes has to be one that a unit is told.
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

namespace {

// --- What is quoted ------------------------------------------------------------------------------

bool begins_as_a_shell_line(const std::string& text) {
    for (const char* tool :
         {"astparam s", "lmparam ", "dapi ", "e e_", "echo ", "rm ", "reaload_dante_config.sh"}) {
        if (text.starts_with(tool)) {
            return true;
        }
    }
    return false;
}

// "livol,2:%d": a command's word, a comma and what it takes.
bool looks_like_a_command(const std::string& text) {
    const size_t comma = text.find(',');
    return comma != std::string::npos && comma > 0 && text.find(' ') == std::string::npos &&
           text.find_first_not_of("abcdefghijklmnopqrstuvwxyz") == comma;
}

// The trace entries that a text quotes between backquotes: "shell <line>" and "mcu <command>".
std::vector<std::string> quoted_entries(const std::string& text) {
    static const std::string announcement = "microcontroller ";
    std::vector<std::string> entries;
    for (size_t open = text.find('`'); open != std::string::npos; open = text.find('`', open + 1)) {
        const size_t close = text.find('`', open + 1);
        EXPECT_NE(close, std::string::npos) << text;
        const std::string quote = text.substr(open + 1, close - open - 1);
        if (text.substr(0, open).ends_with(announcement) || looks_like_a_command(quote)) {
            entries.push_back("mcu " + quote);
        } else if (begins_as_a_shell_line(quote)) {
            entries.push_back("shell " + quote);
        }
        open = close;
    }
    return entries;
}

// The length of the placeholder at the start of a text ("%s", "%d", "<volume>"), or 0. A "<" that
// takes a shell's input has a blank behind it.
size_t placeholder_length(const std::string& text) {
    if (text.starts_with("%s") || text.starts_with("%d")) {
        return 2;
    }
    const size_t end = text.find('>');
    return text.starts_with("<") && !text.starts_with("< ") && end != std::string::npos ? end + 1
                                                                                        : 0;
}

// Whether `line` is `quote` with something, or nothing, in the place of each placeholder. What
// stands there holds no semicolon, so that it does not reach into another command.
bool is_said_by(const std::string& line, const std::string& quote) {
    const size_t placeholder = placeholder_length(quote);
    if (placeholder > 0) {
        const std::string rest = quote.substr(placeholder);
        for (size_t taken = 0; taken <= line.size(); taken++) {
            if (is_said_by(line.substr(taken), rest)) {
                return true;
            }
            if (taken < line.size() && line[taken] == ';') {
                return false;
            }
        }
        return false;
    }
    if (quote.empty() || line.empty()) {
        return quote.empty() && line.empty();
    }
    return line[0] == quote[0] && is_said_by(line.substr(1), quote.substr(1));
}

// --- What units are told -------------------------------------------------------------------------

struct ModelUnderTest {
    const char* name;
    unsigned model;
};

const ModelUnderTest models[] = {{"ZAVO-ENC-U300-DA", usbc_encoder},
                                 {"ZAVO-ENC-E100-DA", hdmi_encoder},
                                 {"ZAVO-DEC-D200-DA", decoder}};

void flip_booleans(cJSON* item) {
    if (cJSON_IsBool(item)) {
        item->type = cJSON_IsTrue(item) ? cJSON_False : cJSON_True;
    }
    cJSON* child = nullptr;
    cJSON_ArrayForEach(child, item) {
        flip_booleans(child);
    }
}

std::string text_of(const cJSON* document) {
    char* printed = cJSON_PrintUnformatted(document);
    std::string text = printed;
    cJSON_free(printed);
    return text;
}

// The model's example, the same with every boolean the other way round, and what neither holds.
std::vector<std::string> documents_of(const ModelUnderTest& model) {
    std::ifstream file(std::string(EXAMPLES_DIR) + "/unit-configuration." + model.name + ".json");
    std::stringstream text;
    text << file.rdbuf();
    cJSON* example = cJSON_Parse(text.str().c_str());
    EXPECT_NE(example, nullptr) << model.name;
    std::vector<std::string> documents = {text_of(example)};
    flip_booleans(example);
    documents.push_back(text_of(example));
    cJSON_Delete(example);
    for (const char* sections : {
             R"("stream":{"video":{"latency_mode":"ull"},"audio":{"analog_audio":
                {"direction":"in","type":"balanced","volume":1,"mute":true}}})",
             R"("stream":{"video":{"latency_mode":"normal"},"audio":{"analog_audio":
                {"direction":"in","type":"unbalanced","mute":false}}})",
             R"("stream":{"audio":{"analog_audio":
                {"direction":"out","type":"balanced","volume":1,"mute":true}}})",
             R"("stream":{"audio":{"analog_audio":
                {"direction":"out","type":"unbalanced","mute":false}}})",
             R"("dante":{})",
             R"("dante":{"dante_ava":true,"dante_audio_only":true})",
             R"("video_wall":{"rotation":1,"enable":true,"mode":"mosaic"})",
         }) {
        documents.push_back(std::string("{\"model\":\"") + model.name + "\"," + sections + "}");
    }
    return documents;
}

// A unit in which every condition of the notes holds.
void prepare_unit() {
    reset_recorder();
    set_rw_value("a_addon", "dante");
    set_rw_value("dante_op_mode", "AV-A");
    set_rw_value("device_name_sync_enable", "11");
    set_rw_value("deviceName", "Hall");
    set_lm_value("VW_VAR_VER", "2");
    answer_command("astparam g device_name_sync_enable", "110000");
    answer_command("astparam g deviceName", "Hall");
}

std::set<std::string> entries_told_to(const ModelUnderTest& model) {
    std::set<std::string> entries;
    for (const std::string& document : documents_of(model)) {
        prepare_unit();
        EXPECT_EQ(apply_configuration_to_model(model.name, document.c_str()),
                  configuration_applied);
        std::istringstream trace(recorded_trace());
        for (std::string entry; std::getline(trace, entry);) {
            entries.insert(entry);
        }
    }
    return entries;
}

bool is_told(const std::string& quote, const std::set<std::string>& entries) {
    for (const std::string& entry : entries) {
        if (is_said_by(entry, quote)) {
            return true;
        }
    }
    return false;
}

// --- The tests -----------------------------------------------------------------------------------

TEST(ReferenceNotes, EveryQuotedLineIsToldToEachModelOfItsNote) {
    size_t quotes = 0;
    for (const ModelUnderTest& model : models) {
        const std::set<std::string> entries = entries_told_to(model);
        for (const Note& note : notes) {
            if ((note.models & model.model) == 0) {
                continue;
            }
            for (const std::string& quote : quoted_entries(note.text)) {
                EXPECT_TRUE(is_told(quote, entries))
                    << model.name << " " << note.section << " " << note.member << ": " << quote;
                quotes++;
            }
        }
    }
    EXPECT_GE(quotes, 200U);
}

TEST(ReferenceNotes, EveryLineQuotedForAllModelsIsToldToEach) {
    std::vector<std::string> quotes;
    const auto add_quotes = [&quotes](const char* text) {
        const std::vector<std::string> more = quoted_entries(text);
        quotes.insert(quotes.end(), more.begin(), more.end());
    };
    for (const char* text : {how_it_is_read, order_and_progress, identity_chapter}) {
        add_quotes(text);
    }
    for (const Chapter& chapter : chapters) {
        add_quotes(chapter.text == nullptr ? "" : chapter.text);
    }
    for (const ModelUnderTest& model : models) {
        const std::set<std::string> entries = entries_told_to(model);
        for (const std::string& quote : quotes) {
            EXPECT_TRUE(is_told(quote, entries)) << model.name << ": " << quote;
        }
    }
    EXPECT_GE(quotes.size(), 8U);
}

TEST(ReferenceNotes, AQuoteIsALineOnlyAsAWhole) {
    EXPECT_EQ(
        quoted_entries("`0` and `mute,<source>` and microcontroller `setedidcopy`, `e e_a::%s`"),
        (std::vector<std::string>{"mcu mute,<source>", "mcu setedidcopy", "shell e e_a::%s"}));
    EXPECT_TRUE(is_said_by("shell e e_a::7", "shell e e_a::%s"));
    EXPECT_TRUE(is_said_by("shell e e_a::", "shell e e_a::<number>"));
    EXPECT_FALSE(is_said_by("shell e e_a::7;", "shell e e_a::%s"));
    EXPECT_FALSE(is_said_by("shell e e_a::7;e e_b", "shell e e_a::%s"));
    EXPECT_FALSE(is_said_by("mcu e e_a::7", "shell e e_a::%s"));
    EXPECT_FALSE(is_said_by("shell e e_b::7", "shell e e_a::%s"));
}

}  // namespace
