// The command-line helpers now live with the station, which both front ends
// share; the tools keep including and naming them as their own.
#pragma once

#include "station/options.h"

namespace veloran::cli {
using namespace veloran;
}  // namespace veloran::cli
