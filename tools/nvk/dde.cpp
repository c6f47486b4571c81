// nvk dde: a DDE server and the client's transactions, between processes of
// the user's session (or of the bus that DBUS_SESSION_BUS_ADDRESS names).
#include <cstdio>
#include <iostream>
#include <map>
#include <memory>
#include <string>
#include <vector>

#include "cli.h"
#include "nvk/afx/cstring.h"
#include "nvk/platform/dde_object.h"
#include "nvk/platform/dde_thread.h"
#include "os/api/dde.h"
#include "os/api/message.h"

namespace nvk::tool {
namespace {

int Serve(const Args& args);
int Request(const Args& args);
int Poke(const Args& args);
int Execute(const Args& args);
int Advise(const Args& args);

const Command kCommands[] = {
    {"serve", "SERVICE TOPIC [--reply ITEM=TEXT]... [--refuse-advise]",
     "serves TOPIC of SERVICE until stopped, a line for each transaction", Serve,
     "lines: \"connect TOPIC\", \"request ITEM\", \"poke ITEM TEXT\", \"execute TEXT\",\n"
     "\"advise-start ITEM\", \"advise-stop ITEM\", \"disconnect\". Requests are answered from the\n"
     "--reply table and the values poked since; a poke that changes a value is advised to\n"
     "the clients that advise its item."},
    {"request", "SERVICE TOPIC ITEM [--timeout MS]", "prints the server's data for ITEM", Request,
     "exit 0 with the data, 1 when the server has none (\"refused\"), 2 on a failure with\n"
     "its text."},
    {"poke", "SERVICE TOPIC ITEM DATA [--timeout MS]", "gives DATA for ITEM to the server", Poke,
     "exit 0 when acknowledged, 1 when refused, 2 on a failure."},
    {"execute", "SERVICE TOPIC COMMAND [--timeout MS]", "has the server execute COMMAND", Execute,
     "exit 0 when acknowledged, 1 when refused, 2 on a failure."},
    {"advise", "SERVICE TOPIC ITEM [--timeout MS]",
     "prints ITEM's data each time the server advises it, until the server ends", Advise,
     "exit 0 when the server ended the conversation, 1 when it refused the advise loop, 2 on\n"
     "a failure."},
};

// Room for incoming data: several megabytes pass.
constexpr int kBufferSize = 32 << 20;

std::string Text(const char* data, int size) {
    int length = 0;
    while (length < size && data[length] != '\0') {
        ++length;
    }
    return std::string(data, static_cast<std::size_t>(length));
}

void Line(const std::string& text) {
    std::cout << text << std::endl;
}

// One thread's DDE for the command's run.
struct Session {
    explicit Session(bool clientOnly) { DDEInitialize(clientOnly); }
    ~Session() { DDECleanUp(); }
    Session(const Session&) = delete;
    Session& operator=(const Session&) = delete;
};

class ServedConnection;

class Server : public CDDEServer {
public:
    CString m_Topic;
    std::map<std::string, std::string> m_Values;  // item to value, both ANSI
    bool m_RefuseAdvise = false;
    std::vector<std::pair<ServedConnection*, std::string>> m_Advising;

    CDDEConnection* OnAcceptConnection(const CString& topic) override;
};

class ServedConnection : public CDDEConnection {
public:
    explicit ServedConnection(Server& server)
        : CDDEConnection(new char[kBufferSize], kBufferSize), m_Owner(server) {
        SetTimeout(kDefaultTimeout);
    }
    ~ServedConnection() override {
        std::erase_if(m_Owner.m_Advising,
                      [this](const auto& entry) { return entry.first == this; });
        delete[] m_Buffer;
    }

    int OnExecute(const CString& /*topic*/, char* data, int size, int /*format*/) override {
        Line("execute " + Text(data, size));
        return 1;
    }

    char* OnRequest(const CString& /*topic*/, const CString& item, int* /*size*/,
                    int /*format*/) override {
        Line("request " + std::string(item.GetString()));
        const auto found = m_Owner.m_Values.find(item.GetString());
        return found != m_Owner.m_Values.end() ? found->second.data() : nullptr;
    }

