#include "platform/session/i3/commands.h"

#include <algorithm>

namespace tovel::i3 {

using namespace Qt::StringLiterals;

namespace {

// sway takes these for words of the command even in quotes.
constexpr const char *Words[] = {"next",    "prev",           "next_on_output", "prev_on_output",
                                 "current", "back_and_forth", "number",         "output"};

// A binding with other flags is another one, so that what the user has bound to the key is neither
// replaced nor dropped; hardly anybody uses all of these.
const QByteArray Flags = "--locked --inhibited --no-repeat ";

bool hasControls(const QString &name)
{
    return std::any_of(name.begin(), name.end(),
                       [](QChar it) { return it.category() == QChar::Other_Control; });
}

QByteArray keyText(const SessionKey &key)
{
    constexpr int FirstKeycode = 8; // X11's, which is what a keyboard map calls the kernel's 0
    QByteArray text;
    const std::pair<bool, const char *> modifiers[]
        = {{key.shift, "Shift+"}, {key.control, "Ctrl+"}, {key.alt, "Mod1+"}, {key.super, "Mod4+"}};
    for (const auto &[isDown, name] : modifiers)
        text += isDown ? name : "";
    return text + QByteArray::number(key.position + FirstKeycode);
}

} // namespace

QByteArray criteria(Compositor compositor, const TreeWindow &window)
{
    return compositor == Compositor::Sway
        ? "[con_id=" + QByteArray::number(qulonglong(window.container)) + "] "
        : "[id=" + QByteArray::number(window.x11Window) + "] ";
}

std::optional<QByteArray> quotedWorkspace(Compositor compositor, const QString &name)
{
    // What was no UTF-8 cannot be said again.
    const bool isUnsayable = hasControls(name) || name.contains(QChar::ReplacementCharacter);
    if (name.isEmpty() || name.startsWith(u"__") || isUnsayable)
        return std::nullopt;
    if (compositor == Compositor::I3) {
        QString escaped = name;
        escaped.replace(u'\\', u"\\\\"_s).replace(u'"', u"\\\""_s);
        return '"' + escaped.toUtf8() + '"';
    }
    const bool isWord = std::ranges::any_of(Words, [&name](const char *word) {
        return name.compare(QLatin1StringView(word), Qt::CaseInsensitive) == 0;
    });
    const bool hasBothQuotes = name.contains(u'\'') && name.contains(u'"');
    // What sway replaces in texts of commands, or drops from them.
    if (isWord || hasBothQuotes || name.contains(u'\\') || name.contains(u'$'))
        return std::nullopt;
    const char quote = name.contains(u'\'') ? '"' : '\'';
    return quote + name.toUtf8() + quote;
}

QByteArray floatingRule(const SessionOwnWindow &window)
{
    const auto isPlain
        = [](QChar it) { return it == u' ' || (it.unicode() < 128 && it.isLetterOrNumber()); };
    if (!std::ranges::all_of(window.title, isPlain))
        return {};
    const QByteArray rule = "for_window [pid=" + QByteArray::number(window.process) + " title=\"^"
        + window.title.toUtf8() + "$\"] ";
    return rule + "floating enable; " + rule + "sticky enable";
}

QByteArray bindCommand(const SessionKey &key, const QString &command)
{
    return "mode default bindcode " + Flags + keyText(key) + ' ' + command.toUtf8();
}

QByteArray unbindCommand(const SessionKey &key)
{
    return "mode default unbindcode " + Flags + keyText(key);
}

} // namespace tovel::i3
