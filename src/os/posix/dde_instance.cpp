#include "os/posix/dde_instance.h"

#include <poll.h>

#include <algorithm>
#include <atomic>
#include <ctime>

#include "os/api/sync.h"

namespace nvk::os::dde {

namespace {

std::atomic<DWORD> nextInstance{1};
std::atomic<std::uint64_t> nextConversation{0x10000};
thread_local std::vector<InstancePtr> threadInstances;

bool IsMember(sd_bus_message* message, const char* interface) {
    const char* name = sd_bus_message_get_interface(message);
    return name != nullptr && std::string_view(name) == interface;
}

// Runs inside sd-bus's dispatching: only queues what the instance serves.
int Filter(sd_bus_message* message, void* userdata, sd_bus_error* /*error*/) {
    auto* instance = static_cast<Instance*>(userdata);
    const bool ours = IsMember(message, kInterface) &&
                      (sd_bus_message_is_method_call(message, kInterface, nullptr) ||
                       sd_bus_message_is_signal(message, kInterface, nullptr));
    const bool ownerChange =
        sd_bus_message_is_signal(message, "org.freedesktop.DBus", "NameOwnerChanged") > 0;
    if (!ours && !ownerChange) {
        return 0;
    }
    instance->incoming.push_back(sd_bus_message_ref(message));
    return 1;
}

int Ignore(sd_bus_message* /*message*/, void* /*userdata*/, sd_bus_error* /*error*/) {
    return 0;
}

}  // namespace

Instance::~Instance() {
    for (sd_bus_message* message : incoming) {
        sd_bus_message_unref(message);
    }
    for (auto& [peer, watch] : watched) {
        sd_bus_slot_unref(watch.second);
    }
    sd_bus_slot_unref(filter);
    if (bus != nullptr) {
        sd_bus_flush_close_unref(bus);
    }
}

std::uint64_t Now() {
    timespec now{};
    clock_gettime(CLOCK_MONOTONIC, &now);
    return static_cast<std::uint64_t>(now.tv_sec) * 1000000u +
           static_cast<std::uint64_t>(now.tv_nsec) / 1000u;
}

UINT BusError(int r) {
    return r == -ENOMEM || r == -ENOBUFS ? DMLERR_MEMORY_ERROR : DMLERR_SYS_ERROR;
}

InstancePtr FindInstance(DWORD id) {
    for (const InstancePtr& instance : threadInstances) {
        if (instance->id == id) {
            return instance;
        }
    }
    return nullptr;
}

InstancePtr FindConversation(HCONV conv, Conversation*& conversation) {
    const auto id = static_cast<std::uint64_t>(reinterpret_cast<std::uintptr_t>(conv));
    for (const InstancePtr& instance : threadInstances) {
        const auto found = instance->conversations.find(id);
        if (found != instance->conversations.end()) {
            conversation = found->second.get();
            return instance;
        }
    }
    return nullptr;
}

const std::vector<InstancePtr>& ThreadInstances() {
    return threadInstances;
}

Conversation& AddConversation(Instance& instance, bool server, const std::string& peer,
                              std::uint64_t peerConv, HSZ topic, HSZ service) {
    auto conversation = std::make_unique<Conversation>();
    conversation->id = nextConversation++;
    conversation->server = server;
    conversation->peer = peer;
    conversation->peerConv = peerConv;
    conversation->topic = topic;
    conversation->service = service;
    Conversation& added = *conversation;
    instance.conversations.emplace(added.id, std::move(conversation));
    return added;
}

void EndConversation(Instance& instance, std::uint64_t id, bool notify) {
    const auto found = instance.conversations.find(id);
    if (found == instance.conversations.end()) {
        return;
    }
    // Out of the table first, so that the callback sees a conversation that
    // has ended, whatever it calls.
    if (found->second->busy > 0) {
        found->second->ended = true;
        found->second->notifyEnd |= notify;
        return;
    }
    std::unique_ptr<Conversation> conversation = std::move(found->second);
    instance.conversations.erase(found);
    if (notify && (instance.flags & CBF_SKIP_DISCONNECTS) == 0) {
        CallBack(instance, XTYP_DISCONNECT, 0, id, nullptr, nullptr, nullptr, 0,
                 conversation->peer == instance.uniqueName ? 1 : 0);
    }
    Unwatch(instance, conversation->peer);
    ReleaseString(instance, conversation->topic);
    ReleaseString(instance, conversation->service);
}

HDDEDATA CallBack(Instance& instance, UINT type, UINT format, std::uint64_t conv, HSZ hsz1,
                  HSZ hsz2, HDDEDATA data, ULONG_PTR data1, ULONG_PTR data2) {
    struct Running {
        Instance& instance;
        ~Running() { --instance.callbacks; }
    } running{instance};
    ++instance.callbacks;
    return instance.callback(type, format,
                             reinterpret_cast<HCONV>(static_cast<std::uintptr_t>(conv)), hsz1, hsz2,
                             data, data1, data2);
}

void BeginBusy(Instance& instance, std::uint64_t id) {
    const auto found = instance.conversations.find(id);
    if (found != instance.conversations.end()) {
        ++found->second->busy;
    }
}

void EndBusy(Instance& instance, std::uint64_t id) {
    const auto found = instance.conversations.find(id);
    if (found != instance.conversations.end() && --found->second->busy == 0 &&
        found->second->ended) {
        instance.endedLater.push_back(id);
    }
}

bool Watch(Instance& instance, const std::string& peer) {
    if (peer == instance.uniqueName) {
        return true;
    }
    const auto found = instance.watched.find(peer);
    if (found != instance.watched.end()) {
        ++found->second.first;
        return true;
    }
    const std::string rule =
        "type='signal',sender='org.freedesktop.DBus',path='/org/freedesktop/DBus',"
        "interface='org.freedesktop.DBus',member='NameOwnerChanged',arg0='" +
        peer + "'";
    sd_bus_slot* slot = nullptr;
    if (sd_bus_add_match(instance.bus, &slot, rule.c_str(), Ignore, nullptr) < 0) {
        return false;
    }
    // A partner that ended before the rule was in place sends no signal.
    sd_bus_error error = SD_BUS_ERROR_NULL;
    sd_bus_message* reply = nullptr;
    int has = 0;
    const int r = sd_bus_call_method(instance.bus, "org.freedesktop.DBus", "/org/freedesktop/DBus",
                                     "org.freedesktop.DBus", "NameHasOwner", &error, &reply, "s",
                                     peer.c_str());
    if (r >= 0) {
        sd_bus_message_read(reply, "b", &has);
    }
    sd_bus_message_unref(reply);
    sd_bus_error_free(&error);
    if (has == 0) {
        sd_bus_slot_unref(slot);
        return false;
    }
    instance.watched.emplace(peer, std::make_pair(1, slot));
    return true;
}

void Unwatch(Instance& instance, const std::string& peer) {
    const auto found = instance.watched.find(peer);
    if (found != instance.watched.end() && --found->second.first == 0) {
        sd_bus_slot_unref(found->second.second);
        instance.watched.erase(found);
    }
}

bool ServeOnce(const InstancePtr& instance) {
    if (instance->closed || instance->lost) {
        return false;
    }
    if (!instance->endedLater.empty()) {
        const std::uint64_t id = instance->endedLater.back();
        instance->endedLater.pop_back();
        const auto found = instance->conversations.find(id);
        if (found != instance->conversations.end()) {
            EndConversation(*instance, id, found->second->notifyEnd);
        }
        return true;
    }
    if (!instance->incoming.empty()) {
        sd_bus_message* message = instance->incoming.front();
        instance->incoming.pop_front();
        HandleIncoming(*instance, message);
        sd_bus_message_unref(message);
        return true;
    }
    const int r = sd_bus_process(instance->bus, nullptr);
    if (r < 0) {
        // The bus has gone: every conversation with it.
        instance->lost = true;
        std::vector<std::uint64_t> ids;
        for (const auto& entry : instance->conversations) {
            ids.push_back(entry.first);
        }
        for (const std::uint64_t id : ids) {
            EndConversation(*instance, id, true);
        }
        return false;
    }
    return r > 0;
}

void ServeAll(const InstancePtr& instance) {
    while (ServeOnce(instance)) {
    }
}

int WaitThreadTraffic(std::uint64_t deadline) {
    const std::vector<InstancePtr> instances = threadInstances;
    std::vector<pollfd> fds;
    std::vector<std::size_t> owners;
    std::uint64_t wake = deadline;
    for (std::size_t i = 0; i < instances.size(); ++i) {
        Instance& instance = *instances[i];
        if (instance.closed || instance.lost) {
            continue;
        }
        std::uint64_t due = UINT64_MAX;
        if (!instance.incoming.empty() || !instance.endedLater.empty() ||
            (sd_bus_get_timeout(instance.bus, &due) >= 0 && due <= Now())) {
            return static_cast<int>(i);
        }
        wake = std::min(wake, due);
        const int events = sd_bus_get_events(instance.bus);
        fds.push_back(
            {sd_bus_get_fd(instance.bus), static_cast<short>(events > 0 ? events : 0), 0});
        owners.push_back(i);
    }
    const std::uint64_t now = Now();
    int timeout = -1;
    if (wake != UINT64_MAX) {
        // Rounded up, so that a wake-up never comes before its time.
        timeout =
            wake <= now
                ? 0
                : static_cast<int>(std::min<std::uint64_t>((wake - now + 999) / 1000, 1u << 30));
    }
    const int r = poll(fds.data(), fds.size(), timeout);
    if (r > 0) {
        for (std::size_t k = 0; k < fds.size(); ++k) {
            if (fds[k].revents != 0) {
                return static_cast<int>(owners[k]);
            }
        }
    }
    // A time-out of sd-bus's own (a call's) is traffic too.
    for (std::size_t k = 0; k < owners.size(); ++k) {
        std::uint64_t due = UINT64_MAX;
        if (sd_bus_get_timeout(instances[owners[k]]->bus, &due) >= 0 && due <= Now()) {
            return static_cast<int>(owners[k]);
        }
    }
    return -1;
}

void ServeThreadUntil(const bool& done, std::uint64_t deadline) {
    while (!done) {
        const std::vector<InstancePtr> instances = threadInstances;
        bool served = false;
        for (const InstancePtr& instance : instances) {
            while (!done && ServeOnce(instance)) {
                served = true;
            }
        }
        if (done || Now() >= deadline) {
            return;
        }
        if (!served) {
            WaitThreadTraffic(deadline);
        }
    }
}

}  // namespace nvk::os::dde

