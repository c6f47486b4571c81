#include "nvk/archive/unzip_cmd.h"

#include <cstring>
#include <string>
#include <vector>

#include "nvk/core/chaine.h"
#include "nvk/core/tableau.h"
#include "os/api/kernel_text.h"
#include "os/api/keyboard.h"
#include "os/api/module.h"

nvk::os::HMODULE EUnzipCmd::g_hUnzipDll = nullptr;

namespace {

constexpr unsigned kWaitString = 14643;

using DunzipEntry = int (*)(UNZIPCMDSTRUCT*);

bool WorksOnItems(int function) {
    return function == 3 || function == 4 || function == 8 || function == 9 || function == 11;
}

char* Duplicate(const char* text) {
    if (text == nullptr) {
        return nullptr;
    }
    std::size_t size = std::strlen(text) + 1;
    char* copy = new char[size];
    std::memcpy(copy, text, size);
    return copy;
}

// The engine gets the object through lpMessageDisplayData and its texts
// through the virtual DisplayMessage, which a derived class may replace.
int MessageDisplay(unsigned kind, unsigned x, int id, int y, char* buffer, char* z,
                   void* userData) {
    return static_cast<EUnzipCmd*>(userData)->DisplayMessage(kind, x, id, y, buffer, z);
}

// The items of a list: blanks separate them, double quotes keep blanks
// inside one. Blanks in a row delimit nothing, so they give no empty item.
std::vector<std::string> SplitItems(const char* list) {
    PTableau<Chaine> fields;
    Chaine(list).Split(fields, ' ', '"');
    std::vector<std::string> items;
    for (int i = 0; i < fields.Size(); ++i) {
        std::string item;
        for (const char* c = fields[i].c_str(); *c != '\0'; ++c) {
            if (*c != '"') {
                item += *c;
            }
        }
        if (!fields[i].IsEmpty()) {
            items.push_back(item);
        }
    }
    return items;
}

// What the scaling function needs of a batched run.
struct BatchProgress {
    EUnzipCmd* Command;
    UNZIPSTATUSPROC CallerStatus;
    void* CallerData;
    long Done;
    long Size;
};

// A text of the record replaced by a private copy for the time of a run.
class PrivateText {
public:
    explicit PrivateText(char*& field) : m_Field(field), m_Caller(field) {
        if (field != nullptr) {
            m_Copy = field;
            field = m_Copy.data();
        }
    }
    ~PrivateText() { m_Field = m_Caller; }
    PrivateText(const PrivateText&) = delete;
    PrivateText& operator=(const PrivateText&) = delete;

private:
    char*& m_Field;
    char* m_Caller;
    std::string m_Copy;
};

}  // namespace

EUnzipCmd::EUnzipCmd() {
    CommonConstruct();
}

EUnzipCmd::EUnzipCmd(const char* zipFile, const char* destination, const char* itemList) {
    CommonConstruct();
    m_ZipFile = Duplicate(zipFile);
    m_Destination = Duplicate(destination);
    m_ItemList = Duplicate(itemList);
    lpszZIPFile = m_ZipFile;
    lpszDestination = m_Destination;
    lpszFilespec = m_ItemList;
    function = 8;
    quietFlag = 1;
    if (nvk::os::GetKeyState(nvk::os::VK_CONTROL) < 0) {
        decryptFlag = 1;
    }
}

EUnzipCmd::EUnzipCmd(const EUnzipCmd& other)
    : UNZIPCMDSTRUCT(other),
      m_TotalItems(other.m_TotalItems),
      m_CurrentItem(other.m_CurrentItem),
      m_ZipFile(other.m_ZipFile),
      m_Destination(other.m_Destination),
      m_ItemList(other.m_ItemList) {}

EUnzipCmd& EUnzipCmd::operator=(const EUnzipCmd& other) {
    UNZIPCMDSTRUCT::operator=(other);
    m_TotalItems = other.m_TotalItems;
    m_CurrentItem = other.m_CurrentItem;
    m_ZipFile = other.m_ZipFile;
    m_Destination = other.m_Destination;
    m_ItemList = other.m_ItemList;
    return *this;
}

EUnzipCmd::~EUnzipCmd() {
    delete[] m_ZipFile;
    delete[] m_Destination;
    delete[] m_ItemList;
}

void EUnzipCmd::CommonConstruct() {
    UNZIPCMDSTRUCT& record = *this;
    std::memset(static_cast<void*>(&record), 0, sizeof(UNZIPCMDSTRUCT));
    unzipStructSize = kUnzipCmdStructSize;
    lpMessageDisplay = MessageDisplay;
    lpMessageDisplayData = this;
    m_TotalItems = -1;
    m_CurrentItem = 0;
    m_ZipFile = nullptr;
    m_Destination = nullptr;
    m_ItemList = nullptr;
}

