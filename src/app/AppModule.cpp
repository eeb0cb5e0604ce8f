#include "core/imaging/ImageSource.h"
#include "ui/app/ApplicationMain.h"

// The program proper, loaded and run by the `pixcove` launcher (main.cpp).
extern "C" __attribute__((visibility("default"))) int pixcove_main(int argc, char **argv)
{
    ImageSource::install();
    return runPixcove(argc, argv);
}
