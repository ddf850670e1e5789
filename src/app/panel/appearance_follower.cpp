#include "app/panel/appearance_follower.h"

#include "app/panel/appearance_palette.h"
#include "views/theme.h"

#include <QApplication>
#include <QDBusMessage>
#include <QDBusPendingCallWatcher>
#include <QDBusPendingReply>
#include <QDBusServiceWatcher>
#include <QDBusVariant>

#include <utility>

namespace tovel {

using namespace Qt::StringLiterals;

namespace {

constexpr QLatin1StringView Service("org.freedesktop.portal.Desktop");
constexpr QLatin1StringView Path("/org/freedesktop/portal/desktop");
constexpr QLatin1StringView Interface("org.freedesktop.portal.Settings");
constexpr QLatin1StringView Namespace("org.freedesktop.appearance");
constexpr QLatin1StringView Key("color-scheme");
constexpr QLatin1StringView NoSuchSetting("org.freedesktop.portal.Error.NotFound");

// Values of the setting.
constexpr uint PrefersDark = 1;
constexpr uint PrefersLight = 2;

// Read wraps its answer in one variant more than is needed.
constexpr int DeepestVariant = 4;

} // namespace

AppearanceFollower::AppearanceFollower(const QDBusConnection &bus, QObject *parent)
    : QObject(parent)
    , m_bus(bus)
{
    if (!m_bus.isConnected())
        return;
    // For a named sender the library would wait for the bus to say who that is.
    m_bus.connect(QString(), Path, Interface, u"SettingChanged"_s, this,
                  SLOT(noteSettingChanged(QString, QString)));
    auto *service
        = new QDBusServiceWatcher(Service, m_bus, QDBusServiceWatcher::WatchForRegistration, this);
    connect(service, &QDBusServiceWatcher::serviceRegistered, this, &AppearanceFollower::read);
    read();
}

AppearanceFollower::~AppearanceFollower() { follow(Preference::None); }

void AppearanceFollower::noteSettingChanged(const QString &space, const QString &key)
{
    if (space == Namespace && key == Key)
        read();
}

void AppearanceFollower::read()
{
    // One question at a time, however many changes there are.
    if (std::exchange(m_isReading, true)) {
        m_readsAgain = true;
        return;
    }
    QDBusMessage question = QDBusMessage::createMethodCall(Service, Path, Interface, u"Read"_s);
    question << QString(Namespace) << QString(Key);
    auto *watcher = new QDBusPendingCallWatcher(m_bus.asyncCall(question), this);
    connect(watcher, &QDBusPendingCallWatcher::finished, this, &AppearanceFollower::takeReply);
}

void AppearanceFollower::takeReply(QDBusPendingCallWatcher *watcher)
{
    watcher->deleteLater();
    m_isReading = false;
    const QDBusPendingReply<QDBusVariant> reply = *watcher;
    if (!reply.isError())
        follow(preferenceFrom(reply.value().variant()));
    else if (reply.error().name() == NoSuchSetting)
        follow(Preference::None);
    if (std::exchange(m_readsAgain, false))
        read();
}

AppearanceFollower::Preference AppearanceFollower::preferenceFrom(const QVariant &value)
{
    QVariant scheme = value;
    for (int depth = 0; depth < DeepestVariant && scheme.canConvert<QDBusVariant>(); ++depth)
        scheme = scheme.value<QDBusVariant>().variant();
    if (scheme.typeId() != QMetaType::UInt)
        return Preference::None;
    if (scheme.toUInt() == PrefersDark)
        return Preference::Dark;
    return scheme.toUInt() == PrefersLight ? Preference::Light : Preference::None;
}

void AppearanceFollower::follow(Preference preference)
{
    if (std::exchange(m_preference, preference) == preference)
        return;
    QApplication::setPalette(QPalette());
    const bool dark = preference == Preference::Dark;
    if (preference != Preference::None && isDark(QApplication::palette()) != dark)
        QApplication::setPalette(appearancePalette(dark));
}

} // namespace tovel
