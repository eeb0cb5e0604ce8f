#include "ui/app/ApplicationMain.h"

int main(int argc, char **argv)
{
    return runPixcove(argc, argv);
}
