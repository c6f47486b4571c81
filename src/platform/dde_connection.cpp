#include "nvk/platform/dde_connection.h"

#include <cstring>

#include "nvk/platform/dde_object.h"
#include "nvk/platform/dde_thread.h"
#include "platform/dde_support.h"

using namespace nvk::os;

IMPLEMENT_DYNAMIC(CDDEConnection, CObject)

namespace {

int TextSize(const char* data, int size) {
    return size < 0 ? static_cast<int>(std::strlen(data)) : size;
}

}  // namespace

CDDEConnection::CDDEConnection()
    : m_Buffer(nvk::dde::ThreadData()->pDefaultBuffer),
      m_BufferSize(nvk::dde::ThreadData()->nDefaultBufferSize),
      m_Timeout(kDefaultTimeout) {}

// The time-out is the owner's to set; 0 rather than whatever the memory
// held, so that a forgotten SetTimeout fails at once instead of at random.
CDDEConnection::CDDEConnection(char* buffer, int size)
    : m_Buffer(buffer != nullptr ? buffer : nvk::dde::ThreadData()->pDefaultBuffer),
      m_BufferSize(buffer != nullptr ? size : nvk::dde::ThreadData()->nDefaultBufferSize),
      m_Timeout(0) {}

CDDEConnection::~CDDEConnection() {
    CDDEObject* owner = m_Server != nullptr ? static_cast<CDDEObject*>(m_Server)
                                            : static_cast<CDDEObject*>(m_Client);
    if (owner != nullptr) {
        if (POSITION position = owner->m_Connections.Find(this)) {
            owner->m_Connections.RemoveAt(position);
        }
    }
}

int CDDEConnection::Execute(const CString& command) {
    return Execute(const_cast<char*>(command.GetString()), -1, CF_TEXT);
}

int CDDEConnection::Execute(char* data, int size, int format) {
    const int bytes = TextSize(data, size) + 1;
    return DdeClientTransaction(reinterpret_cast<LPBYTE>(data), static_cast<DWORD>(bytes), m_hConv,
                                nullptr, static_cast<UINT>(format), XTYP_EXECUTE, m_Timeout,
                                nullptr) != nullptr
               ? 1
               : 0;
}

char* CDDEConnection::Request(const CString& item, int* size, int format) {
    const HDDEDATA data =
        DdeClientTransaction(nullptr, 0, m_hConv, nvk::dde::StringHandle(item),
                             static_cast<UINT>(format), XTYP_REQUEST, m_Timeout, nullptr);
    int bytes = 0;
    if (data != nullptr) {
        if (m_Buffer != nullptr && m_BufferSize > 0) {
            bytes = static_cast<int>(DdeGetData(data, reinterpret_cast<LPBYTE>(m_Buffer),
                                                static_cast<DWORD>(m_BufferSize), 0));
        }
        DdeFreeDataHandle(data);
    }
    if (size != nullptr) {
        *size = bytes;
    }
    return bytes > 0 ? m_Buffer : nullptr;
}

int CDDEConnection::Poke(const CString& item, char* data, int size, int format) {
    const int bytes = TextSize(data, size) + 1;
    return DdeClientTransaction(reinterpret_cast<LPBYTE>(data), static_cast<DWORD>(bytes), m_hConv,
                                nvk::dde::StringHandle(item), static_cast<UINT>(format), XTYP_POKE,
                                m_Timeout, nullptr) != nullptr
               ? 1
               : 0;
}

int CDDEConnection::StartAdvise(const CString& item) {
    return DdeClientTransaction(nullptr, 0, m_hConv, nvk::dde::StringHandle(item), CF_TEXT,
                                XTYP_ADVSTART, m_Timeout, nullptr) != nullptr
               ? 1
               : 0;
}

int CDDEConnection::StopAdvise(const CString& item) {
    return DdeClientTransaction(nullptr, 0, m_hConv, nvk::dde::StringHandle(item), CF_TEXT,
                                XTYP_ADVSTOP, m_Timeout, nullptr) != nullptr
               ? 1
               : 0;
}

int CDDEConnection::Advise(const CString& item, char* data, int size, int format) {
    m_AdviseData = data;
    m_AdviseSize = TextSize(data, size) + 1;
    m_AdviseFormat = format;
    return DdePostAdvise(nvk::dde::ThreadData()->idInst, nvk::dde::StringHandle(m_Topic),
                         nvk::dde::StringHandle(item));
}

int CDDEConnection::Disconnect() {
    const CObList& objects = nvk::dde::ThreadData()->Objects;
    POSITION position = objects.GetHeadPosition();
    while (position != nullptr) {
        static_cast<CDDEObject*>(objects.GetNext(position))->DeleteConnection(m_hConv);
    }
    return DdeDisconnect(m_hConv);
}

void CDDEConnection::Notify(int) {}

int CDDEConnection::OnExecute(const CString&, char*, int, int) {
    return 0;
}

char* CDDEConnection::OnRequest(const CString&, const CString&, int*, int) {
    return nullptr;
}

int CDDEConnection::OnPoke(const CString&, const CString&, char*, int, int) {
    return 0;
}

int CDDEConnection::OnStartAdvise(const CString&, const CString&) {
    return 0;
}

int CDDEConnection::OnStopAdvise(const CString&, const CString&) {
    return 0;
}

int CDDEConnection::OnAdvise(const CString&, const CString&, char*, int, int) {
    return 0;
}

int CDDEConnection::OnDisconnect() {
    delete this;
    return 1;
}