bool EUnzipCmd::LoadLibraryA() {
    if (g_hUnzipDll == nullptr) {
        g_hUnzipDll = nvk::os::LoadLibraryA("dunzip32.dll");
    }
    return g_hUnzipDll != nullptr;
}

void EUnzipCmd::FreeLibrary() {
    if (g_hUnzipDll != nullptr) {
        nvk::os::FreeLibrary(g_hUnzipDll);
        g_hUnzipDll = nullptr;
    }
}

int EUnzipCmd::ScaleMajorStatus(char* text, long percent, void* userData) {
    auto* progress = static_cast<BatchProgress*>(userData);
    EUnzipCmd& command = *progress->Command;
    ++command.m_CurrentItem;
    int ofBatch = nvk::os::MulDiv(static_cast<int>(percent), static_cast<int>(progress->Size), 100);
    int ofRun = nvk::os::MulDiv(ofBatch + static_cast<int>(progress->Done), 100,
                                static_cast<int>(command.m_TotalItems));
    return progress->CallerStatus(text, ofRun, progress->CallerData);
}

int EUnzipCmd::dunzip() {
    bool loadedHere = false;
    if (g_hUnzipDll == nullptr) {
        g_hUnzipDll = nvk::os::LoadLibraryA("dunzip32.dll");
        if (g_hUnzipDll == nullptr) {
            return -1;
        }
        loadedHere = true;
    }
    auto freeIfLoadedHere = [&] {
        if (loadedHere) {
            FreeLibrary();
        }
    };
    const bool onItems = WorksOnItems(function);
    if (onItems && lpszFilespec == nullptr) {
        freeIfLoadedHere();
        return 11;
    }
    auto entry = reinterpret_cast<DunzipEntry>(nvk::os::GetProcAddress(g_hUnzipDll, "dunzip"));
    if (entry == nullptr) {
        freeIfLoadedHere();
        return -1;
    }
    std::vector<std::string> items;
    if (lpszFilespec != nullptr) {
        items = SplitItems(lpszFilespec);
        if (onItems && items.empty()) {
            freeIfLoadedHere();
            return 11;
        }
    }

    char* const callerFilespec = lpszFilespec;
    const UNZIPSTATUSPROC callerMajor = lpMajorStatus;
    void* const callerMajorData = lpMajorUserData;
    int result = 0;
    {
        PrivateText zipFile(lpszZIPFile);
        PrivateText destination(lpszDestination);
        PrivateText decryptCode(lpszDecryptCode);
        PrivateText title(lpszExtProgTitle);
        unzipStructSize = kUnzipCmdStructSize;

        BatchProgress progress{this, callerMajor, callerMajorData, 0, 0};
        const auto count = static_cast<long>(items.size());
        if (count >= kBatchSize) {
            m_TotalItems = count;
            if (lpMajorStatus != nullptr) {
                lpMajorStatus = ScaleMajorStatus;
                lpMajorUserData = &progress;
            }
        } else {
            m_TotalItems = -1;
        }
        m_CurrentItem = 1;

        static Chaine waiting;
        waiting.LoadString(kWaitString);
        std::string batch;
        std::size_t next = 0;
        bool firstPass = true;
        while (result == 0) {
            if (onItems || !firstPass) {
                if (next >= items.size()) {
                    break;
                }
                std::size_t end = std::min(items.size(), next + kBatchSize);
                batch.clear();
                for (std::size_t i = next; i < end; ++i) {
                    batch += (i == next ? "\"" : " \"") + items[i] + '"';
                }
                progress.Size = static_cast<long>(end - next);
                lpszFilespec = batch.data();
            }
            firstPass = false;
            result = entry(this);
            if (lpMajorStatus != nullptr) {
                lpMajorStatus(const_cast<char*>(waiting.c_str()), 100, lpMajorUserData);
            }
            if (lpMinorStatus != nullptr) {
                char empty[] = "";
                lpMinorStatus(empty, 0, lpMinorUserData);
            }
            next += static_cast<std::size_t>(progress.Size);
            progress.Done = static_cast<long>(next);
            if (!onItems && callerFilespec == nullptr) {
                break;
            }
        }
    }
    lpszFilespec = callerFilespec;
    lpMajorStatus = callerMajor;
    lpMajorUserData = callerMajorData;
    freeIfLoadedHere();
    return result;
}

int EUnzipCmd::DunzipProcessInit(nvk::os::HINSTANCE) {
    return 1;
}

int EUnzipCmd::DunzipProcessDeInit() {
    return 1;
}

int EUnzipCmd::DunzipThreadInit() {
    return 1;
}

int EUnzipCmd::DunzipThreadDeInit() {
    return 1;
}
