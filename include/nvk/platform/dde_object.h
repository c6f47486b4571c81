// The owners of DDE conversations: CDDEServer registers a service and
// accepts conversations on it, CDDEClient opens them. Every object belongs to
// the thread that made it, which has called DDEInitialize.
#pragma once

#include "nvk/afx/cstring.h"
#include "nvk/afx/ob_list.h"
#include "nvk/nvkutil_export.h"
#include "nvk/platform/dde_connection.h"

class NVKUTIL_EXPORT CDDEObject : public CObject {
    DECLARE_DYNAMIC(CDDEObject)

public:
    // Joins the thread's objects.
    CDDEObject();
    // Leaves them, calls OnDisconnect on every connection, then deletes the
    // connections that remain.
    ~CDDEObject() override;
    CDDEObject(const CDDEObject&) = delete;
    CDDEObject& operator=(const CDDEObject&) = delete;

    // The connection of `conv` in this object's list, or null.
    CDDEConnection* FindConnection(nvk::os::HCONV conv);
    // Takes it out of the list without deleting it; 1 if found, else 0.
    int DeleteConnection(nvk::os::HCONV conv);

    CString m_Service;  // empty for a client
    CObList m_Connections{10};
};

class NVKUTIL_EXPORT CDDEServer : public CDDEObject {
    DECLARE_DYNAMIC(CDDEServer)

public:
    CDDEServer() = default;
    // Gives up the service, showing the error box if that fails.
    ~CDDEServer() override;

    // Registers `service`: 1, or 0 after the error box.
    int Create(const CString& service);
    // The connection for a client on `topic`; null refuses it.
    virtual CDDEConnection* OnAcceptConnection(const CString& topic);
};

class NVKUTIL_EXPORT CDDEClient : public CDDEObject {
    DECLARE_DYNAMIC(CDDEClient)

public:
    CDDEClient() = default;
    // Deletes every connection in its list.
    ~CDDEClient() override;

    // A conversation with `service` on `topic` (the host is not used), or
    // null when no server accepts it.
    virtual CDDEConnection* MakeConnection(const CString& host, const CString& service,
                                           const CString& topic);
    // The object of a new conversation.
    virtual CDDEConnection* OnMakeConnection();
    int ValidHost(const CString&) { return 1; }
};
