#include "platform/linux/x11/manager_traits.h"

#include <QFile>
#include <QStandardPaths>
#include <QXmlStreamReader>

namespace tovel::x11 {

using namespace Qt::StringLiterals;

namespace {

constexpr qint64 MaximumChannelFileSize = 1 << 20;

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
        const QString action = xfwmActivateAction(file.read(MaximumChannelFileSize));
        if (!action.isEmpty())
            return action;
    }
    return {};
}

bool activationShowsDesktop(const QString &managerName, const std::function<QString()> &xfwmAction)
{
    if (managerName.compare(u"kwin", Qt::CaseInsensitive) == 0)
        return true;
    if (managerName.startsWith(u"icewm", Qt::CaseInsensitive))
        return true;
    if (managerName == u"Mutter" || managerName == u"GNOME Shell")
        return true;
    if (managerName.compare(u"xfwm4", Qt::CaseInsensitive) == 0)
        return xfwmAction() == u"switch";
    return false;
}

} // namespace tovel::x11
