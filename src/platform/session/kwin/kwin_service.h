#pragma once

#include "platform/session/kwin/told_texts.h"

#include <QDBusConnection>
#include <QObject>
#include <QString>

#include <optional>

namespace tovel::kwin {

// What KWin tells on the session bus (org.kde.KWin) and by no protocol. No call waits for longer
// than a second; without an answer there is the neutral one.
class KWinService final : public QObject
{
    Q_OBJECT

public:
    explicit KWinService(const QDBusConnection &bus);

    // The uuid of the desktop that is shown; empty where there is no answer.
    QString currentDesktop() const;

    // Asked once, and again when KWin has another configuration or is another one.
    const SupportInformation &supportInformation();

public Q_SLOTS:
    void forgetInformation();

private:
    QDBusConnection m_bus;
    std::optional<SupportInformation> m_information;
};

} // namespace tovel::kwin
