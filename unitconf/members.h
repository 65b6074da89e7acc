// The members of a section as a table, and the walker that applies one.
//
// A section's file is its tables: one row a member, in the order in which the unit is told. A row
// knows its key, the JSON type that is accepted, the line or its forms, the words it takes and the
// pauses behind it. A row whose line needs more than one value names a handler function instead, so
// that order and completeness stay in the table.
//
// What holds for every row, so that no table can get it wrong:
// - a row that takes a boolean looks its key up by exact case, every other row ignores case, as the
//   documents in the field rely on; `any_case` and `exact_case` mark the exceptions;
// - a member that is missing, of another type or outside its words sends nothing, without a word,
//   unless its kind of row says what it sends then;
// - numbers are the integer values of the JSON numbers, cut towards zero and held at the 32-bit
//   limits; whether one is negative is decided on that value.
#pragma once

#include <cjson/cJSON.h>

#include <climits>
#include <cstddef>

#include "device/lines.h"
#include "device/snapshot.h"

// A line and where it goes. A plain text is a shell line; mcu("...") is a microcontroller command.
struct Line {
    const char* text = nullptr;
    Channel channel = Channel::shell;

    constexpr Line() = default;
    constexpr Line(const char* shell_line) : text(shell_line) {}
    constexpr Line(const char* line_text, Channel line_channel)
        : text(line_text), channel(line_channel) {}
};

constexpr Line mcu(const char* command) {
    return {command, Channel::mcu};
}

// A word that a document may hold and the code, or the text, that it stands for.
struct Word {
    const char* word;
    int code;
    const char* text;

    constexpr Word(const char* the_word, int its_code)
        : word(the_word), code(its_code), text(nullptr) {}
    constexpr Word(const char* the_word, const char* its_text)
        : word(the_word), code(-1), text(its_text) {}
    constexpr Word(const char* the_word, int its_code, const char* its_text)
        : word(the_word), code(its_code), text(its_text) {}
};

struct Vocabulary {
    const Word* words = nullptr;
    size_t count = 0;

    constexpr Vocabulary() = default;
    template <size_t word_count>
    constexpr Vocabulary(const Word (&all)[word_count]) : words(all), count(word_count) {}
};

// Seconds waited behind a row: first `when_sent` if the row sent something, then `always`. Each is
// a pause of its own. An object's row has no `when_sent`: its members have theirs.
struct Pauses {
    unsigned char when_sent = 0;
    unsigned char always = 0;
};

constexpr Pauses pause_when_sent(unsigned char seconds) {
    return {seconds, 0};
}

constexpr Pauses pause_always(unsigned char seconds) {
    return {0, seconds};
}

constexpr Pauses pause_when_sent_then_always(unsigned char when_sent, unsigned char always) {
    return {when_sent, always};
}

struct Member;

// What a handler is given beside its member.
struct Section {
    const cJSON* whole;   // the section as its applier received it
    const cJSON* object;  // the object whose members are applied: the section or a part
    const ParameterSnapshot* present;  // the values found at entry, or null where none are read
    const Member* row = nullptr;       // the row of the member at hand
};

// Applies one member that is there, whatever its type. True when a line was run or a command sent.
using Handler = bool (*)(const Section& section, const cJSON* item);

// Whether a text may be used.
using TextTest = bool (*)(const char* text);

enum class Kind : unsigned char {
    flag,               // boolean: one of two lines
    flag_or_empty,      // the same, but a member of another type sends an empty command
    number,             // number: the line with its integer value
    number_in_range,    // the same within limits, moved by an offset
    text,               // string, not empty: the line with the text
    any_text,           // string, the empty one too
    choice,             // number of 0 or more, or a word: the line with the code
    word,               // a word only: the line with the code; an unknown word sends nothing
    word_or_minus_one,  // the same, but an unknown word sends -1
    translated,         // a word only: the line with the word's text
    chosen_text,        // number or word: the line with the text of that code's entry, if any
    begins_with,        // string: one of two lines, by how it begins
    number_list,        // array: the line with its numbers as a list
    handled,            // any type, looked at by the handler
    object,             // the member's own members, when it is there
    object_only,        // the same, but only when it is an object
    always,             // no member: a fixed line
    pause,              // no member: only the pause
    ignored,            // looked up and accepted, never applied by itself
};

