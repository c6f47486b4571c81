// nvk chaine: the string core, its buffers and its archive form.
#include <cstdio>
#include <iomanip>
#include <iostream>
#include <sstream>
#include <vector>

#include "cli.h"
#include "nvk/afx/archive.h"
#include "nvk/afx/exceptions.h"
#include "nvk/afx/mem_file.h"
#include "nvk/core/block_storage.h"
#include "nvk/core/chaine.h"

namespace nvk::tool {
namespace {

std::string Hex(const std::vector<unsigned char>& bytes) {
    std::ostringstream out;
    for (unsigned char byte : bytes) {
        out << std::hex << std::setw(2) << std::setfill('0') << static_cast<int>(byte);
    }
    return out.str();
}

std::vector<unsigned char> ArchiveForm(const Chaine& value) {
    CMemFile file;
    {
        CArchive archive(&file, CArchive::store);
        archive << value;
        archive.Close();
    }
    std::vector<unsigned char> bytes(file.GetLength());
    file.SeekToBegin();
    file.Read(bytes.data(), static_cast<unsigned>(bytes.size()));
    return bytes;
}

int Archive(const Args& args);
int Unarchive(const Args& args);
int UnarchiveOne(const Args& args);

const Command kCommands[] = {
    {"archive", "TEXT | -", "prints the archive form of TEXT in hexadecimal", Archive,
     "answers: the bytes of the archive form (length prefix, then the text) in hexadecimal;\n"
     "with -, each whole line is one text."},
    {"unarchive", "HEX | -", "prints the text of an archive form", Unarchive,
     "answers: the text (exit 0); bytes that are not hexadecimal or end before the text are\n"
     "an error (exit 2)."},
};

int ArchiveOne(const Args& args) {
    std::cout << Hex(ArchiveForm(Chaine(args[0].c_str()))) << '\n';
    return kOk;
}

int Archive(const Args& args) {
    if (!Expect(args, 1, 1, kCommands[0])) {
        return kFailure;
    }
    return PerInput(args, ArchiveOne, LineAs::WholeText);
}

int Unarchive(const Args& args) {
    if (!Expect(args, 1, 1, kCommands[1])) {
        return kFailure;
    }
    return PerInput(args, UnarchiveOne, LineAs::WholeText);
}

int UnarchiveOne(const Args& args) {
    const std::string& hex = args[0];
    if (hex.size() % 2 != 0 ||
        hex.find_first_not_of("0123456789abcdefABCDEF") != std::string::npos) {
        return Fail("not hexadecimal: " + hex);
    }
    std::vector<unsigned char> bytes;
    for (std::size_t i = 0; i < hex.size(); i += 2) {
        bytes.push_back(static_cast<unsigned char>(std::stoi(hex.substr(i, 2), nullptr, 16)));
    }
    CMemFile file(bytes.data(), static_cast<unsigned>(bytes.size()));
    CArchive archive(&file, CArchive::load);
    Chaine value;
    try {
        archive >> value;
    } catch (CException* e) {
        e->Delete();
        return Fail("the archive ends before the text");
    }
    std::cout << value.c_str() << '\n';
    return kOk;
}

void Demo(std::ostream& out) {
    const Chaine greeting("Bonjour");
    const Chaine copy = greeting;
    out << "  a copy shares the buffer: \"" << copy.c_str() << "\", " << greeting.Buffer()->RefCount
        << " holders, block of " << greeting.Buffer()->Capacity << " bytes from the pool\n";
    Chaine changed = copy;
    changed += ", Zurich";
    out << "  a change copies first: \"" << changed.c_str() << "\" beside \"" << greeting.c_str()
        << "\"\n";
    const Chaine longer(std::string(100, '.').c_str());
    out << "  100 characters take a heap block of " << longer.Buffer()->Capacity
        << " bytes (odd capacity)\n";
    out << "  archive form of \"" << greeting.c_str() << "\": " << Hex(ArchiveForm(greeting))
        << '\n';
    const FBlockStorage* storage = BlockStorage();
    out << "  one block storage per process, blocks of " << storage->BlockSize() << " bytes, "
        << storage->BlocksPerPage() << " a page\n";
}

const RegisterArea kArea({"chaine", "the shared string, its buffers and archive form", kCommands,
                          Demo, 10});

}  // namespace
}  // namespace nvk::tool
