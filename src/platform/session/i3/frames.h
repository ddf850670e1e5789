#pragma once

#include <QByteArray>

#include <cstdint>
#include <optional>
#include <utility>

// The messages of the IPC protocol that i3 and sway speak: "i3-ipc", the payload's length and the
// message's type, 32 bits each in the machine's byte order, and the payload.
namespace tovel::i3 {

enum class MessageType : std::uint32_t {
    RunCommand = 0,
    Subscribe = 2,
    GetTree = 4,
    GetVersion = 7,
    GetConfig = 9,
    WorkspaceEvent = 0x80000000,
    BindingEvent = 0x80000005,
};

struct Frame
{
    MessageType type{}; // of a reply that of its request; others than those above may come
    QByteArray payload;

    bool operator==(const Frame &) const = default;
};

// Larger ones than any session sends are taken for nonsense.
inline constexpr std::uint32_t MaximumPayload = 1 << 26;

QByteArray frameBytes(MessageType type, const QByteArray &payload);

bool isEvent(MessageType type);

// Cuts a stream of bytes into frames, however it arrives.
class FrameReader final
{
public:
    void append(QByteArrayView bytes)
    {
        m_bytes.remove(0, std::exchange(m_start, 0));
        m_bytes.append(bytes);
    }

    // The next frame; nothing while it is not complete, and for ever once the stream is broken.
    std::optional<Frame> take();

    // What came is no frame of the protocol.
    bool isBroken() const { return m_isBroken; }

private:
    QByteArray m_bytes;
    qsizetype m_start = 0; // of the next frame
    bool m_isBroken = false;
};

} // namespace tovel::i3
