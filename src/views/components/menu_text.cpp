#include "views/components/menu_text.h"

#include "texts/one_line.h"

namespace tovel {

using namespace Qt::StringLiterals;

namespace {

constexpr int longest = 80;

} // namespace

QString menuText(const QString &text)
{
    QString shown = oneLine(text, longest);
    if (text.size() > longest)
        shown.append(u'…');
    return shown.replace(u'&', u"&&"_s);
}

} // namespace tovel