// What the row makes use of, for the compile-time check, the reference and the tests; the walker
// goes by the kind.
enum class JsonType : unsigned char {
    none,
    boolean,
    number,
    string,
    number_or_string,
    array,
    object,
    any,
};

// Whether a key in other letters, upper or lower, is the same key.
enum class Case : unsigned char { ignored, exact };

// What only one kind of row has.
union RowOwn {
    const char* beginning = nullptr;  // begins_with: the text that chooses `line`
    TextTest test;                    // text: what it must pass, or null
    Handler handler;                  // handled
    const Member* members;            // object: the table of its members
};

// A program holds some hundreds of these, so the fields are no wider than they need to be.
struct Member {
    Kind kind = Kind::pause;
    JsonType type = JsonType::none;
    bool exact_case : 1 = false;
    bool not_empty : 1 = false;
    bool of_whole_section : 1 = false;  // looked up in the section although the row is a part's
    bool partner_exact_case : 1 = false;
    unsigned char member_count = 0;  // object: the length of `members`; 0 for every other kind
    Pauses pauses = {};
    short lowest = 0;  // number_in_range: the limits
    short highest = 0;
    short offset = 0;              // and what is added to the value that is sent
    const char* parent = nullptr;  // the object that holds the key, when it is not the section
    const char* key = nullptr;
    Line line = {};                      // for a flag: the line of true
    Line other = {};                     // for a flag: the line of false
    Line then = {};                      // run behind the line, when that was sent
    const char* partner = nullptr;       // the row counts only when this key is there as well
    const char* displaced_by = nullptr;  // the row counts only when the section as a whole holds no
                                         // object of this key
    Vocabulary words = {};
    RowOwn own = {};
};

// --- The rows ------------------------------------------------------------------------------------

// A boolean that runs `on` for true and `off` for false.
constexpr Member flag(const char* key, Line on, Line off, Pauses pauses = {}) {
    return {.kind = Kind::flag,
            .type = JsonType::boolean,
            .exact_case = true,
            .pauses = pauses,
            .key = key,
            .line = on,
            .other = off};
}

// A flag that sends an empty line when the member is there but not a boolean.
constexpr Member flag_or_empty(const char* key, Line on, Line off, Pauses pauses = {}) {
    Member row = flag(key, on, off, pauses);
    row.kind = Kind::flag_or_empty;
    return row;
}

// A number of any value; `line` holds "%d".
constexpr Member number(const char* key, Line line, Pauses pauses = {}) {
    return {
        .kind = Kind::number, .type = JsonType::number, .pauses = pauses, .key = key, .line = line};
}

// A number from `lowest` to `highest`, sent with `offset` added.
constexpr Member number_in_range(const char* key, short lowest, short highest, short offset,
                                 Line line, Pauses pauses = {}) {
    Member row = number(key, line, pauses);
    row.kind = Kind::number_in_range;
    row.lowest = lowest;
    row.highest = highest;
    row.offset = offset;
    return row;
}

// A text that is not empty; `line` holds "%s" and takes it as it stands.
constexpr Member text(const char* key, Line line, Pauses pauses = {}) {
    Member row = {.kind = Kind::text,
                  .type = JsonType::string,
                  .not_empty = true,
                  .pauses = pauses,
                  .key = key,
                  .line = line};
    row.own.test = nullptr;
    return row;
}

// A text, the empty one included.
constexpr Member any_text(const char* key, Line line, Pauses pauses = {}) {
    Member row = text(key, line, pauses);
    row.kind = Kind::any_text;
    row.not_empty = false;
    return row;
}

