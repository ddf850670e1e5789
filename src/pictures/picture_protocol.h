#pragma once

#include <QByteArray>
#include <QByteArrayView>
#include <QString>
#include <QStringList>

#include <cstdint>
#include <optional>

namespace tovel {

// What the panel and the program that decodes pictures for it say to each other: that program its
// greeting, once; then for each request one answer. Numbers are of 32 bits, little-endian.

inline constexpr QByteArrayView pictureGreeting("TvP1");
inline constexpr std::uint32_t pictureSideLimit = 512; // pixels
inline constexpr qsizetype pictureRequestLimit = 16 * 1024; // bytes
inline constexpr qsizetype pictureThemeLimit = 8;

struct PictureRequest
{
    QString source; // an absolute path, or a name in an icon theme
    QStringList themes; // where to look for a name, the first one first
    std::uint32_t pixels = 0; // of the square to fit it into

    bool operator==(const PictureRequest &) const = default;
};

struct PictureAnswer
{
    std::uint32_t width = 0; // 0: there is no picture
    std::uint32_t height = 0;
    QByteArray pixels; // row by row, 4 bytes each: red, green, blue, alpha; colours premultiplied

    bool operator==(const PictureAnswer &) const = default;
};

// What the bytes received so far begin with.
template <typename Message>
struct Received
{
    std::optional<Message> message; // absent: more has to come, unless the bytes are damaged
    qsizetype length = 0; // of the message
    bool damaged = false;
};

// Nothing for a request beyond the limits above.
std::optional<QByteArray> encodeRequest(const PictureRequest &request);
Received<PictureRequest> receiveRequest(QByteArrayView bytes);

QByteArray encodeAnswer(const PictureAnswer &answer);
Received<PictureAnswer> receiveAnswer(QByteArrayView bytes);

} // namespace tovel
