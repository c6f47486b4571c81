// What the DDE tests share: a private session bus for the test process, the
// peer process, and a message pump with a time limit.
#pragma once

#include <gtest/gtest.h>

#include <chrono>
#include <csignal>
#include <cstdio>
#include <cstdlib>
#include <cstring>
#include <filesystem>
#include <functional>
#include <string>
#include <thread>

#include "os/api/message.h"
#include "os/api/process.h"
#include "os/api/sync.h"
#include "support/child_process.h"

namespace nvk::dde::test {

#ifndef _WIN32
// The POSIX build converses over D-Bus: a bus of this process's own, so that
// nothing depends on a desktop session, started before the first test and
// stopped after the last. Windows' DDE needs none.
class PrivateBus : public testing::Environment {
public:
    void SetUp() override {
        FILE* out = popen("dbus-daemon --session --fork --print-address=1 --print-pid=1", "r");
        ASSERT_NE(out, nullptr);
        char address[512] = {};
        char pid[32] = {};
        const bool read = std::fgets(address, sizeof address, out) != nullptr &&
                          std::fgets(pid, sizeof pid, out) != nullptr;
        pclose(out);
        ASSERT_TRUE(read) << "dbus-daemon did not start";
        address[std::strcspn(address, "\n")] = '\0';
        m_Pid = std::atoi(pid);
        setenv("DBUS_SESSION_BUS_ADDRESS", address, 1);
    }
    void TearDown() override {
        if (m_Pid > 0) {
            kill(m_Pid, SIGTERM);
        }
    }

private:
    int m_Pid = 0;
};

inline testing::Environment* const g_PrivateBus = testing::AddGlobalTestEnvironment(new PrivateBus);
#endif

// The peer program serving SERVICE TOPIC. It writes its lines to a file of
// its own, read here as it grows: a file needs no pipe between the
// processes, which the OS layer does not offer.
class Peer {
public:
    Peer(const std::string& service, const std::string& topic)
        : m_Path(std::filesystem::temp_directory_path() /
                 ("nvk_dde_peer_" + std::to_string(os::GetCurrentProcessId()) + "_" +
                  std::to_string(s_Count++) + ".txt")) {
        std::FILE* created = std::fopen(m_Path.string().c_str(), "wb");
        if (created != nullptr) {
            std::fclose(created);
        }
        m_Lines = std::fopen(m_Path.string().c_str(), "rb");
        m_Process = nvk::test::StartProcess("\"" NVK_DDE_PEER "\" \"" + service + "\" \"" + topic +
                                            "\" \"" + m_Path.string() + "\"");
        m_Ready = NextLine() == "ready";
    }
    ~Peer() {
        nvk::test::FinishProcess(m_Process, 0);
        if (m_Lines != nullptr) {
            std::fclose(m_Lines);
        }
        std::error_code ignored;
        std::filesystem::remove(m_Path, ignored);
    }
    Peer(const Peer&) = delete;
    Peer& operator=(const Peer&) = delete;

    bool Ready() const { return m_Ready; }
    // The next line the peer wrote; "" once it ended without one, or when
    // none comes within ten seconds.
    std::string NextLine() {
        std::string line;
        const auto deadline = std::chrono::steady_clock::now() + std::chrono::seconds(10);
        while (m_Lines != nullptr) {
            const int c = std::fgetc(m_Lines);
            if (c == '\n') {
                return line;
            }
            if (c != EOF) {
                line += static_cast<char>(c);
                continue;
            }
            // Nothing more yet: the peer's last line may still be on its way
            // after it ended, so one more read follows the end. A seek, not
            // clearerr, forgets the end of file: some C runtimes also keep it
            // on the descriptor below the stream.
            const bool ended = m_Process.hProcess == nullptr ||
                               os::WaitForSingleObject(m_Process.hProcess, 0) == os::WAIT_OBJECT_0;
            std::fseek(m_Lines, 0, SEEK_CUR);
            if (ended ? m_SawEnd : std::chrono::steady_clock::now() > deadline) {
                break;
            }
            m_SawEnd = ended;
            std::this_thread::sleep_for(std::chrono::milliseconds(5));
        }
        return {};
    }
    // The next line that is not a connection's coming or going.
    std::string NextTransaction() {
        std::string line = NextLine();
        while (line.rfind("connect ", 0) == 0 || line == "disconnect") {
            line = NextLine();
        }
        return line;
    }

private:
    static inline int s_Count = 0;
    std::filesystem::path m_Path;
    std::FILE* m_Lines = nullptr;
    os::PROCESS_INFORMATION m_Process = {};
    bool m_Ready = false;
    bool m_SawEnd = false;
};

// Serves the thread's messages until `done` or `milliseconds` pass.
inline bool PumpUntil(const std::function<bool()>& done, int milliseconds = 5000) {
    const auto deadline =
        std::chrono::steady_clock::now() + std::chrono::milliseconds(milliseconds);
    while (!done()) {
        os::MSG msg;
        if (os::PeekMessageA(&msg, nullptr, 0, 0, os::PM_REMOVE)) {
            os::TranslateMessage(&msg);
            os::DispatchMessageA(&msg);
        } else if (std::chrono::steady_clock::now() > deadline) {
            return false;
        } else {
            os::MsgWaitForMultipleObjects(0, nullptr, os::FALSE, 20, os::QS_ALLINPUT);
        }
    }
    return true;
}

}  // namespace nvk::dde::test
