// veloran --headless: the whole core with no window, for a station computer
// without a screen.
#pragma once

namespace veloran::cli {

// The words after "--headless". Runs until SIGINT or SIGTERM; 0 then, 2 for a
// command-line mistake, 1 when the program's folders cannot be set up or
// another station already runs on the same settings folder.
int RunHeadless(int argc, char** argv);

}  // namespace veloran::cli
