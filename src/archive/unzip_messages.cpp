// The texts of EUnzipCmd: what the engine asks for, and the texts of the
// return codes.
#include <array>
#include <cstring>

#include "nvk/archive/unzip_cmd.h"
#include "nvk/core/chaine.h"
#include "os/api/kernel_text.h"

namespace {

constexpr int kKindText = 13;
constexpr int kBufferSize = 260;
constexpr unsigned kFirstMessageString = 14642;  // + id of the message
constexpr unsigned kItemOfTotalString = 14713;

// The lines of the engine's logs, which stay untranslated.
const char* Literal(int id) {
    switch (id) {
        case 74:
            return "returnCount: %d";
        case 75:
            return "lpszReturnString:";
        case 76:
            return "--- DynaZIP UnZIP Diagnostic Log - %s ---\r\n";
        case 77:
            return "Function: %d \r\n";
        case 78:
            return "lpszZIPFile: %#08lx \r\n";
        case 79:
            return "zInfo: %#08lx \r\n";
        case 80:
            return "lpszFilespec: %#08lx \r\n";
        case 81:
            return "index: %d \r\n";
        case 82:
            return "lpszDestination: %#08lx \r\n";
        case 83:
            return "freshenFlag: %d \r\n";
        case 84:
            return "updateFlag: %d \r\n";
        case 85:
            return "overWriteFlag: %d \r\n";
        case 86:
            return "quietFlag: %d \r\n";
        case 87:
            return "testFlag: %d \r\n";
        case 88:
            return "noDirectoryNamesFlag: %d \r\n";
        case 89:
            return "recurseFlag: %d \r\n";
        case 90:
            return "noDirectoryItemsFlag: %d \r\n";
        case 91:
            return "lpMinorStatus: %#08lx \r\n";
        case 92:
            return "lpMinorUserData: %#08lx \r\n";
        case 93:
            return "lpMajorStatus: %#08lx \r\n";
        case 94:
            return "lpMajorUserData: %#08lx \r\n";
        case 95:
            return "returnCount: %d \r\n";
        case 96:
            return "lpszReturnString: %#08lx \r\n";
        case 97:
            return "decryptFlag: %d \r\n";
        case 98:
            return "lpszDecryptCode: %#08lx \r\n";
        case 99:
            return "lpMessageDisplay: %#08lx \r\n";
        case 100:
            return "lpMessageDisplayData: %#08lx \r\n";
        case 101:
            return "\\DYNAZIP.LOG";
        case 127:
            return "wUnzipSubOptions: %#04x \r\n";
        case 133:
            return "lResv1: %#08lx \r\n";
        case 134:
            return "lResv2: %#08lx \r\n";
        case 135:
            return "lpszExtProgTitle: %#08lx \r\n";
        case 136:
            return "lpRenameProc: %#08lx \r\n";
        case 137:
            return "lpRenameUserData: %#08lx \r\n";
        case 138:
            return "lpMemBlock: %#08lx \r\n";
        case 139:
            return "lMemBlockSize: %ld \r\n";
        case 140:
            return "lStartingOffset: %ld \r\n";
        case 143:
            return "\\DUNZLOG.TXT";
        case 144:
            return "--- DynaZIP UnZIP Log - %s ---";
        case 145:
            return "%s [Extracted]";
        case 146:
            return "%s [Tested]";
        case 147:
            return "%s [Memory]";
        case 149:
            return "%s [Memory to Memory]";
        default:
            return nullptr;
    }
}

bool FromString(int id) {
    return (id >= 2 && id <= 70) || id == 72 || id == 73 || (id >= 102 && id <= 126) ||
           (id >= 128 && id <= 132) || id == 141 || id == 142;
}

void Fill(char* buffer, const char* text) {
    nvk::os::lstrcpynA(buffer, text, kBufferSize);
    buffer[kBufferSize - 1] = '\0';
}

// The codes that have a text, and their strings for an extraction and for a
// verification.
struct CodeText {
    int Code;
    unsigned Extract;
    unsigned Verify;
};
constexpr std::array<CodeText, 22> kCodeTexts = {{
    {-1, 14600, 14600}, {2, 14601, 14622},  {3, 14602, 14623},  {4, 14603, 14624},
    {5, 14604, 14625},  {9, 14605, 14626},  {11, 14606, 14627}, {12, 14607, 14628},
    {25, 14608, 14629}, {28, 14609, 14630}, {29, 14610, 14631}, {39, 14611, 14632},
    {40, 14612, 14633}, {41, 14613, 14634}, {42, 14614, 14635}, {44, 14615, 14636},
    {45, 14616, 14637}, {46, 14617, 14638}, {47, 14618, 14639}, {48, 14619, 14640},
    {49, 14620, 14641}, {50, 14621, 14642},
}};

// A code without a text leaves the static text as it is, so the previous
// text is returned: callers test for success first.
const char* CodeMessage(Chaine& text, int code, bool verify) {
    for (const CodeText& entry : kCodeTexts) {
        if (entry.Code == code) {
            text.LoadString(verify ? entry.Verify : entry.Extract);
        }
    }
    return text.c_str();
}

}  // namespace

int EUnzipCmd::DisplayMessage(unsigned kind, unsigned, int id, int, char* buffer, char*) {
    if (kind != kKindText || id < 2 || id > 149 || buffer == nullptr) {
        return 0;
    }
    if (id == 71) {
        // Batched runs count the items themselves; otherwise the engine
        // fills in its own numbers.
        Chaine format;
        format.LoadString(kItemOfTotalString);
        char current[16] = "%d";
        char total[16] = "%d";
        if (m_TotalItems != -1) {
            nvk::os::wsprintfA(current, "%ld", m_CurrentItem);
            nvk::os::wsprintfA(total, "%ld", m_TotalItems);
        }
        char text[1024];
        nvk::os::wsprintfA(text, format.c_str(), current, total);
        Fill(buffer, text);
        return 1;
    }
    if (const char* literal = Literal(id)) {
        Fill(buffer, literal);
        return 1;
    }
    if (FromString(id)) {
        Chaine text;
        if (text.LoadString(kFirstMessageString + static_cast<unsigned>(id))) {
            Fill(buffer, text.c_str());
            return 1;
        }
    }
    return 0;
}

const char* EUnzipCmd::GetErrorMessage(int code) {
    static Chaine text;
    return CodeMessage(text, code, false);
}

const char* EUnzipCmd::GetVerifyErrorMessage(int code) {
    static Chaine text;
    return CodeMessage(text, code, true);
}
