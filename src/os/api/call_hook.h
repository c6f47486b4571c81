// A hook on the calls of the OS layer that change files, for tests that stop
// a process at a chosen step of its work (as a crash or a kill would) and
// then look at what it left on disk.
#pragma once

namespace nvk::os {

// `call` is the name of the call about to run ("CreateFileA", "WriteFile",
// "SetEndOfFile", "FlushFileBuffers", "CloseHandle", "ReplaceFileA"). Null removes it.
using CallHook = void (*)(const char* call);
void SetCallHook(CallHook hook);

}  // namespace nvk::os
