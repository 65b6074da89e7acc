#include "unitconf/members.h"

#include <gtest/gtest.h>

#include <map>
#include <set>
#include <string>
#include <vector>

#include "tests/support/applying.h"
#include "tests/support/recorder.h"

namespace {

// --- Every kind of row with every JSON type ------------------------------------------------------

constexpr Word speeds[] = {{"", 0}, {"low", 1}, {"high", 2}};
constexpr Word algorithms[] = {{"md5", "MD5"}, {"none", "0"}};
constexpr Word timings[] = {{"", 0}, {"low", 7, "70"}, {"high", 8, "80"}, {"md5", 9}};

bool record_item(const Section& section, const cJSON* item) {
    char* printed = cJSON_PrintUnformatted(item);
    run_shell_format("handled %s of %d members", printed, cJSON_GetArraySize(section.object));
    cJSON_free(printed);
    return !cJSON_IsNull(item);
}

bool is_digit(const char* text) {
    return text[0] >= '0' && text[0] <= '9' && text[1] == '\0';
}

constexpr Member inner_members[] = {
    pause(4),
    flag("on", "inner 1", "inner 0"),
};

// One row of each kind, all of the key "k", with both pauses.
constexpr Pauses both = pause_when_sent_then_always(3, 1);
constexpr Member kinds[] = {
    flag("k", "on;", "off;", both),
    flag_or_empty("k", mcu("on"), mcu("off"), both),
    number("k", "n %d;", both),
    number_in_range("k", 1, 19, -1, "r %d;", both),
    text("k", "t %s", both),
    any_text("k", mcu("a %s %s"), both),
    tested_text("k", is_digit, "digit %s", both),
    choice("k", speeds, mcu("c,%d"), both),
    word("k", speeds, "w %d", both),
    word_or_minus_one("k", speeds, "m %d", both),
    translated("k", algorithms, "x %s", both),
    chosen_text("k", timings, "v %s;V %s;", both),
    begins_with("k", "dhcp", "yes", "no", both),
    number_list("k", "l \"%s\"", both),
    handled("k", JsonType::any, record_item, both),
    object("k", inner_members, pause_always(1)),
    object_only("k", inner_members, pause_always(1)),
    always("fixed;", both),
    pause(2),
    ignored("k", JsonType::any, pause_always(1)),
};
static_assert(well_formed(kinds) && well_formed(inner_members));

constexpr size_t kind_count = sizeof kinds / sizeof kinds[0];

const char* const values[] = {
    "true", "false",   "null",    "0",         "7",     "20", "-1",     "-0.5", "1e99",
    "\"\"", "\"low\"", "\"md5\"", "\"dhcp4\"", "\"5\"", "[]", "[4,-5]", "{}",   "{\"on\":true}",
};

std::string apply_row_to(const Member& row, const std::string& document) {
    reset_recorder();
    cJSON* section = cJSON_Parse(document.c_str());
    apply_member_rows({section, section, nullptr}, &row, 1);
    cJSON_Delete(section);
    return recorded_trace();
}

// What each kind sends for each of the values; what is not named sends nothing.
const std::map<Kind, std::map<std::string, std::string>> expected_lines = {
    {Kind::flag, {{"true", "shell on;\n"}, {"false", "shell off;\n"}}},
    {Kind::flag_or_empty,
     {{"true", "mcu on\n"},
      {"false", "mcu off\n"},
      {"null", "mcu \n"},
      {"0", "mcu \n"},
      {"7", "mcu \n"},
      {"20", "mcu \n"},
      {"-1", "mcu \n"},
      {"-0.5", "mcu \n"},
      {"1e99", "mcu \n"},
      {"\"\"", "mcu \n"},
      {"\"low\"", "mcu \n"},
      {"\"md5\"", "mcu \n"},
      {"\"dhcp4\"", "mcu \n"},
      {"\"5\"", "mcu \n"},
      {"[]", "mcu \n"},
      {"[4,-5]", "mcu \n"},
      {"{}", "mcu \n"},
      {"{\"on\":true}", "mcu \n"}}},
    {Kind::number,
     {{"0", "shell n 0;\n"},
      {"7", "shell n 7;\n"},
      {"20", "shell n 20;\n"},
      {"-1", "shell n -1;\n"},
      {"-0.5", "shell n 0;\n"},
      {"1e99", "shell n 2147483647;\n"}}},
    {Kind::number_in_range, {{"7", "shell r 6;\n"}}},
    {Kind::any_text,
     {{"\"\"", "mcu a  \n"},
      {"\"low\"", "mcu a low low\n"},
      {"\"md5\"", "mcu a md5 md5\n"},
      {"\"dhcp4\"", "mcu a dhcp4 dhcp4\n"},
      {"\"5\"", "mcu a 5 5\n"}}},
    {Kind::choice,
     {{"0", "mcu c,0\n"},
      {"7", "mcu c,7\n"},
      {"20", "mcu c,20\n"},
      {"-0.5", "mcu c,0\n"},
      {"1e99", "mcu c,2147483647\n"},
      {"\"\"", "mcu c,0\n"},
      {"\"low\"", "mcu c,1\n"}}},
    {Kind::word, {{"\"\"", "shell w 0\n"}, {"\"low\"", "shell w 1\n"}}},
    {Kind::word_or_minus_one,
     {{"\"\"", "shell m 0\n"},
      {"\"low\"", "shell m 1\n"},
      {"\"md5\"", "shell m -1\n"},
      {"\"dhcp4\"", "shell m -1\n"},
      {"\"5\"", "shell m -1\n"}}},
    {Kind::translated, {{"\"md5\"", "shell x MD5\n"}}},
    {Kind::chosen_text, {{"7", "shell v 70;V 70;\n"}, {"\"low\"", "shell v 70;V 70;\n"}}},
    {Kind::begins_with,
     {{"\"\"", "shell no\n"},
      {"\"low\"", "shell no\n"},
      {"\"md5\"", "shell no\n"},
      {"\"dhcp4\"", "shell yes\n"},
      {"\"5\"", "shell no\n"}}},
    {Kind::number_list, {{"[]", "shell l \"\"\n"}, {"[4,-5]", "shell l \"4,-5\"\n"}}},
    {Kind::object,
     {{"true", "pause 4\n"},
      {"false", "pause 4\n"},
      {"null", "pause 4\n"},
      {"0", "pause 4\n"},
      {"7", "pause 4\n"},
      {"20", "pause 4\n"},
      {"-1", "pause 4\n"},
      {"-0.5", "pause 4\n"},
      {"1e99", "pause 4\n"},
      {"\"\"", "pause 4\n"},
      {"\"low\"", "pause 4\n"},
      {"\"md5\"", "pause 4\n"},
      {"\"dhcp4\"", "pause 4\n"},
      {"\"5\"", "pause 4\n"},
      {"[]", "pause 4\n"},
      {"[4,-5]", "pause 4\n"},
      {"{}", "pause 4\n"},
      {"{\"on\":true}", "pause 4\nshell inner 1\n"}}},
    {Kind::object_only, {{"{}", "pause 4\n"}, {"{\"on\":true}", "pause 4\nshell inner 1\n"}}},
};

bool is_tested_text(const Member& row) {
    return row.kind == Kind::text && row.own.test != nullptr;
}

// A value, as JSON, that makes the row do something.
std::string usable_value(const Member& row) {
    if (row.kind == Kind::text) {
        return "\"5\"";
    }
    const auto lines = expected_lines.find(row.kind);
    return lines == expected_lines.end() ? "7" : lines->second.begin()->first;
}

TEST(MemberRows, EachKindTakesItsJsonTypesAndPausesBehindThem) {
    std::set<Kind> seen;
    for (const Member& row : kinds) {
        const auto kind_lines = expected_lines.find(row.kind);
        if (kind_lines == expected_lines.end() || is_tested_text(row)) {
            continue;  // the rest has tests of its own below
        }
        seen.insert(row.kind);
        for (const std::string value : values) {
            const auto line = kind_lines->second.find(value);
            const std::string sent = line == kind_lines->second.end() ? ""
                                     : row.pauses.when_sent == 0      ? line->second
                                                                      : line->second + "pause 3\n";
            EXPECT_EQ(apply_row_to(row, "{\"k\":" + value + "}"), sent + "pause 1\n")
                << "kind " << static_cast<int>(row.kind) << " with " << value;
        }
    }
    EXPECT_EQ(seen.size(), expected_lines.size());
}

TEST(MemberRows, EveryKindIsInTheTablesOfThisTest) {
    for (int kind = 0; kind <= static_cast<int>(Kind::ignored); kind++) {
        bool found = false;
        for (const Member& row : kinds) {
            found = found || static_cast<int>(row.kind) == kind;
        }
        EXPECT_TRUE(found) << "kind " << kind;
    }
}

TEST(MemberRows, AnAbsentMemberOnlyTakesItsConstantPause) {
    for (const Member& row : kinds) {
        const std::string always = row.kind == Kind::always  ? "shell fixed;\npause 3\npause 1\n"
                                   : row.kind == Kind::pause ? "pause 2\n"
                                                             : "pause 1\n";
        for (const char* document : {"{}", "[]", "true", "null", "3", "\"k\"", "[{\"k\":true}]"}) {
            EXPECT_EQ(apply_row_to(row, document), always)
                << "kind " << static_cast<int>(row.kind) << " in " << document;
        }
    }
}

TEST(MemberRows, OnlyBooleansAreLookedUpByExactCase) {
    for (const Member& row : kinds) {
        if (row.key == nullptr || row.kind == Kind::ignored) {
            continue;
        }
        const bool is_flag = row.kind == Kind::flag || row.kind == Kind::flag_or_empty;
        const std::string value = usable_value(row);
        const std::string lower = apply_row_to(row, "{\"k\":" + value + "}");
        const std::string upper = apply_row_to(row, "{\"K\":" + value + "}");
        EXPECT_NE(lower, "pause 1\n") << "kind " << static_cast<int>(row.kind);
        if (is_flag) {
            EXPECT_EQ(upper, "pause 1\n");
        } else {
            EXPECT_EQ(upper, lower) << "kind " << static_cast<int>(row.kind);
        }
    }
}

TEST(MemberRows, TextIsTakenAsItStandsAndNotWhenEmpty) {
    const Member row = text("k", "t \"%s\" > /dev/null 2>&1");
    EXPECT_EQ(apply_row_to(row, R"json({"k":"a \"b\" %s %n $(c)"})json"),
              "shell t \"a \"b\" %s %n $(c)\" > /dev/null 2>&1\n");
    EXPECT_EQ(apply_row_to(row, R"({"k":""})"), "");
    EXPECT_EQ(apply_row_to(row, R"({"k":5})"), "");
}

