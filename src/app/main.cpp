#include "core/imaging/ImageSource.h"
#include "ui/app/ApplicationMain.h"

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
    ImageSource::install();
    return runPixcove(argc, argv);
}
