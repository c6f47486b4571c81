// Dynamic Data Exchange through the DDEML interface: instances, string and
// data handles, services, conversations and their transactions.
//
// On POSIX the conversations run over the D-Bus session bus (the address in
// DBUS_SESSION_BUS_ADDRESS, else the user's bus). Each instance is a bus
// connection of its own, used by the thread that initialised it only; a
// registered service is a well-known bus name made from the service name, so
// two processes (or two instances of one process) converse through the bus.
// Transactions are method calls bounded by their time-out; an advise is a
// signal to the client carrying the data that the server's XTYP_ADVREQ gave
// within DdePostAdvise. The callback runs on
// the instance's thread only: while a synchronous call waits, and when the
// thread pumps its messages (GetMessageA, PeekMessageA, DispatchMessageA).
//
// Not offered: asynchronous transactions (TIMEOUT_ASYNC), wildcard services
// and topics, the XTYP_REGISTER and XTYP_UNREGISTER notifications, and
// conversation contexts (pCC is ignored; the server sees none).
#pragma once

#include "nvk/os/types.h"

struct HCONV__;
struct HSZ__;
struct HDDEDATA__;

namespace nvk::os {

using HCONV = ::HCONV__*;
using HSZ = ::HSZ__*;
using HDDEDATA = ::HDDEDATA__*;
struct CONVCONTEXT;
using PCONVCONTEXT = CONVCONTEXT*;
using LPBYTE = BYTE*;

using PFNCALLBACK = HDDEDATA (*)(UINT type, UINT format, HCONV conv, HSZ hsz1, HSZ hsz2,
                                 HDDEDATA data, ULONG_PTR data1, ULONG_PTR data2);

// Transaction classes, flags and types.
inline constexpr UINT XCLASS_BOOL = 0x1000;
inline constexpr UINT XCLASS_DATA = 0x2000;
inline constexpr UINT XCLASS_FLAGS = 0x4000;
inline constexpr UINT XCLASS_NOTIFICATION = 0x8000;
inline constexpr UINT XTYPF_NOBLOCK = 0x0002;
inline constexpr UINT XTYPF_NODATA = 0x0004;
inline constexpr UINT XTYPF_ACKREQ = 0x0008;
inline constexpr UINT XTYP_ERROR = 0x8002;
inline constexpr UINT XTYP_ADVDATA = 0x4010;
inline constexpr UINT XTYP_ADVREQ = 0x2022;
inline constexpr UINT XTYP_ADVSTART = 0x1030;
inline constexpr UINT XTYP_ADVSTOP = 0x8040;
inline constexpr UINT XTYP_EXECUTE = 0x4050;
inline constexpr UINT XTYP_CONNECT = 0x1062;
inline constexpr UINT XTYP_CONNECT_CONFIRM = 0x8072;
inline constexpr UINT XTYP_XACT_COMPLETE = 0x8080;
inline constexpr UINT XTYP_POKE = 0x4090;
inline constexpr UINT XTYP_REGISTER = 0x80A2;
inline constexpr UINT XTYP_REQUEST = 0x20B0;
inline constexpr UINT XTYP_DISCONNECT = 0x80C2;
inline constexpr UINT XTYP_UNREGISTER = 0x80D2;
inline constexpr UINT XTYP_WILDCONNECT = 0x20E2;
inline constexpr UINT XTYP_MASK = 0x00F0;
inline constexpr DWORD TIMEOUT_ASYNC = 0xFFFFFFFF;

// Acknowledgement flags of XCLASS_FLAGS transactions.
inline constexpr UINT DDE_FACK = 0x8000;
inline constexpr UINT DDE_FBUSY = 0x4000;
inline constexpr UINT DDE_FNOTPROCESSED = 0x0000;

// DdeInitializeA's flags.
inline constexpr DWORD APPCLASS_STANDARD = 0x0;
inline constexpr DWORD APPCMD_CLIENTONLY = 0x10;
inline constexpr DWORD APPCMD_FILTERINITS = 0x20;
inline constexpr DWORD CBF_FAIL_SELFCONNECTIONS = 0x1000;
inline constexpr DWORD CBF_FAIL_CONNECTIONS = 0x2000;
inline constexpr DWORD CBF_FAIL_ADVISES = 0x4000;
inline constexpr DWORD CBF_FAIL_EXECUTES = 0x8000;
inline constexpr DWORD CBF_FAIL_POKES = 0x10000;
inline constexpr DWORD CBF_FAIL_REQUESTS = 0x20000;
inline constexpr DWORD CBF_FAIL_ALLSVRXACTIONS = 0x3F000;
inline constexpr DWORD CBF_SKIP_CONNECT_CONFIRMS = 0x40000;
inline constexpr DWORD CBF_SKIP_REGISTRATIONS = 0x80000;
inline constexpr DWORD CBF_SKIP_UNREGISTRATIONS = 0x100000;
inline constexpr DWORD CBF_SKIP_DISCONNECTS = 0x200000;
inline constexpr DWORD CBF_SKIP_ALLNOTIFICATIONS = 0x3C0000;

// DdeNameService's commands.
inline constexpr UINT DNS_REGISTER = 0x1;
inline constexpr UINT DNS_UNREGISTER = 0x2;

// DdeGetLastError's codes.
inline constexpr UINT DMLERR_NO_ERROR = 0;
inline constexpr UINT DMLERR_ADVACKTIMEOUT = 0x4000;
inline constexpr UINT DMLERR_BUSY = 0x4001;
inline constexpr UINT DMLERR_DATAACKTIMEOUT = 0x4002;
inline constexpr UINT DMLERR_DLL_NOT_INITIALIZED = 0x4003;
inline constexpr UINT DMLERR_DLL_USAGE = 0x4004;
inline constexpr UINT DMLERR_EXECACKTIMEOUT = 0x4005;
inline constexpr UINT DMLERR_INVALIDPARAMETER = 0x4006;
inline constexpr UINT DMLERR_LOW_MEMORY = 0x4007;
inline constexpr UINT DMLERR_MEMORY_ERROR = 0x4008;
inline constexpr UINT DMLERR_NOTPROCESSED = 0x4009;
inline constexpr UINT DMLERR_NO_CONV_ESTABLISHED = 0x400A;
inline constexpr UINT DMLERR_POKEACKTIMEOUT = 0x400B;
inline constexpr UINT DMLERR_POSTMSG_FAILED = 0x400C;
inline constexpr UINT DMLERR_REENTRANCY = 0x400D;
inline constexpr UINT DMLERR_SERVER_DIED = 0x400E;
inline constexpr UINT DMLERR_SYS_ERROR = 0x400F;
inline constexpr UINT DMLERR_UNADVACKTIMEOUT = 0x4010;
inline constexpr UINT DMLERR_UNFOUND_QUEUE_ID = 0x4011;

// Code pages of string handles, and the text clipboard format.
inline constexpr int CP_WINANSI = 1004;
inline constexpr UINT CF_TEXT = 1;
// DdeCreateDataHandle: the handle stays the application's after use.
inline constexpr UINT HDATA_APPOWNED = 0x0001;

// *idInst 0 makes a new instance on the calling thread; an instance's own id
// changes its flags. DMLERR_SYS_ERROR when the bus can't be reached.
UINT DdeInitializeA(LPDWORD idInst, PFNCALLBACK callback, DWORD command, DWORD reserved);
// Ends the instance's conversations (their partners see XTYP_DISCONNECT),
// its services and its handles.
BOOL DdeUninitialize(DWORD idInst);
// The instance's last error, which is then cleared.
UINT DdeGetLastError(DWORD idInst);

// String handles: one per text of up to 255 characters, compared without
// regard to case; each create adds a use, each free drops one.
HSZ DdeCreateStringHandleA(DWORD idInst, LPCSTR text, int codePage);
BOOL DdeFreeStringHandle(DWORD idInst, HSZ hsz);
// Copies at most size - 1 characters and a terminator; the length of the
// whole text without copying when `text` is null.
DWORD DdeQueryStringA(DWORD idInst, HSZ hsz, LPSTR text, DWORD size, int codePage);

// A data object of `offset` + `size` bytes, the source copied at `offset`
// (zeros when the source is null).
HDDEDATA DdeCreateDataHandle(DWORD idInst, LPBYTE source, DWORD size, DWORD offset, HSZ item,
                             UINT format, UINT command);
// Copies up to `size` bytes from `offset`; the object's size when
// `destination` is null.
DWORD DdeGetData(HDDEDATA data, LPBYTE destination, DWORD size, DWORD offset);
BOOL DdeFreeDataHandle(HDDEDATA data);

// DNS_REGISTER or DNS_UNREGISTER of the service `hsz1` (all of the
// instance's services when unregistering 0). Non-zero on success.
HDDEDATA DdeNameService(DWORD idInst, HSZ hsz1, HSZ hsz2, UINT command);

// A conversation with the server of `service` that accepts `topic`; 0 with
// DMLERR_NO_CONV_ESTABLISHED when none does.
HCONV DdeConnect(DWORD idInst, HSZ service, HSZ topic, PCONVCONTEXT context);
BOOL DdeDisconnect(HCONV conv);

// A synchronous transaction of `type` waiting at most `timeout` ms. `data`
// is `size` bytes, or a data handle when `size` is (DWORD)-1. A request
// returns a data handle the caller frees; the other types return non-zero
// when acknowledged. `result` receives the acknowledgement flags.
HDDEDATA DdeClientTransaction(LPBYTE data, DWORD size, HCONV conv, HSZ item, UINT format, UINT type,
                              DWORD timeout, LPDWORD result);
// Tells the clients advising `item` of `topic` (0 for any) that its data
// changed: XTYP_ADVREQ runs for each loop before this returns, and its data
// goes to that loop's client.
BOOL DdePostAdvise(DWORD idInst, HSZ topic, HSZ item);

}  // namespace nvk::os
