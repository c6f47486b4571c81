// CDDEConnection: one DDE conversation, on the client or the server side.
// An application derives from it and overrides the On... operations, which
// the thread's DDE callback calls for each transaction of the conversation.
//
// Incoming data of every kind lands in m_Buffer, at most m_BufferSize bytes.
// A default-constructed connection shares the thread's buffer, whose size is
// 0, so it receives no data: an application that expects data passes its
// own buffer.
#pragma once

#include "nvk/afx/cstring.h"
#include "nvk/afx/object.h"
#include "nvk/nvkutil_export.h"

struct HCONV__;
namespace nvk::os {
using HCONV = ::HCONV__*;
}  // namespace nvk::os

class CDDEServer;
class CDDEClient;

class NVKUTIL_EXPORT CDDEConnection : public CObject {
    DECLARE_DYNAMIC(CDDEConnection)

public:
    // Transactions wait this long unless SetTimeout says otherwise.
    static constexpr unsigned long kDefaultTimeout = 15000;

    CDDEConnection();
    // `buffer` null takes the thread's shared buffer. The owner sets the
    // time-out with SetTimeout before the first transaction.
    CDDEConnection(char* buffer, int size);
    ~CDDEConnection() override;
    CDDEConnection(const CDDEConnection&) = delete;
    CDDEConnection& operator=(const CDDEConnection&) = delete;

    // Client transactions: non-zero when the server acknowledged. A size
    // below 0 means the text's length; the terminator is sent too.
    virtual int Execute(const CString& command);
    virtual int Execute(char* data, int size, int format);
    // The item's data in m_Buffer (its byte count in *size), or null when
    // none came.
    virtual char* Request(const CString& item, int* size, int format);
    virtual int Poke(const CString& item, char* data, int size, int format);
    virtual int StartAdvise(const CString& item);
    virtual int StopAdvise(const CString& item);
    // Server side: tells the clients advising `item` that it changed. The
    // data stays the caller's and must live until the clients fetched it; a
    // second Advise before that replaces it.
    virtual int Advise(const CString& item, char* data, int size, int format);
    // Ends the conversation; the object stays the caller's.
    virtual int Disconnect();
    virtual void Notify(int);

    // The callback's side; the defaults refuse (0 or null).
    virtual int OnExecute(const CString& topic, char* data, int size, int format);
    // Data for a request, its byte count in *size (left below 0 for a text,
    // whose length is taken); null for none.
    virtual char* OnRequest(const CString& topic, const CString& item, int* size, int format);
    // A poke is acknowledged whatever this returns.
    virtual int OnPoke(const CString& topic, const CString& item, char* data, int size, int format);
    virtual int OnStartAdvise(const CString& topic, const CString& item);
    virtual int OnStopAdvise(const CString& topic, const CString& item);
    virtual int OnAdvise(const CString& topic, const CString& item, char* data, int size,
                         int format);
    // The partner ended the conversation. By default deletes this object
    // and returns 1.
    virtual int OnDisconnect();

    void SetTimeout(unsigned long timeout) { m_Timeout = timeout; }

    char* m_Buffer;
    CString m_Topic;
    int m_BufferSize;
    CDDEServer* m_Server = nullptr;
    CDDEClient* m_Client = nullptr;
    nvk::os::HCONV m_hConv = nullptr;
    char* m_AdviseData = nullptr;
    int m_AdviseSize = 0;
    int m_AdviseFormat = 0;
    unsigned long m_Timeout;
};