// A text that is not empty and passes `test`.
constexpr Member tested_text(const char* key, TextTest test, Line line, Pauses pauses = {}) {
    Member row = text(key, line, pauses);
    row.own.test = test;
    return row;
}

// A number of 0 or more, sent as it is, or one of the words, sent as its code; `line` holds "%d".
constexpr Member choice(const char* key, Vocabulary words, Line line, Pauses pauses = {}) {
    return {.kind = Kind::choice,
            .type = JsonType::number_or_string,
            .pauses = pauses,
            .key = key,
            .line = line,
            .words = words};
}

// One of the words, sent as its code; a number is no word.
constexpr Member word(const char* key, Vocabulary words, Line line, Pauses pauses = {}) {
    Member row = choice(key, words, line, pauses);
    row.kind = Kind::word;
    row.type = JsonType::string;
    return row;
}

// One of the words, sent as its code; any other text is sent as -1.
constexpr Member word_or_minus_one(const char* key, Vocabulary words, Line line,
                                   Pauses pauses = {}) {
    Member row = word(key, words, line, pauses);
    row.kind = Kind::word_or_minus_one;
    return row;
}

// One of the words, sent as its text; `line` holds "%s".
constexpr Member translated(const char* key, Vocabulary words, Line line, Pauses pauses = {}) {
    Member row = word(key, words, line, pauses);
    row.kind = Kind::translated;
    return row;
}

// A number or a word that chooses an entry by its code; `line` holds "%s" and takes the entry's
// text. An entry without text and a number that is no entry's code send nothing.
constexpr Member chosen_text(const char* key, Vocabulary words, Line line, Pauses pauses = {}) {
    Member row = choice(key, words, line, pauses);
    row.kind = Kind::chosen_text;
    return row;
}

// A text: `line` when it begins with `beginning`, `other` when it does not.
constexpr Member begins_with(const char* key, const char* beginning, Line line, Line other,
                             Pauses pauses = {}) {
    Member row = {.kind = Kind::begins_with,
                  .type = JsonType::string,
                  .pauses = pauses,
                  .key = key,
                  .line = line,
                  .other = other};
    row.own.beginning = beginning;
    return row;
}

// An array, the empty one too: `line` holds "%s" and takes its numbers as a list (see
// json_number_array_to_list).
constexpr Member number_list(const char* key, Line line, Pauses pauses = {}) {
    return {.kind = Kind::number_list,
            .type = JsonType::array,
            .pauses = pauses,
            .key = key,
            .line = line};
}

// A member of any type that `handler` applies; `type` and `words` say what it makes use of.
constexpr Member handled(const char* key, JsonType type, Handler handler, Pauses pauses = {},
                         Vocabulary words = {}) {
    Member row = {.kind = Kind::handled,
                  .type = type,
                  .exact_case = type == JsonType::boolean,
                  .pauses = pauses,
                  .key = key,
                  .words = words};
    row.own.handler = handler;
    return row;
}

// There is no row without its handler. That is said here, as the check below cannot compare the
// address of a function template's instance under every compiler option.
constexpr Member handled(const char* key, JsonType type, decltype(nullptr) no_handler,
                         Pauses pauses = {}, Vocabulary words = {}) = delete;

// A sub-object. Its table is applied when the key is there, whatever its type; the pause behind it
// is taken in any case.
template <size_t count>
constexpr Member object(const char* key, const Member (&members)[count], Pauses pauses = {}) {
    static_assert(count <= UCHAR_MAX);
    Member row = {.kind = Kind::object,
                  .type = JsonType::object,
                  .member_count = count,
                  .pauses = pauses,
                  .key = key};
    row.own.members = members;
    return row;
}

// The same, but a member of another type counts as absent: what its table does always is not done.
template <size_t count>
constexpr Member object_only(const char* key, const Member (&members)[count], Pauses pauses = {}) {
    Member row = object(key, members, pauses);
    row.kind = Kind::object_only;
    return row;
}

