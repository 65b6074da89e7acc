// What the program makes of a list's text, beside what BusyBox's own shell and echo make of it.
#include "device/shell_echo.h"

#include <cjson/cJSON.h>
#include <gtest/gtest.h>
#include <sys/wait.h>
#include <unistd.h>

#include <cstdlib>
#include <filesystem>
#include <fstream>
#include <iterator>
#include <random>
#include <string>
#include <vector>

#include "device/list_text.h"
#include "tests/support/folder.h"

namespace {

// What cannot be printed, as \xHH.
std::string visible(const std::string& text) {
    std::string shown;
    for (const char c : text) {
        char piece[8];
        snprintf(piece, sizeof piece, c >= 32 && c < 127 ? "%c" : "\\x%02x",
                 static_cast<unsigned char>(c));
        shown += piece;
    }
    return shown;
}

class ShellEchoOnBusyBox : public FolderTest {
  protected:
    // Runs BusyBox's shell in the folder; its errors are left in the file "errors".
    void run_shell(const std::vector<const char*>& arguments) const {
        const pid_t child = fork();
        if (child == 0) {
            std::vector<const char*> command = {"busybox", "sh"};
            command.insert(command.end(), arguments.begin(), arguments.end());
            command.push_back(nullptr);
            if (chdir(folder.c_str()) == 0 && freopen("errors", "a", stderr) != nullptr) {
                execvp(command[0], const_cast<char* const*>(command.data()));
            }
            _exit(127);
        }
        int status = 0;
        ASSERT_EQ(waitpid(child, &status, 0), child);
        ASSERT_EQ(status, 0) << content("errors");
    }

    // Every text must be written by the shell as the program reads it.
    void expect_same(const std::vector<std::string>& texts) const {
        int differences = 0;
        for (size_t i = 0; i < texts.size() && differences < 10; i++) {
            const std::string written = std::to_string(i);
            ASSERT_TRUE(std::filesystem::exists(path(written))) << visible(texts[i]);
            std::string own = texts[i];
            own.resize(interpret_echoed(own.data()));
            const std::string shells = content(written);
            differences += own == shells ? 0 : 1;
            EXPECT_EQ(visible(own), visible(shells)) << visible(texts[i]);
        }
        EXPECT_EQ(differences, 0);
    }

