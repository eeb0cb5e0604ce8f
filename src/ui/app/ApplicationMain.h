#pragma once

// The whole of `pixcove`'s main(): reads the command line, hands the request to a running
// instance when there is one, else starts the program and runs its event loop.
int runPixcove(int argc, char **argv);
