#include "updater/appcast.h"

#include "updater/feed_address.h"
#include "updater/plain_text.h"

#include <QStringDecoder>
#include <QXmlStreamReader>

#include <optional>

namespace tovel {

using namespace Qt::StringLiterals;

namespace {

constexpr QLatin1StringView versionNamespace("http://www.andymatuschak.org/xml-namespaces/sparkle");

// An item while it is read. Elements count before attributes of the enclosure.
struct Draft
{
    SUAppcastItem item;
    QString enclosureVersion;
    QString enclosureDisplayVersion;
    QString system;
    QString channel;
};

// How long the tag is that the text starts with; ">" inside quotes does not end it.
qsizetype tagLength(QStringView text)
{
    QChar quote;
    for (qsizetype i = 0; i < text.size(); ++i) {
        const QChar character = text[i];
        if (!quote.isNull())
            quote = character == quote ? QChar() : quote;
        else if (character == u'"' || character == u'\'')
            quote = character;
        else if (character == u'>')
            return i + 1;
    }
    return text.size();
}

// How much to pass over from a "<" up to the end of its tag, comment or literal text.
qsizetype markupLength(QStringView text)
{
    const QStringView end = text.startsWith(u"<![CDATA[") ? u"]]>"
        : text.startsWith(u"<!--")                        ? u"-->"
                                                          : QStringView();
    if (end.isEmpty())
        return tagLength(text.left(appcastTagLimit + 1));
    const qsizetype position = text.indexOf(end);
    return position < 0 ? text.size() : position + end.size();
}

// Whether any tag is longer than the limit. The XML reader compares every attribute of a tag with
// every other one, which takes it minutes for a tag of a megabyte.
bool hasLongTag(QStringView text)
{
    for (qsizetype at = text.indexOf(u'<'); at >= 0; at = text.indexOf(u'<', at)) {
        const QStringView rest = text.sliced(at);
        const bool literal = rest.startsWith(u"<![CDATA[") || rest.startsWith(u"<!--");
        const qsizetype length = markupLength(rest);
        if (!literal && length > appcastTagLimit)
            return true;
        at += length;
    }
    return false;
}

class AppcastParser final
{
public:
    explicit AppcastParser(const QString &text)
        : m_xml(text)
    { }

    AppcastReading parse()
    {
        readDocument();
        // Also reads what follows the feed, for the document has to be whole.
        while (!m_xml.hasError() && m_xml.readNext() != QXmlStreamReader::EndDocument) { }
        if (m_xml.hasError())
            return {{}, m_xml.errorString()};
        return std::move(m_reading);
    }

private:
    // Reads on to the next element inside the current one; false at its end, or at an error.
    bool nextElement()
    {
        while (!m_xml.hasError()) {
            switch (m_xml.readNext()) {
            case QXmlStreamReader::StartElement:
                checkNamespaces();
                return !m_xml.hasError();
            case QXmlStreamReader::EndElement:
            case QXmlStreamReader::EndDocument:
                return false;
            case QXmlStreamReader::DTD:
                m_xml.raiseError(u"It has a document type declaration, which no feed needs."_s);
                break;
            default:
                break;
            }
        }
        return false;
    }

    // The XML reader looks through all that are declared for every tag in their scope.
    void checkNamespaces()
    {
        if (m_xml.namespaceDeclarations().size() > appcastNamespaceLimit)
            m_xml.raiseError(u"A tag of it declares too many namespaces."_s);
    }

    // The text of the current element and of those in it, in one piece.
    QString readText()
    {
        QString text;
        int depth = 1;
        while (depth > 0 && !m_xml.hasError()) {
            switch (m_xml.readNext()) {
            case QXmlStreamReader::StartElement:
                if (++depth > appcastDepthLimit)
                    m_xml.raiseError(u"It is nested too deeply."_s);
                checkNamespaces();
                break;
            case QXmlStreamReader::EndElement:
                --depth;
                break;
            case QXmlStreamReader::Characters:
                text += m_xml.text();
                break;
            default:
                break;
            }
        }
        return text;
    }

    void skip() { readText(); }

    bool is(QLatin1StringView name) const
    {
        return m_xml.namespaceUri().isEmpty() && m_xml.name() == name;
    }

