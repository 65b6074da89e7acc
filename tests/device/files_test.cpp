// Files read and written on the host.
#include <fcntl.h>
#include <gtest/gtest.h>
#include <sys/stat.h>
#include <sys/wait.h>
#include <unistd.h>

#include <filesystem>
#include <fstream>
#include <set>
#include <sstream>
#include <string>

#include "device/parameters.h"
#include "device/unit.h"
#include "tests/support/folder.h"

namespace {

class Files : public FolderTest {
  protected:
    void provide(const std::string& name, const std::string& bytes) const {
        std::ofstream(path(name), std::ios::binary) << bytes;
    }
};

const std::string some_bytes = std::string("line\r\n\0\xFF end", 12);

TEST_F(Files, AFileIsReadWholeWithANulBehindIt) {
    for (const std::string& bytes :
         {std::string(), some_bytes, std::string(1000000, 'x'), std::string(3, '\0')}) {
        provide("a", bytes);
        FileBytes file = {};
        ASSERT_TRUE(read_file(path("a").c_str(), &file));
        ASSERT_NE(file.bytes, nullptr);
        EXPECT_TRUE(std::string(file.bytes, file.size) == bytes) << bytes.size() << " bytes";
        EXPECT_EQ(file.bytes[file.size], '\0');
        free(file.bytes);
    }
}

TEST_F(Files, WhatCannotBeOpenedIsLeftAlone) {
    char before[] = "before";
    FileBytes file = {before, 6};
    EXPECT_FALSE(read_file(path("missing").c_str(), &file));
    EXPECT_EQ(file.bytes, before);
    EXPECT_EQ(file.size, 6U);
    char* text = before;
    read_file_text(path("missing").c_str(), &text);
    EXPECT_EQ(text, before);
}

TEST_F(Files, WhatHasNoEndToSeekIsNotRead) {
    ASSERT_EQ(mkfifo(path("pipe").c_str(), 0600), 0);
    const int both_ends = open(path("pipe").c_str(), O_RDWR | O_CLOEXEC);
    FileBytes file = {};
    EXPECT_FALSE(read_file(path("pipe").c_str(), &file));
    EXPECT_EQ(file.bytes, nullptr);
    close(both_ends);
}

TEST_F(Files, OnlyWhatIsThereExists) {
    provide("a", "");
    EXPECT_TRUE(file_exists(path("a").c_str()));
    EXPECT_FALSE(file_exists(path("b").c_str()));
}

TEST_F(Files, WritingEmptiesOrCreatesTheFile) {
    EXPECT_TRUE(write_file(path("a").c_str(), some_bytes.data(), some_bytes.size()));
    EXPECT_EQ(content("a"), some_bytes);
    EXPECT_TRUE(write_file(path("a").c_str(), "b", 1));
    EXPECT_EQ(content("a"), "b");
    EXPECT_TRUE(write_file(path("a").c_str(), "", 0));
    EXPECT_EQ(content("a"), "");
    EXPECT_EQ(names(), std::set<std::string>({"a"}));
}

TEST_F(Files, WritingToAFullDiskSaysSo) {
    EXPECT_FALSE(write_file("/dev/full", "text", 4));
}

TEST_F(Files, AFileThatTheDiskHasNoRoomForIsRemoved) {
    provide("a", "old");
    const pid_t child = fork();
    if (child == 0) {
        leave_room_for(1000);
        const std::string text(1001, 'n');
        _exit(write_file(path("a").c_str(), text.data(), text.size()) ? 1 : 0);
    }
    int status = -1;
    waitpid(child, &status, 0);
    EXPECT_EQ(status, 0);
    EXPECT_EQ(names(), std::set<std::string>());
}

TEST_F(Files, WritingWhereNothingCanBeOpenedSaysSo) {
    EXPECT_FALSE(write_file(path("no/a").c_str(), "b", 1));
    EXPECT_FALSE(write_file(folder.c_str(), "b", 1));
    EXPECT_FALSE(replace_file(path("no/a").c_str(), "b", 1));
    EXPECT_EQ(names(), std::set<std::string>());
}

TEST_F(Files, ReplacingPutsANewFileInThePlaceOfTheOld) {
    EXPECT_TRUE(replace_file(path("a").c_str(), some_bytes.data(), some_bytes.size()));
    EXPECT_EQ(content("a"), some_bytes);
    std::ifstream reader(path("a"), std::ios::binary);
    const std::string large(1000000, 'x');
    EXPECT_TRUE(replace_file(path("a").c_str(), large.data(), large.size()));
    EXPECT_TRUE(content("a") == large);
    // Who has the old file open still reads all of it.
    std::ostringstream old;
    old << reader.rdbuf();
    EXPECT_EQ(old.str(), some_bytes);
    EXPECT_EQ(names(), std::set<std::string>({"a"}));
}

TEST_F(Files, AReplacementThatFailsKeepsTheOldAndLeavesNothing) {
    // A folder that is not empty cannot be replaced by a file.
    std::filesystem::create_directory(path("a"));
    provide("a/b", "old");
    EXPECT_FALSE(replace_file(path("a").c_str(), "new", 3));
    EXPECT_EQ(content("a/b"), "old");
    EXPECT_EQ(names(), std::set<std::string>({"a"}));
}

TEST_F(Files, ANameTooLongForItsTemporaryIsNotReplaced) {
    const std::string long_path = "/" + std::string(1100, 'x');
    EXPECT_FALSE(replace_file(long_path.c_str(), "new", 3));
}

}  // namespace