    int OnPoke(const CString& /*topic*/, const CString& item, char* data, int size,
               int /*format*/) override {
        const std::string name = item.GetString();
        Line("poke " + std::string(name) + " " + Text(data, size));
        std::string value(data, static_cast<std::size_t>(size));
        value = value.substr(0, value.find('\0'));
        std::string& stored = m_Owner.m_Values[name];
        if (stored != value) {
            stored = value;
            for (const auto& [connection, advised] : m_Owner.m_Advising) {
                if (advised == name) {
                    connection->Advise(item, stored.data(), -1, 1);
                }
            }
        }
        return 1;
    }

    int OnStartAdvise(const CString& /*topic*/, const CString& item) override {
        Line("advise-start " + std::string(item.GetString()));
        if (m_Owner.m_RefuseAdvise) {
            return 0;
        }
        m_Owner.m_Advising.emplace_back(this, item.GetString());
        return 1;
    }

    int OnStopAdvise(const CString& /*topic*/, const CString& item) override {
        Line("advise-stop " + std::string(item.GetString()));
        std::erase(m_Owner.m_Advising, std::make_pair(this, std::string(item.GetString())));
        return 1;
    }

    int OnDisconnect() override {
        Line("disconnect");
        return CDDEConnection::OnDisconnect();
    }

private:
    Server& m_Owner;
};

CDDEConnection* Server::OnAcceptConnection(const CString& topic) {
    if (topic.CompareNoCase(m_Topic) != 0) {
        return nullptr;
    }
    Line("connect " + std::string(topic.GetString()));
    return new ServedConnection(*this);
}

int Serve(const Args& given) {
    Args args = given;
    std::vector<std::string> replies;
    for (std::string reply = TakeOption(args, "--reply"); !reply.empty();
         reply = TakeOption(args, "--reply")) {
        replies.push_back(reply);
    }
    const bool refuseAdvise = TakeFlag(args, "--refuse-advise");
    if (!Expect(args, 2, 2, kCommands[0])) {
        return kFailure;
    }
    std::map<std::string, std::string> values;
    for (const std::string& reply : replies) {
        const std::size_t equals = reply.find('=');
        if (equals == std::string::npos) {
            return Fail("a reply is ITEM=TEXT: " + reply);
        }
        values[reply.substr(0, equals)] = reply.substr(equals + 1);
    }
    Session session(false);
    Server server;
    server.m_Topic = args[1].c_str();
    server.m_Values = std::move(values);
    server.m_RefuseAdvise = refuseAdvise;
    if (!server.Create(args[0].c_str())) {
        return Fail("the service can't be registered: " +
                    std::string(nvk::dde::ErrorText(nvk::dde::LastError()).GetString()));
    }
    os::MSG msg;
    while (os::GetMessageA(&msg, nullptr, 0, 0) > 0) {
        os::TranslateMessage(&msg);
        os::DispatchMessageA(&msg);
    }
    return kOk;
}

// A client's conversation: the connection, or the failure's status.
class ClientRun {
public:
    explicit ClientRun(bool clientOnly) : m_Session(clientOnly) {}
    ClientRun(const ClientRun&) = delete;
    ClientRun& operator=(const ClientRun&) = delete;

    // The connection to SERVICE TOPIC, with the --timeout of `args`.
    CDDEConnection* Connect(Args& args, std::size_t count, const Command& command) {
        const std::string timeout = TakeOption(args, "--timeout");
        long long milliseconds = CDDEConnection::kDefaultTimeout;
        if (!Expect(args, count, count, command)) {
            return nullptr;
        }
        if (!timeout.empty() &&
            (!ParseLong(timeout, milliseconds) || milliseconds < 0 || milliseconds > 0x7FFFFFFF)) {
            Fail("a time-out is a number of milliseconds: " + timeout);
            return nullptr;
        }
        CDDEConnection* connection = m_Client.MakeConnection("", args[0].c_str(), args[1].c_str());
        if (connection == nullptr) {
            Failed();
            return nullptr;
        }
        m_Buffer = std::make_unique<char[]>(kBufferSize);
        connection->m_Buffer = m_Buffer.get();
        connection->m_BufferSize = kBufferSize;
        connection->SetTimeout(static_cast<unsigned long>(milliseconds));
        return connection;
    }

