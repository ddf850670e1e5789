#include "updater/plain_text.h"

#include <QHash>
#include <QStringList>

#include <algorithm>
#include <optional>

namespace tovel {

using namespace Qt::StringLiterals;

namespace {

constexpr qsizetype longestReference = 32;

struct Reference
{
    QString text;
    qsizetype length = 0; // of the source, ampersand and semicolon included
};

bool isShown(char32_t character)
{
    return character == u'\n' || character == u'\t'
        || QChar::category(character) != QChar::Other_Control;
}

std::optional<char32_t> numericReference(QStringView name)
{
    const bool hexadecimal = name.startsWith(u"#x", Qt::CaseInsensitive);
    bool ok = false;
    const uint code = name.mid(hexadecimal ? 2 : 1).toUInt(&ok, hexadecimal ? 16 : 10);
    if (!ok || code > QChar::LastValidCodePoint || QChar::isSurrogate(code))
        return std::nullopt;
    return code;
}

std::optional<char32_t> namedReference(QStringView name)
{
    static const QHash<QString, char32_t> characters{
        {u"amp"_s, U'&'},   {u"lt"_s, U'<'},    {u"gt"_s, U'>'},     {u"quot"_s, U'"'},
        {u"apos"_s, U'\''}, {u"nbsp"_s, U' '},  {u"hellip"_s, U'…'}, {u"mdash"_s, U'—'},
        {u"ndash"_s, U'–'}, {u"lsquo"_s, U'‘'}, {u"rsquo"_s, U'’'},  {u"ldquo"_s, U'“'},
        {u"rdquo"_s, U'”'}, {u"bull"_s, U'•'},  {u"middot"_s, U'·'}, {u"copy"_s, U'©'},
        {u"trade"_s, U'™'}, {u"times"_s, U'×'}, {u"rarr"_s, U'→'},   {u"eacute"_s, U'é'},
    };
    const auto found = characters.constFind(name.toString());
    return found == characters.cend() ? std::nullopt : std::optional(*found);
}

// The character reference that the text starts with; what is none stays as it is.
std::optional<Reference> referenceAt(QStringView text)
{
    const qsizetype end = text.left(longestReference).indexOf(u';');
    if (end < 2)
        return std::nullopt;
    const QStringView name = text.sliced(1, end - 1);
    const auto character = name.startsWith(u'#') ? numericReference(name) : namedReference(name);
    if (!character)
        return std::nullopt;
    return Reference{QString::fromUcs4(&*character, 1), end + 1};
}

// Builds lines as a browser would lay them out.
class Lines final
{
public:
    void append(QStringView text, bool preformatted)
    {
        for (const QChar character : text) {
            if (preformatted || !character.isSpace())
                m_text += character;
            else if (!m_text.isEmpty() && !m_text.back().isSpace())
                m_text += u' ';
        }
    }

    // At the start of a line, after no more empty lines than given.
    void breakLine(qsizetype emptyLines)
    {
        chopSpaces();
        if (m_text.isEmpty())
            return;
        const QString wanted(emptyLines + 1, u'\n');
        while (!m_text.endsWith(wanted))
            m_text += u'\n';
    }

    void feed()
    {
        chopSpaces();
        m_text += u'\n';
    }

    const QString &text() const { return m_text; }

private:
    void chopSpaces()
    {
        while (m_text.endsWith(u' '))
            m_text.chop(1);
    }

