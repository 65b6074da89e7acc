// Writes the reference of the unit configuration document (docs/unit-configuration.md) from the
// tables that the program itself walks, so that it cannot drift: a test compares the file with what
// this prints. What a table cannot tell, because a function does it, stands in notes.h; a member
// that needs a note and has none is an error.
#include <cstdio>
#include <cstring>
#include <string>
#include <vector>

#include "docs/reference/notes.h"
#include "unitconf/models.h"
#include "unitconf/tables.h"

namespace {

bool note_missing = false;

std::string code(const std::string& text) {
    return "`" + text + "`";
}

std::string quoted(const std::string& text) {
    return code("\"" + text + "\"");
}

std::string model_names(unsigned models) {
    if (models == every_model) {
        return "every model";
    }
    std::string names;
    const struct {
        unsigned model;
        const char* name;
    } all[] = {{usbc_encoder, "ZAVO-ENC-U300-DA"},
               {hdmi_encoder, "ZAVO-ENC-E100-DA"},
               {decoder, "ZAVO-DEC-D200-DA"}};
    for (const auto& each : all) {
        if ((models & each.model) != 0) {
            names += (names.empty() ? "" : ", ") + std::string(each.name);
        }
    }
    return names;
}

const Note* note_of(const SectionTable& table, const std::string& path) {
    for (const Note& note : notes) {
        if (strcmp(note.section, table.section) == 0 && (note.models & table.models) != 0 &&
            path == note.member) {
            return &note;
        }
    }
    return nullptr;
}

// Puts a further remark behind the text of a cell.
void append_remark(std::string* text, const std::string& remark) {
    *text += (text->empty() ? "" : "; ") + remark;
}

const char* type_name(JsonType type) {
    switch (type) {
        case JsonType::none:
            return "";
        case JsonType::boolean:
            return "boolean";
        case JsonType::number:
            return "number";
        case JsonType::string:
            return "string";
        case JsonType::number_or_string:
            return "number or string";
        case JsonType::array:
            return "array";
        case JsonType::object:
            return "object";
        case JsonType::any:
            return "any";
    }
    return "";
}

std::string words_and_limits(const Member& row) {
    std::string text;
    for (size_t i = 0; i < row.words.count; i++) {
        const Word& word = row.words.words[i];
        text += (i == 0 ? "" : ", ") + quoted(word.word);
        if (row.kind == Kind::chosen_text) {
            text += " or " + std::to_string(word.code) + " = " +
                    (word.text == nullptr ? "nothing" : code(word.text));
        } else if (word.text != nullptr) {
            text += " = " + code(word.text);
        } else if (row.kind != Kind::handled || word.code >= 0) {
            text += " = " + std::to_string(word.code);
        }
    }
    switch (row.kind) {
        case Kind::choice:
            return "a number of 0 or more, or " + text;
        case Kind::word_or_minus_one:
            return text + "; any other text = -1";
        case Kind::number_in_range:
            return std::to_string(row.lowest) + " to " + std::to_string(row.highest);
        case Kind::begins_with:
            return std::string(row.not_empty ? "not empty; " : "") + "begins with " +
                   quoted(row.own.beginning) + ", or does not";
        case Kind::text:
            return row.own.test == nullptr ? "not empty" : "not empty, and a valid address";
        case Kind::any_text:
            return row.not_empty ? "not empty" : "";
        case Kind::number_list:
            return "numbers, told as a list with \",\" between them";
        default:
            return text;
    }
}

std::string line_of(const Line& line) {
    if (line.text == nullptr) {
        return "";
    }
    return line.channel == Channel::mcu ? "microcontroller " + code(line.text) : code(line.text);
}

std::string what_is_told(const Member& row) {
    std::string text = line_of(row.line);
    if (row.other.text != nullptr) {
        text += " / " + line_of(row.other);
    }
    if (row.kind == Kind::flag_or_empty) {
        append_remark(&text, "not a boolean: an empty command");
    }
    if (row.kind == Kind::number_in_range && row.offset != 0) {
        text += " with " + std::to_string(row.offset) + " added";
    }
    if (row.then.text != nullptr) {
        text += ", then " + line_of(row.then);
    }
    if (row.kind == Kind::ignored) {
        text = row.partner == nullptr ? "nothing" : "read by " + code(row.partner);
    } else if (row.partner != nullptr) {
        append_remark(&text, "only together with " + code(row.partner));
    }
    if (row.displaced_by != nullptr) {
        append_remark(&text,
                      "only without an object " + code(row.displaced_by) + " in the section");
    }
    return text;
}

std::string pauses_of(const Member& row) {
    const Pauses& pauses = row.pauses;
    std::string text;
    if (pauses.when_sent > 0) {
        text = std::to_string(pauses.when_sent) + " when sent";
    }
    if (pauses.always > 0) {
        text += (text.empty() ? "" : ", then ") + std::to_string(pauses.always);
    }
    if (row.member_count > 0 && !text.empty()) {
        text += ", behind its members";
    }
    return text;
}

void print_rows(const SectionTable& table, const std::string& path, const Member* rows,
                size_t count);

void add_note(const Note* note, const SectionTable& table, const Member& row,
              const std::string& name, std::string* told) {
    // What is done with an object as a whole stands at its own row, not at that of its members.
    if (note != nullptr && row.kind != Kind::object) {
        append_remark(told, note->text);
    } else if (row.kind == Kind::handled) {
        fprintf(stderr, "no note for %s %s\n", table.section, name.c_str());
        note_missing = true;
    }
    if (told->empty() && row.kind == Kind::object) {
        *told = "its members, when it is there:";
    } else if (told->empty() && row.kind == Kind::object_only) {
        *told = "its members, when it is an object:";
    }
}

// What is done in any case is shown with the object that has to be there for it; `path` is that
// object's, with the dot behind it.
std::string always_of(const std::string& path) {
    return (path.empty() ? "" : code(path.substr(0, path.size() - 1)) + " ") + "(always)";
}

void print_row(const SectionTable& table, const std::string& path, const Member& row) {
    std::string name;
    std::string told = what_is_told(row);
    std::string limits = words_and_limits(row);
    if (row.key != nullptr) {
        name = row.of_whole_section ? "" : path;
        name += (row.parent == nullptr ? "" : std::string(row.parent) + ".") + row.key;
        const Note* note = note_of(table, name);
        add_note(note, table, row, name, &told);
        if (note != nullptr && note->limits != nullptr) {
            limits = note->limits;
        }
    }
    const std::string shown = row.key != nullptr ? code(name) : always_of(path);
    printf("| %s | %s%s | %s | %s | %s |\n", shown.c_str(), type_name(row.type),
           row.key != nullptr && row.exact_case ? ", exact case" : "", limits.c_str(), told.c_str(),
           pauses_of(row).c_str());
    if (row.member_count > 0) {
        print_rows(table, name + ".", row.own.members, row.member_count);
    }
}

void print_rows(const SectionTable& table, const std::string& path, const Member* rows,
                size_t count) {
    for (size_t i = 0; i < count; i++) {
        print_row(table, path, rows[i]);
    }
}

void print_table(const SectionTable& table) {
    printf("\n### %s, %s\n\n", code(table.section).c_str(), model_names(table.models).c_str());
    const Note* about = note_of(table, "");
    if (about != nullptr) {
        printf("%s\n\n", about->text);
    }
    printf("| Member | Type | Words, limits | What the unit is told | Pause behind it (s) |\n");
    printf("|---|---|---|---|---|\n");
    print_rows(table, "", table.rows, table.count);
}

// --- The overview --------------------------------------------------------------------------------

// The anchor that a heading gets where the page is shown: lower case, blanks as hyphens, without
// punctuation.
std::string anchor_of(const std::string& title) {
    std::string anchor;
    for (const char letter : title) {
        if (letter >= 'A' && letter <= 'Z') {
            anchor += static_cast<char>(letter - 'A' + 'a');
        } else if (letter == ' ') {
            anchor += '-';
        } else if (letter != '.' && letter != ',') {
            anchor += letter;
        }
    }
    return anchor;
}

void print_contents() {
    for (const char* title : introduction_headings) {
        printf("- [%s](#%s)\n", title, anchor_of(title).c_str());
    }
    for (const Chapter& chapter : chapters) {
        printf("- [%s](#%s)\n", chapter.title, anchor_of(chapter.title).c_str());
    }
}

// The keys of the document whose steps a model's progress messages tell, in their order. A step
// without a key has only its message.
std::vector<std::string> steps_of(const ModelSections& sections) {
    std::vector<std::string> steps;
    for (const SectionRun& run : sections.runs) {
        for (size_t i = 0; i < run.count; i++) {
            const SectionRow& row = run.rows[i];
            if (row.progress == Progress::with_parent) {
                steps.push_back(code(row.parent));
            } else if (row.progress == Progress::always) {
                steps.push_back(row.key == nullptr ? "(only the message)" : code(row.key));
            }
        }
    }
    return steps;
}

void print_steps() {
    const std::vector<std::string> columns[] = {steps_of(usbc_encoder_sections),
                                                steps_of(hdmi_encoder_sections),
                                                steps_of(decoder_sections)};
    printf(
        "| Step | ZAVO-ENC-U300-DA | ZAVO-ENC-E100-DA | ZAVO-DEC-D200-DA |\n|---|---|---|---|\n");
    for (size_t step = 0; step < columns[2].size(); step++) {
        printf("| %zu |", step + 1);
        for (const std::vector<std::string>& column : columns) {
            printf(" %s |", step < column.size() ? column[step].c_str() : "");
        }
        printf("\n");
    }
}

}  // namespace

int main() {
    fputs(title_and_summary, stdout);
    print_contents();
    fputs(how_it_is_read, stdout);
    fputs(order_and_progress, stdout);
    print_steps();
    fputs(identity_chapter, stdout);
    for (const Chapter& chapter : chapters) {
        printf("\n## %s\n", chapter.title);
        if (chapter.text != nullptr) {
            printf("\n%s\n", chapter.text);
        }
        for (const SectionTable* table : chapter.tables) {
            if (table != nullptr) {
                print_table(*table);
            }
        }
    }
    return note_missing ? 1 : 0;
}
