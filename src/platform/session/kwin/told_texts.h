#pragma once

#include <QString>

// What the compositor and its services say in words: other people's text.
namespace tovel::kwin {

// Cut to a length that no honest text has.
QString toldText(const char *text);

// The answer of supportInformation() of org.kde.KWin.
struct SupportInformation
{
    QString version; // empty when it is not there
    // Whether activating a window shows its desktop; false when it is not there.
    bool activationShowsDesktop = false;
};
SupportInformation parseSupportInformation(const QString &text);

} // namespace tovel::kwin
