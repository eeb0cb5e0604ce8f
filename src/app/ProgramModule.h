#pragma once

// The executables are small launchers: they answer --version themselves and otherwise load the
// program proper from its module and run it. Loading Qt and the image libraries (some sixty
// shared libraries) costs over 10 ms before main() would run, which a version query should not
// pay. Plain C++ and the C library only: nothing here may pull those libraries in.

#include <dlfcn.h>
#include <unistd.h>

#include <climits>
#include <cstdio>
#include <string>

namespace ProgramModule {

// Runs the function `entry` (int(int, char **)) of the program's module: the one at `installed`
// (relative to the executable's folder) when the program is installed, else this build's own at
// `built`. When neither loads, says why on stderr as `program` and answers `failure`.
inline int run(const char *program, const char *entry, const char *installed, const char *built, int argc, char **argv,
               int failure)
{
    std::string candidates[2];
    char self[PATH_MAX];
    const ssize_t length = ::readlink("/proc/self/exe", self, sizeof self - 1);
    if (length > 0) {
        std::string folder(self, size_t(length));
        folder.erase(folder.rfind('/') + 1);
        candidates[0] = folder + installed;
    }
    candidates[1] = built;
    std::string error = "its module is not installed";
    for (const std::string &path : candidates) {
        if (path.empty() || ::access(path.c_str(), F_OK) != 0)
            continue;
        // Local: the module's symbols stay its own, as they were in the executable.
        void *module = ::dlopen(path.c_str(), RTLD_LAZY | RTLD_LOCAL);
        if (!module) {
            const char *reason = ::dlerror();
            error = reason ? reason : path;
            continue;
        }
        if (auto programMain = reinterpret_cast<int (*)(int, char **)>(::dlsym(module, entry)))
            return programMain(argc, argv);
        error = path + " lacks " + entry;
    }
    std::fprintf(stderr, "%s: cannot load the program: %s\n", program, error.c_str());
    return failure;
}

} // namespace ProgramModule
