#include <cstring>

#include "nvk/platform/dde_connection.h"
#include "nvk/platform/dde_object.h"
#include "nvk/platform/dde_thread.h"
#include "platform/dde_support.h"

using namespace nvk::os;

namespace {

// Room for the names the callback reads.
constexpr int kItemRoom = 200;
constexpr int kTopicRoom = 100;

HDDEDATA Result(std::uintptr_t value) {
    return reinterpret_cast<HDDEDATA>(value);
}

// Incoming data into the connection's buffer; the handle is then freed.
int ReadData(CDDEConnection& connection, HDDEDATA data) {
    int bytes = 0;
    if (data != nullptr && connection.m_Buffer != nullptr && connection.m_BufferSize > 0) {
        bytes = static_cast<int>(DdeGetData(data, reinterpret_cast<LPBYTE>(connection.m_Buffer),
                                            static_cast<DWORD>(connection.m_BufferSize), 0));
    }
    if (data != nullptr) {
        DdeFreeDataHandle(data);
    }
    return bytes;
}

HDDEDATA OnConnect(sgThreadData& thread, HSZ hsz1, HSZ hsz2) {
    const CString topic = nvk::dde::QueryName(hsz1, kTopicRoom);
    CDDEServer* server = nvk::dde::FindServer(nvk::dde::QueryName(hsz2, kTopicRoom));
    CDDEConnection* connection = server != nullptr ? server->OnAcceptConnection(topic) : nullptr;
    if (connection == nullptr) {
        return nullptr;
    }
    connection->m_Server = server;
    server->m_Connections.AddTail(connection);
    connection->m_hConv = nullptr;
    connection->m_Topic = topic;
    thread.pPending = connection;
    return Result(1);
}

HDDEDATA OnDisconnect(sgThreadData& thread, CDDEConnection& connection, HCONV conv) {
    if (connection.OnDisconnect() == 0) {
        return nullptr;
    }
    POSITION position = thread.Objects.GetHeadPosition();
    while (position != nullptr) {
        static_cast<CDDEObject*>(thread.Objects.GetNext(position))->DeleteConnection(conv);
    }
    return Result(1);
}

}  // namespace

namespace nvk::dde {

HDDEDATA Callback(UINT type, UINT format, HCONV conv, HSZ hsz1, HSZ hsz2, HDDEDATA data,
                  ULONG_PTR /*data1*/, ULONG_PTR /*data2*/) {
    sgThreadData& thread = *ThreadData();
    if (type == XTYP_CONNECT) {
        return OnConnect(thread, hsz1, hsz2);
    }
    if (type == XTYP_CONNECT_CONFIRM) {
        if (thread.pPending == nullptr) {
            return nullptr;
        }
        thread.pPending->m_hConv = conv;
        thread.pPending = nullptr;
        return Result(1);
    }
    CDDEConnection* connection = FindAnyConnection(conv);
    if (connection == nullptr) {
        return nullptr;
    }
    const int fmt = static_cast<int>(format);
    switch (type) {
        case XTYP_DISCONNECT:
            return OnDisconnect(thread, *connection, conv);
        case XTYP_REQUEST: {
            int size = -1;
            char* answer =
                connection->OnRequest(connection->m_Topic, QueryName(hsz2, kItemRoom), &size, fmt);
            if (answer == nullptr) {
                return nullptr;
            }
            if (size < 0) {
                size = static_cast<int>(std::strlen(answer));
            }
            return DdeCreateDataHandle(thread.idInst, reinterpret_cast<LPBYTE>(answer),
                                       static_cast<DWORD>(size + 1), 0, hsz2, format, 0);
        }
        case XTYP_ADVREQ: {
            if (connection->m_AdviseData == nullptr) {
                return nullptr;
            }
            const HDDEDATA answer = DdeCreateDataHandle(
                thread.idInst, reinterpret_cast<LPBYTE>(connection->m_AdviseData),
                static_cast<DWORD>(connection->m_AdviseSize), 0, hsz2,
                static_cast<UINT>(connection->m_AdviseFormat), 0);
            connection->m_AdviseData = nullptr;
            return answer;
        }
        case XTYP_ADVSTART:
            return Result(static_cast<std::uintptr_t>(
                connection->OnStartAdvise(connection->m_Topic, QueryName(hsz2, kItemRoom))));
        case XTYP_ADVSTOP:
            return Result(static_cast<std::uintptr_t>(
                connection->OnStopAdvise(connection->m_Topic, QueryName(hsz2, kItemRoom))));
        case XTYP_ADVDATA: {
            const int bytes = ReadData(*connection, data);
            return Result(connection->OnAdvise(connection->m_Topic, QueryName(hsz2, kItemRoom),
                                               connection->m_Buffer, bytes, fmt) != 0
                              ? DDE_FACK
                              : 0);
        }
        case XTYP_EXECUTE: {
            const int bytes = ReadData(*connection, data);
            return Result(
                connection->OnExecute(connection->m_Topic, connection->m_Buffer, bytes, fmt) != 0
                    ? DDE_FACK
                    : 0);
        }
        case XTYP_POKE: {
            const int bytes = ReadData(*connection, data);
            // Acknowledged whatever OnPoke says, unlike an execute.
            connection->OnPoke(connection->m_Topic, QueryName(hsz2, kItemRoom),
                               connection->m_Buffer, bytes, fmt);
            return Result(DDE_FACK);
        }
        default:
            return nullptr;
    }
}

}  // namespace nvk::dde
