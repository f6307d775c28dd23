#include "platform/qt/QtNamedServices.h"

#include "platform/values/OrreryError.h"
#include "platform/values/Utf8.h"

#include <QCoreApplication>
#include <QDBusConnection>
#include <QDBusError>
#include <QDBusMessage>
#include <QDBusPendingCallWatcher>
#include <QDBusPendingReply>
#include <QStringList>
#include <QTimer>
#include <functional>
#include <thread>
#include <utility>

namespace orrery {
namespace {

constexpr auto busAnswerTime = std::chrono::seconds(2); // the bus is on this machine and always there to answer

void askForOwner(const QDBusConnection& bus, const QString& busName, const std::function<void(bool)>& answered) {
    QDBusMessage question = QDBusMessage::createMethodCall("org.freedesktop.DBus", "/org/freedesktop/DBus",
                                                           "org.freedesktop.DBus", "NameHasOwner");
    question << busName;
    auto* watcher = new QDBusPendingCallWatcher(bus.asyncCall(question), QCoreApplication::instance());
    QObject::connect(watcher, &QDBusPendingCallWatcher::finished, watcher,
                     [bus, answered](QDBusPendingCallWatcher* self) {
                         self->deleteLater();
                         const QDBusPendingReply<bool> reply = *self;
                         answered(!reply.isError() && reply.value());
                     });
}

/// D-Bus carries UTF-8 without NUL only; anything else would arrive as another path, or not at all.
QString sendablePath(const std::string& path) {
    QString text = QString::fromUtf8(path.data(), static_cast<qsizetype>(path.size()));
    if (text.toStdString() == path && !text.contains(QChar(u'\0'))) return text;
    throw OrreryError("This path cannot be sent to another program, because it is not valid UTF-8 text.", {path},
                      "Rename the file or the directory. Nothing was sent.");
}

std::string seconds(std::chrono::milliseconds time) {
    return time.count() % 1000 == 0 ? std::to_string(time.count() / 1000) + " s" : std::to_string(time.count()) + " ms";
}

std::string failureText(const QDBusError& error, std::chrono::milliseconds timeout, bool timeIsUp) {
    switch (error.type()) {
    case QDBusError::NoReply:
    case QDBusError::Timeout:
    case QDBusError::TimedOut:
        return timeIsUp ? "There was no answer within " + seconds(timeout) + "." : "It ended before it answered.";
    case QDBusError::ServiceUnknown:
        return "It is not running any more.";
    case QDBusError::Disconnected:
        return "The connection to the session bus was lost.";
    case QDBusError::UnknownMethod:
    case QDBusError::UnknownObject:
    case QDBusError::UnknownInterface:
    case QDBusError::InvalidSignature:
        return "It does not know the call importWaves. It may be the wrong version.";
    default:
        if (error.name() == "org.freedesktop.DBus.Error.NameHasNoOwner") return "It is not running any more.";
        return escapedForLine(error.name().toStdString() + ": " + error.message().toStdString());
    }
}

class BusObject : public RemoteObject {
public:
    BusObject(QDBusConnection bus, QString busName, std::chrono::milliseconds timeout)
        : m_bus(std::move(bus)), m_busName(std::move(busName)), m_timeout(timeout) {}

