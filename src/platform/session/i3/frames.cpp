#include "platform/session/i3/frames.h"

#include <cstring>

namespace tovel::i3 {

namespace {

constexpr QByteArrayView Magic("i3-ipc");
constexpr qsizetype HeaderSize = Magic.size() + 8;
constexpr std::uint32_t EventBit = 0x80000000;

} // namespace

QByteArray frameBytes(MessageType type, const QByteArray &payload)
{
    const std::uint32_t words[]
        = {static_cast<std::uint32_t>(payload.size()), static_cast<std::uint32_t>(type)};
    QByteArray bytes = Magic.toByteArray();
    bytes.append(reinterpret_cast<const char *>(words), sizeof words);
    return bytes + payload;
}

bool isEvent(MessageType type) { return static_cast<std::uint32_t>(type) & EventBit; }

std::optional<Frame> FrameReader::take()
{
    const QByteArrayView rest = QByteArrayView(m_bytes).sliced(m_start);
    const qsizetype known = qMin(rest.size(), Magic.size());
    m_isBroken = m_isBroken || rest.first(known) != Magic.first(known);
    if (m_isBroken || rest.size() < HeaderSize)
        return std::nullopt;
    std::uint32_t words[2];
    std::memcpy(words, rest.data() + Magic.size(), sizeof words);
    if (words[0] > MaximumPayload) {
        m_isBroken = true;
        return std::nullopt;
    }
    const qsizetype size = words[0];
    if (rest.size() < HeaderSize + size)
        return std::nullopt;
    Frame frame{MessageType{words[1]}, rest.sliced(HeaderSize, size).toByteArray()};
    m_start += HeaderSize + size;
    if (m_start == m_bytes.size()) {
        m_bytes.clear();
        m_start = 0;
    }
    return frame;
}

} // namespace tovel::i3