    // All lines in one run of the shell.
    void expect_same_in_one_script(const std::vector<std::string>& texts) const {
        std::ofstream script(path("script"), std::ios::binary);
        for (size_t i = 0; i < texts.size(); i++) {
            script << "echo -ne \"" << texts[i] << "\" > " << i << "\n";
        }
        script.close();
        run_shell({"script"});
        expect_same(texts);
    }
};

// --- Random texts --------------------------------------------------------------------------------

using Random = std::mt19937;

int below(Random& random, int limit) {
    return static_cast<int>(random() % static_cast<unsigned>(limit));
}

template <typename Texts>
std::string one_of(Random& random, const Texts& texts) {
    return texts[static_cast<size_t>(below(random, static_cast<int>(std::size(texts))))];
}

// Characters that an escape could take in when it stands behind a backslash.
std::string eager_character(Random& random) {
    static const std::string characters = "abcefnrtvxuXE0123456789abcdefABCDEF'?$`TAG ";
    return std::string(
        1, characters[static_cast<size_t>(below(random, static_cast<int>(characters.size())))]);
}

std::string hex_digits(Random& random, int count) {
    std::string digits;
    while (count-- > 0) {
        digits += "0123456789abcdefABCDEF"[below(random, 22)];
    }
    return digits;
}

std::string json_string(Random& random) {
    static const char* const escapes[] = {"\\\\", "\\\\", "\\\\\\\\", "\\\"", "\\/",
                                          "\\b",  "\\f",  "\\n",      "\\r",  "\\t"};
    std::string text = "\"";
    for (int pieces = below(random, 12); pieces > 0; pieces--) {
        switch (below(random, 8)) {
            case 0:
            case 1:
            case 2:
                text += one_of(random, escapes);
                break;
            case 3:
                text += "\\u00" + std::string(1, "0123456789abcdefABCDEF"[1 + below(random, 21)]) +
                        hex_digits(random, 1);
                break;
            case 4: {
                const char byte = static_cast<char>(1 + below(random, 255));
                text += byte == '"' || byte == '\\' ? 'q' : byte;
                break;
            }
            default:
                text += eager_character(random);
        }
    }
    return text + "\"";
}

std::string json_value(Random& random, int depth) {
    static const char* const plain[] = {"null", "true", "-5", "1.5e3", "0"};
    static const char* const blanks[] = {"", " ", "\n", "\r\n", "\t"};
    const int kind = below(random, depth > 0 ? 8 : 5);
    if (kind < 4) {
        return json_string(random);
    }
    if (kind == 4) {
        return one_of(random, plain);
    }
    const bool object = kind < 7;
    std::string text = object ? "{" : "[";
    const int count = below(random, 4);
    for (int i = 0; i < count; i++) {
        text += i > 0 ? "," : "";
        text += one_of(random, blanks);
        text += object ? json_string(random) + ":" : "";
        text += json_value(random, depth - 1);
    }
    text += one_of(random, blanks);
    return text + (object ? "}" : "]");
}

std::string stored_form(const char* json) {
    char* stored = encode_list_text(json, LineBreaks::drop);
    const std::string text = stored;
    free(stored);
    return text;
}

// The stored form of an uploaded document.
std::string random_upload(Random& random) {
    const std::string json = "{\"data\":" + json_value(random, 3) + "}";
    cJSON* document = cJSON_Parse(json.c_str());
    EXPECT_NE(document, nullptr) << visible(json);
    cJSON_Delete(document);
    return stored_form(json.c_str());
}

// The stored form of a document's part as it is printed again.
std::string random_print(Random& random) {
    cJSON* document = cJSON_Parse(json_value(random, 3).c_str());
    char* printed = cJSON_Print(document);
    const std::string text = stored_form(printed);
    cJSON_free(printed);
    cJSON_Delete(document);
    return text;
}

// Any bytes, every second one a backslash, without the double quotes that no stored text has.
std::string random_bytes(Random& random) {
    std::string text = "{";
    for (int count = below(random, 40); count > 0; count--) {
        switch (below(random, 6)) {
            case 0: {
                const char byte = static_cast<char>(1 + below(random, 255));
                text += byte == '"' ? 'q' : byte;
                break;
            }
            case 1:
            case 2:
                text += eager_character(random);
                break;
            default:
                text += "\\";
        }
    }
    return text;
}

constexpr size_t text_count = 10000;

template <typename Make>
std::vector<std::string> texts_without_expansion(unsigned seed, size_t count, Make make) {
    Random random(seed);
    std::vector<std::string> texts;
    while (texts.size() < count) {
        const std::string text = make(random);
        if (!only_the_shell_knows(text.c_str())) {
            texts.push_back(text);
        }
    }
    return texts;
}

// --- The comparison ------------------------------------------------------------------------------

TEST_F(ShellEchoOnBusyBox, UploadedDocumentsAreReadAsTheShellReadsThem) {
    expect_same_in_one_script(texts_without_expansion(1, text_count, random_upload));
}

TEST_F(ShellEchoOnBusyBox, PrintedPartsAreReadAsTheShellReadsThem) {
    expect_same_in_one_script(texts_without_expansion(2, text_count, random_print));
}

TEST_F(ShellEchoOnBusyBox, AnyBytesAreReadAsTheShellReadsThem) {
    expect_same_in_one_script(texts_without_expansion(3, text_count, random_bytes));
}

TEST_F(ShellEchoOnBusyBox, LinesRunOneByOneAreNoDifferent) {
    std::vector<std::string> texts = texts_without_expansion(4, 150, random_upload);
    const std::vector<std::string> more = texts_without_expansion(5, 150, random_bytes);
    texts.insert(texts.end(), more.begin(), more.end());
    for (size_t i = 0; i < texts.size(); i++) {
        run_shell({"-c", ("echo -ne \"" + texts[i] + "\" > " + std::to_string(i)).c_str()});
    }
    expect_same(texts);
}

TEST_F(ShellEchoOnBusyBox, EveryByteBehindABackslashIsReadAsTheShellReadsIt) {
    const std::string takes_more = "x01234567\\";
    std::vector<std::string> texts;
    for (int first = 1; first < 256; first++) {
        const bool every = takes_more.find(static_cast<char>(first)) != std::string::npos;
        for (int second = 1; second < 256; second += every ? 1 : 17) {
            const std::string text = {'\\', static_cast<char>(first), static_cast<char>(second),
                                      '7', '!'};
            if (!only_the_shell_knows(text.c_str())) {
                texts.push_back(text);
            }
        }
    }
    expect_same_in_one_script(texts);
}

// What is taken away from the shell must not be more than what it would have written itself.
TEST_F(ShellEchoOnBusyBox, ABackslashAtTheEndMakesTheShellWriteNothing) {
    std::ofstream(path("script")) << "echo -ne \"{}\\\" > 0\n";
    const int status = system(("cd " + folder + " && busybox sh script 2> errors").c_str());
    EXPECT_NE(status, 0);
    EXPECT_FALSE(std::filesystem::exists(path("0")));
    EXPECT_TRUE(only_the_shell_knows("{}\\"));
}

}  // namespace
