#pragma once

#include <QDBusConnection>
#include <QObject>

#include <optional>

class QDBusPendingCallWatcher;

namespace tovel {

// Makes the program's palette light or dark as the user of the session prefers, now and whenever
// that changes. The preference is the setting "color-scheme" of the desktop portal
// (org.freedesktop.portal.Settings); where there is no portal, or it has no preference, the palette
// is the session's own. A portal that fails or is silent changes nothing. Nothing here waits for
// the bus or for the portal. Needs the application's palette for itself, for as long as it lives.
class AppearanceFollower final : public QObject
{
    Q_OBJECT

public:
    // On the session's bus. One that is not connected leaves nothing to follow.
    explicit AppearanceFollower(const QDBusConnection &bus, QObject *parent = nullptr);
    // The session's own palette again.
    ~AppearanceFollower() override;

private Q_SLOTS:
    // A signal may come from any program on the bus: it only is a reason to ask the portal.
    void noteSettingChanged(const QString &space, const QString &key);

private:
    enum class Preference { None, Dark, Light };

    void read();
    void takeReply(QDBusPendingCallWatcher *reply);
    void follow(Preference preference);
    static Preference preferenceFrom(const QVariant &value);

    QDBusConnection m_bus;
    Preference m_preference = Preference::None;
    bool m_isReading = false;
    bool m_readsAgain = false;
};

} // namespace tovel
