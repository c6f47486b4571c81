// Instances of one process: two threads conversing, and one thread talking
// to its own service, which it serves while its transaction waits.
#include <gtest/gtest.h>

#include <atomic>
#include <string>
#include <thread>

#include "dde_test_support.h"
#include "nvk/platform/dde_object.h"
#include "nvk/platform/dde_thread.h"
#include "os/api/dde.h"

namespace {

using nvk::dde::test::PumpUntil;

// Logs what it executes in its server's log (it goes when its client
// leaves), and answers requests with the item's name reversed.
class Counter : public CDDEConnection {
public:
    explicit Counter(std::string& log) : CDDEConnection(m_Room, sizeof m_Room), m_Executed(log) {
        SetTimeout(5000);
    }
    int OnExecute(const CString&, char* data, int size, int) override {
        m_Executed += std::string(data, static_cast<std::size_t>(size > 0 ? size - 1 : 0)) + ";";
        return 1;
    }
    char* OnRequest(const CString&, const CString& item, int*, int) override {
        m_Answer = item;
        m_Answer.MakeReverse();
        return m_Answer.GetBuffer();
    }

    char m_Room[256] = {};
    CString m_Answer;
    std::string& m_Executed;
};

class CountingServer : public CDDEServer {
public:
    CDDEConnection* OnAcceptConnection(const CString&) override {
        m_Last = new Counter(m_Executed);
        return m_Last;
    }
    Counter* m_Last = nullptr;
    std::string m_Executed;
};

class Asker : public CDDEConnection {
public:
    Asker() : CDDEConnection(m_Room, sizeof m_Room) { SetTimeout(5000); }
    char m_Room[256] = {};
};

class AskingClient : public CDDEClient {
public:
    CDDEConnection* OnMakeConnection() override { return new Asker; }
};

TEST(DDEThreadsTest, TwoThreadsEachWithAnInstance) {
    std::atomic<bool> serving{false};
    std::atomic<bool> done{false};
    std::string executed;
    std::thread server([&] {
        DDEInitialize(false);
        {
            CountingServer service;
            EXPECT_EQ(service.Create("Fil"), 1);
            serving = true;
            PumpUntil([&] { return done.load(); }, 20000);
            executed = service.m_Executed;
        }
        DDECleanUp();
    });
    std::thread client([&] {
        // Both threads start DDE at once: their entries of the map meet.
        DDEInitialize(true);
        while (!serving) {
            std::this_thread::yield();
        }
        {
            AskingClient asking;
            CDDEConnection* connection = asking.MakeConnection("", "Fil", "Sujet");
            ASSERT_NE(connection, nullptr);
            for (int i = 0; i < 20; ++i) {
                const std::string item = "item" + std::to_string(i);
                int size = 0;
                const char* answer = connection->Request(item.c_str(), &size, nvk::os::CF_TEXT);
                ASSERT_NE(answer, nullptr);
                EXPECT_EQ(std::string(answer), std::string(item.rbegin(), item.rend()));
                EXPECT_EQ(connection->Execute(("n" + std::to_string(i)).c_str()), 1);
            }
        }
        DDECleanUp();
        done = true;
    });
    client.join();
    server.join();
    EXPECT_EQ(executed, "n0;n1;n2;n3;n4;n5;n6;n7;n8;n9;n10;n11;n12;n13;n14;n15;n16;n17;n18;n19;");
}

TEST(DDEThreadsTest, AThreadTalksToItsOwnService) {
    DDEInitialize(false);
    const std::uint32_t instance = nvk::dde::ThreadData()->idInst;
    DDEInitialize(false);  // once is enough
    EXPECT_EQ(nvk::dde::ThreadData()->idInst, instance);
    {
        CountingServer service;
        ASSERT_EQ(service.Create("Soi"), 1);
        AskingClient asking;
        CDDEConnection* connection = asking.MakeConnection("", "Soi", "Sujet");
        ASSERT_NE(connection, nullptr);
        ASSERT_NE(service.m_Last, nullptr);
        EXPECT_NE(service.m_Last->m_hConv, nullptr);
        EXPECT_NE(service.m_Last->m_hConv, connection->m_hConv);
        int size = 0;
        EXPECT_STREQ(connection->Request("abc", &size, nvk::os::CF_TEXT), "cba");
        EXPECT_EQ(connection->Execute("xy"), 1);
        EXPECT_EQ(service.m_Executed, "xy;");

        // The client leaves; the server hears of it when the thread pumps.
        connection->Disconnect();
        delete connection;
        EXPECT_TRUE(PumpUntil([&] { return service.m_Connections.IsEmpty(); }));
    }
    DDECleanUp();
}

}  // namespace
