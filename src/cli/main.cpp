#include "app/ProgramModule.h"

#include <cstdio>
#include <cstring>

int main(int argc, char **argv)
{
    // Before anything loads: a version query costs no more than starting a small program.
    if (argc >= 2 && std::strcmp(argv[1], "--version") == 0) {
        std::puts("pixcove-cli " PIXCOVE_VERSION);
        return 0;
    }
    return ProgramModule::run("pixcove-cli", "pixcove_cli_main", PIXCOVE_MODULE_INSTALLED, PIXCOVE_MODULE_BUILD, argc,
                              argv, 1);
}
