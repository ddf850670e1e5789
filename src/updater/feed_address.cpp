#include "updater/feed_address.h"

#include <QHostAddress>

namespace tovel {

using namespace Qt::StringLiterals;

namespace {

bool isLoopback(const QString &host)
{
    return host == u"localhost" || QHostAddress(host).isLoopback();
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
