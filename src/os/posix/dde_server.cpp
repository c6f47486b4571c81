#include <algorithm>
#include <optional>
#include <string_view>

#include "os/posix/dde_instance.h"

namespace nvk::os::dde {

namespace {

// The bytes of the next array argument, valid while the message lives.
std::string_view ReadArray(sd_bus_message* message) {
    const void* bytes = nullptr;
    std::size_t size = 0;
    if (sd_bus_message_read_array(message, 'y', &bytes, &size) < 0 || size == 0) {
        return {};
    }
    return {static_cast<const char*>(bytes), size};
}

std::string ReadText(sd_bus_message* message) {
    return std::string(ReadArray(message));
}

std::vector<BYTE> ReadBytes(sd_bus_message* message) {
    const std::string_view bytes = ReadArray(message);
    return {bytes.begin(), bytes.end()};
}

std::string_view Sender(sd_bus_message* message) {
    const char* sender = sd_bus_message_get_sender(message);
    return sender != nullptr ? sender : "";
}

// The conversation `id` of this side, if the message comes from its partner.
Conversation* Partner(Instance& instance, sd_bus_message* message, std::uint64_t id, bool server) {
    const auto found = instance.conversations.find(id);
    if (found == instance.conversations.end() || found->second->ended ||
        found->second->server != server || found->second->peer != Sender(message)) {
        return nullptr;
    }
    return found->second.get();
}

void ReplyError(sd_bus_message* message, const char* name) {
    sd_bus_reply_method_errorf(message, name, "%s", name);
}

// The arguments the item transactions share: the conversation, the item, the
// format and, for advises, the loop's flags.
struct ItemCall {
    std::uint64_t id = 0;
    std::string item;
    UINT format = 0;
    UINT flags = 0;
};

ItemCall ReadItemCall(sd_bus_message* message, bool withFlags) {
    ItemCall call;
    sd_bus_message_read(message, "t", &call.id);
    call.item = ReadText(message);
    if (withFlags) {
        sd_bus_message_read(message, "uu", &call.format, &call.flags);
    } else {
        sd_bus_message_read(message, "u", &call.format);
    }
    return call;
}

// The server's conversation the call names; the caller is told when there is
// none.
Conversation* ServerPartner(Instance& instance, sd_bus_message* message, std::uint64_t id) {
    Conversation* conversation = Partner(instance, message, id, true);
    if (conversation == nullptr) {
        ReplyError(message, kErrorNoConversation);
    }
    return conversation;
}

auto SameLoop(const std::string& folded, UINT format) {
    return [&folded, format](const AdviseLoop& loop) {
        return loop.item == folded && loop.format == format;
    };
}

// A name of the message's text, held for one callback.
class TempString {
public:
    TempString(Instance& instance, const std::string& text)
        : m_Instance(instance), m_Hsz(AcquireString(instance, text)) {}
    ~TempString() { ReleaseString(m_Instance, m_Hsz); }
    TempString(const TempString&) = delete;
    TempString& operator=(const TempString&) = delete;
    HSZ get() const { return m_Hsz; }

private:
    Instance& m_Instance;
    HSZ m_Hsz;
};

// Incoming data, the system's for one callback, which may free it.
class TempData {
public:
    TempData(Instance& instance, const std::vector<BYTE>& bytes, UINT format)
        : m_Data(MakeData(instance.id, bytes.data(), bytes.size(), format, false)) {}
    ~TempData() { ReleaseUsedData(m_Data); }
    TempData(const TempData&) = delete;
    TempData& operator=(const TempData&) = delete;
    HDDEDATA get() const { return m_Data; }

private:
    HDDEDATA m_Data;
};

bool Registered(const Instance& instance, const std::string& folded) {
    return std::any_of(instance.services.begin(), instance.services.end(),
                       [&](const Service& service) {
                           const StringEntry* name = StringOf(instance, service.name);
                           return name != nullptr && name->folded == folded;
                       });
}

void OnConnect(Instance& instance, sd_bus_message* message) {
    std::uint64_t clientConv = 0;
    sd_bus_message_read(message, "t", &clientConv);
    const std::string service = ReadText(message);
    const std::string topic = ReadText(message);
    const std::string sender(Sender(message));
    const bool self = sender == instance.uniqueName;
    if ((instance.flags & (APPCMD_CLIENTONLY | CBF_FAIL_CONNECTIONS)) != 0 ||
        (self && (instance.flags & CBF_FAIL_SELFCONNECTIONS) != 0) ||
        !Registered(instance, Fold(service))) {
        ReplyError(message, kErrorRefused);
        return;
    }
    const HSZ topicName = AcquireString(instance, topic);
    const HSZ serviceName = AcquireString(instance, service);
    const bool accepted = topicName != nullptr && serviceName != nullptr &&
                          CallBack(instance, XTYP_CONNECT, 0, 0, topicName, serviceName, nullptr, 0,
                                   self ? 1 : 0) != nullptr &&
                          Watch(instance, sender);
    if (!accepted) {
        ReleaseString(instance, topicName);
        ReleaseString(instance, serviceName);
        ReplyError(message, kErrorRefused);
        return;
    }
    const std::uint64_t id =
        AddConversation(instance, true, sender, clientConv, topicName, serviceName).id;
    sd_bus_reply_method_return(message, "t", id);
    if ((instance.flags & CBF_SKIP_CONNECT_CONFIRMS) == 0) {
        CallBack(instance, XTYP_CONNECT_CONFIRM, 0, id, topicName, serviceName, nullptr, 0,
                 self ? 1 : 0);
    }
}

void OnDisconnect(Instance& instance, sd_bus_message* message) {
    std::uint64_t id = 0;
    sd_bus_message_read(message, "t", &id);
    const auto found = instance.conversations.find(id);
    if (found != instance.conversations.end() && found->second->peer == Sender(message)) {
        EndConversation(instance, id, true);
    }
}

// Execute and Poke: the acknowledgement flags of the callback.
void OnFlagsTransaction(Instance& instance, sd_bus_message* message, bool poke) {
    std::uint64_t id = 0;
    sd_bus_message_read(message, "t", &id);
    const std::string item = poke ? ReadText(message) : std::string();
    UINT format = 0;
    sd_bus_message_read(message, "u", &format);
    const std::vector<BYTE> bytes = ReadBytes(message);
    Conversation* conversation = ServerPartner(instance, message, id);
    if (conversation == nullptr) {
        return;
    }
    UINT flags = DDE_FNOTPROCESSED;
    if ((instance.flags & (poke ? CBF_FAIL_POKES : CBF_FAIL_EXECUTES)) == 0) {
        const HSZ topic = conversation->topic;
        TempString itemName(instance, item);
        TempData data(instance, bytes, format);
        const HDDEDATA answer = CallBack(instance, poke ? XTYP_POKE : XTYP_EXECUTE, format, id,
                                         topic, poke ? itemName.get() : nullptr, data.get(), 0, 0);
        flags =
            static_cast<UINT>(reinterpret_cast<std::uintptr_t>(answer)) & (DDE_FACK | DDE_FBUSY);
    }
    sd_bus_reply_method_return(message, "u", flags);
}

// The bytes of a callback's answer, which is then released; false for none.
bool TakeAnswer(HDDEDATA answer, std::vector<BYTE>& bytes) {
    UINT format = 0;
    const bool found = answer != nullptr && ReadData(answer, bytes, format);
    if (found) {
        ReleaseUsedData(answer);
    }
    return found;
}

// Request: the data of the callback, if it gave any.
void OnRequest(Instance& instance, sd_bus_message* message) {
    const ItemCall call = ReadItemCall(message, false);
    Conversation* conversation = ServerPartner(instance, message, call.id);
    if (conversation == nullptr) {
        return;
    }
    HDDEDATA answer = nullptr;
    if ((instance.flags & CBF_FAIL_REQUESTS) == 0) {
        TempString itemName(instance, call.item);
        answer = CallBack(instance, XTYP_REQUEST, call.format, call.id, conversation->topic,
                          itemName.get(), nullptr, 0, 0);
    }
    std::vector<BYTE> bytes;
    const bool found = TakeAnswer(answer, bytes);
    sd_bus_message* reply = nullptr;
    if (sd_bus_message_new_method_return(message, &reply) >= 0 &&
        sd_bus_message_append(reply, "b", found ? 1 : 0) >= 0 &&
        sd_bus_message_append_array(reply, 'y', bytes.empty() ? nullptr : bytes.data(),
                                    bytes.size()) >= 0) {
        sd_bus_send(nullptr, reply, nullptr);
    }
    sd_bus_message_unref(reply);
}

void OnAdviseStart(Instance& instance, sd_bus_message* message) {
    const ItemCall call = ReadItemCall(message, true);
    Conversation* conversation = ServerPartner(instance, message, call.id);
    if (conversation == nullptr) {
        return;
    }
    bool accepted = false;
    if ((instance.flags & CBF_FAIL_ADVISES) == 0) {
        TempString itemName(instance, call.item);
        accepted = CallBack(instance, XTYP_ADVSTART, call.format, call.id, conversation->topic,
                            itemName.get(), nullptr, 0, 0) != nullptr;
    }
    // The callback may have ended the conversation.
    conversation = Partner(instance, message, call.id, true);
    if (accepted && conversation != nullptr) {
        const std::string folded = Fold(call.item);
        std::erase_if(conversation->loops, SameLoop(folded, call.format));
        conversation->loops.push_back({folded, call.item, call.format, call.flags});
    }
    sd_bus_reply_method_return(message, "b", accepted ? 1 : 0);
}

void OnAdviseStop(Instance& instance, sd_bus_message* message) {
    const ItemCall call = ReadItemCall(message, false);
    Conversation* conversation = ServerPartner(instance, message, call.id);
    if (conversation == nullptr) {
        return;
    }
    const std::string folded = Fold(call.item);
    const std::size_t removed = std::erase_if(conversation->loops, SameLoop(folded, call.format));
    if (removed > 0) {
        TempString itemName(instance, call.item);
        CallBack(instance, XTYP_ADVSTOP, call.format, call.id, conversation->topic, itemName.get(),
                 nullptr, 0, 0);
    }
    sd_bus_reply_method_return(message, "b", removed > 0 ? 1 : 0);
}

// The client's side of an advise: the data the server gave when it posted the
// advise (none for a loop that wants none), handed to XTYP_ADVDATA.
void OnAdviseSignal(Instance& instance, sd_bus_message* message) {
    const auto [id, item, format, flags] = ReadItemCall(message, true);
    Conversation* conversation = Partner(instance, message, id, false);
    if (conversation == nullptr) {
        return;
    }
    const std::vector<BYTE> bytes = ReadBytes(message);
    TempString itemName(instance, item);
    std::optional<TempData> data;
    if ((flags & XTYPF_NODATA) == 0) {
        data.emplace(instance, bytes, format);
    }
    CallBack(instance, XTYP_ADVDATA, format, id, conversation->topic, itemName.get(),
             data ? data->get() : nullptr, 0, 0);
}

void OnOwnerChanged(Instance& instance, sd_bus_message* message) {
    const char* name = nullptr;
    const char* oldOwner = nullptr;
    const char* newOwner = nullptr;
    if (sd_bus_message_read(message, "sss", &name, &oldOwner, &newOwner) < 0 || *newOwner != '\0' ||
        instance.watched.count(name) == 0) {
        return;
    }
    std::vector<std::uint64_t> ended;
    for (const auto& [id, conversation] : instance.conversations) {
        if (conversation->peer == name) {
            ended.push_back(id);
        }
    }
    for (const std::uint64_t id : ended) {
        EndConversation(instance, id, true);
    }
}

}  // namespace

void HandleIncoming(Instance& instance, sd_bus_message* message) {
    if (sd_bus_message_is_signal(message, "org.freedesktop.DBus", "NameOwnerChanged") > 0) {
        OnOwnerChanged(instance, message);
    } else if (sd_bus_message_is_signal(message, kInterface, "Advise") > 0) {
        OnAdviseSignal(instance, message);
    } else if (sd_bus_message_is_method_call(message, kInterface, "Connect") > 0) {
        OnConnect(instance, message);
    } else if (sd_bus_message_is_method_call(message, kInterface, "Disconnect") > 0) {
        OnDisconnect(instance, message);
    } else if (sd_bus_message_is_method_call(message, kInterface, "Execute") > 0) {
        OnFlagsTransaction(instance, message, false);
    } else if (sd_bus_message_is_method_call(message, kInterface, "Poke") > 0) {
        OnFlagsTransaction(instance, message, true);
    } else if (sd_bus_message_is_method_call(message, kInterface, "Request") > 0) {
        OnRequest(instance, message);
    } else if (sd_bus_message_is_method_call(message, kInterface, "AdviseStart") > 0) {
        OnAdviseStart(instance, message);
    } else if (sd_bus_message_is_method_call(message, kInterface, "AdviseStop") > 0) {
        OnAdviseStop(instance, message);
    } else if (sd_bus_message_is_method_call(message, nullptr, nullptr) > 0) {
        sd_bus_reply_method_errorf(message, SD_BUS_ERROR_UNKNOWN_METHOD, "unknown method");
    }
}

}  // namespace nvk::os::dde

