#include "app/ProgramModule.h"

#include <cstdio>
#include <cstring>

int main(int argc, char **argv)
{
    // Answered before anything starts (no application object, no display, no image library):
    // package tools and scripts ask for the version and expect an answer at once.
    if (argc >= 2 && std::strcmp(argv[1], "--version") == 0) {
        std::puts("pixcove " PIXCOVE_VERSION);
        return 0;
    }
    return ProgramModule::run("pixcove", "pixcove_main", PIXCOVE_MODULE_INSTALLED, PIXCOVE_MODULE_BUILD, argc, argv, 1);
}
