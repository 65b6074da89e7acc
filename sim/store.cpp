#include "store.h"

#include <cstdio>
#include <functional>
#include <utility>
#include <vector>

#include "journal.h"

namespace sim {

using Entries = std::vector<std::pair<std::string, std::string>>;

static constexpr char store_lock[] = "/run/sim/store.lock";

// What stands before the first entry of /dev/shm/rwparam. Its readers skip four bytes unseen.
static constexpr std::string_view rw_dump_header = "RWP1";

static const char* store_path(Store store) {
    switch (store) {
        case Store::rw:
            return "/run/sim/astparam";
        case Store::live:
            return "/run/sim/lmparam";
        case Store::peers:
            break;
    }
    return "/run/sim/peers";
}

// A store is kept as key NUL value NUL, so that values may hold line feeds.
static Entries read_entries(Store store) {
    std::string text;
    read_file(store_path(store), text);
    Entries entries;
    for (size_t at = 0; at < text.size();) {
        const size_t key_end = text.find('\0', at);
        const size_t value_end = text.find('\0', key_end + 1);
        entries.emplace_back(text.substr(at, key_end - at),
                             text.substr(key_end + 1, value_end - key_end - 1));
        at = value_end + 1;
    }
    return entries;
}

static void export_rw_dump(const Entries& entries) {
    std::string dump(rw_dump_header);
    for (const auto& [key, value] : entries) {
        dump += key + '=' + value + '\0';
    }
    dump += '\0';
    write_file("/dev/shm/rwparam", dump);
}

static void export_live_dump(const Entries& entries) {
    std::string dump;
    for (const auto& [key, value] : entries) {
        dump += key + '=' + value + '\n';
    }
    write_file("/var/tmp/lmparam_dump", dump);
}

static void write_entries(Store store, const Entries& entries) {
    std::string text;
    for (const auto& [key, value] : entries) {
        text += key + '\0' + value + '\0';
    }
    write_file(store_path(store), text);
    if (store == Store::rw) {
        export_rw_dump(entries);
    } else if (store == Store::live) {
        export_live_dump(entries);
    }
}

bool load_initial_parameters(const char* path) {
    std::string text;
    if (!read_file(path, text)) {
        fprintf(stderr, "simulated unit: cannot read %s\n", path);
        return false;
    }
    Entries rw;
    Entries live;
    Entries peers;
    Entries* section = nullptr;
    for (size_t at = 0; at < text.size();) {
        size_t end = text.find('\n', at);
        end = end == text.npos ? text.size() : end;
        const std::string line = text.substr(at, end - at);
        at = end + 1;
        const size_t equals = line.find('=');
        if (line.empty() || line[0] == '#') {
            continue;
        } else if (line == "[astparam]") {
            section = &rw;
        } else if (line == "[lmparam]") {
            section = &live;
        } else if (line == "[peers]") {
            section = &peers;
        } else if (section != nullptr && equals != line.npos && equals > 0) {
            section->emplace_back(line.substr(0, equals), line.substr(equals + 1));
        } else {
            fprintf(stderr, "simulated unit: %s: not a key=value line: %s\n", path, line.c_str());
            return false;
        }
    }
    const int lock = take_lock(store_lock);
    write_entries(Store::rw, rw);
    write_entries(Store::live, live);
    write_entries(Store::peers, peers);
    release_lock(lock);
    return true;
}

bool get_parameter(Store store, std::string_view key, std::string& value) {
    const int lock = take_lock(store_lock);
    const Entries entries = read_entries(store);
    release_lock(lock);
    for (const auto& entry : entries) {
        if (entry.first == key) {
            value = entry.second;
            return true;
        }
    }
    return false;
}

// Runs one change of a store while it is locked.
static void change_entries(Store store, const std::function<void(Entries&)>& change) {
    const int lock = take_lock(store_lock);
    Entries entries = read_entries(store);
    change(entries);
    write_entries(store, entries);
    release_lock(lock);
}

void set_parameter(Store store, std::string_view key, std::string_view value) {
    change_entries(store, [&](Entries& entries) {
        for (auto& entry : entries) {
            if (entry.first == key) {
                entry.second = value;
                return;
            }
        }
        entries.emplace_back(key, value);
    });
}

void unset_parameter(Store store, std::string_view key) {
    change_entries(store, [&](Entries& entries) {
        std::erase_if(entries, [&](const auto& entry) { return entry.first == key; });
    });
}

}  // namespace sim
