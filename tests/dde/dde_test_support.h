// What the DDE tests share: a private session bus for the test process, the
// peer process, and a message pump with a time limit.
#pragma once

#include <gtest/gtest.h>

#include <chrono>
#include <csignal>
#include <cstdio>
#include <cstdlib>
#include <cstring>
#include <functional>
#include <string>

#include "os/api/message.h"

namespace nvk::dde::test {

// A bus of this process's own, so that nothing depends on a desktop
// session: started before the first test, stopped after the last.
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

// The peer program serving SERVICE TOPIC; its lines are read one by one.
class Peer {
public:
    Peer(const std::string& service, const std::string& topic) {
        const std::string command =
            "exec \"" NVK_DDE_PEER "\" '" + service + "' '" + topic + "' 2>/dev/null";
        m_Out = popen(command.c_str(), "r");
        const std::string ready = NextLine();
        if (ready.rfind("ready ", 0) == 0) {
            m_Pid = std::atoi(ready.c_str() + 6);
        }
    }
    ~Peer() {
        if (m_Pid > 0) {
            kill(m_Pid, SIGKILL);
        }
        if (m_Out != nullptr) {
            pclose(m_Out);
        }
    }
    Peer(const Peer&) = delete;
    Peer& operator=(const Peer&) = delete;

    bool Ready() const { return m_Pid > 0; }
    // The next line the peer printed, "" at its end.
    std::string NextLine() {
        char line[256] = {};
        if (m_Out == nullptr || std::fgets(line, sizeof line, m_Out) == nullptr) {
            return {};
        }
        line[std::strcspn(line, "\n")] = '\0';
        return line;
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
    FILE* m_Out = nullptr;
    int m_Pid = 0;
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
