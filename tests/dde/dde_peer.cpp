// The tests' second process: a DDE server that answers by item name and
// acts on commands, printing a line for each transaction it sees.
//   dde_peer SERVICE TOPIC LINES
// The lines go to the file LINES, the first being "ready" once the service
// is registered.
// Requests: "text" gives "valeur", "empty" an empty text, "big:N" N bytes
// of 'x' then the terminator, "slow:MS" "late" after MS milliseconds; any
// other item nothing. Executes: "refuse" is refused, "crash" ends the
// process without an answer, "disconnect" ends every conversation from
// here, "advise ITEM A [B]" advises ITEM with A (then at once B), "quit"
// stops the server; anything else is acknowledged. Pokes are stored and
// answered 0, advise loops accepted except on "refused".
#include <chrono>
#include <cstdio>
#include <cstdlib>
#include <cstring>
#include <list>
#include <memory>
#include <sstream>
#include <string>
#include <thread>
#include <vector>

#include "nvk/platform/dde_object.h"
#include "nvk/platform/dde_thread.h"
#include "os/api/dde.h"
#include "os/api/message.h"

namespace {

constexpr int kBufferSize = 16 << 20;

std::FILE* g_Lines = nullptr;

void Line(const std::string& text) {
    std::fprintf(g_Lines, "%s\n", text.c_str());
    std::fflush(g_Lines);
}

class PeerServer : public CDDEServer {
public:
    CDDEConnection* OnAcceptConnection(const CString& topic) override;
    CString m_Topic;
    std::list<std::string> m_Advised;  // kept alive until fetched
    std::vector<std::unique_ptr<CDDEConnection>> m_Ended;
};

class PeerConnection : public CDDEConnection {
public:
    explicit PeerConnection(PeerServer& server)
        : CDDEConnection(new char[kBufferSize], kBufferSize), m_Owner(server) {
        SetTimeout(kDefaultTimeout);
    }
    ~PeerConnection() override { delete[] m_Buffer; }

    int OnExecute(const CString& /*topic*/, char* data, int size, int /*format*/) override {
        const std::string text(data, static_cast<std::size_t>(size > 0 ? size - 1 : 0));
        Line("execute " + std::to_string(size) + " " + (size < 64 ? text : std::string("...")));
        if (text == "refuse") {
            return 0;
        }
        if (text == "crash") {
            std::_Exit(3);
        }
        if (text == "quit") {
            nvk::os::PostQuitMessage(0);
        } else if (text == "disconnect") {
            while (!m_Owner.m_Connections.IsEmpty()) {
                auto* connection = static_cast<CDDEConnection*>(m_Owner.m_Connections.GetHead());
                connection->Disconnect();
                m_Owner.m_Ended.emplace_back(connection);
            }
        } else if (text.rfind("advise ", 0) == 0) {
            std::istringstream words(text.substr(7));
            std::string item;
            std::string value;
            words >> item;
            while (words >> value) {
                m_Owner.m_Advised.push_back(value);
                Advise(item.c_str(), m_Owner.m_Advised.back().data(), -1, nvk::os::CF_TEXT);
            }
        }
        return 1;
    }

    char* OnRequest(const CString& /*topic*/, const CString& item, int* size,
                    int /*format*/) override {
        const std::string name = item.GetString();
        Line("request " + name);
        if (name == "text") {
            return m_Answer.assign("valeur").data();
        }
        if (name == "empty") {
            return m_Answer.assign("").data();
        }
        if (name.rfind("big:", 0) == 0) {
            m_Answer.assign(std::stoul(name.substr(4)), 'x');
            *size = static_cast<int>(m_Answer.size());
            return m_Answer.data();
        }
        if (name.rfind("slow:", 0) == 0) {
            std::this_thread::sleep_for(std::chrono::milliseconds(std::stoi(name.substr(5))));
            return m_Answer.assign("late").data();
        }
        return nullptr;
    }

    int OnPoke(const CString& /*topic*/, const CString& item, char* data, int size,
               int /*format*/) override {
        Line("poke " + std::string(item.GetString()) + " " + std::to_string(size) + " " +
             std::string(data, static_cast<std::size_t>(size > 0 ? size - 1 : 0)));
        return 0;
    }

    int OnStartAdvise(const CString& topic, const CString& item) override {
        Line("advise-start " + std::string(item.GetString()));
        return item == "refused" ? CDDEConnection::OnStartAdvise(topic, item) : 1;
    }

    int OnStopAdvise(const CString& /*topic*/, const CString& item) override {
        Line("advise-stop " + std::string(item.GetString()));
        return 1;
    }

    int OnDisconnect() override {
        Line("disconnect");
        return CDDEConnection::OnDisconnect();
    }

private:
    PeerServer& m_Owner;
    std::string m_Answer;
};

CDDEConnection* PeerServer::OnAcceptConnection(const CString& topic) {
    if (topic != m_Topic) {
        return nullptr;
    }
    Line("connect " + std::string(topic.GetString()));
    return new PeerConnection(*this);
}

}  // namespace

int main(int argc, char** argv) {
    if (argc != 4 || (g_Lines = std::fopen(argv[3], "wb")) == nullptr) {
        std::fprintf(stderr, "usage: dde_peer SERVICE TOPIC LINES\n");
        return 2;
    }
    DDEInitialize(false);
    {
        PeerServer server;
        server.m_Topic = argv[2];
        if (!server.Create(argv[1])) {
            return 1;
        }
        Line("ready");
        nvk::os::MSG msg;
        while (nvk::os::GetMessageA(&msg, nullptr, 0, 0) > 0) {
            nvk::os::TranslateMessage(&msg);
            nvk::os::DispatchMessageA(&msg);
        }
    }
    DDECleanUp();
    return 0;
}