    void importWaves(const std::vector<std::string>& paths, std::function<void(std::string_view)> done) override {
        QStringList texts;
        for (const std::string& path : paths)
            texts << sendablePath(path);
        QDBusMessage message = QDBusMessage::createMethodCall(m_busName, '/' + QString(m_busName).replace('.', '/'),
                                                              m_busName, "importWaves");
        message.setAutoStartService(false);
        message << texts;
        send(message, std::move(done));
    }

private:
    /// The watcher belongs to the application, and holds the connection: neither this object nor the services need to
    /// live until the answer.
    void send(const QDBusMessage& message, std::function<void(std::string_view)> done) const {
        const auto sent = std::chrono::steady_clock::now();
        const QDBusPendingCall call = m_bus.asyncCall(message, static_cast<int>(m_timeout.count()));
        auto* watcher = new QDBusPendingCallWatcher(call, QCoreApplication::instance());
        QObject::connect(
            watcher, &QDBusPendingCallWatcher::finished, watcher,
            [bus = m_bus, sent, timeout = m_timeout, done = std::move(done)](QDBusPendingCallWatcher* self) noexcept {
                self->deleteLater();
                const bool timeIsUp = std::chrono::steady_clock::now() - sent >= timeout * 9 / 10; // rough timers
                done(self->isError() ? failureText(self->error(), timeout, timeIsUp) : std::string());
            });
    }

    QDBusConnection m_bus;
    QString m_busName;
    std::chrono::milliseconds m_timeout;
};

/// Not the connection that Qt shares: that one stays dead once the bus went away.
QString newConnectionName() {
    static int count = 0;
    return "orrery-services-" + QString::number(++count);
}

/// Calls once: with what came first, an answer or the end of the time.
template <class Answer>
std::function<void(Answer)> onceWithin(std::chrono::milliseconds time, std::function<void(Answer)> call) {
    auto waiting = std::make_shared<std::function<void(Answer)>>(std::move(call));
    const auto answer = [waiting](Answer with) {
        if (const auto then = std::exchange(*waiting, {})) then(std::move(with));
    };
    QTimer::singleShot(time, QCoreApplication::instance(), [answer] { answer(Answer()); });
    return answer;
}

} // namespace

/// The session bus. To connect to it waits for it, which is another thread's business.
class QtNamedServices::Bus : public std::enable_shared_from_this<Bus> {
public:
    using Connected = std::function<void(const QDBusConnection&)>;

    Bus() = default;
    Bus(const Bus&) = delete;
    Bus& operator=(const Bus&) = delete;
    ~Bus() { QDBusConnection::disconnectFromBus(m_name); }

    /// Calls later with a connection that is in order, or with one that is not when there is no bus.
    void connect(Connected connected) {
        m_waiting.push_back(std::move(connected));
        if (m_waiting.size() > 1) return;
        if (QDBusConnection known(m_name); known.isConnected()) {
            post(shared_from_this(), known);
        } else {
            QDBusConnection::disconnectFromBus(m_name);
            std::thread([self = shared_from_this()] {
                post(self, QDBusConnection::connectToBus(QDBusConnection::SessionBus, self->m_name));
            }).detach();
        }
    }

private:
    static void post(const std::shared_ptr<Bus>& self, const QDBusConnection& connection) {
        QObject* application = QCoreApplication::instance();
        if (application == nullptr) return;
        const auto answer = [self, connection] {
            for (const Connected& connected : std::exchange(self->m_waiting, {})) {
                connected(connection);
            }
        };
        QMetaObject::invokeMethod(application, answer, Qt::QueuedConnection);
    }

    const QString m_name = newConnectionName();
    std::vector<Connected> m_waiting;
};

QtNamedServices::QtNamedServices(std::chrono::milliseconds timeout)
    : m_timeout(timeout), m_bus(std::make_shared<Bus>()) {}

QtNamedServices::~QtNamedServices() = default;

void QtNamedServices::findRootProxy(const std::string& registeredName, Found found) {
    const QString busName = QString::fromStdString(registeredName).replace(' ', '.');
    const Found answer = onceWithin(busAnswerTime, std::move(found));
    m_bus->connect([busName, answer, timeout = m_timeout](const QDBusConnection& bus) {
        if (!bus.isConnected()) return answer(nullptr);
        askForOwner(bus, busName, [bus, busName, answer, timeout](bool hasOwner) {
            answer(hasOwner ? std::make_shared<BusObject>(bus, busName, timeout) : nullptr);
        });
    });
}

} // namespace orrery
