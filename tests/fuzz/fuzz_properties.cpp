#include "platform/session/x11/manager_traits.h"
#include "platform/session/x11/properties.h"
#include "texts/one_line.h"

#include <QtGlobal>

using namespace tovel::x11;

namespace {

constexpr Atom Utf8String = 300;

void expectHarmless(const QString &text)
{
    if (text.size() > tovel::MaximumTitleLength)
        qFatal("a text is longer than it may be");
    for (const QChar character : text) {
        if (character.category() == QChar::Other_Control)
            qFatal("a control character came through");
    }
}

} // namespace

extern "C" int LLVMFuzzerTestOneInput(const std::uint8_t *data, std::size_t size)
{
    if (size < 2)
        return 0;
    constexpr Atom types[] = {0, AtomType, CardinalType, StringType, WindowType, Utf8String};
    constexpr std::uint8_t formats[] = {0, 8, 16, 32, 7};
    const QByteArray bytes(reinterpret_cast<const char *>(data + 2),
                           static_cast<qsizetype>(size - 2));
    const Property property{types[data[0] % std::size(types)],
                            formats[data[1] % std::size(formats)], bytes};
    for (const Atom type : types) {
        if (readList(property, type).size() * 4 > size)
            qFatal("a list is longer than its bytes");
        readValue(property, type);
    }
    expectHarmless(readText(property, Utf8String).value_or(QString()));
    for (const QString &name : readTextList(property, Utf8String, 4))
        expectHarmless(name);
    const auto [instance, className] = readClass(property);
    expectHarmless(instance);
    expectHarmless(className);
    xfwmActivateAction(bytes);
    return 0;
}
