#include "rc_writer.h"

#include <algorithm>
#include <map>
#include <tuple>

namespace nvk::rc {

namespace {

constexpr std::uint16_t kStringType = 6;

std::string Quoted(const std::string& text) {
    return text.empty() ? "nullptr" : "\"" + text + "\"";
}

template <class T>
void WriteArray(std::ostream& out, const char* type, const std::string& name,
                const std::vector<T>& values) {
    out << "constexpr " << type << ' ' << name << "[] = {";
    for (std::size_t i = 0; i < values.size(); ++i) {
        out << (i % 16 == 0 ? "\n    " : " ") << static_cast<unsigned>(values[i]) << ',';
    }
    if (values.empty()) {
        out << "0";
    }
    out << "\n};\n";
}

}  // namespace

std::vector<TableEntry> Layout(const Script& script) {
    // (language, block) -> the 16 strings of the block.
    std::map<std::pair<std::uint16_t, std::uint16_t>, std::u16string[16]> blocks;
    for (const StringEntry& entry : script.strings) {
        auto block = static_cast<std::uint16_t>((entry.id >> 4) + 1);
        blocks[{entry.language, block}][entry.id & 15] = entry.text;
    }
    std::vector<TableEntry> table;
    for (const auto& [key, strings] : blocks) {
        TableEntry entry{{{}, kStringType}, {{}, key.second}, key.first, {}, {}};
        for (const std::u16string& text : strings) {
            entry.units.push_back(static_cast<std::uint16_t>(text.size()));
            entry.units.insert(entry.units.end(), text.begin(), text.end());
        }
        table.push_back(std::move(entry));
    }
    for (const DataResource& data : script.data) {
        table.push_back({data.type, data.name, data.language, {}, data.bytes});
    }
    std::sort(table.begin(), table.end(), [](const TableEntry& a, const TableEntry& b) {
        return std::tie(a.type, a.name, a.language) < std::tie(b.type, b.name, b.language);
    });
    return table;
}

void WriteSource(const std::vector<TableEntry>& table, const std::string& symbol, TableUse use,
                 std::ostream& out) {
    out << "// Made by nvkrc from the resource scripts; not to be edited.\n"
           "#include <cstdint>\n\n";
    if (use == TableUse::kRegistered) {
        out << "#include \"nvk/os/module.h\"\n";
    }
    out << "#include \"nvk/os/resource.h\"\n\nnamespace {\n\n";
    for (std::size_t i = 0; i < table.size(); ++i) {
        const TableEntry& entry = table[i];
        std::string name = "kData" + std::to_string(i);
        if (entry.bytes.empty() && !entry.units.empty()) {
            out << "alignas(4) ";
            WriteArray(out, "std::uint16_t", name, entry.units);
        } else {
            WriteArray(out, "unsigned char", name, entry.bytes);
        }
    }
    out << "\nconstexpr nvk::os::ResourceEntry kEntries[] = {\n";
    for (std::size_t i = 0; i < table.size(); ++i) {
        const TableEntry& entry = table[i];
        std::size_t size = entry.units.empty() ? entry.bytes.size() : entry.units.size() * 2;
        out << "    {" << Quoted(entry.type.text) << ", " << entry.type.number << ", "
            << Quoted(entry.name.text) << ", " << entry.name.number << ", " << entry.language
            << ", " << size << ", kData" << i << "},\n";
    }
    if (table.empty()) {
        out << "    {nullptr, 0, nullptr, 0, 0, 0, nullptr},\n";
    }
    out << "};\n\n}  // namespace\n\n";
    std::string count = std::to_string(table.size());
    if (use == TableUse::kExported) {
        out << "extern \"C\" __attribute__((visibility(\"default\"))) constinit const "
               "nvk::os::ResourceTable "
            << symbol << " = {" << count << ", kEntries};\n";
        return;
    }
    std::size_t colons = symbol.rfind("::");
    std::string space = colons == std::string::npos ? "" : symbol.substr(0, colons);
    std::string name = colons == std::string::npos ? symbol : symbol.substr(colons + 2);
    if (!space.empty()) {
        out << "namespace " << space << " {\n\n";
    }
    out << "extern const nvk::os::ResourceTable " << name << ";\nconstinit const "
        << "nvk::os::ResourceTable " << name << " = {" << count << ", kEntries};\n";
    if (!space.empty()) {
        out << "\n}  // namespace " << space << '\n';
    }
    if (use == TableUse::kRegistered) {
        // The table belongs to the module while it is loaded, as the library's
        // own table does.
        out << "\nnamespace {\n\nstruct TableRegistration {\n"
               "    TableRegistration() {\n"
               "        nvk::os::RegisterResourceTable(nvk::os::ModuleFromAddress(&"
            << symbol << "), &" << symbol
            << ");\n    }\n"
               "    ~TableRegistration() { nvk::os::UnregisterResourceTable(&"
            << symbol << "); }\n};\n\nconst TableRegistration kRegistration;\n\n}  // namespace\n";
    }
}

}  // namespace nvk::rc
