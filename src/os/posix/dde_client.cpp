#include <algorithm>
#include <string_view>

#include "os/posix/dde_instance.h"

namespace nvk::os::dde {

namespace {

// How long a connection waits for the server's answer.
constexpr DWORD kConnectTimeout = 10000;
// A time-out of sd-bus's own comes a little after the caller's deadline.
constexpr std::uint64_t kGrace = 200000;

struct Pending {
    bool done = false;
    sd_bus_message* reply = nullptr;
};

// Runs inside sd-bus's dispatching: only notes the answer.
int OnReply(sd_bus_message* message, void* userdata, sd_bus_error* /*error*/) {
    auto* pending = static_cast<Pending*>(userdata);
    pending->reply = sd_bus_message_ref(message);
    pending->done = true;
    return 1;
}

bool HasName(sd_bus_message* message, const char* name) {
    const sd_bus_error* error = sd_bus_message_get_error(message);
    return error != nullptr && error->name != nullptr && std::string_view(error->name) == name;
}

UINT TimeoutError(UINT type) {
    switch (type & XTYP_MASK) {
        case XTYP_EXECUTE& XTYP_MASK:
            return DMLERR_EXECACKTIMEOUT;
        case XTYP_POKE& XTYP_MASK:
            return DMLERR_POKEACKTIMEOUT;
        case XTYP_ADVSTART& XTYP_MASK:
            return DMLERR_ADVACKTIMEOUT;
        case XTYP_ADVSTOP& XTYP_MASK:
            return DMLERR_UNADVACKTIMEOUT;
        default:
            return DMLERR_DATAACKTIMEOUT;
    }
}

UINT EndError(CallEnd end, UINT type) {
    switch (end) {
        case CallEnd::TimedOut:
            return TimeoutError(type);
        case CallEnd::PeerGone:
            return DMLERR_SERVER_DIED;
        case CallEnd::NoConversation:
            return DMLERR_NO_CONV_ESTABLISHED;
        case CallEnd::Refused:
            return DMLERR_NOTPROCESSED;
        default:
            return DMLERR_SYS_ERROR;
    }
}

// Appends text or data as a byte array.
int AppendBytes(sd_bus_message* message, const void* bytes, std::size_t size) {
    return sd_bus_message_append_array(message, 'y', size > 0 ? bytes : "", size);
}

}  // namespace

CallEnd Call(Instance& instance, sd_bus_message* call, DWORD timeout, sd_bus_message*& reply) {
    reply = nullptr;
    Pending pending;
    sd_bus_slot* slot = nullptr;
    // sd-bus takes 0 for its own default: the shortest wait stands for 0.
    const std::uint64_t usec = std::max<std::uint64_t>(std::uint64_t{timeout} * 1000u, 1u);
    const std::uint64_t deadline = Now() + usec;
    if (sd_bus_call_async(instance.bus, &slot, call, OnReply, &pending, usec) < 0) {
        return CallEnd::Failed;
    }
    ServeThreadUntil(pending.done, deadline + kGrace);
    // Drops the call if no answer came; a late one is then ignored.
    sd_bus_slot_unref(slot);
    if (!pending.done) {
        return CallEnd::TimedOut;
    }
    if (!sd_bus_message_is_method_error(pending.reply, nullptr)) {
        reply = pending.reply;
        return CallEnd::Answered;
    }
    CallEnd end = CallEnd::PeerGone;
    if (HasName(pending.reply, kErrorNoConversation)) {
        end = CallEnd::NoConversation;
    } else if (HasName(pending.reply, kErrorRefused)) {
        end = CallEnd::Refused;
    } else if (HasName(pending.reply, SD_BUS_ERROR_NO_REPLY) && Now() >= deadline) {
        // The bus says "no reply" both for a partner that left and for a
        // call that ran out of time: the clock tells them apart.
        end = CallEnd::TimedOut;
    }
    sd_bus_message_unref(pending.reply);
    return end;
}

}  // namespace nvk::os::dde

