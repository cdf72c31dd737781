// veloran-cli modes: the user's modes file from outside sources.

#include <cstdio>

#include "cli/commands.h"
#include "cli/options.h"
#include "data/files.h"
#include "data/satnogs.h"

namespace veloran::cli {

int RunModes(int argc, char** argv) {
    Arguments args;
    if (!ParseArguments(argc, argv, {}, &args)) return kUsageError;
    if (!CheckOptions(args, {"--data-dir", "--config-dir"})) return kUsageError;
    if (args.positional.size() != 2 || args.positional[0] != "import-satnogs")
        return Fail("modes needs import-satnogs TRANSMITTERS.json");
    const DataPaths paths =
        ResolveDataPaths({args.value("--data-dir"), args.value("--config-dir")});
    if (!MakeDirectories(paths.configDir)) return Fail("cannot create " + paths.configDir);
    SatnogsImportResult result;
    if (!ImportSatnogs(args.positional[1], paths, &result)) return Fail(result.message);
    std::printf("%s\n", result.message.c_str());
    return 0;
}

}  // namespace veloran::cli