TEST(MemberRows, ALongTextMakesALongLineThatIsRunWhole) {
    for (const size_t length :
         {2038UL, 2045UL, 2046UL, 2047UL, 2048UL, 2049UL, 16384UL, 300000UL}) {
        const std::string value(length, 'x');
        EXPECT_EQ(apply_row_to(text("k", "t %s"), "{\"k\":\"" + value + "\"}"),
                  "shell t " + value + "\n");
    }
}

TEST(MemberRows, TestedTextNeedsItsTest) {
    const Member row = tested_text("k", is_digit, "digit %s", pause_when_sent(1));
    EXPECT_EQ(apply_row_to(row, R"({"k":"5"})"), "shell digit 5\npause 1\n");
    EXPECT_EQ(apply_row_to(row, R"({"k":"x"})"), "");
    EXPECT_EQ(apply_row_to(row, R"({"k":""})"), "");
}

TEST(MemberRows, RangesHoldAtBothEndsAndAgainstWrapping) {
    const Member row = number_in_range("k", 1, 19, -1, "r %d");
    EXPECT_EQ(apply_row_to(row, R"({"k":1})"), "shell r 0\n");
    EXPECT_EQ(apply_row_to(row, R"({"k":19})"), "shell r 18\n");
    for (const char* outside : {"0", "20", "-1", "-2147483648", "2147483647", "1e99", "-1e99"}) {
        EXPECT_EQ(apply_row_to(row, std::string("{\"k\":") + outside + "}"), "") << outside;
    }
}

