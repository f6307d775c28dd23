#include "platform/qt/QtNamedServices.h"
#include "platform/values/OrreryError.h"
#include "support/SessionBus.h"

#include <gmock/gmock.h>

#include <QCoreApplication>
#include <QDBusConnection>
#include <QDBusMessage>
#include <QDBusVirtualObject>
#include <QProcess>
#include <QTest>
#include <QTimer>
#include <chrono>
#include <functional>
#include <optional>

namespace orrery {
namespace {

using namespace std::chrono_literals;
using testing::ElementsAre;
using testing::HasSubstr;

constexpr auto companion = "Dorado Server";

/// The sample receiver as a child.
class Receiver : public QProcess {
public:
    explicit Receiver(const QStringList& arguments = {}) { start(ORRERY_BIN "/dorado-receiver", arguments); }
    ~Receiver() override {
        kill();
        waitForFinished();
    }
};

/// A companion inside the test: keeps what it gets, and never answers or leaves the bus instead of an answer.
class Peer : public QDBusVirtualObject {
public:
    enum class Manner { Silent, Leaves };

    explicit Peer(Manner manner) : m_manner(manner) {
        QDBusConnection bus = QDBusConnection::connectToBus(QDBusConnection::SessionBus, "peer");
        bus.registerVirtualObject("/", this, QDBusConnection::SubPath);
        EXPECT_TRUE(bus.registerService("Dorado.Server"));
    }
    ~Peer() override { leave(); }

    static void leave() { QDBusConnection::disconnectFromBus("peer"); }
    bool handleMessage(const QDBusMessage& message, const QDBusConnection&) override {
        received << message.arguments().value(0).toStringList();
        if (m_manner == Manner::Leaves) QMetaObject::invokeMethod(this, &Peer::leave, Qt::QueuedConnection);
        return true;
    }
    [[nodiscard]] QString introspect(const QString&) const override { return {}; }

    QList<QStringList> received;

private:
    Manner m_manner;
};

class NamedServicesTest : public testing::Test {
protected:
    // One for all, because the bus library reads the address once.
    static void SetUpTestSuite() { bus = std::make_unique<test::SessionBus>(); }
    static void TearDownTestSuite() { bus.reset(); }

