#pragma once

#include <QString>

namespace tovel {

// What a reader would see of a description that is HTML or plain text: no tags, scripts or style
// sheets, character references resolved, paragraphs and list items on lines of their own. Nothing
// is loaded. Text without tags keeps its lines. At most the limit's number of characters, the last
// one an ellipsis when something was left out. Never holds control characters other than line
// feeds and tabs.
QString plainText(const QString &description, qsizetype limit);

} // namespace tovel