TEST(MemberRows, AHandlerSeesEveryTypeAndSaysWhetherItSent) {
    const Member row = handled("k", JsonType::any, record_item, pause_when_sent_then_always(3, 1));
    EXPECT_EQ(apply_row_to(row, R"({"k":[1],"l":2})"),
              "shell handled [1] of 2 members\npause 3\npause 1\n");
    EXPECT_EQ(apply_row_to(row, R"({"k":null})"), "shell handled null of 1 members\npause 1\n");
}

TEST(MemberRows, AHandlerOfABooleanIsLookedUpByExactCase) {
    EXPECT_EQ(apply_row_to(handled("k", JsonType::boolean, record_item), R"({"K":true})"), "");
}

TEST(MemberRows, AMemberWithinASubObjectIsFoundThereOnly) {
    const Member row = within("sub", number("k", "n %d"));
    EXPECT_EQ(apply_row_to(row, R"({"k":1,"sub":{"k":2}})"), "shell n 2\n");
    EXPECT_EQ(apply_row_to(row, R"({"k":1,"SUB":{"K":2}})"), "shell n 2\n");
    EXPECT_EQ(apply_row_to(row, R"({"k":1,"sub":[{"k":2}]})"), "");
    EXPECT_EQ(apply_row_to(row, R"({"k":1})"), "");
}

