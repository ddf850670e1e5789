#pragma once

#include <QByteArrayView>
#include <QtGlobal>

#include <cstdint>

// What a target does with the fuzzer's bytes; it dies of what must not be.
void fuzz(QByteArrayView bytes);

extern "C" int LLVMFuzzerTestOneInput(const std::uint8_t *data, std::size_t size)
{
    fuzz(QByteArrayView(reinterpret_cast<const char *>(data), static_cast<qsizetype>(size)));
    return 0;
}