// A line that is run whatever the section holds.
constexpr Member always(Line line, Pauses pauses = {}) {
    return {.kind = Kind::always, .pauses = pauses, .line = line};
}

// A pause that is taken whatever the section holds.
constexpr Member pause(unsigned char seconds) {
    return {.kind = Kind::pause, .pauses = pause_always(seconds)};
}

// A member that documents carry and that changes nothing.
constexpr Member ignored(const char* key, JsonType type, Pauses pauses = {}) {
    return {.kind = Kind::ignored,
            .type = type,
            .exact_case = type == JsonType::boolean,
            .pauses = pauses,
            .key = key};
}

// --- What changes a row --------------------------------------------------------------------------

// The key stands in the sub-object `parent` of the section.
constexpr Member within(const char* parent, Member row) {
    row.parent = parent;
    return row;
}

// In the table of a part: the key, or the `parent` that holds it, stands in the whole section. The
// row is still applied, with its pauses, only where the part's table is.
constexpr Member of_section(Member row) {
    row.of_whole_section = true;
    return row;
}

// The key is looked up ignoring case although it is a boolean's.
constexpr Member any_case(Member row) {
    row.exact_case = false;
    return row;
}

// The key is looked up by exact case although it is no boolean's.
constexpr Member exact_case(Member row) {
    row.exact_case = true;
    return row;
}

// The empty text sends nothing.
constexpr Member not_empty(Member row) {
    row.not_empty = true;
    return row;
}

// The row sends nothing unless the partner key is there too, whatever its type; its pause stays.
// The partner is looked up as its own row looks it up.
constexpr Member together_with(const char* partner, Case partner_case, Member row) {
    row.partner = partner;
    row.partner_exact_case = partner_case == Case::exact;
    return row;
}

// A member without a line of its own: the row of `partner` reads it and says what becomes of it.
// The row is there so that the table names every member.
constexpr Member read_with(const char* partner, Case partner_case, const char* key, JsonType type,
                           Vocabulary words = {}) {
    Member row = together_with(partner, partner_case, ignored(key, type));
    row.words = words;
    return row;
}

// The row sends nothing when the section as a whole holds an object of the key `displaced_by`,
// looked up ignoring case; its pause stays. Null leaves the row as it is.
constexpr Member displaced(const char* displaced_by, Member row) {
    row.displaced_by = displaced_by;
    return row;
}

// A second line, run right behind the first one when that was run.
constexpr Member and_then(Line line, Member row) {
    row.then = line;
    return row;
}

// --- The check -----------------------------------------------------------------------------------

constexpr bool same_text(const char* a, const char* b) {
    while (*a != '\0' && *a == *b) {
        a++;
        b++;
    }
    return *a == *b;
}

// Whether every "%" of the line is the start of `placeholder` ('s' or 'd'; 0 allows none), and at
// least one is there when one is wanted.
constexpr bool holds_only(const Line& line, char placeholder) {
    if (line.text == nullptr) {
        return false;
    }
    bool found = false;
    for (const char* at = line.text; *at != '\0'; at++) {
        if (*at == '%') {
            if (placeholder == '\0' || at[1] != placeholder) {
                return false;
            }
            found = true;
        }
    }
    return found || placeholder == '\0';
}

constexpr bool well_formed_words(const Vocabulary& words, bool texts) {
    for (size_t i = 0; i < words.count; i++) {
        const Word& each = words.words[i];
        if (each.word == nullptr || (texts ? each.text == nullptr : each.code < 0)) {
            return false;
        }
        for (size_t k = 0; k < i; k++) {
            if (same_text(each.word, words.words[k].word)) {
                return false;
            }
        }
    }
    return words.count > 0;
}

