#include "views/components/menu_text.h"

namespace tovel {

using namespace Qt::StringLiterals;

namespace {

constexpr int longest = 80;

} // namespace

QString menuText(const QString &text)
{
    QString shown = text.size() > longest ? text.left(longest) + u'…' : text;
    for (QChar &character : shown) {
        if (character.category() == QChar::Other_Control)
            character = u' ';
    }
    return shown.replace(u'&', u"&&"_s);
}

} // namespace tovel
