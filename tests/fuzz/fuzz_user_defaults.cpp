#include "platform/linux/json_value.h"

#include <QtGlobal>

using namespace tovel;

extern "C" int LLVMFuzzerTestOneInput(const std::uint8_t *data, std::size_t size)
{
    const auto values = parseDefaults(
        QByteArrayView(reinterpret_cast<const char *>(data), static_cast<qsizetype>(size)));
    if (!values)
        return 0;
    // What was read can be written, and reads the same.
    const auto text = serializeDefaults(*values);
    if (!text || parseDefaults(*text) != values)
        qFatal("user defaults do not survive being written");
    return 0;
}
