#pragma once

#include <QObject>
#include <QString>
#include <QStringList>
#include <QUrl>

#include <cstdint>
#include <functional>
#include <map>
#include <memory>
#include <optional>

namespace tovel {

// Finds and starts installed applications by their desktop entries. What it starts belongs to no
// one: it runs on when this program ends, in a session of its own, with /dev/null for its standard
// streams. Does not wait for the application's windows.
class ApplicationLauncher final
{
public:
    // Nothing when the application could be started, else the system's reason why not.
    using Handler = std::function<void(std::optional<QString> reason)>;

    ApplicationLauncher();

    // Drops the handlers of launches under way, uncalled; the launches themselves may still happen.
    ~ApplicationLauncher();

    ApplicationLauncher(const ApplicationLauncher &) = delete;
    ApplicationLauncher &operator=(const ApplicationLauncher &) = delete;

    // The desktop file with this id, whether or not its program is there; empty when there is none
    // or when it says Hidden.
    QUrl locate(const QString &bundleIdentifier) const;

    // Starts the entry without blocking and calls the handler later on this thread, once. An entry
    // that is activated over D-Bus has started when its activation was answered.
    void launch(const QUrl &desktopFile, Handler handler);

private:
    struct Launch;

    void finish(std::uint64_t number, const std::optional<QString> &reason);

    QObject m_context; // receives the results on this thread
    std::map<std::uint64_t, std::unique_ptr<Launch>> m_launches;
    std::uint64_t m_nextNumber = 0;
};

} // namespace tovel
