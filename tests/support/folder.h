// A folder of the test's own, and a disk that is full.
#pragma once

#include <gtest/gtest.h>
#include <sys/resource.h>

#include <csignal>
#include <cstdlib>
#include <filesystem>
#include <fstream>
#include <set>
#include <sstream>
#include <string>

// From here on the disk is full for this process: no file of it grows beyond this many bytes.
inline void leave_room_for(rlim_t bytes) {
    const rlimit limit = {bytes, bytes};
    signal(SIGXFSZ, SIG_IGN);
    setrlimit(RLIMIT_FSIZE, &limit);
}

class FolderTest : public testing::Test {
  protected:
    void SetUp() override {
        std::string pattern = testing::TempDir() + "device-test-XXXXXX";
        ASSERT_NE(mkdtemp(pattern.data()), nullptr);
        folder = pattern;
    }

    void TearDown() override {
        std::filesystem::remove_all(folder);
    }

    std::string path(const std::string& name) const {
        return folder + "/" + name;
    }

    std::string content(const std::string& name) const {
        std::ifstream file(path(name), std::ios::binary);
        std::ostringstream text;
        text << file.rdbuf();
        return text.str();
    }

    std::set<std::string> names() const {
        std::set<std::string> all;
        for (const auto& entry : std::filesystem::directory_iterator(folder)) {
            all.insert(entry.path().filename());
        }
        return all;
    }

    std::string folder;
};
