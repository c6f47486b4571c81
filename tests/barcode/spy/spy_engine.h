// What the spy engine saw of the last call, read by the contract tests.
#pragma once

#include "nvk/os/gdi_types.h"
#include "nvk/platform/bar_code_record.h"

struct SpyCall {
    int calls;                  // calls of any entry since the last reset
    char entry[16];             // the entry of the last call
    unsigned char record[256];  // the record, and what the text ran past it
    nvk::os::RECT rect;
    nvk::os::LOGFONTA font;
    char options[8];
    nvk::os::HMODULE module;
};

// Exported as "SpyLastCall".
using SpyLastCallProc = SpyCall* (*)();
