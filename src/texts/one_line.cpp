#include "texts/one_line.h"

#include <algorithm>

namespace tovel {

bool breaksLine(QChar character)
{
    const QChar::Category category = character.category();
    return category == QChar::Other_Control || category == QChar::Separator_Line
        || category == QChar::Separator_Paragraph;
}

bool isInvisible(QChar character) { return character.category() == QChar::Other_Format; }

QString oneLine(QStringView text, qsizetype longest)
{
    QString line = text.first(std::min(text.size(), longest)).toString();
    if (line.size() < text.size() && !line.isEmpty() && line.back().isHighSurrogate())
        line.chop(1);
    std::ranges::replace_if(line, breaksLine, u' ');
    return line;
}

} // namespace tovel
