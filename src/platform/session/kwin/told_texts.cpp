#include "platform/session/kwin/told_texts.h"

#include <QList>
#include <QStringView>

#include <cstring>

namespace tovel::kwin {

using namespace Qt::StringLiterals;

namespace {

constexpr std::size_t MaximumTextBytes = 4096;
constexpr qsizetype MaximumInformationLength = 1 << 20;
constexpr qsizetype MaximumVersionLength = 64;

} // namespace

QString toldText(const char *text)
{
    if (!text)
        return {};
    return QString::fromUtf8(text, static_cast<qsizetype>(strnlen(text, MaximumTextBytes)));
}

SupportInformation parseSupportInformation(const QString &text)
{
    SupportInformation information;
    const auto lines = QStringView(text).left(MaximumInformationLength).split(u'\n');
    for (const QStringView line : lines) {
        const qsizetype colon = line.indexOf(u':');
        const QStringView key = line.left(colon).trimmed();
        const QStringView value = line.mid(colon + 1).trimmed();
        if (colon < 0)
            continue;
        if (key == u"KWin version" && information.version.isEmpty())
            information.version = value.left(MaximumVersionLength).toString();
        else if (key == u"activationDesktopPolicy")
            // By its number in KWin 5, by its name in KWin 6.
            information.activationShowsDesktop = value == u"0" || value == u"SwitchToOtherDesktop";
    }
    return information;
}

} // namespace tovel::kwin
