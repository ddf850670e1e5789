#include "updater/feed_reader.h"

#include "platform/clock.h"
#include "updater/appcast.h"
#include "updater/feed_address.h"

#include <QNetworkAccessManager>
#include <QNetworkProxy>
#include <QNetworkReply>
#include <QNetworkRequest>

#include <utility>

namespace tovel {

using namespace Qt::StringLiterals;

namespace {

constexpr int statusOk = 200;

QNetworkRequest requestFor(const QUrl &address)
{
    QNetworkRequest request(address);
    request.setHeader(QNetworkRequest::UserAgentHeader, u"Tovel/" TOVEL_VERSION ""_s);
    // Compressed bytes would count for what they are, not for what they become.
    request.setRawHeader("Accept-Encoding", "identity");
    request.setAttribute(QNetworkRequest::RedirectPolicyAttribute,
                         QNetworkRequest::ManualRedirectPolicy);
    request.setAttribute(QNetworkRequest::CookieLoadControlAttribute, QNetworkRequest::Manual);
    request.setAttribute(QNetworkRequest::CookieSaveControlAttribute, QNetworkRequest::Manual);
    request.setAttribute(QNetworkRequest::AuthenticationReuseAttribute, QNetworkRequest::Manual);
    request.setAttribute(QNetworkRequest::CacheLoadControlAttribute,
                         QNetworkRequest::AlwaysNetwork);
    request.setAttribute(QNetworkRequest::CacheSaveControlAttribute, false);
    return request;
}

QString errorOf(const QNetworkReply &reply)
{
    const QVariant status = reply.attribute(QNetworkRequest::HttpStatusCodeAttribute);
    if (status.isValid() && status.toInt() != statusOk)
        return u"The server answered with status %1."_s.arg(status.toInt());
    if (reply.error() == QNetworkReply::NoError)
        return {};
    const QString reason = reply.errorString();
    return reason.endsWith(u'.') ? reason : reason + u'.';
}

} // namespace

FeedReader::FeedReader(Clock &clock)
    : m_clock(clock)
{ }

FeedReader::~FeedReader() { cancel(); }

void FeedReader::read(const QUrl &address, Handler handler)
{
    Q_ASSERT(!isReading() && isFeedAddress(address));
    m_handler = std::move(handler);
    m_manager = std::make_unique<QNetworkAccessManager>();
    m_redirections = 0;
    m_timer = m_clock.startTimer(timeLimit, false, [this] {
        finish({{}, u"The server took longer than %1 seconds."_s.arg(timeLimit)});
    });
    request(address);
}

void FeedReader::cancel()
{
    if (!isReading())
        return;
    dropReply();
    m_timer.reset();
    m_handler = nullptr;
    m_manager.reset();
}

void FeedReader::request(const QUrl &address)
{
    // What stays on this machine is not to go through another one.
    m_manager->setProxy(address.scheme() == u"http" ? QNetworkProxy::NoProxy
                                                    : QNetworkProxy::DefaultProxy);
    m_bytes.clear();
    QNetworkReply *reply = m_manager->get(requestFor(address));
    m_reply = reply;
    connect(reply, &QNetworkReply::readyRead, this, &FeedReader::takeBytes);
    // Queued, as a reply that fails at once finishes from within the request.
    connect(
        reply, &QNetworkReply::finished, this,
        [this, reply] {
            if (reply == m_reply)
                takeReply();
        },
        Qt::QueuedConnection);
}

void FeedReader::takeBytes()
{
    m_bytes += m_reply->read(appcastSizeLimit + 1 - m_bytes.size());
    if (m_bytes.size() > appcastSizeLimit)
        finish({{}, u"The server's answer is larger than a feed may be."_s});
}

void FeedReader::takeReply()
{
    const QUrl target = m_reply->attribute(QNetworkRequest::RedirectionTargetAttribute).toUrl();
    if (!target.isEmpty()) {
        redirect(m_reply->url().resolved(target));
        return;
    }
    const QString error = errorOf(*m_reply);
    finish({error.isEmpty() ? std::exchange(m_bytes, {}) : QByteArray(), error});
}

void FeedReader::redirect(const QUrl &target)
{
    if (!mayRedirect(m_reply->url(), target)) {
        finish({{}, u"The server referred to an address that is not secure."_s});
    } else if (++m_redirections > redirectionLimit) {
        finish({{}, u"The server referred to other addresses too often."_s});
    } else {
        dropReply();
        request(target);
    }
}

void FeedReader::finish(FeedReading reading)
{
    dropReply();
    m_timer.reset();
    m_bytes.clear();
    // Deferred, because the call may come from within the reply.
    m_manager.release()->deleteLater();
    const Handler handler = std::exchange(m_handler, nullptr);
    handler(std::move(reading));
}

void FeedReader::dropReply()
{
    QNetworkReply *reply = std::exchange(m_reply, nullptr);
    reply->disconnect(this);
    reply->abort();
    reply->deleteLater();
}

} // namespace tovel
