#include "platform/qt/QtNamedServices.h"

#include "platform/OrreryError.h"
#include "platform/Utf8.h"

#include <QCoreApplication>
#include <QDBusConnection>
#include <QDBusError>
#include <QDBusMessage>
#include <QDBusPendingCallWatcher>
#include <QDBusPendingReply>
#include <QStringList>
#include <utility>

namespace orrery {
namespace {

constexpr int busAnswerMs = 2000; // the bus is on this machine and always there to answer

/// A connection of this name that is in order, made anew when the bus went away.
QDBusConnection connectedBus(const QString& connectionName) {
    QDBusConnection known(connectionName);
    if (known.isConnected()) return known;
    QDBusConnection::disconnectFromBus(connectionName);
    return QDBusConnection::connectToBus(QDBusConnection::SessionBus, connectionName);
}

bool hasOwner(const QDBusConnection& bus, const QString& busName) {
    QDBusMessage question = QDBusMessage::createMethodCall("org.freedesktop.DBus", "/org/freedesktop/DBus",
                                                           "org.freedesktop.DBus", "NameHasOwner");
    question << busName;
    const QDBusMessage answer = bus.call(question, QDBus::Block, busAnswerMs);
    return answer.type() == QDBusMessage::ReplyMessage && answer.arguments().value(0).toBool();
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
        return "It does not know the call importWaves. Its version may not fit.";
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
std::string newConnectionName() {
    static int count = 0;
    return "orrery-services-" + std::to_string(++count);
}

} // namespace

QtNamedServices::QtNamedServices(std::chrono::milliseconds timeout)
    : m_timeout(timeout), m_connectionName(newConnectionName()) {}

QtNamedServices::~QtNamedServices() {
    QDBusConnection::disconnectFromBus(QString::fromStdString(m_connectionName));
}

std::shared_ptr<RemoteObject> QtNamedServices::rootProxy(const std::string& registeredName) {
    const QDBusConnection bus = connectedBus(QString::fromStdString(m_connectionName));
    const QString busName = QString::fromStdString(registeredName).replace(' ', '.');
    if (!bus.isConnected() || !hasOwner(bus, busName)) return nullptr;
    return std::make_shared<BusObject>(bus, busName, m_timeout);
}

} // namespace orrery
