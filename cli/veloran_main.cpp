// veloran: the station program. Until the desktop window lands, it runs the
// core headless (--headless).

#include <cstdio>
#include <cstring>

#include "cli/headless.h"

int main(int argc, char** argv) {
    for (int i = 1; i < argc; ++i) {
        if (std::strcmp(argv[i], "--headless") == 0) {
            // Everything but --headless itself goes to the runner.
            for (int j = i; j + 1 < argc; ++j) argv[j] = argv[j + 1];
            return veloran::cli::RunHeadless(argc - 2, argv + 1);
        }
    }
    if (argc > 1 && (std::strcmp(argv[1], "--help") == 0 || std::strcmp(argv[1], "-h") == 0)) {
        std::printf(
            "usage: veloran --headless [options]   (veloran --headless --help lists them)\n");
        return 0;
    }
    std::fprintf(stderr,
                 "veloran: the desktop window is not built yet; run the station with --headless "
                 "(veloran --headless --help)\n");
    return 2;
}
