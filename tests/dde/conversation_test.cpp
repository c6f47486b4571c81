// Two processes conversing through a private bus: this one the client, the
// peer program the server.
#include <gtest/gtest.h>

#include <chrono>
#include <memory>
#include <string>
#include <vector>

#include "dde_test_support.h"
#include "nvk/platform/dde_object.h"
#include "nvk/platform/dde_thread.h"
#include "os/api/dde.h"
#include "os/api/message_box.h"

namespace {

using nvk::dde::test::Peer;
using nvk::dde::test::PumpUntil;
using namespace nvk::os;

// A client connection that keeps what it is told.
class Recorder : public CDDEConnection {
public:
    Recorder() : CDDEConnection(new char[kRoom], kRoom) { SetTimeout(5000); }
    ~Recorder() override { delete[] m_Buffer; }
    int OnAdvise(const CString& topic, const CString& item, char* data, int size,
                 int /*format*/) override {
        m_Advised.push_back(std::string(topic) + "/" + std::string(item) + "=" +
                            std::string(data, static_cast<std::size_t>(size - 1)));
        return 1;
    }
    int OnDisconnect() override {
        m_Ended = true;
        return 0;
    }

    static constexpr int kRoom = 8 << 20;
    std::vector<std::string> m_Advised;
    bool m_Ended = false;
};

class RecordingClient : public CDDEClient {
public:
    CDDEConnection* OnMakeConnection() override { return new Recorder; }
};

class ConversationTest : public testing::Test {
protected:
    void SetUp() override {
        DDEInitialize(false);
        m_Client = std::make_unique<RecordingClient>();
    }
    // The thread's objects go before its DDE ends.
    void TearDown() override {
        m_Client.reset();
        DDECleanUp();
    }

    Recorder* Connect(const std::string& service, const std::string& topic) {
        return static_cast<Recorder*>(m_Client->MakeConnection("", service.c_str(), topic.c_str()));
    }

