#include "app/SingleInstance.h"

#include "platform/TemporaryDirectory.h"
#include "platform/qt/QtText.h"
#include "platform/values/OrreryError.h"

#include <sys/stat.h>
#include <unistd.h>

#include <QCryptographicHash>
#include <QLocalServer>
#include <QLocalSocket>
#include <QLockFile>
#include <QTimer>
#include <utility>

namespace orrery {

namespace {

constexpr const char* greeting = "orrery 1\n";
constexpr int patienceMs = 2000;           // for a program that may hang
constexpr qint64 longestMessage = 1 << 20; // bytes
constexpr std::size_t longestSocketPath = 100;

/// One program per display: a window that opened on another one would not be seen.
QString socketPath() {
    const QByteArray display = qgetenv("WAYLAND_DISPLAY") + ' ' + qgetenv("DISPLAY");
    const QByteArray name = QCryptographicHash::hash(display, QCryptographicHash::Sha1).toHex().left(12);
    try {
        const std::string path = privateDirectory() + "instance-" + name.toStdString();
        return path.size() > longestSocketPath ? QString() : qtPath(path);
    } catch (const OrreryError&) {
        return {}; // whoever needs such a directory for more says so
    }
}

/// Reads until the text is complete, which `isComplete` says, or the time is up.
template <typename Complete>
QByteArray readFor(QLocalSocket& socket, Complete isComplete) {
    QByteArray text = socket.readAll();
    while (!isComplete(text) && socket.waitForReadyRead(patienceMs)) {
        text += socket.readAll();
    }
    return text;
}

QByteArray message(const std::vector<std::string>& files) {
    QByteArray text;
    for (const std::string& file : files) {
        text += QByteArray::fromStdString(file) + '\0';
    }
    return text + '\0'; // the empty path is the end
}

bool isWhole(const QByteArray& message) {
    return message == QByteArray(1, '\0') || message.endsWith(QByteArray(2, '\0'));
}

std::vector<std::string> filesOf(const QByteArray& message) {
    std::vector<std::string> files;
    for (const QByteArray& path : message.split('\0')) {
        if (path.startsWith('/')) files.push_back(path.toStdString());
    }
    return files;
}

/// Takes one message from a later start, which ends the connection, or gives up on it.
void receive(QLocalSocket* socket, const std::function<void(const std::vector<std::string>&)>& opened) {
    auto* patience = new QTimer(socket);
    QObject::connect(patience, &QTimer::timeout, socket, &QLocalSocket::abort);
    patience->start(patienceMs);
    QObject::connect(socket, &QLocalSocket::disconnected, socket, &QObject::deleteLater);
    QObject::connect(socket, &QLocalSocket::readyRead, socket, [socket, opened] {
        if (socket->bytesAvailable() > longestMessage) {
            socket->abort();
            return;
        }
        if (!isWhole(socket->peek(longestMessage))) return;
        const QByteArray text = socket->readAll();
        socket->write("taken\n");
        socket->disconnectFromServer(); // when that is written
        opened(filesOf(text));
    });
}

} // namespace

SingleInstance::SingleInstance(std::function<void(const std::vector<std::string>&)> opened)
    : m_opened(std::move(opened)), m_path(socketPath()), m_server(std::make_unique<QLocalServer>()) {
    m_server->setSocketOptions(QLocalServer::UserAccessOption);
    connect(m_server.get(), &QLocalServer::newConnection, this, &SingleInstance::greet);
}

SingleInstance::~SingleInstance() = default;

bool SingleInstance::handOver(const std::vector<std::string>& files) {
    if (m_path.isEmpty()) return false;
    Answer answer = ask(files);
    if (answer == Answer::NobodyThere) {
        QLockFile lock(m_path + ".lock"); // of two starts at the same time one becomes the first
        if (!lock.tryLock(patienceMs)) return false;
        answer = ask(files);
        if (answer == Answer::NobodyThere) listen();
    }
    return answer == Answer::Taken;
}

SingleInstance::Answer SingleInstance::ask(const std::vector<std::string>& files) const {
    QLocalSocket socket;
    socket.connectToServer(m_path);
    if (!socket.waitForConnected(patienceMs)) {
        return socket.error() == QLocalSocket::SocketTimeoutError ? Answer::Hangs : Answer::NobodyThere;
    }
    const auto isLine = [](const QByteArray& text) { return text.endsWith('\n'); };
    if (readFor(socket, isLine) != greeting) return Answer::Hangs;
    socket.write(message(files));
    return readFor(socket, isLine) == "taken\n" ? Answer::Taken : Answer::Hangs;
}

/// A socket that nobody answers at is a killed program's.
void SingleInstance::listen() {
    struct stat status {};
    if (lstat(QFile::encodeName(m_path).constData(), &status) == 0) {
        if (!S_ISSOCK(status.st_mode) || status.st_uid != getuid()) return;
        QLocalServer::removeServer(m_path);
    }
    m_server->listen(m_path); // without it every start is a program of its own
}

void SingleInstance::greet() {
    while (QLocalSocket* socket = m_server->nextPendingConnection()) {
        receive(socket, m_opened);
        socket->write(greeting);
    }
}

} // namespace orrery
