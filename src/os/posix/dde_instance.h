// The state behind the DDEML functions on POSIX. An instance is one bus
// connection and everything the thread that made it keeps on it; only that
// thread touches it. Process-wide tables, under one mutex, map instance ids,
// conversation handles and data handles to their owners, since
// DdeDisconnect, DdeGetData and DdeFreeDataHandle are given no instance.
//
// The bus is read by sd-bus, whose dispatching may not be re-entered. Its
// callbacks here only note a reply or queue an incoming message; the
// application's callback runs from the instance's own queue, outside sd-bus,
// so that it may itself converse.
#pragma once

#include <systemd/sd-bus.h>

#include <cstdint>
#include <deque>
#include <map>
#include <memory>
#include <string>
#include <vector>

#include "os/api/dde.h"

namespace nvk::os::dde {

// The bus interface that every instance serves at one object path.
inline constexpr const char* kPath = "/org/nvkutil/Dde";
inline constexpr const char* kInterface = "org.nvkutil.Dde1";
inline constexpr const char* kErrorRefused = "org.nvkutil.Dde1.Refused";
inline constexpr const char* kErrorNoConversation = "org.nvkutil.Dde1.NoConversation";

struct StringEntry {
    std::string text;    // as first given
    std::string folded;  // the key: the text without regard to case
    int uses;
};

struct AdviseLoop {
    std::string item;  // folded
    std::string text;
    UINT format;
    UINT flags;  // XTYPF_NODATA, XTYPF_ACKREQ
};

struct Conversation {
    std::uint64_t id;  // the HCONV
    bool server;       // this side serves the conversation
    std::string peer;  // the partner's unique bus name
    std::uint64_t peerConv;
    HSZ topic;                      // held by the conversation
    HSZ service;                    // held by the conversation
    std::vector<AdviseLoop> loops;  // the server side's advise loops
    // A synchronous call of this conversation is waiting: its end waits for
    // the call's return, so that the application's XTYP_DISCONNECT never
    // runs under its own transaction.
    int busy = 0;
    bool ended = false;
    bool notifyEnd = false;
};

struct Service {
    HSZ name;  // held while registered
    std::string busName;
};

struct Instance {
    Instance() = default;
    // Closes the bus connection, which also gives up its names.
    ~Instance();
    Instance(const Instance&) = delete;
    Instance& operator=(const Instance&) = delete;

    DWORD id = 0;
    DWORD thread = 0;
    PFNCALLBACK callback = nullptr;
    DWORD flags = 0;
    sd_bus* bus = nullptr;
    std::string uniqueName;
    UINT lastError = DMLERR_NO_ERROR;
    bool closed = false;
    bool lost = false;  // the bus connection broke
    int callbacks = 0;  // callbacks running now

    std::map<std::uintptr_t, StringEntry> strings;
    std::map<std::string, std::uintptr_t> stringIds;  // by folded text
    std::uintptr_t nextString = 1;

    std::map<std::uint64_t, std::unique_ptr<Conversation>> conversations;
    std::vector<Service> services;
    // The partners whose end is watched, with their conversation counts.
    std::map<std::string, std::pair<int, sd_bus_slot*>> watched;
    std::deque<sd_bus_message*> incoming;
    std::vector<std::uint64_t> endedLater;  // conversations whose end waited
    sd_bus_slot* filter = nullptr;
};

using InstancePtr = std::shared_ptr<Instance>;

// The instance `id` if it belongs to the calling thread, else null.
InstancePtr FindInstance(DWORD id);
// The instance and conversation of `conv` on the calling thread.
InstancePtr FindConversation(HCONV conv, Conversation*& conversation);
// The calling thread's instances.
const std::vector<InstancePtr>& ThreadInstances();

// Conversation handles: unique in the process, never reused.
Conversation& AddConversation(Instance& instance, bool server, const std::string& peer,
                              std::uint64_t peerConv, HSZ topic, HSZ service);
// Forgets a conversation, telling the application first when `notify` (and
// its flags let XTYP_DISCONNECT through).
void EndConversation(Instance& instance, std::uint64_t id, bool notify);

// Strings: the handle of `text` with one more use, or 0 past 255 characters.
HSZ AcquireString(Instance& instance, const std::string& text);
void ReleaseString(Instance& instance, HSZ hsz);
const StringEntry* StringOf(const Instance& instance, HSZ hsz);
// Text without regard to case, as handles compare it.
std::string Fold(const std::string& text);
// The well-known bus name of a service, any 8-bit name made fit.
std::string ServiceBusName(const std::string& folded);

// Data handles.
HDDEDATA MakeData(DWORD instance, const BYTE* bytes, std::size_t size, UINT format, bool appOwned);
// A copy of the bytes and format of a live handle; false for another value.
bool ReadData(HDDEDATA data, std::vector<BYTE>& bytes, UINT& format);
// Frees a handle the system owns after use: not an application-owned one.
void ReleaseUsedData(HDDEDATA data);
void FreeInstanceData(DWORD instance);

// Runs the application's callback.
HDDEDATA CallBack(Instance& instance, UINT type, UINT format, std::uint64_t conv, HSZ hsz1,
                  HSZ hsz2, HDDEDATA data, ULONG_PTR data1, ULONG_PTR data2);

// Starts watching the end of `peer` (the bus tells when its connection
// closes); false when it has already gone.
bool Watch(Instance& instance, const std::string& peer);
void Unwatch(Instance& instance, const std::string& peer);

// Serves one piece of the instance's traffic; false when none was waiting.
bool ServeOnce(const InstancePtr& instance);
// Serves the instance until nothing waits.
void ServeAll(const InstancePtr& instance);
// Serves every instance of the thread until `done` is set or `deadline`
// (CLOCK_MONOTONIC microseconds; UINT64_MAX for none) passes.
void ServeThreadUntil(const bool& done, std::uint64_t deadline);
// Waits until an instance of the thread has traffic, or `deadline` passes;
// the index of such an instance, or -1.
int WaitThreadTraffic(std::uint64_t deadline);
std::uint64_t Now();

// Handles a queued method call or signal.
void HandleIncoming(Instance& instance, sd_bus_message* message);

// How a synchronous call ended.
enum class CallEnd { Answered, TimedOut, PeerGone, NoConversation, Refused, Failed };
// Sends `call` and serves the thread until its answer or `timeout` ms;
// `reply` holds the answer when Answered (the caller unrefs it).
CallEnd Call(Instance& instance, sd_bus_message* call, DWORD timeout, sd_bus_message*& reply);
// Marks a conversation's synchronous call begun or ended.
void BeginBusy(Instance& instance, std::uint64_t id);
void EndBusy(Instance& instance, std::uint64_t id);

// The instance's error for sd-bus's failure `r`.
UINT BusError(int r);

}  // namespace nvk::os::dde
