#include "updater/version_order.h"

#include <QString>

#include <algorithm>
#include <vector>

namespace tovel {

namespace {

enum class Kind { separator, number, word };

// A number without leading zeros, or a word. The empty number is 0.
struct Component
{
    Kind kind = Kind::number;
    QString text;

    bool isZero() const { return kind == Kind::number && text.isEmpty(); }
};

bool isDigit(QChar character) { return character >= u'0' && character <= u'9'; }

Kind kindOf(QChar character)
{
    if (isDigit(character))
        return Kind::number;
    // Halves of a character pair are in words, for letters outside the basic plane.
    return character.isLetterOrNumber() || character.isSurrogate() ? Kind::word : Kind::separator;
}

Component component(Kind kind, QStringView text)
{
    if (kind == Kind::word)
        return {kind, text.toString().toCaseFolded()};
    while (text.startsWith(u'0'))
        text = text.mid(1);
    return {kind, text.toString()};
}

QStringView withoutPrefix(QStringView version)
{
    version = version.trimmed();
    const bool prefixed = version.size() > 1 && version[0].toLower() == u'v' && isDigit(version[1]);
    return prefixed ? version.mid(1) : version;
}

std::vector<Component> components(QStringView version)
{
    std::vector<Component> result;
    version = withoutPrefix(version);
    while (!version.isEmpty()) {
        const Kind kind = kindOf(version.front());
        const auto end = std::ranges::find_if(
            version, [kind](QChar character) { return kindOf(character) != kind; });
        const qsizetype length = end - version.begin();
        if (kind == Kind::word) {
            // "1.0-rc" and "1-rc" lead to the same release.
            while (!result.empty() && result.back().isZero())
                result.pop_back();
        }
        if (kind != Kind::separator)
            result.push_back(component(kind, version.first(length)));
        version = version.sliced(length);
    }
    return result;
}

std::weak_ordering compare(const Component &left, const Component &right)
{
    if (left.kind != right.kind)
        return left.kind == Kind::word ? std::weak_ordering::less : std::weak_ordering::greater;
    if (left.kind == Kind::number && left.text.size() != right.text.size())
        return left.text.size() <=> right.text.size();
    return left.text.compare(right.text) <=> 0;
}

} // namespace

std::weak_ordering compareVersions(QStringView left, QStringView right)
{
    const std::vector<Component> first = components(left);
    const std::vector<Component> second = components(right);
    const Component zero;
    for (std::size_t i = 0; i < std::max(first.size(), second.size()); ++i) {
        const auto order
            = compare(i < first.size() ? first[i] : zero, i < second.size() ? second[i] : zero);
        if (order != 0)
            return order;
    }
    return std::weak_ordering::equivalent;
}

} // namespace tovel