namespace nvk::os {

using namespace dde;

HDDEDATA DdeNameService(DWORD idInst, HSZ hsz1, HSZ /*hsz2*/, UINT command) {
    const InstancePtr instance = FindInstance(idInst);
    if (instance == nullptr) {
        return nullptr;
    }
    if ((instance->flags & APPCMD_CLIENTONLY) != 0) {
        instance->lastError = DMLERR_DLL_USAGE;
        return nullptr;
    }
    const StringEntry* name = StringOf(*instance, hsz1);
    const std::string folded = name != nullptr ? name->folded : std::string();
    const auto same = [&](const Service& service) {
        const StringEntry* entry = StringOf(*instance, service.name);
        return hsz1 == nullptr || (entry != nullptr && entry->folded == folded);
    };
    if ((command & DNS_REGISTER) != 0) {
        if (name == nullptr) {
            instance->lastError = DMLERR_INVALIDPARAMETER;
            return nullptr;
        }
        if (std::none_of(instance->services.begin(), instance->services.end(), same)) {
            // Queued behind another process that serves the name already:
            // this one takes over when that one ends.
            std::string busName = ServiceBusName(folded);
            const int r = sd_bus_request_name(instance->bus, busName.c_str(), SD_BUS_NAME_QUEUE);
            if (r < 0) {
                instance->lastError = BusError(r);
                return nullptr;
            }
            instance->services.push_back(
                {AcquireString(*instance, name->text), std::move(busName)});
        }
        return reinterpret_cast<HDDEDATA>(1);
    }
    if ((command & DNS_UNREGISTER) != 0) {
        if (hsz1 != nullptr && name == nullptr) {
            instance->lastError = DMLERR_INVALIDPARAMETER;
            return nullptr;
        }
        for (auto service = instance->services.begin(); service != instance->services.end();) {
            if (same(*service)) {
                sd_bus_release_name(instance->bus, service->busName.c_str());
                ReleaseString(*instance, service->name);
                service = instance->services.erase(service);
            } else {
                ++service;
            }
        }
        return reinterpret_cast<HDDEDATA>(1);
    }
    instance->lastError = DMLERR_INVALIDPARAMETER;
    return nullptr;
}

BOOL DdePostAdvise(DWORD idInst, HSZ topic, HSZ item) {
    const InstancePtr instance = FindInstance(idInst);
    if (instance == nullptr) {
        return FALSE;
    }
    const StringEntry* topicName = StringOf(*instance, topic);
    const StringEntry* itemName = StringOf(*instance, item);
    if ((topic != nullptr && topicName == nullptr) || (item != nullptr && itemName == nullptr)) {
        instance->lastError = DMLERR_INVALIDPARAMETER;
        return FALSE;
    }
    // The loops to serve, taken first: the callback may end conversations.
    std::vector<std::pair<std::uint64_t, AdviseLoop>> due;
    for (const auto& [id, conversation] : instance->conversations) {
        const StringEntry* ownTopic = StringOf(*instance, conversation->topic);
        if (!conversation->server || conversation->ended ||
            (topicName != nullptr &&
             (ownTopic == nullptr || ownTopic->folded != topicName->folded))) {
            continue;
        }
        for (const AdviseLoop& loop : conversation->loops) {
            if (itemName == nullptr || loop.item == itemName->folded) {
                due.emplace_back(id, loop);
            }
        }
    }
    // Each loop's data is asked of the server at once, before this returns, so
    // that a value posted later never replaces one the client has not had.
    for (const auto& [id, loop] : due) {
        const auto found = instance->conversations.find(id);
        if (found == instance->conversations.end() || found->second->ended) {
            continue;
        }
        const Conversation& conversation = *found->second;
        std::vector<BYTE> bytes;
        if ((loop.flags & XTYPF_NODATA) == 0) {
            TempString item(*instance, loop.text);
            if (!TakeAnswer(CallBack(*instance, XTYP_ADVREQ, loop.format, id, conversation.topic,
                                     item.get(), nullptr, 0, 0),
                            bytes)) {
                continue;
            }
        }
        sd_bus_message* signal = nullptr;
        if (sd_bus_message_new_signal(instance->bus, &signal, kPath, kInterface, "Advise") >= 0 &&
            sd_bus_message_set_destination(signal, conversation.peer.c_str()) >= 0 &&
            sd_bus_message_append(signal, "t", conversation.peerConv) >= 0 &&
            sd_bus_message_append_array(signal, 'y', loop.text.data(), loop.text.size()) >= 0 &&
            sd_bus_message_append(signal, "uu", loop.format, loop.flags) >= 0 &&
            sd_bus_message_append_array(signal, 'y', bytes.empty() ? nullptr : bytes.data(),
                                        bytes.size()) >= 0) {
            sd_bus_send(instance->bus, signal, nullptr);
        }
        sd_bus_message_unref(signal);
    }
    return TRUE;
}

}  // namespace nvk::os
