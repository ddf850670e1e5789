#include "fuzz.h"
#include "platform/linux/defaults/json_value.h"

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

void fuzz(QByteArrayView bytes)
{
    if (const auto value = variantFromJson(bytes))
        checkRoundTrip(*value);
    const auto values = parseDefaults(bytes).value_or(QVariantMap());
    for (const QVariant &value : values)
        checkRoundTrip(value);
}
