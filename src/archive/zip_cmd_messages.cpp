// The engine's texts: the ones it asks for in the user's language come from
// the string resources, the names and formats of its logs are fixed.
#include <cstring>

#include "nvk/archive/zip_cmd.h"
#include "nvk/context/string_load.h"
#include "nvk/core/chaine.h"
#include "os/api/kernel_text.h"

namespace {

constexpr int kBufferSize = 260;

// Runs of message ids that map onto consecutive string resources.
struct StringRun {
    int firstId;
    int lastId;
    unsigned firstString;
};

constexpr StringRun kStringRuns[] = {
    {101, 107, 14822}, {132, 132, 14830}, {135, 140, 14831}, {142, 143, 14837}, {145, 146, 14839},
    {148, 152, 14841}, {154, 159, 14846}, {256, 277, 14900}, {304, 313, 14922}, {315, 320, 14933},
    {322, 334, 14940}, {380, 380, 14953}, {390, 395, 14954}, {400, 402, 14960}, {512, 520, 14963},
    {600, 606, 14972}, {700, 700, 14979},
};

struct Literal {
    int id;
    char const* text;
};

constexpr Literal kLiterals[] = {
    {108, "\\DYNAZIP.LOG"},
    {160, "R\xE9ponse ZIP:"},
    {192, "--- DynaZIP ZIP Diagnostic Log - %s ---\r\n"},
    {193, "Function:  %d \r\n"},
    {194, "lpszZIPFile: %#08lx \r\n"},
    {195, "lpszItemList: %#08lx \r\n"},
    {196, "lpMajorStatus: %#08lx \r\n"},
    {197, "lpMajorUserData: %#08lx \r\n"},
    {198, "lpMinorStatus: %#08lx \r\n"},
    {199, "lpMinorUserData: %#08lx \r\n"},
    {200, "dosifyFlag: %d \r\n"},
    {201, "recurseFlag: %d \r\n"},
    {202, "compFactor: %d \r\n"},
    {203, "quietFlag: %d \r\n"},
    {204, "pathForTempFlag: %d \r\n"},
    {205, "lpszTempPath: %#08lx \r\n"},
    {206, "fixFlag: %d \r\n"},
    {207, "fixHarderFlag: %d \r\n"},
    {208, "includeVolumeFlag: %d \r\n"},
    {209, "deleteOriginalFlag: %d \r\n"},
    {210, "growExistingFlag: %d \r\n"},
    {211, "noDirectoryNamesFlag: %d \r\n"},
    {212, "convertLFtoCRLFFlag: %d \r\n"},
    {213, "addCommentFlag: %d \r\n"},
    {214, "lpszComment: %#08lx \r\n"},
    {215, "afterDateFlag: %d \r\n"},
    {216, "lpszDate: %#08lx \r\n"},
    {217, "oldAsLatestFlag: %d \r\n"},
    {218, "includeOnlyFollowingFlag: %d \r\n"},
    {219, "lpszIncludeFollowing: %#08lx \r\n"},
    {220, "excludeFollowingFlag: %d \r\n"},
    {221, "lpszExludeFollowing: %#08lx \r\n"},
    {222, "noDirectoryEntriesFlag: %d \r\n"},
    {223, "includeSysHiddenFlag: %d \r\n"},
    {224, "dontCompressTheseSuffixesFlag: %d \r\n"},
    {225, "lpszStoreSuffixes: %#08lx \r\n"},
    {226, "encryptFlag: %d \r\n"},
    {227, "lpszEncryptCode: %#08lx \r\n"},
    {228, "lpMessageDisplay: %#08lx \r\n"},
    {229, "lpMessageDisplayData: %#08lx \r\n"},
    {230, "wMultiVolControl: %#04x \r\n"},
    {231, "wZipSubOptions: %#04x \r\n"},
    {232, "lResv1: %#08lx \r\n"},
    {233, "lResv2: %#08lx \r\n"},
    {234, "lpszExtProgTitle: %#08lx \r\n"},
    {235, "lpRenameProc: %#08lx \r\n"},
    {236, "lpRenameUserData: %#08lx \r\n"},
    {237, "lpMemBlock: %#08lx \r\n"},
    {238, "lMemBlockSize: %ld \r\n"},
    {314, "local flags = 0x%04x, central = 0x%04x:"},
    {321, "local extra (%d bytes) != central extra (%d bytes):"},
    {701, "\\DZIPLOG.TXT"},
    {702, "--- DynaZIP ZIP Log - %s ---"},
    {703, "%s [Added]"},
    {704, "%s [Deleted]"},
    {705, "%s [Memory]"},
    {707, "%s [Memory to Memory]"},
};

int Give(char* buffer, char const* text) {
    nvk::os::lstrcpynA(buffer, text, kBufferSize);
    buffer[kBufferSize - 1] = '\0';
    return 1;
}

}  // namespace

int EZipCmd::DisplayMessage(unsigned int kind, unsigned int, int id, int, char* buffer, char*) {
    if (kind != ZIP_MESSAGE_TEXT || id < 101 || id > 707) {
        return 0;
    }
    for (StringRun const& run : kStringRuns) {
        if (id >= run.firstId && id <= run.lastId) {
            Chaine text;
            nvk::LoadString(text, run.firstString + static_cast<unsigned>(id - run.firstId),
                            nvk::LibraryModule());
            return Give(buffer, text);
        }
    }
    for (Literal const& literal : kLiterals) {
        if (literal.id == id) {
            return Give(buffer, literal.text);
        }
    }
    return 0;
}

char const* EZipCmd::GetErrorMessage(int code) {
    // One text for every caller, as the callers expect: they copy it or test
    // the code for 0 first.
    static Chaine message;
    if (code == -1 || (code >= 1 && code <= 21)) {
        nvk::LoadString(message, static_cast<unsigned>(14800 + (code == -1 ? 0 : code)),
                        nvk::LibraryModule());
    }
    return message;
}
