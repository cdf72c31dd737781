// The commands of veloran-cli. Each takes the words after its own name and
// returns the process exit status.
#pragma once

namespace veloran::cli {

int RunLook(int argc, char** argv);
int RunPasses(int argc, char** argv);
int RunMap(int argc, char** argv);
int RunHorizon(int argc, char** argv);
int RunRotor(int argc, char** argv);
int RunRadio(int argc, char** argv);
int RunGrid(int argc, char** argv);
int RunLog(int argc, char** argv);
int RunKeps(int argc, char** argv);
int RunModes(int argc, char** argv);

}  // namespace veloran::cli
