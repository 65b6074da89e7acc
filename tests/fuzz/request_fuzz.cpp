// Any bytes as the body of a request: through the recognising, the cutting and every handler,
// against the recorder. libFuzzer looks for inputs that crash, overrun or hang.
#include <cstddef>
#include <cstdint>
#include <string>

#include "cgi/dispatch.h"
#include "tests/support/recorder.h"
#include "tests/support/streams.h"

extern "C" int LLVMFuzzerTestOneInput(const uint8_t* data, size_t size);

extern "C" int LLVMFuzzerTestOneInput(const uint8_t* data, size_t size) {
    const HeldProcess process;  // a report has to be seen
    reset_recorder();
    answer_command("astparam g ethaddr", "00:11:22:33:44:55");
    answer_command("astparam g edid_set_u", "9");
    set_lm_value("VW_VAR_VER", "1");
    set_lm_value("A_ADDON", "none");
    provide_file("/user_data2/LDAP_CAFile", "stored");
    dispatch_upload(reinterpret_cast<const char*>(data), size);
    return 0;
}
