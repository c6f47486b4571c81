// CheckFiles: the warning before files are written over.
#include "nvk/afx/message_box.h"
#include "nvk/files/file_operations.h"
#include "os/api/find.h"

namespace os = nvk::os;

namespace {

// "The file %s exists already. Continue?"
constexpr os::UINT kFileExistsQuestion = 14014;

bool Exists(const Chaine& path) {
    os::WIN32_FIND_DATAA data;
    os::HANDLE search = os::FindFirstFileA(path, &data);
    if (search == os::INVALID_HANDLE_VALUE) {
        return false;
    }
    os::FindClose(search);
    return true;
}

}  // namespace

int CheckFiles(const char* names, const char* folder, int ask) {
    Chaine rest(names);
    while (!rest.IsEmpty()) {
        Chaine name;
        Chaine after;
        if (!rest.SplitFirst('\n', name, after)) {
            after.Empty();
        }
        rest = after;
        const Chaine target = Chaine(folder) + '\\' + name;
        if (!Exists(target)) {
            continue;
        }
        if (ask == 0) {
            return 0;
        }
        Chaine format;
        format.LoadString(kFileExistsQuestion);
        Chaine question;
        question.Format(format, target.c_str());
        if (AfxMessageBox(question, MB_YESNO | MB_ICONQUESTION) == IDNO) {
            return 0;
        }
    }
    return 1;
}
