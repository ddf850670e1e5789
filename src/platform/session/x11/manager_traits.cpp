#include "platform/session/x11/manager_traits.h"

#include <QDir>
#include <QFile>
#include <QStandardPaths>
#include <QXmlStreamReader>

namespace tovel::x11 {

using namespace Qt::StringLiterals;

namespace {

constexpr qint64 MaximumSettingsSize = 1 << 20;

} // namespace

QString xfwmActivateAction(const QByteArray &channelXml)
{
    QXmlStreamReader xml(channelXml);
    QStringList path;
    while (!xml.atEnd()) {
        switch (xml.readNext()) {
        case QXmlStreamReader::StartElement:
            path.append(xml.attributes().value("name"_L1).toString());
            if (path == QStringList{u"xfwm4"_s, u"general"_s, u"activate_action"_s})
                return xml.attributes().value("value"_L1).toString();
            break;
        case QXmlStreamReader::EndElement:
            path.removeLast();
            break;
        default:
            break;
        }
    }
    return {};
}

QString readXfwmActivateAction()
{
    const QStringList files = QStandardPaths::locateAll(
        QStandardPaths::GenericConfigLocation, u"xfce4/xfconf/xfce-perchannel-xml/xfwm4.xml"_s);
    for (const QString &path : files) {
        QFile file(path);
        if (!file.open(QIODevice::ReadOnly))
            continue;
        const QString action = xfwmActivateAction(file.read(MaximumSettingsSize));
        if (!action.isEmpty())
            return action;
    }
    return {};
}

std::optional<bool> icewmBringsWindows(const QByteArray &preferences)
{
    std::optional<bool> brings;
    for (const QByteArray &line : preferences.split('\n')) {
        const qsizetype equals = line.indexOf('=');
        if (equals > 0 && line.first(equals).trimmed() == "FocusCurrentWorkspace")
            brings = line.sliced(equals + 1).trimmed().startsWith('1');
    }
    return brings;
}

bool readIcewmBringsWindows()
{
    const QString own = qEnvironmentVariable("ICEWM_PRIVCFG");
    const QStringList folders{
        u"/usr/share/icewm"_s,
        u"/etc/icewm"_s,
        QStandardPaths::writableLocation(QStandardPaths::GenericConfigLocation) + u"/icewm"_s,
        QDir::homePath() + u"/.icewm"_s,
        own.isEmpty() ? QDir::homePath() + u"/.icewm"_s : own,
    };
    // What overrides comes after all preferences, and of each kind the last file wins.
    bool brings = false;
    for (const QString &name : {u"/preferences"_s, u"/prefoverride"_s}) {
        for (const QString &folder : folders) {
            QFile file(folder + name);
            if (file.open(QIODevice::ReadOnly))
                brings = icewmBringsWindows(file.read(MaximumSettingsSize)).value_or(brings);
        }
    }
    return brings;
}

bool activationShowsDesktop(const QString &managerName, const ManagerSettings &settings)
{
    if (managerName.compare(u"kwin", Qt::CaseInsensitive) == 0)
        return true;
    if (managerName == u"Mutter" || managerName == u"GNOME Shell")
        return true;
    if (managerName.startsWith(u"icewm", Qt::CaseInsensitive))
        return !settings.icewmBrings();
    if (managerName.compare(u"xfwm4", Qt::CaseInsensitive) == 0)
        return settings.xfwmAction() == u"switch";
    return false;
}

bool renumbersDesktops(const QString &managerName) { return managerName == u"i3"; }

} // namespace tovel::x11