TEST(MemberRows, AMemberOfTheWholeSectionIsAppliedWhereThePartIs) {
    static constexpr Member part_members[] = {
        of_section(within("sub", flag("k", "on", "off", pause_always(1)))),
        of_section(together_with("p", Case::ignored, number("n", "n %d"))),
    };
    static_assert(well_formed(part_members));
    const Member row = object("part", part_members);
    EXPECT_EQ(apply_row_to(row, R"({"part":{"n":3,"p":0},"sub":{"k":true},"n":2,"p":0})"),
              "shell on\npause 1\nshell n 2\n");
    EXPECT_EQ(apply_row_to(row, R"({"part":{"k":true,"sub":{"k":true},"p":0},"n":2})"),
              "pause 1\n");
    EXPECT_EQ(apply_row_to(row, R"({"sub":{"k":true},"n":2,"p":0})"), "");
}

TEST(MemberRows, AChangedCaseRuleIsFollowed) {
    EXPECT_EQ(apply_row_to(any_case(flag("k", "on", "off")), R"({"K":true})"), "shell on\n");
    EXPECT_EQ(apply_row_to(exact_case(number("k", "n %d")), R"({"K":1})"), "");
    EXPECT_EQ(apply_row_to(exact_case(number("k", "n %d")), R"({"k":1})"), "shell n 1\n");
}

TEST(MemberRows, AMemberThatNeedsAPartnerKeepsItsPauseWithoutIt) {
    const Member row = together_with("p", Case::exact, any_text("k", "t %s", pause_always(1)));
    EXPECT_EQ(apply_row_to(row, R"({"k":"a","p":null})"), "shell t a\npause 1\n");
    EXPECT_EQ(apply_row_to(row, R"({"k":"a","P":true})"), "pause 1\n");
    EXPECT_EQ(apply_row_to(row, R"({"k":"a"})"), "pause 1\n");
    const Member loose = together_with("p", Case::ignored, any_text("k", "t %s"));
    EXPECT_EQ(apply_row_to(loose, R"({"k":"a","P":true})"), "shell t a\n");
}

TEST(MemberRows, AMemberThatAnotherRowReadsSendsNothingItself) {
    const Member row = read_with("p", Case::exact, "k", JsonType::string, speeds);
    EXPECT_TRUE(well_formed_row(row));
    EXPECT_EQ(row.words.count, 3U);
    for (const char* document : {R"({"k":"low","p":true})", R"({"k":"low"})", R"({"k":1,"p":1})"}) {
        EXPECT_EQ(apply_row_to(row, document), "") << document;
    }
}

TEST(MemberRows, ADisplacedMemberCountsOnlyWithoutTheOtherObject) {
    static constexpr Member part[] = {
        displaced("other", number("k", "n %d", pause_when_sent_then_always(2, 1))),
        displaced(nullptr, number("l", "l %d")),
    };
    static_assert(well_formed(part));
    const Member row = object("part", part);
    EXPECT_EQ(apply_row_to(row, R"({"part":{"k":1,"l":2},"other":{}})"), "pause 1\nshell l 2\n");
    EXPECT_EQ(apply_row_to(row, R"({"OTHER":{},"part":{"k":1}})"), "pause 1\n");
    for (const std::string other : {"null", "true", "0", "\"x\"", "[]", "[{}]"}) {
        EXPECT_EQ(apply_row_to(row, R"({"part":{"k":1},"other":)" + other + "}"),
                  "shell n 1\npause 2\npause 1\n")
            << other;
    }
    EXPECT_EQ(apply_row_to(row, R"({"part":{"k":1,"other":{}}})"), "shell n 1\npause 2\npause 1\n");
    EXPECT_EQ(apply_row_to(part[0], R"({"k":1})"), "shell n 1\npause 2\npause 1\n");
}

TEST(MemberRows, ASecondLineRunsOnlyBehindTheFirst) {
    const Member row = and_then("second &", text("k", "first %s", pause_when_sent(1)));
    EXPECT_EQ(apply_row_to(row, R"({"k":"a"})"), "shell first a\nshell second &\npause 1\n");
    EXPECT_EQ(apply_row_to(row, R"({"k":""})"), "");
}