// The keys of a row: its own, where its kind has one, and those of what it looks at beside it.
constexpr bool well_formed_keys(const Member& row) {
    const bool needs_key = row.kind != Kind::always && row.kind != Kind::pause;
    if (needs_key != (row.key != nullptr && row.key[0] != '\0')) {
        return false;
    }
    return (row.parent == nullptr || (needs_key && row.parent[0] != '\0')) &&
           (row.partner == nullptr || row.partner[0] != '\0') &&
           (!row.of_whole_section || needs_key) &&
           (row.displaced_by == nullptr || (needs_key && row.displaced_by[0] != '\0'));
}

constexpr bool well_formed_row(const Member& row) {
    if (!well_formed_keys(row) || (row.then.text != nullptr && !holds_only(row.then, '\0'))) {
        return false;
    }
    switch (row.kind) {
        case Kind::flag:
        case Kind::flag_or_empty:
            return holds_only(row.line, '\0') && holds_only(row.other, '\0') &&
                   row.line.channel == row.other.channel;
        case Kind::number:
            return holds_only(row.line, 'd');
        case Kind::number_in_range:
            return holds_only(row.line, 'd') && row.lowest <= row.highest;
        case Kind::text:
        case Kind::any_text:
        case Kind::number_list:
            return holds_only(row.line, 's');
        case Kind::choice:
        case Kind::word:
        case Kind::word_or_minus_one:
            return holds_only(row.line, 'd') && well_formed_words(row.words, false);
        case Kind::translated:
            return holds_only(row.line, 's') && well_formed_words(row.words, true);
        case Kind::chosen_text:
            return holds_only(row.line, 's') && well_formed_words(row.words, false);
        case Kind::begins_with:
            return row.own.beginning != nullptr && row.own.beginning[0] != '\0' &&
                   holds_only(row.line, '\0') && holds_only(row.other, '\0');
        case Kind::handled:
            return row.type != JsonType::none;
        case Kind::object:
        case Kind::object_only:
            return row.member_count > 0 && row.pauses.when_sent == 0;
        case Kind::always:
            return holds_only(row.line, '\0') && row.type == JsonType::none;
        case Kind::pause:
            return row.pauses.always > 0;
        case Kind::ignored:
            return row.pauses.when_sent == 0;
    }
    return false;
}

// Whether every row of a table can be applied as it stands. Each table is followed by a
// static_assert of it, so that a wrong row stops the build.
template <size_t count>
constexpr bool well_formed(const Member (&members)[count]) {
    for (const Member& row : members) {
        if (!well_formed_row(row)) {
            return false;
        }
    }
    return true;
}

// --- The walk ------------------------------------------------------------------------------------

// Applies the rows of a table to `section.object`, in their order.
void apply_member_rows(const Section& section, const Member* members, size_t count);

// Applies a section's table: each row sends what its member asks for and takes its pauses.
// `section` may be of any JSON type; in one that is not an object no member is found, while what is
// always run and always waited for still is. `present` holds the values at entry, for the handlers.
template <size_t count>
void apply_members(const cJSON* section, const Member (&members)[count],
                   const ParameterSnapshot* present = nullptr) {
    apply_member_rows({section, section, present}, members, count);
}

// The same, with the values that the unit holds now, which are taken first.
template <size_t count>
void apply_members_with_snapshot(const cJSON* section, const Member (&members)[count]) {
    ParameterSnapshot present;
    take_snapshot(&present);
    apply_members(section, members, &present);
}

// --- What the walker and handlers share ----------------------------------------------------------

// The item of a key; null when there is none.
const cJSON* find_member(const cJSON* object, const char* key, Case key_case = Case::ignored);

// The code of an item: a number's integer value; for a string the code of its word. Null, another
// type or an unknown word gives -1.
int choice_code(const cJSON* item, Vocabulary words);

// The entry of a text among the words, or null; the comparison is exact.
const Word* find_word(const char* text, Vocabulary words);

// The first entry of a code among the words, or null.
const Word* find_code(int code, Vocabulary words);

// The text of an item that is a string with at least one character, otherwise null.
const char* nonempty_text(const cJSON* item);