namespace nvk::os {

using namespace dde;

HCONV DdeConnect(DWORD idInst, HSZ service, HSZ topic, PCONVCONTEXT /*context*/) {
    const InstancePtr instance = FindInstance(idInst);
    if (instance == nullptr) {
        return nullptr;
    }
    const StringEntry* serviceName = StringOf(*instance, service);
    const StringEntry* topicName = StringOf(*instance, topic);
    if (serviceName == nullptr || topicName == nullptr) {
        instance->lastError = DMLERR_INVALIDPARAMETER;
        return nullptr;
    }
    const std::string serviceText = serviceName->text;
    const std::string topicText = topicName->text;
    instance->lastError = DMLERR_NO_CONV_ESTABLISHED;
    if (instance->lost) {
        return nullptr;
    }

    // The server's own connection, watched before anything is asked of it.
    const std::string busName = ServiceBusName(serviceName->folded);
    sd_bus_error error = SD_BUS_ERROR_NULL;
    sd_bus_message* reply = nullptr;
    const char* owner = nullptr;
    std::string peer;
    if (sd_bus_call_method(instance->bus, "org.freedesktop.DBus", "/org/freedesktop/DBus",
                           "org.freedesktop.DBus", "GetNameOwner", &error, &reply, "s",
                           busName.c_str()) >= 0 &&
        sd_bus_message_read(reply, "s", &owner) >= 0) {
        peer = owner;
    }
    sd_bus_message_unref(reply);
    sd_bus_error_free(&error);
    if (peer.empty() || !Watch(*instance, peer)) {
        return nullptr;
    }

    // The conversation stands from now, so that the server's first
    // messages find it.
    const std::uint64_t id =
        AddConversation(*instance, false, peer, 0, AcquireString(*instance, topicText),
                        AcquireString(*instance, serviceText))
            .id;
    sd_bus_message* call = nullptr;
    CallEnd end = CallEnd::Failed;
    if (sd_bus_message_new_method_call(instance->bus, &call, peer.c_str(), kPath, kInterface,
                                       "Connect") >= 0 &&
        sd_bus_message_append(call, "t", id) >= 0 &&
        AppendBytes(call, serviceText.data(), serviceText.size()) >= 0 &&
        AppendBytes(call, topicText.data(), topicText.size()) >= 0) {
        BeginBusy(*instance, id);
        end = Call(*instance, call, kConnectTimeout, reply);
        EndBusy(*instance, id);
    }
    sd_bus_message_unref(call);
    std::uint64_t serverConv = 0;
    const auto found = instance->conversations.find(id);
    if (end == CallEnd::Answered && sd_bus_message_read(reply, "t", &serverConv) >= 0 &&
        found != instance->conversations.end() && !found->second->ended) {
        found->second->peerConv = serverConv;
        sd_bus_message_unref(reply);
        instance->lastError = DMLERR_NO_ERROR;
        return reinterpret_cast<HCONV>(static_cast<std::uintptr_t>(id));
    }
    sd_bus_message_unref(reply);
    std::erase(instance->endedLater, id);
    EndConversation(*instance, id, false);
    return nullptr;
}

BOOL DdeDisconnect(HCONV conv) {
    Conversation* conversation = nullptr;
    const InstancePtr instance = FindConversation(conv, conversation);
    if (instance == nullptr) {
        return FALSE;
    }
    if (!conversation->ended && !instance->lost) {
        sd_bus_message* message = nullptr;
        if (sd_bus_message_new_method_call(instance->bus, &message, conversation->peer.c_str(),
                                           kPath, kInterface, "Disconnect") >= 0 &&
            sd_bus_message_append(message, "t", conversation->peerConv) >= 0) {
            sd_bus_message_set_expect_reply(message, 0);
            sd_bus_send(instance->bus, message, nullptr);
        }
        sd_bus_message_unref(message);
    }
    const std::uint64_t id = conversation->id;
    conversation->busy = 0;
    std::erase(instance->endedLater, id);
    EndConversation(*instance, id, false);
    return TRUE;
}

HDDEDATA DdeClientTransaction(LPBYTE data, DWORD size, HCONV conv, HSZ item, UINT format, UINT type,
                              DWORD timeout, LPDWORD result) {
    Conversation* conversation = nullptr;
    const InstancePtr instance = FindConversation(conv, conversation);
    if (instance == nullptr) {
        return nullptr;
    }
    if (result != nullptr) {
        *result = 0;
    }
    // A synchronous transaction from inside a callback is refused, as the
    // system refuses it, so that waits never nest under the application.
    if (instance->callbacks > 0) {
        instance->lastError = DMLERR_REENTRANCY;
        return nullptr;
    }
    const UINT kind = type & ~(XTYPF_NODATA | XTYPF_ACKREQ);
    const StringEntry* itemName = StringOf(*instance, item);
    const bool needsItem = kind != XTYP_EXECUTE;
    if (timeout == TIMEOUT_ASYNC || conversation->server || (needsItem && itemName == nullptr) ||
        (kind != XTYP_EXECUTE && kind != XTYP_POKE && kind != XTYP_REQUEST &&
         kind != XTYP_ADVSTART && kind != XTYP_ADVSTOP) ||
        (kind != XTYP_ADVSTART && kind != type)) {
        instance->lastError = DMLERR_INVALIDPARAMETER;
        return nullptr;
    }
    if (conversation->ended) {
        instance->lastError = DMLERR_NO_CONV_ESTABLISHED;
        return nullptr;
    }

    // The data: bytes, or a data handle given for the transaction.
    std::vector<BYTE> handleBytes;
    const BYTE* bytes = data;
    std::size_t length = size;
    if (size == static_cast<DWORD>(-1)) {
        const auto handle = reinterpret_cast<HDDEDATA>(data);
        UINT handleFormat = 0;
        if (!ReadData(handle, handleBytes, handleFormat)) {
            instance->lastError = DMLERR_INVALIDPARAMETER;
            return nullptr;
        }
        ReleaseUsedData(handle);
        bytes = handleBytes.data();
        length = handleBytes.size();
    }
    const std::string itemText = itemName != nullptr ? itemName->text : std::string();

    static constexpr struct {
        UINT type;
        const char* member;
    } kMembers[] = {{XTYP_EXECUTE, "Execute"},
                    {XTYP_POKE, "Poke"},
                    {XTYP_REQUEST, "Request"},
                    {XTYP_ADVSTART, "AdviseStart"},
                    {XTYP_ADVSTOP, "AdviseStop"}};
    const char* member =
        std::find_if(std::begin(kMembers), std::end(kMembers), [kind](const auto& entry) {
            return entry.type == kind;
        })->member;
    sd_bus_message* call = nullptr;
    int r = sd_bus_message_new_method_call(instance->bus, &call, conversation->peer.c_str(), kPath,
                                           kInterface, member);
    if (r >= 0) {
        r = sd_bus_message_append(call, "t", conversation->peerConv);
    }
    if (r >= 0 && needsItem) {
        r = AppendBytes(call, itemText.data(), itemText.size());
    }
    if (r >= 0) {
        r = sd_bus_message_append(call, "u", format);
    }
    if (r >= 0 && (kind == XTYP_EXECUTE || kind == XTYP_POKE)) {
        r = AppendBytes(call, bytes, length);
    }
    if (r >= 0 && kind == XTYP_ADVSTART) {
        r = sd_bus_message_append(call, "u", type & (XTYPF_NODATA | XTYPF_ACKREQ));
    }
    if (r < 0) {
        sd_bus_message_unref(call);
        instance->lastError = BusError(r);
        return nullptr;
    }

    const std::uint64_t id = conversation->id;
    sd_bus_message* reply = nullptr;
    BeginBusy(*instance, id);
    const CallEnd end = Call(*instance, call, timeout, reply);
    EndBusy(*instance, id);
    sd_bus_message_unref(call);
    if (end != CallEnd::Answered) {
        instance->lastError = EndError(end, type);
        return nullptr;
    }

    HDDEDATA answer = nullptr;
    UINT flags = 0;
    if (kind == XTYP_EXECUTE || kind == XTYP_POKE) {
        sd_bus_message_read(reply, "u", &flags);
        answer = (flags & DDE_FACK) != 0 ? reinterpret_cast<HDDEDATA>(1) : nullptr;
    } else if (kind == XTYP_REQUEST) {
        int found = 0;
        const void* received = nullptr;
        std::size_t receivedSize = 0;
        if (sd_bus_message_read(reply, "b", &found) >= 0 && found != 0 &&
            sd_bus_message_read_array(reply, 'y', &received, &receivedSize) >= 0) {
            flags = DDE_FACK;
            answer = MakeData(instance->id, static_cast<const BYTE*>(received), receivedSize,
                              format, false);
        }
    } else {
        int accepted = 0;
        sd_bus_message_read(reply, "b", &accepted);
        flags = accepted != 0 ? DDE_FACK : 0;
        answer = accepted != 0 ? reinterpret_cast<HDDEDATA>(1) : nullptr;
    }
    sd_bus_message_unref(reply);
    if (result != nullptr) {
        *result = flags;
    }
    if (answer == nullptr) {
        instance->lastError = (flags & DDE_FBUSY) != 0 ? DMLERR_BUSY : DMLERR_NOTPROCESSED;
    }
    return answer;
}

}  // namespace nvk::os