    std::unique_ptr<RecordingClient> m_Client;
};

TEST_F(ConversationTest, TransactionsAndTheirResults) {
    Peer peer("Compta", "Dossier");
    ASSERT_TRUE(peer.Ready());
    Recorder* connection = Connect("Compta", "Dossier");
    ASSERT_NE(connection, nullptr);
    EXPECT_EQ(peer.NextLine(), "connect Dossier");
    EXPECT_EQ(connection->m_Topic, "Dossier");

    // A command goes with its terminator.
    EXPECT_EQ(connection->Execute("ab"), 1);
    EXPECT_EQ(peer.NextLine(), "execute 3 ab");
    EXPECT_EQ(connection->Execute("refuse"), 0);
    EXPECT_EQ(nvk::dde::LastError(), DMLERR_NOTPROCESSED);
    peer.NextLine();

    int size = -7;
    const char* data = connection->Request("text", &size, CF_TEXT);
    ASSERT_NE(data, nullptr);
    EXPECT_EQ(size, 7);
    EXPECT_STREQ(data, "valeur");
    EXPECT_EQ(peer.NextLine(), "request text");
    EXPECT_NE(connection->Request("empty", &size, CF_TEXT), nullptr);
    EXPECT_EQ(size, 1);
    EXPECT_EQ(connection->Request("unknown", &size, CF_TEXT), nullptr);
    EXPECT_EQ(size, 0);

    // A poke is acknowledged though the server's OnPoke says 0.
    char value[] = "12,50";
    EXPECT_EQ(connection->Poke("Cours", value, -1, CF_TEXT), 1);
    peer.NextLine();
    peer.NextLine();
    EXPECT_EQ(peer.NextLine(), "poke Cours 6 12,50");

    // Megabytes both ways.
    size = 0;
    data = connection->Request("big:5000000", &size, CF_TEXT);
    ASSERT_NE(data, nullptr);
    EXPECT_EQ(size, 5000001);
    EXPECT_EQ(std::string(data, 3), "xxx");
    std::string big(3000000, 'y');
    EXPECT_EQ(connection->Execute(big.data(), -1, CF_TEXT), 1);
    peer.NextLine();
    EXPECT_EQ(peer.NextLine(), "execute 3000001 ...");

    // A default connection has no room: nothing comes, size 0.
    CDDEConnection bare;
    bare.m_hConv = connection->m_hConv;
    size = -1;
    EXPECT_EQ(bare.Request("text", &size, CF_TEXT), nullptr);
    EXPECT_EQ(size, 0);

    connection->Disconnect();
    delete connection;
    EXPECT_EQ(peer.NextTransaction(), "request text");
    EXPECT_EQ(peer.NextLine(), "disconnect");
}

// Two bytes, a character and its terminator, which could pass for one
// UTF-16 character: the server still gets them as they were sent.
TEST_F(ConversationTest, OneCharacterGoesWithItsTerminator) {
    Peer peer("Compta", "Dossier");
    ASSERT_TRUE(peer.Ready());
    Recorder* connection = Connect("Compta", "Dossier");
    ASSERT_NE(connection, nullptr);
    EXPECT_EQ(connection->Execute("a"), 1);
    EXPECT_EQ(peer.NextTransaction(), "execute 2 a");
}

TEST_F(ConversationTest, AdviseLoop) {
    Peer peer("Compta", "Dossier");
    ASSERT_TRUE(peer.Ready());
    Recorder* connection = Connect("compta", "Dossier");
    ASSERT_NE(connection, nullptr);

    EXPECT_EQ(connection->StartAdvise("refused"), 0);  // the default OnStartAdvise
    EXPECT_EQ(connection->StartAdvise("Cours"), 1);
    // The peer advises when told to (the execute's own answer is the next test's).
    connection->Execute("advise Cours 12");
    EXPECT_TRUE(PumpUntil([&] { return !connection->m_Advised.empty(); }));
    // The server gives the data as it posts the advise, so a second value
    // posted at once replaces nothing: the client gets both.
    connection->Execute("advise Cours 13 14");
    EXPECT_TRUE(PumpUntil([&] { return connection->m_Advised.size() >= 3; }));
    PumpUntil([] { return false; }, 200);
    EXPECT_EQ(
        connection->m_Advised,
        (std::vector<std::string>{"Dossier/Cours=12", "Dossier/Cours=13", "Dossier/Cours=14"}));

    EXPECT_EQ(connection->StopAdvise("Cours"), 1);
    EXPECT_EQ(connection->StopAdvise("Cours"), 0);
    connection->Execute("advise Cours 15");
    PumpUntil([] { return false; }, 200);
    EXPECT_EQ(connection->m_Advised.size(), 3u);
}

TEST_F(ConversationTest, AnExecuteThatAdvisesIsAcknowledged) {
    Peer peer("Compta", "Dossier");
    ASSERT_TRUE(peer.Ready());
    Recorder* connection = Connect("Compta", "Dossier");
    ASSERT_NE(connection, nullptr);
    EXPECT_EQ(connection->StartAdvise("Cours"), 1);
    EXPECT_EQ(connection->Execute("advise Cours 12"), 1);
}

TEST_F(ConversationTest, TheServerEndsTheConversation) {
    Peer peer("Compta", "Dossier");
    ASSERT_TRUE(peer.Ready());
    Recorder* connection = Connect("Compta", "Dossier");
    ASSERT_NE(connection, nullptr);
    EXPECT_EQ(connection->Execute("disconnect"), 1);
    EXPECT_TRUE(PumpUntil([&] { return connection->m_Ended; }));
    EXPECT_EQ(connection->Execute("ab"), 0);
    delete connection;
    // The service goes on.
    EXPECT_NE(Connect("Compta", "Dossier"), nullptr);
}

TEST_F(ConversationTest, EndsTimeOutsAndDeadServers) {
    Peer peer("Compta", "Dossier");
    ASSERT_TRUE(peer.Ready());
    EXPECT_EQ(Connect("Compta", "Autre"), nullptr);
    EXPECT_EQ(Connect("Personne", "Dossier"), nullptr);
    EXPECT_EQ(nvk::dde::LastError(), DMLERR_NO_CONV_ESTABLISHED);

    // A slow answer runs out of time; the conversation goes on.
    Recorder* connection = Connect("Compta", "Dossier");
    ASSERT_NE(connection, nullptr);
    connection->SetTimeout(200);
    const auto start = std::chrono::steady_clock::now();
    int size = 0;
    EXPECT_EQ(connection->Request("slow:1500", &size, CF_TEXT), nullptr);
    EXPECT_LT(std::chrono::steady_clock::now() - start, std::chrono::milliseconds(1200));
    EXPECT_EQ(nvk::dde::LastError(), DMLERR_DATAACKTIMEOUT);
    connection->SetTimeout(5000);
    EXPECT_NE(connection->Request("text", &size, CF_TEXT), nullptr);

    // The server dies in the middle of a transaction.
    EXPECT_EQ(connection->Execute("crash"), 0);
    EXPECT_EQ(nvk::dde::LastError(), DMLERR_SERVER_DIED);
    EXPECT_TRUE(PumpUntil([&] { return connection->m_Ended; }));
    EXPECT_EQ(connection->Request("text", &size, CF_TEXT), nullptr);
    EXPECT_EQ(Connect("Compta", "Dossier"), nullptr);
}

TEST_F(ConversationTest, NamesOfAnyBytes) {
    // Bytes beyond ASCII, punctuation, and a service whose escaped bus name
    // would pass the bus's length.
    const std::string service = "Soci\xE9t\xE9 _.-" + std::string(80, '\xFF');
    const std::string topic = "Exercice 2024/\xC9t\xE9";
    Peer peer(service, topic);
    ASSERT_TRUE(peer.Ready());
    Recorder* connection = Connect(service, topic);
    ASSERT_NE(connection, nullptr);
    EXPECT_EQ(peer.NextLine(), "connect " + topic);
    int size = 0;
    EXPECT_EQ(connection->Request("\xA4\x80 ", &size, CF_TEXT), nullptr);
    EXPECT_EQ(peer.NextLine(), "request \xA4\x80 ");
}

int g_boxes = 0;
std::string g_box;
int RecordBox(HWND owner, LPCSTR text, LPCSTR caption, UINT type) {
    ++g_boxes;
    g_box = std::string(caption) + "|" + text + "|" + std::to_string(type) +
            (owner == nullptr ? "" : "|owned");
    return 1;
}

TEST(DDEErrorTest, AClientOnlyThreadCannotServe) {
    DDEInitialize(true);  // a client only can't serve
    const MessageBoxHook previous = SetMessageBoxHook(RecordBox);
    {
        CDDEServer server;
        EXPECT_EQ(server.Create("Compta"), 0);
        EXPECT_EQ(g_box,
                  "DDE Error|An application initialized as APPCLASS_MONITOR has\n\rattempted to "
                  "perform a DDE transaction,\n\ror an application initialized as "
                  "APPCMD_CLIENTONLY has \n\rattempted to perform server transactions.|64");
    }
    SetMessageBoxHook(previous);
    DDECleanUp();
    EXPECT_EQ(g_boxes, 2);  // the destructor's unregistering fails too
}

TEST(DDEErrorTest, TheErrorTexts) {
    EXPECT_EQ(nvk::dde::ErrorText(DMLERR_NOTPROCESSED), "A transaction failed.");
    EXPECT_EQ(nvk::dde::ErrorText(DMLERR_NO_CONV_ESTABLISHED),
              "A client's attempt to establish a conversation has failed.");
    EXPECT_EQ(nvk::dde::ErrorText(DMLERR_UNFOUND_QUEUE_ID).Left(14), "An invalid tra");
    EXPECT_EQ(nvk::dde::ErrorText(0x4012), "Unrecognised error type.");
    EXPECT_EQ(nvk::dde::ErrorText(0), "Unrecognised error type.");
}

}  // namespace
