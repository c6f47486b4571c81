// nvkrc: compiles resource scripts into the C++ source of a module's table.
//   nvkrc --output FILE --symbol NAME [--export | --register] SCRIPT...
#include <fstream>
#include <iostream>
#include <sstream>
#include <string>
#include <vector>

#include "rc_parser.h"
#include "rc_version.h"
#include "rc_writer.h"

int main(int argc, char** argv) {
    std::string output;
    std::string symbol;
    nvk::rc::TableUse use = nvk::rc::TableUse::kNamed;
    std::vector<std::string> scripts;
    for (int i = 1; i < argc; ++i) {
        std::string arg = argv[i];
        if (arg == "--output" && i + 1 < argc) {
            output = argv[++i];
        } else if (arg == "--symbol" && i + 1 < argc) {
            symbol = argv[++i];
        } else if (arg == "--export") {
            use = nvk::rc::TableUse::kExported;
        } else if (arg == "--register") {
            use = nvk::rc::TableUse::kRegistered;
        } else {
            scripts.push_back(arg);
        }
    }
    if (output.empty() || symbol.empty() || scripts.empty()) {
        std::cerr << "usage: nvkrc --output FILE --symbol NAME [--export | --register] SCRIPT...\n";
        return 2;
    }
    nvk::rc::Script script;
    try {
        for (const std::string& file : scripts) {
            std::ifstream in(file, std::ios::binary);
            if (!in) {
                std::cerr << "nvkrc: can't read " << file << '\n';
                return 1;
            }
            std::ostringstream text;
            text << in.rdbuf();
            nvk::rc::Parse(text.str(), file, script);
        }
    } catch (const nvk::rc::RcError& e) {
        std::cerr << e.what() << '\n';
        return 1;
    }
    std::ostringstream source;
    nvk::rc::WriteSource(nvk::rc::Layout(script), symbol, use, source);
    nvk::rc::WriteVersionSection(script, source);
    // The file is rewritten only when it changes, so that nothing rebuilds
    // for an unchanged table.
    std::ifstream previous(output, std::ios::binary);
    std::ostringstream old;
    old << previous.rdbuf();
    if (!previous || old.str() != source.str()) {
        std::ofstream out(output, std::ios::binary | std::ios::trunc);
        out << source.str();
        if (!out) {
            std::cerr << "nvkrc: can't write " << output << '\n';
            return 1;
        }
    }
    return 0;
}
