#include "pictures/picture_protocol.h"

#include <QStringDecoder>
#include <QtEndian>

#include <utility>

namespace tovel {

namespace {

constexpr qsizetype numberSize = 4;
constexpr std::uint32_t bytesPerPixel = 4;

void append(QByteArray &bytes, std::uint32_t number)
{
    const std::uint32_t little = qToLittleEndian(number);
    bytes.append(reinterpret_cast<const char *>(&little), numberSize);
}

void append(QByteArray &bytes, const QString &text)
{
    const QByteArray encoded = text.toUtf8();
    append(bytes, static_cast<std::uint32_t>(encoded.size()));
    bytes.append(encoded);
}

// Takes values off the front of a message. At its end, and after the first damage, all that comes
// is empty.
class Cursor final
{
public:
    explicit Cursor(QByteArrayView bytes)
        : m_rest(bytes)
    { }

    std::uint32_t number()
    {
        if (m_rest.size() < numberSize) {
            m_damaged = true;
            return 0;
        }
        const auto number = qFromLittleEndian<std::uint32_t>(m_rest.data());
        m_rest = m_rest.sliced(numberSize);
        return number;
    }

    QString text()
    {
        const std::uint32_t size = number();
        if (m_damaged || size > m_rest.size()) {
            m_damaged = true;
            return {};
        }
        QStringDecoder decoder(QStringDecoder::Utf8, QStringDecoder::Flag::Stateless);
        const QString text = decoder(m_rest.first(size));
        m_damaged = decoder.hasError();
        m_rest = m_rest.sliced(size);
        return text;
    }

    bool isWhole() const { return !m_damaged && m_rest.isEmpty(); }
    bool isDamaged() const { return m_damaged; }

private:
    QByteArrayView m_rest;
    bool m_damaged = false;
};

bool isWithinLimits(const PictureRequest &request)
{
    return !request.source.isEmpty() && request.pixels > 0 && request.pixels <= pictureSideLimit
        && request.themes.size() <= pictureThemeLimit;
}

} // namespace

std::optional<QByteArray> encodeRequest(const PictureRequest &request)
{
    QByteArray content;
    append(content, request.pixels);
    append(content, request.source);
    append(content, static_cast<std::uint32_t>(request.themes.size()));
    for (const QString &theme : request.themes)
        append(content, theme);
    if (!isWithinLimits(request) || content.size() > pictureRequestLimit)
        return std::nullopt;
    QByteArray bytes;
    append(bytes, static_cast<std::uint32_t>(content.size()));
    return bytes + content;
}

Received<PictureRequest> receiveRequest(QByteArrayView bytes)
{
    if (bytes.size() < numberSize)
        return {};
    const std::uint32_t size = qFromLittleEndian<std::uint32_t>(bytes.data());
    if (size > pictureRequestLimit)
        return {.damaged = true};
    if (bytes.size() < numberSize + size)
        return {};
    Cursor cursor(bytes.sliced(numberSize, size));
    PictureRequest request;
    request.pixels = cursor.number();
    request.source = cursor.text();
    const std::uint32_t themes = cursor.number();
    for (std::uint32_t i = 0; i < themes && !cursor.isDamaged(); ++i)
        request.themes.append(cursor.text());
    if (!cursor.isWhole() || !isWithinLimits(request))
        return {.damaged = true};
    return {std::move(request), numberSize + size};
}

QByteArray encodeAnswer(const PictureAnswer &answer)
{
    QByteArray bytes;
    append(bytes, answer.width);
    append(bytes, answer.height);
    return bytes + answer.pixels;
}

Received<PictureAnswer> receiveAnswer(QByteArrayView bytes)
{
    if (bytes.size() < 2 * numberSize)
        return {};
    PictureAnswer answer;
    answer.width = qFromLittleEndian<std::uint32_t>(bytes.data());
    answer.height = qFromLittleEndian<std::uint32_t>(bytes.data() + numberSize);
    if (answer.width > pictureSideLimit || answer.height > pictureSideLimit
        || (answer.width == 0) != (answer.height == 0))
        return {.damaged = true};
    const qsizetype size = qsizetype(bytesPerPixel) * answer.width * answer.height;
    if (bytes.size() < 2 * numberSize + size)
        return {};
    answer.pixels = bytes.sliced(2 * numberSize, size).toByteArray();
    return {std::move(answer), 2 * numberSize + size};
}

} // namespace tovel
