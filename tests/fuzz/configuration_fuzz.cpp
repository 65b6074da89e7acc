// Any text as a unit configuration, on a unit whose stores hold any values, for each model, against
// the recorder. The input is the document, a NUL, the run-time store's entries, a NUL byte doubled,
// and the live store's lines; what is missing is empty.
#include <cstddef>
#include <cstdint>
#include <string>

#include "tests/support/any_model.h"
#include "tests/support/recorder.h"
#include "unitconf/configuration.h"

extern "C" int LLVMFuzzerTestOneInput(const uint8_t* data, size_t size);

static void provide_unit(const std::string& rest) {
    const size_t border = rest.find(std::string("\0\0", 2));
    const std::string rw = rest.substr(0, border);
    const std::string lm = border == std::string::npos ? "" : rest.substr(border + 2);
    provide_file("/dev/shm/rwparam", rw);
    provide_file("/dev/shm/rwparam_temp", rw);
    provide_file("/var/tmp/lmparam_dump", lm);
    provide_file("/user_data2/rs232_list.json", lm);
    provide_file("/var/tmp/rs232_list.json", rw);
    provide_file("/var/tmp/roaming_file", lm);
    const std::string line = lm.substr(0, lm.find('\n')).substr(0, 1023);
    for (const char* key :
         {"deviceName", "ethaddr", "device_name_sync_enable", "vlan1Tag", "vlan2Tag", "vlan1Untag",
          "vlan2Untag", "streamVlanID", "streamVlanMode", "streamLanPort", "lan1stream"}) {
        answer_command(std::string("astparam g ") + key, line);
    }
}

extern "C" int LLVMFuzzerTestOneInput(const uint8_t* data, size_t size) {
    const std::string input(reinterpret_cast<const char*>(data), size);
    const size_t document_end = input.find('\0');
    const std::string document = input.substr(0, document_end);
    for (const char* model : {"ZAVO-ENC-U300-DA", "ZAVO-ENC-E100-DA", "ZAVO-DEC-D200-DA"}) {
        reset_recorder();
        provide_unit(document_end == std::string::npos ? "" : input.substr(document_end + 1));
        apply_configuration_to_model(model, document.c_str());
    }
    return 0;
}
