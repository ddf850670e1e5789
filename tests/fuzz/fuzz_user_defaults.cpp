#include "platform/linux/defaults/json_value.h"

#include <QtGlobal>

using namespace tovel;

namespace {

// What was read can be written, and reads the same.
void checkRoundTrip(const QVariant &value)
{
    const auto text = jsonFromVariant(value);
    const auto again = text ? variantFromJson(*text) : std::nullopt;
    if (!again || jsonFromVariant(*again) != text)
        qFatal("a user default does not survive being written");
}

} // namespace

extern "C" int LLVMFuzzerTestOneInput(const std::uint8_t *data, std::size_t size)
{
    const QByteArrayView bytes(reinterpret_cast<const char *>(data), static_cast<qsizetype>(size));
    if (const auto value = variantFromJson(bytes))
        checkRoundTrip(*value);
    const auto values = parseDefaults(bytes).value_or(QVariantMap());
    for (const QVariant &value : values)
        checkRoundTrip(value);
    return 0;
}