namespace nvk::os {

using namespace dde;

UINT DdeInitializeA(LPDWORD idInst, PFNCALLBACK callback, DWORD command, DWORD /*reserved*/) {
    if (idInst == nullptr || callback == nullptr) {
        return DMLERR_INVALIDPARAMETER;
    }
    if (*idInst != 0) {
        const InstancePtr instance = FindInstance(*idInst);
        if (instance == nullptr) {
            return DMLERR_INVALIDPARAMETER;
        }
        instance->callback = callback;
        instance->flags = command;
        return DMLERR_NO_ERROR;
    }
    auto instance = std::make_shared<Instance>();
    const char* unique = nullptr;
    if (sd_bus_open_user(&instance->bus) < 0 ||
        sd_bus_get_unique_name(instance->bus, &unique) < 0 ||
        sd_bus_add_filter(instance->bus, &instance->filter, Filter, instance.get()) < 0) {
        return DMLERR_SYS_ERROR;
    }
    instance->uniqueName = unique;
    instance->id = nextInstance++;
    instance->thread = GetCurrentThreadId();
    instance->callback = callback;
    instance->flags = command;
    threadInstances.push_back(instance);
    *idInst = instance->id;
    return DMLERR_NO_ERROR;
}

BOOL DdeUninitialize(DWORD idInst) {
    const InstancePtr instance = FindInstance(idInst);
    if (instance == nullptr) {
        return FALSE;
    }
    // The partners learn of the end; this side's callback is not called.
    for (const auto& [id, conversation] : instance->conversations) {
        if (!instance->lost) {
            sd_bus_message* message = nullptr;
            if (sd_bus_message_new_method_call(instance->bus, &message, conversation->peer.c_str(),
                                               kPath, kInterface, "Disconnect") >= 0 &&
                sd_bus_message_append(message, "t", conversation->peerConv) >= 0) {
                sd_bus_message_set_expect_reply(message, 0);
                sd_bus_send(instance->bus, message, nullptr);
            }
            sd_bus_message_unref(message);
        }
    }
    instance->conversations.clear();
    instance->closed = true;
    FreeInstanceData(instance->id);
    std::erase(threadInstances, instance);
    return TRUE;
}

UINT DdeGetLastError(DWORD idInst) {
    const InstancePtr instance = FindInstance(idInst);
    if (instance == nullptr) {
        return DMLERR_DLL_NOT_INITIALIZED;
    }
    const UINT error = instance->lastError;
    instance->lastError = DMLERR_NO_ERROR;
    return error;
}

}  // namespace nvk::os
