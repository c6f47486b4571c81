// The registry's text form, as the registry editor imports and exports it:
// "Windows Registry Editor Version 5.00" (or "REGEDIT4"), then sections
// "[HKEY_CURRENT_USER\Software\x]" with lines "name"="text", @=... for the
// default value, dword:0000002a, hex:01,ff and hex(n):... for other types,
// "name"=- to delete a value and [-key] to delete a key. Pure logic over ANSI
// text; the caller reads and writes the files.
#pragma once

#include <cstdint>
#include <map>
#include <memory>
#include <optional>
#include <string>
#include <string_view>
#include <vector>

#include "nvk/os/types.h"

namespace nvk::os::common {

// Key and value names compare without regard to case, and keep the case they
// were made with.
struct NoCaseLess {
    using is_transparent = void;
    bool operator()(std::string_view a, std::string_view b) const;
};

struct RegistryValue {
    std::string name;  // empty for the key's default value
    DWORD type = 0;
    std::string data;  // the bytes the ANSI calls see
};

// A number no key had before.
std::uint64_t NewKeySerial();

struct RegistryKey {
    // Which key this is: one made anew under the name of a deleted key is
    // another key, which the handles of the first don't reach.
    std::uint64_t serial = NewKeySerial();
    std::vector<RegistryValue> values;  // in the order they were made
    std::map<std::string, std::unique_ptr<RegistryKey>, NoCaseLess> subkeys;

    RegistryValue* FindValue(std::string_view name);
    RegistryKey* FindSubkey(std::string_view name);
    // The subkey, made if missing.
    RegistryKey& Subkey(std::string_view name);
};

// One section of a text: a key, given by its root and the names below it,
// and what is set or deleted in it.
struct RegistrySection {
    std::string root;  // "HKEY_CURRENT_USER"
    std::vector<std::string> path;
    bool deleteKey = false;
    struct Entry {
        RegistryValue value;
        bool deleteValue = false;
    };
    std::vector<Entry> entries;
};

// The longest names the registry holds.
inline constexpr std::size_t kMaxKeyNameLength = 255;
inline constexpr std::size_t kMaxValueNameLength = 16383;

// The full name of a root key given by its full or short name, case aside
// ("hkcu" gives "HKEY_CURRENT_USER"), or empty for a name that is none.
std::string_view RegistryRootName(std::string_view name);

// The sections of a text, or nothing when its first line is not one of the
// two headers. What can't be read is skipped, as the registry editors skip
// it: a line, a value, or a section whose root is unknown, with its values;
// `whole`, when given, receives false if anything was skipped (or, without a
// header, if the text holds more than blanks).
std::optional<std::vector<RegistrySection>> ParseRegistryText(std::string_view text,
                                                              bool* whole = nullptr);

// Applies the sections of one root to its tree.
void ApplySections(const std::vector<RegistrySection>& sections, std::string_view root,
                   RegistryKey& tree);

// The text of `key`, named `root` followed by `path`, and of everything below
// it, with the header and "\r\n" line ends. `withHeader` false gives the
// sections alone.
std::string FormatRegistryText(std::string_view root, const std::vector<std::string>& path,
                               const RegistryKey& key, bool withHeader = true);

// Splits "a\b\\c" into its non-empty names.
std::vector<std::string> SplitKeyPath(std::string_view path);

}  // namespace nvk::os::common
