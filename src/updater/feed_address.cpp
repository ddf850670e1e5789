#include "updater/feed_address.h"

#include <arpa/inet.h>

namespace tovel {

using namespace Qt::StringLiterals;

namespace {

bool isLoopback(const QString &host)
{
    const QByteArray text = host.toLatin1();
    in_addr address{};
    in6_addr longAddress{};
    if (inet_pton(AF_INET, text.constData(), &address) == 1)
        return ntohl(address.s_addr) >> IN_CLASSA_NSHIFT == IN_LOOPBACKNET;
    if (inet_pton(AF_INET6, text.constData(), &longAddress) == 1)
        return IN6_IS_ADDR_LOOPBACK(&longAddress);
    return host == u"localhost";
}

bool isPlainAddress(const QUrl &address)
{
    return address.isValid() && !address.host().isEmpty() && address.userInfo().isEmpty();
}

} // namespace

bool isFeedAddress(const QUrl &address)
{
    if (!isPlainAddress(address))
        return false;
    return address.scheme() == u"https"
        || (address.scheme() == u"http" && isLoopback(address.host()));
}

std::optional<QUrl> feedAddress(const QString &text)
{
    const QUrl address(text.trimmed(), QUrl::StrictMode);
    if (!isFeedAddress(address))
        return std::nullopt;
    return address;
}

bool mayRedirect(const QUrl &from, const QUrl &to)
{
    return isFeedAddress(to) && (from.scheme() != u"https" || to.scheme() == u"https");
}

bool isReleasePage(const QUrl &address)
{
    return isPlainAddress(address) && address.scheme() == u"https";
}

} // namespace tovel
