// The commands of veloran-cli. Each takes the words after its own name and
// returns the process exit status.
#pragma once

namespace veloran::cli {

int RunLook(int argc, char** argv);
int RunPasses(int argc, char** argv);
int RunGrid(int argc, char** argv);

}  // namespace veloran::cli
