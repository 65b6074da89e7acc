#include "tests/support/recorder.h"

#include <algorithm>
#include <cstdlib>
#include <cstring>
#include <map>
#include <set>
#include <vector>

#include "device/unit.h"

namespace {

std::string trace;
std::map<std::string, std::string> answers;
std::map<std::string, std::string> files;
std::set<std::string> refused;
std::string rw_entries;
std::string lm_lines;

void record(const std::string& entry) {
    trace += entry + "\n";
}

}  // namespace

void reset_recorder() {
    trace.clear();
    answers.clear();
    files.clear();
    refused.clear();
    rw_entries.clear();
    lm_lines.clear();
}

std::string recorded_trace() {
    return trace;
}

void answer_command(const std::string& command, const std::string& output) {
    answers[command] = output;
}

void provide_file(const std::string& path, const std::string& bytes) {
    files[path] = bytes;
}

void refuse_writing(const std::string& path) {
    refused.insert(path);
}

std::string file_content(const std::string& path) {
    return files[path];
}

void set_rw_value(const std::string& key, const std::string& value) {
    rw_entries += key + "=" + value + '\0';
    const std::string dump = std::string("\x01\x02\x03\x04", 4) + rw_entries + '\0';
    provide_file("/dev/shm/rwparam", dump);
    provide_file("/dev/shm/rwparam_temp", dump);
}

void set_lm_value(const std::string& key, const std::string& value) {
    lm_lines += key + "=" + value + "\n";
    provide_file("/var/tmp/lmparam_dump", lm_lines);
}

void run_shell_line(const char* line) {
    record(std::string("shell ") + line);
}

int read_command_output(const char* command, char* out) {
    record(std::string("read ") + command);
    const auto answer = answers.find(command);
    if (answer != answers.end()) {
        // Of a long line the last piece, as it is read.
        const size_t size = answer->second.size();
        const size_t start =
            size == 0 ? 0 : (size - 1) / (output_text_size - 1) * (output_text_size - 1);
        memset(out, 0, output_text_size);
        memcpy(out, answer->second.data() + start, size - start);
    }
    return 0;
}

bool read_file(const char* path, FileBytes* file) {
    const auto found = files.find(path);
    if (found == files.end()) {
        return false;
    }
    *file = {static_cast<char*>(malloc(found->second.size() + 1)), found->second.size()};
    memcpy(file->bytes, found->second.data(), file->size);
    file->bytes[file->size] = '\0';
    return true;
}

int take_turn() {
    return 0;
}

void end_turn(int /*turn*/) {}

bool file_exists(const char* path) {
    return files.contains(path);
}

bool write_file(const char* path, const char* bytes, size_t size) {
    if (refused.contains(path)) {
        return false;
    }
    files[path] = std::string(bytes, size);
    record(std::string("write ") + path + " " + files[path]);
    return true;
}

bool replace_file(const char* path, const char* bytes, size_t size) {
    if (refused.contains(path)) {
        return false;
    }
    files[path] = std::string(bytes, size);
    record(std::string("replace ") + path + " " + files[path]);
    return true;
}

void send_mcu_command(const char* command) {
    record(std::string("mcu ") + command);
}

void pause_seconds(unsigned seconds) {
    record("pause " + std::to_string(seconds));
}
