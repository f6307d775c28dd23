/// The other side of "Send To Dorado" at its smallest: prints every path that it is sent on a line of its own.

#include <QCoreApplication>
#include <QDBusConnection>
#include <QDBusError>
#include <QStringList>
#include <cstdio>
#include <cstring>

namespace {

class Receiver : public QObject {
    Q_OBJECT
    Q_CLASSINFO("D-Bus Interface", "Dorado.Server")

public:
    explicit Receiver(bool once) : m_once(once) {}

public slots:
    Q_SCRIPTABLE void importWaves(const QStringList& paths) {
        for (const QString& path : paths)
            std::puts(path.toUtf8().constData());
        std::fflush(stdout);
        // From the loop, because the answer is sent after this call returns.
        if (m_once) QMetaObject::invokeMethod(qApp, "quit", Qt::QueuedConnection);
    }

    static void busIsGone() {
        std::fputs("dorado-receiver: The session bus has ended.\n", stderr);
        QCoreApplication::exit(1);
    }

private:
    bool m_once;
};

int fail(const QString& problem) {
    std::fprintf(stderr, "dorado-receiver: %s\n", problem.toUtf8().constData());
    return 1;
}

int receive(bool once) {
    QDBusConnection bus = QDBusConnection::sessionBus();
    if (!bus.isConnected()) return fail("There is no session bus: " + bus.lastError().message());
    Receiver receiver(once);
    // The object first: once the name is there, calls may come.
    bus.registerObject("/Dorado/Server", &receiver, QDBusConnection::ExportScriptableSlots);
    if (!bus.registerService("Dorado.Server")) return fail("Another program has the name Dorado.Server. End it first.");
    bus.connect({}, "/org/freedesktop/DBus/Local", "org.freedesktop.DBus.Local", "Disconnected", &receiver,
                SLOT(busIsGone()));
    return QCoreApplication::exec();
}

} // namespace

int main(int argc, char** argv) {
    const QCoreApplication application(argc, argv);
    const bool once = argc == 2 && std::strcmp(argv[1], "--once") == 0;
    if (argc > 1 && !once) {
        std::fputs("Usage: dorado-receiver [--once]\n", stderr);
        return 2;
    }
    return receive(once);
}

#include "main.moc"
