#pragma once

#include "platform/session/kwin/bus_calls.h"
#include "platform/session/kwin/told_texts.h"

#include <QObject>
#include <QString>

#include <optional>

namespace tovel::kwin {

// What KWin tells on the session bus (org.kde.KWin) and by no protocol. Without an answer
// there is the neutral one.
class KWinService final : public QObject
{
    Q_OBJECT

public:
    // The calls have to outlive it.
    explicit KWinService(BusCalls &calls);

    // The uuid of the desktop that is shown; empty where there is no answer.
    QString currentDesktop() const;

    // Asked once, and again when KWin has another configuration or is another one.
    SupportInformation supportInformation();

public Q_SLOTS:
    void forgetInformation();

private:
    BusCalls &m_calls;
    std::optional<SupportInformation> m_information;
};

} // namespace tovel::kwin