TEST(MemberRows, NotEmptyMakesTheEmptyTextSendNothing) {
    const Member row = not_empty(begins_with("k", "dhcp", "yes", "no"));
    EXPECT_EQ(apply_row_to(row, R"({"k":""})"), "");
    EXPECT_EQ(apply_row_to(row, R"({"k":"DHCP"})"), "shell no\n");
    EXPECT_EQ(apply_row_to(row, R"({"k":"dhcp"})"), "shell yes\n");
    EXPECT_EQ(apply_row_to(row, R"({"k":"dhc"})"), "shell no\n");
}

TEST(MemberRows, TheFirstOfTwoMembersCounts) {
    EXPECT_EQ(apply_row_to(number("k", "n %d"), R"({"K":1,"k":2})"), "shell n 1\n");
}

TEST(MemberRows, RowsAreAppliedInTheOrderOfTheTable) {
    reset_recorder();
    static constexpr Member members[] = {
        pause(1),
        number("b", "b %d", pause_when_sent(2)),
        number("a", "a %d"),
        always("end"),
    };
    static_assert(well_formed(members));
    cJSON* section = cJSON_Parse(R"({"a":1,"b":2})");
    apply_members(section, members);
    cJSON_Delete(section);
    EXPECT_EQ(recorded_trace(), "pause 1\nshell b 2\npause 2\nshell a 1\nshell end\n");
}

TEST(MemberRows, PresentValuesAreTakenBeforeTheFirstRow) {
    static constexpr Member members[] = {
        pause(1),
        handled("a", JsonType::any,
                [](const Section& section, const cJSON*) {
                    run_shell_format("a of %s", section.present->value[slot_device_name]);
                    return true;
                }),
    };
    reset_recorder();
    set_rw_value("deviceName", "hall");
    EXPECT_EQ(trace_of([](const cJSON* section) { apply_members_with_snapshot(section, members); },
                       R"({"a":1})"),
              snapshot_trace + "pause 1\nshell a of hall\n");
}

// --- What stops the build ------------------------------------------------------------------------

constexpr Word repeated_words[] = {{"a", 0}, {"b", 1}, {"a", 2}};
constexpr Word textless_words[] = {{"a", 0}};

template <typename Given>
concept takes_handler = requires(Given handler) {
    handled("k", JsonType::any, handler);
};

static_assert(!well_formed_row(number("k", "n %s")));
static_assert(!well_formed_row(number("k", "n")));
static_assert(!well_formed_row(number("k", "n %d %s")));
static_assert(!well_formed_row(number("", "n %d")));
static_assert(!well_formed_row(number(nullptr, "n %d")));
static_assert(!well_formed_row(text("k", "t %d")));
static_assert(!well_formed_row(text("k", "t 100%")));
static_assert(!well_formed_row(flag("k", "on %d", "off")));
static_assert(!well_formed_row(flag("k", "on", Line())));
static_assert(!well_formed_row(flag("k", "on", mcu("off"))));
static_assert(!well_formed_row(choice("k", repeated_words, "c %d")));
static_assert(!well_formed_row(choice("k", Vocabulary(), "c %d")));
static_assert(!well_formed_row(translated("k", textless_words, "c %s")));
static_assert(!well_formed_row(word("k", algorithms, "c %d")));
static_assert(!well_formed_row(chosen_text("k", timings, "c %d")));
static_assert(!well_formed_row(chosen_text("k", algorithms, "c %s")));
static_assert(!well_formed_row(of_section(always("fixed"))));
static_assert(!well_formed_row(begins_with("k", "", "a", "b")));
static_assert(!well_formed_row(handled("k", JsonType::none, record_item)));
static_assert(takes_handler<Handler> && !takes_handler<decltype(nullptr)>);
static_assert(!well_formed_row(number_in_range("k", 2, 1, 0, "n %d")));
static_assert(!well_formed_row(pause(0)));
static_assert(!well_formed_row(always("line %s")));
static_assert(!well_formed_row(within("", number("k", "n %d"))));
static_assert(!well_formed_row(number_list("k", "l %d")));
static_assert(!well_formed_row(displaced("", number("k", "n %d"))));
static_assert(!well_formed_row(displaced("lan1", always("line"))));
static_assert(!well_formed_row(and_then("then %s", number("k", "n %d"))));
static_assert(well_formed_row(number("k", "n %d %d")));
static_assert(kind_count > 0);

}  // namespace
