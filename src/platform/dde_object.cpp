#include "nvk/platform/dde_object.h"

#include "nvk/platform/dde_thread.h"
#include "platform/dde_support.h"

using namespace nvk::os;

IMPLEMENT_DYNAMIC(CDDEObject, CObject)
IMPLEMENT_DYNAMIC(CDDEServer, CDDEObject)
IMPLEMENT_DYNAMIC(CDDEClient, CDDEObject)

CDDEObject::CDDEObject() {
    nvk::dde::ThreadData()->Objects.AddTail(this);
}

CDDEObject::~CDDEObject() {
    CObList& objects = nvk::dde::ThreadData()->Objects;
    if (POSITION position = objects.Find(this)) {
        objects.RemoveAt(position);
    }
    // OnDisconnect may delete its connection, which leaves this list: the
    // walk has moved on before it runs.
    POSITION position = m_Connections.GetHeadPosition();
    while (position != nullptr) {
        static_cast<CDDEConnection*>(m_Connections.GetNext(position))->OnDisconnect();
    }
    while (!m_Connections.IsEmpty()) {
        delete static_cast<CDDEConnection*>(m_Connections.RemoveHead());
    }
}

CDDEConnection* CDDEObject::FindConnection(HCONV conv) {
    POSITION position = m_Connections.GetHeadPosition();
    while (position != nullptr) {
        auto* connection = static_cast<CDDEConnection*>(m_Connections.GetNext(position));
        if (connection->m_hConv == conv) {
            return connection;
        }
    }
    return nullptr;
}

int CDDEObject::DeleteConnection(HCONV conv) {
    POSITION position = m_Connections.GetHeadPosition();
    while (position != nullptr) {
        const POSITION current = position;
        if (static_cast<CDDEConnection*>(m_Connections.GetNext(position))->m_hConv == conv) {
            m_Connections.RemoveAt(current);
            return 1;
        }
    }
    return 0;
}

CDDEServer::~CDDEServer() {
    if (!m_Service.IsEmpty()) {
        const DWORD id = nvk::dde::ThreadData()->idInst;
        const HSZ name = DdeCreateStringHandleA(id, m_Service, CP_WINANSI);
        if (DdeNameService(id, name, nullptr, DNS_UNREGISTER) == nullptr) {
            nvk::dde::ShowError();
        }
        DdeFreeStringHandle(id, name);
    }
}

int CDDEServer::Create(const CString& service) {
    m_Service = service;
    const DWORD id = nvk::dde::ThreadData()->idInst;
    const HSZ name = DdeCreateStringHandleA(id, service, CP_WINANSI);
    const bool registered = DdeNameService(id, name, nullptr, DNS_REGISTER) != nullptr;
    DdeFreeStringHandle(id, name);
    if (!registered) {
        nvk::dde::ShowError();
        return 0;
    }
    return 1;
}

CDDEConnection* CDDEServer::OnAcceptConnection(const CString& /*topic*/) {
    return new CDDEConnection;
}

CDDEClient::~CDDEClient() {
    while (!m_Connections.IsEmpty()) {
        delete static_cast<CDDEConnection*>(m_Connections.RemoveHead());
    }
}

CDDEConnection* CDDEClient::MakeConnection(const CString& /*host*/, const CString& service,
                                           const CString& topic) {
    const DWORD id = nvk::dde::ThreadData()->idInst;
    const HSZ serviceName = DdeCreateStringHandleA(id, service, CP_WINANSI);
    const HSZ topicName = DdeCreateStringHandleA(id, topic, CP_WINANSI);
    const HCONV conv = DdeConnect(id, serviceName, topicName, nullptr);
    DdeFreeStringHandle(id, serviceName);
    DdeFreeStringHandle(id, topicName);
    if (conv == nullptr) {
        return nullptr;
    }
    CDDEConnection* connection = OnMakeConnection();
    if (connection != nullptr) {
        connection->m_hConv = conv;
        connection->m_Topic = topic;
        connection->m_Client = this;
        m_Connections.AddTail(connection);
    }
    return connection;
}

CDDEConnection* CDDEClient::OnMakeConnection() {
    return new CDDEConnection;
}

namespace nvk::dde {

CDDEConnection* FindAnyConnection(HCONV conv) {
    const CObList& objects = ThreadData()->Objects;
    POSITION position = objects.GetHeadPosition();
    while (position != nullptr) {
        if (CDDEConnection* found =
                static_cast<CDDEObject*>(objects.GetNext(position))->FindConnection(conv)) {
            return found;
        }
    }
    return nullptr;
}

CDDEServer* FindServer(const CString& service) {
    const CObList& objects = ThreadData()->Objects;
    POSITION position = objects.GetHeadPosition();
    while (position != nullptr) {
        auto* object = static_cast<CDDEObject*>(objects.GetNext(position));
        // Only a server takes connections: a client's empty name would
        // otherwise answer for the empty service.
        if (object->m_Service == service && object->IsKindOf(RUNTIME_CLASS(CDDEServer))) {
            return static_cast<CDDEServer*>(object);
        }
    }
    return nullptr;
}

}  // namespace nvk::dde