    QString m_text;
};

// A tag as far as it matters here.
struct Tag
{
    QString name; // lower case; empty for comments and declarations
    bool closing = false;
    qsizetype length = 0;
};

// Absent when the text, which starts with "<", starts with no tag.
std::optional<Tag> tagAt(QStringView text)
{
    if (text.startsWith(u"<!--")) {
        const qsizetype end = text.indexOf(u"-->", 4);
        return Tag{{}, false, end < 0 ? text.size() : end + 3};
    }
    const bool closing = text.startsWith(u"</");
    const qsizetype start = closing ? 2 : 1;
    if (start >= text.size() || !(text[start].isLetter() || text[start] == u'!'))
        return std::nullopt;
    const qsizetype end = text.indexOf(u'>', start);
    if (end < 0)
        return std::nullopt;
    qsizetype nameEnd = start;
    while (text[nameEnd].isLetterOrNumber())
        ++nameEnd;
    return Tag{text.sliced(start, nameEnd - start).toString().toLower(), closing, end + 1};
}

// Where reading goes on after an element whose content is not for readers.
qsizetype afterHidden(QStringView text, qsizetype position, const QString &name)
{
    const qsizetype end = text.indexOf(QString(u"</"_s + name), position, Qt::CaseInsensitive);
    return end < 0 ? text.size() : end;
}

bool isParagraph(QStringView name)
{
    static const QStringList names{u"p"_s, u"ul"_s, u"ol"_s, u"pre"_s, u"blockquote"_s, u"table"_s};
    return names.contains(name)
        || (name.size() == 2 && name[0] == u'h' && name[1] >= u'1' && name[1] <= u'6');
}

bool isBlock(QStringView name)
{
    static const QStringList names{u"div"_s, u"section"_s, u"article"_s, u"tr"_s, u"dt"_s,
                                   u"dd"_s,  u"header"_s,  u"footer"_s,  u"hr"_s, u"li"_s};
    return names.contains(name);
}

bool isHidden(QStringView name)
{
    static const QStringList names{u"script"_s, u"style"_s, u"head"_s, u"title"_s};
    return names.contains(name);
}

void layOut(const Tag &tag, Lines &lines)
{
    if (tag.name == u"br")
        lines.feed();
    else if (isParagraph(tag.name))
        lines.breakLine(1);
    else if (isBlock(tag.name))
        lines.breakLine(0);
    if (tag.name == u"li" && !tag.closing)
        lines.append(u"• ", true);
}

// Whether there is any tag, so that line ends are mere space. Beyond the last ">" there is none;
// looking for the end of each "<" in vain would take a long text minutes.
bool isHtml(QStringView text, qsizetype lastTagEnd)
{
    for (qsizetype at = text.indexOf(u'<'); at >= 0 && at < lastTagEnd;
         at = text.indexOf(u'<', at + 1)) {
        if (tagAt(text.sliced(at)))
            return true;
    }
    return false;
}

QString shown(const QString &text)
{
    QList<uint> result;
    for (const uint character : text.toUcs4()) {
        if (isShown(character))
            result.append(character);
    }
    return QString::fromUcs4(reinterpret_cast<const char32_t *>(result.constData()), result.size());
}

QString shortened(const QString &text, qsizetype limit)
{
    if (text.size() <= limit)
        return text;
    qsizetype end = std::max<qsizetype>(0, limit - 1);
    if (end > 0 && text[end - 1].isHighSurrogate())
        --end;
    return text.first(end) + u'…';
}

} // namespace

QString plainText(const QString &description, qsizetype limit)
{
    const QStringView source = description;
    const qsizetype lastTagEnd = source.lastIndexOf(u'>');
    const bool html = isHtml(source, lastTagEnd);
    Lines lines;
    bool preformatted = !html;
    // A limit's worth of text that the tail may still shorten, but nothing beyond it.
    for (qsizetype at = 0; at < source.size() && lines.text().size() <= 2 * limit;) {
        const QStringView rest = source.sliced(at);
        const bool mayBeTag = html && rest.front() == u'<' && at < lastTagEnd;
        const auto tag = mayBeTag ? tagAt(rest) : std::nullopt;
        if (tag) {
            at += tag->length;
            layOut(*tag, lines);
            if (tag->name == u"pre")
                preformatted = !tag->closing;
            if (isHidden(tag->name) && !tag->closing)
                at = afterHidden(source, at, tag->name);
            continue;
        }
        const auto reference = rest.front() == u'&' ? referenceAt(rest) : std::nullopt;
        if (reference)
            lines.append(reference->text, true);
        else
            lines.append(rest.first(1), preformatted);
        at += reference ? reference->length : 1;
    }
    return shortened(shown(lines.text()).trimmed(), limit);
}

} // namespace tovel
