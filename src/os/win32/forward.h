// The OS layer's functions passed to Windows' own. The layer's numbers,
// characters and handles are Windows' very types and pass as they are; its
// structs are its own, laid out as Windows' (layout_check.cpp), so pointers to
// them, and callbacks taking them, are reinterpreted as the type Windows
// declares, and the answer handed back the same way.
//
// The layer's headers come first: <windows.h> defines many of their names
// as macros, which must not reach them.
#pragma once

#include <type_traits>

#include "nvk/os/gdi_types.h"
#include "nvk/os/menu_types.h"
#include "nvk/os/shell.h"
#include "nvk/os/types.h"
#include "nvk/os/window_types.h"
#include "os/api/account.h"
#include "os/api/call_hook.h"
#include "os/api/console.h"
#include "os/api/dde.h"
#include "os/api/directory.h"
#include "os/api/environment.h"
#include "os/api/error.h"
#include "os/api/error_mode.h"
#include "os/api/file.h"
#include "os/api/file_attributes.h"
#include "os/api/file_copy.h"
#include "os/api/file_copy_ex.h"
#include "os/api/file_replace.h"
#include "os/api/find.h"
#include "os/api/gdi.h"
#include "os/api/kernel_text.h"
#include "os/api/keyboard.h"
#include "os/api/locale.h"
#include "os/api/memory.h"
#include "os/api/menu.h"
#include "os/api/message.h"
#include "os/api/message_box.h"
#include "os/api/metafile.h"
#include "os/api/module.h"
#include "os/api/network.h"
#include "os/api/nls.h"
#include "os/api/path_map.h"
#include "os/api/pointer_check.h"
#include "os/api/process.h"
#include "os/api/profile.h"
#include "os/api/registry.h"
#include "os/api/resource.h"
#include "os/api/resource_names.h"
#include "os/api/shell.h"
#include "os/api/shell_folder.h"
#include "os/api/shell_link.h"
#include "os/api/sync.h"
#include "os/api/system_info.h"
#include "os/api/temp_file.h"
#include "os/api/time_zone.h"
#include "os/api/user.h"
#include "os/api/variant_time.h"
#include "os/api/version.h"
#include "os/api/volume.h"
#include "os/api/window.h"

// clang-format off
#include <windows.h>
#include <ddeml.h>
#include <sddl.h>
#include <shellapi.h>
#include <shlobj.h>
#include <winnetwk.h>
#include <oleauto.h>
#include <time.h>
// clang-format on

namespace nvk::os {

// Tells the call hook that `call` is about to run.
void FireCallHook(const char* call);

}  // namespace nvk::os

namespace nvk::os::win32 {

// Hands a value over as the type Windows declares. Numbers, characters and
// handles are that very type; what differs is a pointer to one of the layer's
// own structs, or a callback taking one, which is reinterpreted.
template <class To, class From>
To Pass(From value) {
    if constexpr (std::is_same_v<To, From>) {
        return value;
    } else {
        static_assert(std::is_pointer_v<To> && std::is_pointer_v<From>,
                      "the layer's numbers and handles are Windows' own types");
        if constexpr (std::is_function_v<std::remove_pointer_t<From>>) {
            return reinterpret_cast<To>(value);
        } else {
            // Some of Windows' declarations lack the const that the call keeps.
            using Mutable = std::remove_const_t<std::remove_pointer_t<From>>*;
            return reinterpret_cast<To>(const_cast<Mutable>(value));
        }
    }
}

template <class Result = void, class R, class... P, class... A>
Result Call(R (*function)(P...), A... args) {
    if constexpr (std::is_void_v<Result>) {
        function(Pass<P>(args)...);
    } else {
        return Pass<Result>(function(Pass<P>(args)...));
    }
}

}  // namespace nvk::os::win32
