// unit_tool: every program of the simulated unit in one, chosen by the name it is called by.

#include <cstdio>
#include <cstring>

#include "services.h"
#include "tools.h"

int main(int argc, char** argv) {
    const char* slash = strrchr(argv[0], '/');
    const char* name = slash != nullptr ? slash + 1 : argv[0];
    if (strcmp(name, "unit_tool") == 0 && argc > 1) {
        argc--;
        argv++;
        name = argv[0];
    }
    int status = 0;
    if (strcmp(name, "sh") == 0) {
        return sim::run_shell(argc, argv);
    }
    if (strcmp(name, "unit_init") == 0) {
        return sim::run_unit_init(argc, argv);
    }
    if (sim::run_tool(name, argc, argv, status) ||
        sim::run_launcher_request(name, argc, argv, status)) {
        return status;
    }
    fprintf(stderr, "unit_tool: no program called %s here\n", name);
    return 127;
}