    // The status of a transaction that returned nothing: 1 when the server
    // answered no, 2 with the error's text otherwise.
    static int Failed() {
        const unsigned error = nvk::dde::LastError();
        if (error == os::DMLERR_NOTPROCESSED || error == os::DMLERR_BUSY) {
            Line("refused");
            return kNegative;
        }
        return Fail(nvk::dde::ErrorText(error).GetString());
    }

private:
    // The thread's DDE outlives the client, which outlives its buffer.
    Session m_Session;
    CDDEClient m_Client;
    std::unique_ptr<char[]> m_Buffer;
};

int Request(const Args& given) {
    Args args = given;
    ClientRun run(true);
    CDDEConnection* connection = run.Connect(args, 3, kCommands[1]);
    if (connection == nullptr) {
        return kFailure;
    }
    int size = 0;
    const char* data = connection->Request(args[2].c_str(), &size, os::CF_TEXT);
    if (data == nullptr) {
        return ClientRun::Failed();
    }
    Line(Text(data, size));
    return kOk;
}

int Poke(const Args& given) {
    Args args = given;
    ClientRun run(true);
    CDDEConnection* connection = run.Connect(args, 4, kCommands[2]);
    if (connection == nullptr) {
        return kFailure;
    }
    std::string data = args[3];
    return connection->Poke(args[2].c_str(), data.data(), -1, os::CF_TEXT) != 0
               ? kOk
               : ClientRun::Failed();
}

int Execute(const Args& given) {
    Args args = given;
    ClientRun run(true);
    CDDEConnection* connection = run.Connect(args, 3, kCommands[3]);
    if (connection == nullptr) {
        return kFailure;
    }
    return connection->Execute(args[2].c_str()) != 0 ? kOk : ClientRun::Failed();
}

// Prints each advise, and stops the loop when the server ends.
class AdvisedConnection : public CDDEConnection {
public:
    bool m_Ended = false;

    int OnAdvise(const CString& /*topic*/, const CString& /*item*/, char* data, int size,
                 int /*format*/) override {
        Line(Text(data, size));
        return 1;
    }
    int OnDisconnect() override {
        m_Ended = true;
        os::PostQuitMessage(0);
        return 0;
    }
};

class AdviseClient : public CDDEClient {
public:
    CDDEConnection* OnMakeConnection() override { return new AdvisedConnection; }
};

int Advise(const Args& given) {
    Args args = given;
    const std::string timeout = TakeOption(args, "--timeout");
    Session session(false);
    AdviseClient client;
    long long milliseconds = CDDEConnection::kDefaultTimeout;
    if (!Expect(args, 3, 3, kCommands[4])) {
        return kFailure;
    }
    if (!timeout.empty() &&
        (!ParseLong(timeout, milliseconds) || milliseconds < 0 || milliseconds > 0x7FFFFFFF)) {
        return Fail("a time-out is a number of milliseconds: " + timeout);
    }
    CDDEConnection* connection = client.MakeConnection("", args[0].c_str(), args[1].c_str());
    if (connection == nullptr) {
        return ClientRun::Failed();
    }
    const auto buffer = std::make_unique<char[]>(kBufferSize);
    connection->m_Buffer = buffer.get();
    connection->m_BufferSize = kBufferSize;
    connection->SetTimeout(static_cast<unsigned long>(milliseconds));
    if (!connection->StartAdvise(args[2].c_str())) {
        return ClientRun::Failed();
    }
    os::MSG msg;
    while (os::GetMessageA(&msg, nullptr, 0, 0) > 0) {
        os::TranslateMessage(&msg);
        os::DispatchMessageA(&msg);
    }
    return kOk;
}

void Demo(std::ostream& out) {
    out << "  a server: nvk dde serve Compta Dossier --reply Solde=1200\n"
        << "  and a client of another process: nvk dde request Compta Dossier Solde\n";
}

const RegisterArea kArea({"dde", "DDE conversations between processes", kCommands, Demo, 110});

}  // namespace
}  // namespace nvk::tool
