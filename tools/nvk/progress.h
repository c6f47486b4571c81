// The bars that long operations show on a terminal, and only there.
#pragma once

#include <functional>
#include <string_view>

namespace nvk::tool {

// Runs `work` on a thread of its own while a bar with the time spent moves
// on the terminal, then wipes it. The library's tree operations report no
// steps, so the bar shows that work goes on, not how much is left. Without a
// terminal on standard output, `work` just runs.
void RunWithProgress(std::string_view label, const std::function<void()>& work);

// Whether standard error is a terminal, where a percentage bar belongs.
bool ErrorOnTerminal();

// "[#####     ]  50% label" redrawn in place on standard error; `label` is the
// library's text. EndPercentBar ends its line.
void DrawPercentBar(const char* label, long percent);
void EndPercentBar();

}  // namespace nvk::tool
