#pragma once

#include <QObject>
#include <QString>
#include <functional>
#include <memory>
#include <string>
#include <vector>

class QLocalServer;

namespace orrery {

/// Lets one program per user and display show all setups: a later start hands its files to the first and ends.
///
/// They meet at a socket in the user's private directory. The first greets whoever connects, and only then is it given
/// the files; one that does not greet in time hangs, and the later start goes its own way.
class SingleInstance : public QObject {
    Q_OBJECT

public:
    /// `opened`: another start asks for these absolute paths, maybe none.
    explicit SingleInstance(std::function<void(const std::vector<std::string>&)> opened);

    ~SingleInstance() override;

    /// Whether a running program has taken the files over. If not, and none hangs there, this is the first from now on.
    [[nodiscard]] bool handOver(const std::vector<std::string>& files);

private:
    enum class Answer { Taken, NobodyThere, Hangs };

    [[nodiscard]] Answer ask(const std::vector<std::string>& files) const;
    void listen();
    void greet();

    std::function<void(const std::vector<std::string>&)> m_opened;
    QString m_path; // of the socket; empty when there is no safe place for one
    std::unique_ptr<QLocalServer> m_server;
};

} // namespace orrery
