#include "core/imaging/ImageSource.h"
#include "ui/app/ApplicationMain.h"

int main(int argc, char **argv)
{
    ImageSource::install();
    return runPixcove(argc, argv);
}
