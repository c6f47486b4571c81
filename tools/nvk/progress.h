// The bar that long tree operations show on a terminal.
#pragma once

#include <functional>
#include <string_view>

namespace nvk::tool {

// Runs `work` on a thread of its own while a bar with the time spent moves
// on the terminal, then wipes it. The library's tree operations report no
// steps, so the bar shows that work goes on, not how much is left. Without a
// terminal on standard output, `work` just runs.
void RunWithProgress(std::string_view label, const std::function<void()>& work);

}  // namespace nvk::tool