    bool isVersioning(QLatin1StringView name) const
    {
        return m_xml.namespaceUri() == versionNamespace && m_xml.name() == name;
    }

    void readDocument()
    {
        if (!nextElement())
            return;
        if (!is("rss"_L1)) {
            m_xml.raiseError(u"It is not an RSS feed."_s);
            return;
        }
        while (nextElement()) {
            if (is("channel"_L1))
                readChannel();
            else
                skip();
        }
    }

    void readChannel()
    {
        while (nextElement()) {
            if (is("item"_L1))
                readItem();
            else
                skip();
        }
    }

    void readItem()
    {
        Draft draft;
        while (nextElement())
            readDetail(draft);
        if (m_xml.hasError())
            return;
        if (++m_itemCount > appcastItemLimit) {
            m_xml.raiseError(u"It tells of too many releases."_s);
            return;
        }
        if (auto item = finished(std::move(draft)))
            m_reading.items.append(*std::move(item));
    }

    void readDetail(Draft &draft)
    {
        SUAppcastItem &item = draft.item;
        if (is("title"_L1)) {
            item.title = line(appcastTitleLimit);
        } else if (is("link"_L1)) {
            const QUrl address(readText().trimmed(), QUrl::StrictMode);
            item.infoURL = isReleasePage(address) ? address : QUrl();
        } else if (is("description"_L1)) {
            item.itemDescription = plainText(readText(), appcastNotesLimit);
        } else if (is("pubDate"_L1)) {
            item.date = QDateTime::fromString(readText().trimmed(), Qt::RFC2822Date);
        } else if (is("enclosure"_L1)) {
            const QXmlStreamAttributes attributes = m_xml.attributes();
            draft.enclosureVersion = attributes.value(versionNamespace, "version"_L1).toString();
            draft.enclosureDisplayVersion
                = attributes.value(versionNamespace, "shortVersionString"_L1).toString();
            draft.system = attributes.value(versionNamespace, "os"_L1).toString();
            skip();
        } else if (isVersioning("version"_L1)) {
            item.versionString = readText();
        } else if (isVersioning("shortVersionString"_L1)) {
            item.displayVersionString = readText();
        } else if (isVersioning("channel"_L1)) {
            draft.channel = readText().trimmed();
        } else {
            skip();
        }
    }

    // Text on one line, cut where it gets too long.
    QString line(qsizetype limit) { return plainText(readText(), limit).simplified(); }

    static std::optional<SUAppcastItem> finished(Draft draft)
    {
        SUAppcastItem &item = draft.item;
        const auto version = [](const QString &element, const QString &attribute) {
            // One character more than may be, which tells that it is too long.
            return plainText(element.trimmed().isEmpty() ? attribute : element,
                             appcastVersionLimit + 1)
                .simplified();
        };
        item.versionString = version(item.versionString, draft.enclosureVersion);
        item.displayVersionString
            = version(item.displayVersionString, draft.enclosureDisplayVersion);
        const bool named = !item.versionString.isEmpty() || !item.displayVersionString.isEmpty();
        const bool tooLong = item.versionString.size() > appcastVersionLimit
            || item.displayVersionString.size() > appcastVersionLimit;
        const bool ours = draft.channel.isEmpty()
            && (draft.system.isEmpty()
                || draft.system.compare("linux"_L1, Qt::CaseInsensitive) == 0);
        if (!named || tooLong || !ours)
            return std::nullopt;
        return std::move(item);
    }

    QXmlStreamReader m_xml;
    AppcastReading m_reading;
    qsizetype m_itemCount = 0;
};

} // namespace

AppcastReading parseAppcast(QByteArrayView bytes)
{
    if (bytes.size() > appcastSizeLimit)
        return {{}, u"It is larger than a feed may be."_s};
    QStringDecoder decoder(QStringDecoder::Utf8);
    const QString text = decoder(bytes);
    if (decoder.hasError())
        return {{}, u"It is not text in UTF-8."_s};
    if (hasLongTag(text))
        return {{}, u"It has a tag that is longer than any feed needs."_s};
    return AppcastParser(text).parse();
}

} // namespace tovel
