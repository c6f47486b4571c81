// The words the shell's completion offers, from the tool's own areas and
// commands, so that it never lags behind them.
#pragma once

#include "cli.h"

namespace nvk::tool {

// `words` are those typed after "nvk", the last being the one to complete;
// prints each word that may stand there and begins with it, one a line.
int Complete(const Args& words);

}  // namespace nvk::tool
