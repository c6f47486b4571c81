#include "nvk/archive/zip_cmd.h"

#include <cstring>

#include "os/api/keyboard.h"
#include "os/api/module.h"
#include "os/api/temp_file.h"

namespace {

constexpr char kEngine[] = "dzip32.dll";
constexpr std::int32_t kRecordSize = sizeof(ZIPCMDSTRUCT);

char* Copy(char const* text) {
    if (text == nullptr) {
        return nullptr;
    }
    std::size_t size = std::strlen(text) + 1;
    char* copy = new char[size];
    std::memcpy(copy, text, size);
    return copy;
}

// The engine's messages go to the object that made the command, through its
// virtual table, so that a derived class can give its own texts.
int MessageDisplay(unsigned int kind, unsigned int unused1, int id, int unused2, char* buffer,
                   char* unused3, void* userData) {
    return static_cast<EZipCmd*>(userData)->DisplayMessage(kind, unused1, id, unused2, buffer,
                                                           unused3);
}

}  // namespace

nvk::os::HMODULE EZipCmd::g_hZipDll = nullptr;

EZipCmd::EZipCmd() {
    CommonConstruct();
}

EZipCmd::EZipCmd(char const* zipFile, char const* itemList) {
    CommonConstruct();
    m_pZipFile = Copy(zipFile);
    m_pItemList = Copy(itemList);
    function = ZIP_ADD;
    lpszZIPFile = m_pZipFile;
    lpszItemList = m_pItemList;
    compFactor = 9;
    quietFlag = 1;
    wZipSubOptions = 1;
    if (nvk::os::GetKeyState(nvk::os::VK_CONTROL) < 0) {
        encryptFlag = 1;
    }
}

EZipCmd::EZipCmd(EZipCmd const& other) : ZIPCMDSTRUCT(other) {
    std::memcpy(m_szTempPath, other.m_szTempPath, sizeof(m_szTempPath));
    m_pZipFile = other.m_pZipFile;
    m_pItemList = other.m_pItemList;
}

EZipCmd& EZipCmd::operator=(EZipCmd const& other) {
    static_cast<ZIPCMDSTRUCT&>(*this) = other;
    std::memcpy(m_szTempPath, other.m_szTempPath, sizeof(m_szTempPath));
    m_pZipFile = other.m_pZipFile;
    m_pItemList = other.m_pItemList;
    return *this;
}

EZipCmd::~EZipCmd() {
    delete[] m_pZipFile;
    delete[] m_pItemList;
}

void EZipCmd::CommonConstruct() {
    static_cast<ZIPCMDSTRUCT&>(*this) = ZIPCMDSTRUCT{};
    zipStructSize = kRecordSize;
    lpMessageDisplay = MessageDisplay;
    lpMessageDisplayData = this;
    pathForTempFlag = 1;
    std::memset(m_szTempPath, 0, sizeof(m_szTempPath));
    nvk::os::GetTempPathA(261, m_szTempPath);
    lpszTempPath = m_szTempPath;
    m_pZipFile = nullptr;
    m_pItemList = nullptr;
}

int EZipCmd::dzip() {
    bool loadedHere = false;
    if (g_hZipDll == nullptr) {
        g_hZipDll = nvk::os::LoadLibraryA(kEngine);
        if (g_hZipDll == nullptr) {
            return -1;
        }
        loadedHere = true;
    }
    auto entry = reinterpret_cast<DzipEntry>(nvk::os::GetProcAddress(g_hZipDll, "dzip"));
    if (entry == nullptr) {
        if (loadedHere) {
            FreeLibrary();
        }
        return -1;
    }
    std::int32_t savedPathForTemp = pathForTempFlag;
    zipStructSize = kRecordSize;
    // An archive over several volumes is written in place, without a
    // temporary file.
    if ((wMultiVolControl & MV_USE_MULTI) != 0) {
        pathForTempFlag = 0;
    }
    int result = entry(this);
    if (loadedHere) {
        FreeLibrary();
    }
    pathForTempFlag = savedPathForTemp;
    return result;
}

bool EZipCmd::LoadLibraryA() {
    if (g_hZipDll == nullptr) {
        g_hZipDll = nvk::os::LoadLibraryA(kEngine);
    }
    return g_hZipDll != nullptr;
}

void EZipCmd::FreeLibrary() {
    if (g_hZipDll != nullptr) {
        nvk::os::FreeLibrary(g_hZipDll);
        g_hZipDll = nullptr;
    }
}

int EZipCmd::DzipProcessInit(nvk::os::HINSTANCE) {
    return 1;
}
int EZipCmd::DzipProcessDeInit() {
    return 1;
}
int EZipCmd::DzipThreadInit() {
    return 1;
}
int EZipCmd::DzipThreadDeInit() {
    return 1;
}
