// Round trips of a 64-byte DDE Request between two processes, against the
// floor under it: a bare sd-bus method call between the same two processes,
// answered with 64 bytes. Both run on a private bus that the program starts;
// the second process is this program again, serving both ("--serve").
// Each case reports round trips per second and its latency's median and
// 99th percentile in microseconds.
#include <systemd/sd-bus.h>

#include <algorithm>
#include <chrono>
#include <csignal>
#include <cstdio>
#include <cstdlib>
#include <cstring>
#include <string>
#include <thread>
#include <vector>

#include "nvk/platform/dde_object.h"
#include "nvk/platform/dde_thread.h"
#include "os/api/dde.h"
#include "os/api/message.h"
#include "os/api/sync.h"
#include "ratio.h"

namespace {

constexpr const char* kBareName = "org.nvkutil.Bench";
constexpr const char* kBarePath = "/org/nvkutil/Bench";
constexpr const char* kBareInterface = "org.nvkutil.Bench";
const std::string kAnswer(63, 'x');  // 64 bytes with the terminator

// The server side of the bare call.
int Get(sd_bus_message* call, void* /*userdata*/, sd_bus_error* /*error*/) {
    sd_bus_message* reply = nullptr;
    int r = sd_bus_message_new_method_return(call, &reply);
    if (r >= 0) {
        r = sd_bus_message_append_array(reply, 'y', kAnswer.c_str(), kAnswer.size() + 1);
    }
    if (r >= 0) {
        r = sd_bus_send(nullptr, reply, nullptr);
    }
    sd_bus_message_unref(reply);
    return r;
}

const sd_bus_vtable kVtable[] = {SD_BUS_VTABLE_START(0), SD_BUS_METHOD("Get", "", "ay", Get, 0),
                                 SD_BUS_VTABLE_END};

void ServeBare() {
    sd_bus* bus = nullptr;
    sd_bus_slot* slot = nullptr;
    if (sd_bus_open_user(&bus) < 0 ||
        sd_bus_add_object_vtable(bus, &slot, kBarePath, kBareInterface, kVtable, nullptr) < 0 ||
        sd_bus_request_name(bus, kBareName, 0) < 0) {
        std::fprintf(stderr, "the bare server can't start\n");
        std::_Exit(2);
    }
    for (;;) {
        if (sd_bus_process(bus, nullptr) == 0) {
            sd_bus_wait(bus, UINT64_MAX);
        }
    }
}

class Answering : public CDDEConnection {
public:
    char* OnRequest(const CString&, const CString&, int*, int) override {
        return const_cast<char*>(kAnswer.c_str());
    }
};

class AnsweringServer : public CDDEServer {
public:
    CDDEConnection* OnAcceptConnection(const CString&) override { return new Answering; }
};

int Serve() {
    std::thread(ServeBare).detach();
    DDEInitialize(false);
    AnsweringServer server;
    if (!server.Create("Bench")) {
        return 2;
    }
    std::printf("ready %u\n", static_cast<unsigned>(nvk::os::GetCurrentProcessId()));
    std::fflush(stdout);
    nvk::os::MSG msg;
    while (nvk::os::GetMessageA(&msg, nullptr, 0, 0) > 0) {
        nvk::os::DispatchMessageA(&msg);
    }
    return 0;
}

// Round trips per second, and the latency's median and 99th percentile.
template <class Trip>
void Measure(benchmark::State& state, Trip trip) {
    std::vector<double> micros;
    micros.reserve(1 << 16);
    for (auto _ : state) {
        const auto start = std::chrono::steady_clock::now();
        if (!trip()) {
            state.SkipWithError("a round trip failed");
            break;
        }
        micros.push_back(
            std::chrono::duration<double, std::micro>(std::chrono::steady_clock::now() - start)
                .count());
    }
    if (micros.empty()) {
        return;
    }
    std::sort(micros.begin(), micros.end());
    state.SetItemsProcessed(state.iterations());
    state.counters["median_us"] = micros[micros.size() / 2];
    state.counters["p99_us"] = micros[std::min(micros.size() - 1, micros.size() * 99 / 100)];
}

void DdeRequest(benchmark::State& state) {
    DDEInitialize(true);
    {
        CDDEClient client;
        CDDEConnection* connection = client.MakeConnection("", "Bench", "Topic");
        char buffer[256];
        if (connection == nullptr) {
            state.SkipWithError("no conversation");
        } else {
            connection->m_Buffer = buffer;
            connection->m_BufferSize = sizeof buffer;
            Measure(state, [&] {
                int size = 0;
                return connection->Request("Data", &size, nvk::os::CF_TEXT) != nullptr &&
                       size == 64;
            });
        }
    }
    DDECleanUp();
}

void BareCall(benchmark::State& state) {
    sd_bus* bus = nullptr;
    if (sd_bus_open_user(&bus) < 0) {
        state.SkipWithError("no bus");
        return;
    }
    Measure(state, [&] {
        sd_bus_message* reply = nullptr;
        sd_bus_error error = SD_BUS_ERROR_NULL;
        const void* bytes = nullptr;
        std::size_t size = 0;
        const bool ok = sd_bus_call_method(bus, kBareName, kBarePath, kBareInterface, "Get", &error,
                                           &reply, "") >= 0 &&
                        sd_bus_message_read_array(reply, 'y', &bytes, &size) >= 0 && size == 64;
        sd_bus_message_unref(reply);
        sd_bus_error_free(&error);
        return ok;
    });
    sd_bus_flush_close_unref(bus);
}

BENCHMARK(DdeRequest)->Name("request 64 bytes | CDDEConnection")->UseRealTime();
BENCHMARK(BareCall)->Name("request 64 bytes | sd-bus call")->UseRealTime();

// A bus of the run's own, and the serving process on it.
class Setting {
public:
    explicit Setting(const char* self) {
        FILE* out =
            popen("dbus-daemon --session --fork --print-address=1 --print-pid=1 2>/dev/null", "r");
        char address[512] = {};
        char pid[32] = {};
        if (out != nullptr && std::fgets(address, sizeof address, out) != nullptr &&
            std::fgets(pid, sizeof pid, out) != nullptr) {
            address[std::strcspn(address, "\n")] = '\0';
            setenv("DBUS_SESSION_BUS_ADDRESS", address, 1);
            m_Bus = std::atoi(pid);
        }
        if (out != nullptr) {
            pclose(out);
        }
        const std::string command = std::string("exec \"") + self + "\" --serve";
        m_Out = popen(command.c_str(), "r");
        char ready[64] = {};
        if (m_Out != nullptr && std::fgets(ready, sizeof ready, m_Out) != nullptr &&
            std::strncmp(ready, "ready ", 6) == 0) {
            m_Server = std::atoi(ready + 6);
        }
    }
    ~Setting() {
        if (m_Server > 0) {
            kill(m_Server, SIGTERM);
        }
        if (m_Out != nullptr) {
            pclose(m_Out);
        }
        if (m_Bus > 0) {
            kill(m_Bus, SIGTERM);
        }
    }
    Setting(const Setting&) = delete;
    Setting& operator=(const Setting&) = delete;
    bool Ready() const { return m_Server > 0; }

private:
    int m_Bus = 0;
    int m_Server = 0;
    FILE* m_Out = nullptr;
};

}  // namespace

int main(int argc, char** argv) {
    if (argc > 1 && std::strcmp(argv[1], "--serve") == 0) {
        return Serve();
    }
    const Setting setting(argv[0]);
    if (!setting.Ready()) {
        std::fprintf(stderr, "the serving process did not start\n");
        return 2;
    }
    return nvk::bench::RunWithRatios(argc, argv, "CDDEConnection");
}