    static void waitFor(const std::function<bool()>& holds) { EXPECT_TRUE(QTest::qWaitFor(holds, 20'000)); }
    static std::shared_ptr<RemoteObject> find(NamedServices& services, const std::string& name = companion) {
        std::optional<std::shared_ptr<RemoteObject>> proxy;
        services.findRootProxy(name, [&proxy](std::shared_ptr<RemoteObject> found) { proxy = std::move(found); });
        EXPECT_FALSE(proxy) << "answered before the call returned";
        waitFor([&proxy] { return proxy.has_value(); });
        return *proxy;
    }
    static std::shared_ptr<RemoteObject> proxyOnceThere(NamedServices& services) {
        std::shared_ptr<RemoteObject> proxy;
        while ((proxy = find(services)) == nullptr) {
        }
        return proxy;
    }
    /// What `done` was told.
    std::string answerTo(RemoteObject& proxy, const std::vector<std::string>& paths) {
        std::optional<std::string> answer;
        proxy.importWaves(paths, [&answer](std::string_view failure) { answer = failure; });
        EXPECT_FALSE(answer) << "answered before the call returned";
        waitFor([&answer] { return answer.has_value(); });
        return *answer;
    }

    static int exitCode(const Receiver& receiver) {
        waitFor([&receiver] { return receiver.state() == QProcess::NotRunning; });
        return receiver.exitCode();
    }

    static inline std::unique_ptr<test::SessionBus> bus;
    int m_argumentCount = 1;
    char m_name[5] = "test";
    char* m_arguments[2] = {m_name, nullptr};
    QCoreApplication m_application{m_argumentCount, m_arguments};
};

TEST_F(NamedServicesTest, TheOneReceiverGetsThePathsInOrder) {
    Receiver receiver({"--once"});
    QtNamedServices services;
    const auto proxy = proxyOnceThere(services);
    Receiver second;
    EXPECT_EQ(exitCode(second), 1);
    EXPECT_THAT(second.readAllStandardError().toStdString(), HasSubstr("Another program has the name Dorado.Server."));
    EXPECT_EQ(answerTo(*proxy, {"/z/Zephyr.txt", "/a b/größe.txt", "", "/z/Zephyr.txt"}), "");
    EXPECT_EQ(exitCode(receiver), 0);
    EXPECT_EQ(receiver.readAllStandardOutput().toStdString(), "/z/Zephyr.txt\n/a b/größe.txt\n\n/z/Zephyr.txt\n");
}

TEST_F(NamedServicesTest, NobodyThereIsNoProxy) {
    QtNamedServices services;
    for (const char* name : {companion, "no dot", "Dorado", ""}) // the last two are no valid bus names
        EXPECT_EQ(find(services, name), nullptr) << name;
}

TEST_F(NamedServicesTest, NoBusIsNoProxy) {
    testing::FLAGS_gtest_death_test_style = "threadsafe"; // a process of its own, which has not seen the bus
    const auto askWithoutBus = [] {
        ::setenv("DBUS_SESSION_BUS_ADDRESS", "disabled:", 1);
        Receiver receiver;
        const bool receiverFails = exitCode(receiver) == 1;
        std::fputs(receiver.readAllStandardError().constData(), stderr);
        QtNamedServices services;
        std::exit(find(services) == nullptr && receiverFails ? 0 : 1);
    };
    EXPECT_EXIT(askWithoutBus(), testing::ExitedWithCode(0), "There is no session bus");
}

TEST_F(NamedServicesTest, BusThatCameBackIsFound) {
    QtNamedServices services;
    {
        const Peer peer(Peer::Manner::Silent);
        const auto proxy = find(services);
        bus->stop();
        EXPECT_NE(answerTo(*proxy, {"/good"}), "");
        EXPECT_EQ(find(services), nullptr);
    }
    bus->start();
    const Peer peer(Peer::Manner::Silent);
    EXPECT_NE(find(services), nullptr);
}

TEST_F(NamedServicesTest, BusThatHangsKeepsNobodyWaiting) {
    QtNamedServices connected;
    EXPECT_EQ(find(connected), nullptr);
    QtNamedServices fresh; // which has yet to connect
    bus->signal(SIGSTOP);
    for (QtNamedServices* services : {&connected, &fresh}) {
        int ticks = 0;
        QTimer timer;
        QObject::connect(&timer, &QTimer::timeout, [&ticks] { ++ticks; });
        timer.start(10ms);
        EXPECT_EQ(find(*services), nullptr);
        EXPECT_GT(ticks, 1) << "the application stood still";
    }
    bus->signal(SIGCONT);
}

TEST_F(NamedServicesTest, PathThatTheBusCannotCarryIsNamedAndNothingIsSent) {
    Peer peer(Peer::Manner::Leaves);
    QtNamedServices services;
    const auto proxy = find(services);
    for (const std::string& path :
         {std::string("/caf\xe9"), std::string("/a\0b", 4), std::string("\xef\xbb\xbf/bom")}) {
        try {
            proxy->importWaves({"/good", path}, [](std::string_view) { ADD_FAILURE() << "answered"; });
            ADD_FAILURE() << "sent";
        } catch (const OrreryError& error) {
            EXPECT_EQ(error.place().file, path);
        }
    }
    answerTo(*proxy, {"/good"});
    EXPECT_THAT(peer.received, ElementsAre(QStringList("/good")));
}

TEST_F(NamedServicesTest, SilentCompanionIsToldAfterTheTimeout) {
    Peer peer(Peer::Manner::Silent);
    QtNamedServices services(150ms);
    EXPECT_EQ(answerTo(*find(services), {"/good"}), "There was no answer within 150 ms.");
    EXPECT_EQ(peer.received.size(), 1);
}

TEST_F(NamedServicesTest, CompanionThatGoesAwayIsToldAtOnce) {
    Peer peer(Peer::Manner::Leaves);
    QtNamedServices services;
    const auto proxy = find(services);
    EXPECT_EQ(answerTo(*proxy, {"/good"}), "It ended before it answered.");
    EXPECT_EQ(answerTo(*proxy, {"/good"}), "It is not running any more.");
    EXPECT_EQ(find(services), nullptr);
}

TEST_F(NamedServicesTest, CompanionWithoutTheCallIsTold) {
    QDBusConnection bare = QDBusConnection::connectToBus(QDBusConnection::SessionBus, "bare");
    ASSERT_TRUE(bare.registerService("Dorado.Server"));
    QtNamedServices services;
    EXPECT_THAT(answerTo(*find(services), {"/good"}), HasSubstr("does not know the call importWaves"));
    QDBusConnection::disconnectFromBus("bare");
}

TEST_F(NamedServicesTest, CallOutlivesProxyAndServices) {
    Peer peer(Peer::Manner::Leaves);
    std::optional<std::string> answer;
    {
        QtNamedServices services;
        find(services)->importWaves({"/good"}, [&](std::string_view text) { answer = text; });
    }
    waitFor([&answer] { return answer.has_value(); });
    EXPECT_THAT(peer.received, ElementsAre(QStringList("/good")));
}

} // namespace
} // namespace orrery
