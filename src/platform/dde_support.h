// What the DDE classes share inside the library.
#pragma once

#include "nvk/afx/cstring.h"
#include "os/api/dde.h"

class CDDEServer;
class CDDEConnection;

namespace nvk::dde {

// The thread's handle of `text`, made once and kept.
os::HSZ StringHandle(const CString& text);
// The error box of the thread's last DDEML error.
void ShowError();
// The text of a handle, read into a buffer of `room` bytes.
CString QueryName(os::HSZ hsz, int room);
// The thread's callback for every transaction.
os::HDDEDATA Callback(os::UINT type, os::UINT format, os::HCONV conv, os::HSZ hsz1, os::HSZ hsz2,
                      os::HDDEDATA data, os::ULONG_PTR data1, os::ULONG_PTR data2);
// The connection of `conv` among all the thread's objects, or null.
CDDEConnection* FindAnyConnection(os::HCONV conv);
// The first object of the thread serving `service`, or null.
CDDEServer* FindServer(const CString& service);

}  // namespace nvk::dde
