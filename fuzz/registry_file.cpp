// Reads untrusted registry text as an import does: any bytes must parse
// without a fault, and what the text makes of each root must come back
// unchanged through its own text form.
#include <cstddef>
#include <cstdint>
#include <cstdlib>
#include <set>
#include <string>
#include <string_view>

#include "os/common/registry_text.h"
#include "os/posix/code_page.h"

extern "C" int LLVMFuzzerTestOneInput(const std::uint8_t* data, std::size_t size) {
    using namespace nvk::os::common;
    using namespace nvk::os::posix;
    if (size > 1u << 16) {
        return 0;
    }
    std::string text =
        AnsiFromFileBytes(std::string_view(reinterpret_cast<const char*>(data), size));
    auto sections = ParseRegistryText(text);
    if (!sections) {
        return 0;
    }
    std::set<std::string, NoCaseLess> roots;
    for (const RegistrySection& section : *sections) {
        roots.insert(section.root);
    }
    for (const std::string& root : roots) {
        RegistryKey tree;
        ApplySections(*sections, root, tree);
        std::string once = FormatRegistryText(root, {}, tree);
        auto again = ParseRegistryText(AnsiFromFileBytes(Utf16FileBytes(once)));
        if (!again) {
            std::abort();
        }
        RegistryKey back;
        ApplySections(*again, root, back);
        if (FormatRegistryText(root, {}, back) != once) {
            std::abort();
        }
    }
    return 0;
}
