#include "tools.h"

#include <fcntl.h>
#include <sys/mman.h>
#include <sys/resource.h>
#include <unistd.h>

#include <cstdio>
#include <cstdlib>
#include <cstring>
#include <filesystem>
#include <initializer_list>
#include <string>
#include <string_view>
#include <system_error>

#include "journal.h"
#include "settle.h"
#include "store.h"

namespace sim {

static constexpr char busybox[] = "/bin/busybox";

// ---- the shell -------------------------------------------------------------------------------

// Puts a script that came on standard input back there, to be read from its start.
static void put_back_as_input(const std::string& script) {
    const int file = memfd_create("script", 0);
    if (file < 0 ||
        write(file, script.data(), script.size()) != static_cast<ssize_t>(script.size())) {
        perror("simulated unit: script");
        _exit(111);
    }
    lseek(file, 0, SEEK_SET);
    dup2(file, STDIN_FILENO);
    close(file);
}

int run_shell(int argc, char** argv) {
    // Only the gateway's own clock runs fast.
    unsetenv("LD_PRELOAD");
    int at = argc >= 3 && strcmp(argv[1], "-c") == 0 ? 2 : 0;
    if (at == 2 && argc >= 4 && strcmp(argv[2], "--") == 0) {
        at = 3;
    }
    if (at > 0 && strcmp(argv[at], "sh") == 0) {
        // BusyBox would run a shell of its own behind the journal's back.
        argc = 1;
        argv[1] = nullptr;
        at = 0;
    }
    const bool has_script = argc == 1 || (argc == 2 && strcmp(argv[1], "-s") == 0);
    std::string script;
    if (has_script) {
        read_file("/proc/self/fd/0", script);
        put_back_as_input(script);
    }
    if ((at > 0 || has_script) && !inside_a_line()) {
        const pid_t gateway = getppid();
        wait_for_background_work(gateway);
        tell_microcontroller("drain");
        note_files(false);
        hold_settle_lock(gateway);
    }
    if (at > 0) {
        append_entry("line", escape_bytes(argv[at]));
    } else if (has_script) {
        append_entry("script", escape_bytes(script));
    }
    char name[] = "sh";
    argv[0] = name;
    execv(busybox, argv);
    perror("simulated unit: busybox");
    return 127;
}

// ---- the tools -------------------------------------------------------------------------------

// astparam s|g|save and lmparam s|g, over one store. Like the appliance's, they answer on standard
// output whatever they are asked.
static int parameter_tool(Store store, int argc, char** argv) {
    const std::string_view verb = argc > 1 ? argv[1] : "";
    if (verb == "s" && argc >= 4) {
        set_parameter(store, argv[2], argv[3]);
        printf("set %s=%s\n", argv[2], argv[3]);
        return 0;
    }
    if (verb == "g" && argc >= 3) {
        std::string value;
        if (!get_parameter(store, argv[2], value)) {
            printf("\"%s\" not defined\n", argv[2]);
            return 1;
        }
        printf("%s\n", value.c_str());
        return 0;
    }
    if (verb == "save" && store == Store::rw) {
        printf("parameters saved\n");
        return 0;
    }
    printf("usage: %s s KEY VALUE | g KEY | save\n", argv[0]);
    return 2;
}

static int astparam(int argc, char** argv) {
    return parameter_tool(Store::rw, argc, argv);
}

static int lmparam(int argc, char** argv) {
    return parameter_tool(Store::live, argc, argv);
}

static int event(int argc, char** argv) {
    if (argc < 2) {
        printf("usage: e EVENT [ARGUMENT]\n");
        return 2;
    }
    printf("event %s sent\n", argv[1]);
    if (strcmp(argv[1], "e_reboot") == 0) {
        append_entry("rebooted", "");
    }
    return 0;
}

static constexpr char base64_digits[] =
    "ABCDEFGHIJKLMNOPQRSTUVWXYZabcdefghijklmnopqrstuvwxyz0123456789+/";

// A stand-in for encryption that can be undone and read off in tests: base64 in lines of 64.
static std::string encrypt(std::string_view bytes) {
    std::string text;
    for (size_t at = 0; at < bytes.size(); at += 3) {
        unsigned group = 0;
        for (size_t i = 0; i < 3; i++) {
            group = group << 8 |
                    (at + i < bytes.size() ? static_cast<unsigned char>(bytes[at + i]) : 0);
        }
        for (size_t i = 0; i < 4; i++) {
            const bool padding = at + i > bytes.size();
            text += padding ? '=' : base64_digits[group >> (18 - 6 * i) & 63];
        }
        if (at % 48 == 45) {
            text += '\n';
        }
    }
    if (!text.empty() && text.back() != '\n') {
        text += '\n';
    }
    return text;
}

static bool decrypt(std::string_view text, std::string& bytes) {
    unsigned group = 0;
    int bits = 0;
    for (const char c : text) {
        if (strchr(" \r\n\t=", c) != nullptr) {
            continue;
        }
        const char* digit = strchr(base64_digits, c);
        if (digit == nullptr) {
            return false;
        }
        group = group << 6 | static_cast<unsigned>(digit - base64_digits);
        bits += 6;
        if (bits >= 8) {
            bits -= 8;
            bytes += static_cast<char>(group >> bits & 0xFF);
        }
    }
    return true;
}

static int crypto_program(int argc, char** argv) {
    std::string text;
    if (argc == 3 && strcmp(argv[1], "-e") == 0 && read_file(argv[2], text)) {
        const std::string encrypted = encrypt(text);
        fwrite(encrypted.data(), 1, encrypted.size(), stdout);
        return 0;
    }
    if (argc == 4 && strcmp(argv[1], "-d") == 0 && decrypt(argv[2], text)) {
        const int file = open(argv[3], O_WRONLY | O_CREAT | O_TRUNC | O_CLOEXEC, 0666);
        if (file >= 0 &&
            write(file, text.data(), text.size()) == static_cast<ssize_t>(text.size())) {
            printf("decrypted to %s\n", argv[3]);
            return 0;
        }
    }
    printf("crypto_program: failed\n");
    return 1;
}

// node_query --match_key KEY=VALUE ... --get_key KEY: this unit knows its peers by MY_IP only.
static int node_query(int argc, char** argv) {
    for (int i = 1; i + 1 < argc; i++) {
        std::string mac;
        if (strcmp(argv[i], "--match_key") == 0 && strncmp(argv[i + 1], "MY_IP=", 6) == 0 &&
            get_parameter(Store::peers, argv[i + 1] + 6, mac)) {
            printf("%s\n", mac.c_str());
        }
    }
    return 0;
}

static int answer_only(int, char** argv) {
    printf("%s: done\n", argv[0]);
    return 0;
}

// Moves decrypted certificates from their working files to where the unit keeps them.
static void install(std::initializer_list<const char*> names) {
    for (const char* name : names) {
        const std::string from = std::string("/var/tmp/") + name;
        std::string text;
        if (read_file(from.c_str(), text) &&
            write_file((std::string("/user_data2/") + name).c_str(), text)) {
            unlink(from.c_str());
            printf("installed %s\n", name);
        }
    }
}

static int install_mqtt(int, char**) {
    install({"CAFile", "CERTFile", "KEYFile"});
    return 0;
}

static int install_https(int, char**) {
    install({"HTTPS_CAFILE"});
    return 0;
}

static int install_ldap(int, char**) {
    install({"LDAP_CAFile", "LDAP_CERTFile", "LDAP_KEYFile"});
    return 0;
}

static int install_8021x(int argc, char** argv) {
    if (argc == 2 && strcmp(argv[1], "lan1") == 0) {
        install({"client.pem", "client.key", "ca.pem"});
        return 0;
    }
    if (argc == 2 && strcmp(argv[1], "lan2") == 0) {
        install({"client_2.pem", "client_2.key", "ca_2.pem"});
        return 0;
    }
    printf("usage: %s lan1|lan2\n", argv[0]);
    return 2;
}

// nice -n N COMMAND: the unit's own program, which its BusyBox does not have. Not journaled: the
// line shows it, and the command behind it makes its own entry.
static int nice_command(int argc, char** argv) {
    if (argc < 4 || strcmp(argv[1], "-n") != 0) {
        return 2;
    }
    setpriority(PRIO_PROCESS, 0, atoi(argv[2]));
    execvp(argv[3], argv + 3);
    return 127;
}

struct Tool {
    const char* name;
    int (*run)(int argc, char** argv);
    bool journaled = true;
};

static constexpr Tool tools[] = {
    {"astparam", astparam},
    {"lmparam", lmparam},
    {"e", event},
    {"dapi", answer_only},
    {"crypto_program", crypto_program},
    {"node_query", node_query},
    {"change_serial", answer_only},
    {"init_send_oled", answer_only},
    {"mqtt_upgrade_cert.sh", install_mqtt},
    {"https_upgrade_cert.sh", install_https},
    {"ldap_upgrade_cert.sh", install_ldap},
    {"update_1x_cert_upload_conf.sh", install_8021x},
    {"reaload_dante_config.sh", answer_only},
    {"nice", nice_command, false},
};

void link_tools(const char* folder, const char* program) {
    for (const Tool& tool : tools) {
        const std::string link = std::string(folder) + '/' + tool.name;
        if (symlink(program, link.c_str()) != 0) {
            perror(link.c_str());
        }
    }
}

// A test may hold a tool between its entry and its work: it waits while /run/sim/hold is there and
// holds the start of the call.
static void wait_while_held(std::string_view call) {
    std::string held;
    while (read_file("/run/sim/hold", held) && call.starts_with(held)) {
        usleep(2000);
    }
}

bool run_tool(const char* name, int argc, char** argv, int& status) {
    for (const Tool& tool : tools) {
        if (strcmp(name, tool.name) != 0) {
            continue;
        }
        std::string call = name;
        for (int i = 1; i < argc; i++) {
            call += ' ' + quote_argument(argv[i]);
        }
        if (tool.journaled) {
            append_entry("tool", call);
            wait_while_held(call);
        }
        status = tool.run(argc, argv);
        drop_settle_lock();
        return true;
    }
    return false;
}

// ---- the launcher's requests -----------------------------------------------------------------

static int settle() {
    wait_for_all_background_work();
    tell_microcontroller("settle");
    note_files(false);
    return 0;
}

static int reset(const char* parameters) {
    std::error_code error;
    for (const char* folder : {"/user_data2", "/share", "/var/tmp", "/dev/shm", "/unit/extra"}) {
        for (const auto& entry : std::filesystem::directory_iterator(folder, error)) {
            std::filesystem::remove_all(entry.path(), error);
        }
    }
    unlink("/run/sim/hold");
    write_file("/sys/devices/platform/videoip/ull", "0\n");
    tell_microcontroller("reset");
    const bool loaded = load_initial_parameters(parameters);
    note_files(true);
    return truncate("/run/sim/journal", 0) == 0 && loaded ? 0 : 1;
}

static int parameter_request(int argc, char** argv) {
    const std::string_view verb = argv[1];
    const std::string_view name = argv[2];
    const Store store = name == "rw" ? Store::rw : name == "live" ? Store::live : Store::peers;
    if (verb == "set" && argc == 5) {
        set_parameter(store, argv[3], argv[4]);
        return 0;
    }
    if (verb == "unset") {
        unset_parameter(store, argv[3]);
        return 0;
    }
    std::string value;
    if (verb != "get" || !get_parameter(store, argv[3], value)) {
        return 1;
    }
    fwrite(value.data(), 1, value.size(), stdout);
    return 0;
}

bool run_launcher_request(const char* name, int argc, char** argv, int& status) {
    if (strcmp(name, "sim_settle") == 0) {
        status = settle();
    } else if (strcmp(name, "sim_note") == 0) {
        note_files(true);
        status = 0;
    } else if (strcmp(name, "sim_mcu") == 0 && argc == 2) {
        tell_microcontroller(argv[1]);
        status = 0;
    } else if (strcmp(name, "sim_reset") == 0 && argc == 2) {
        status = reset(argv[1]);
    } else if (strcmp(name, "sim_param") == 0 && argc >= 4) {
        status = parameter_request(argc, argv);
    } else {
        return false;
    }
    return true;
}

}  // namespace sim
