#include "updater/feed_transfer.h"

#include <QSocketNotifier>
#include <QTimer>

#include <curl/curl.h>
#include <linux/tcp.h>
#include <netinet/in.h>
#include <sys/socket.h>

#include <array>
#include <map>
#include <utility>

namespace tovel {

using namespace Qt::StringLiterals;

namespace {

constexpr long statusOk = 200;

QString tooLarge() { return u"The server's answer is larger than a feed may be."_s; }

QString headTooLarge() { return u"The head of the server's answer is too large."_s; }

// What the connection has brought, be it wanted or not: some of it, such as the remarks on the
// chunks of a body, the library passes over in silence. 0 for what is not a connection.
quint64 bytesReceived(curl_socket_t socket)
{
    tcp_info info{};
    socklen_t size = sizeof info;
    return getsockopt(socket, IPPROTO_TCP, TCP_INFO, &info, &size) == 0 ? info.tcpi_bytes_received
                                                                        : 0;
}

// Deferred, because the deletion may come from within a signal of the object.
struct DeleteLater
{
    void operator()(QSocketNotifier *notifier) const
    {
        notifier->setEnabled(false);
        notifier->deleteLater();
    }
    void operator()(QTimer *timer) const
    {
        timer->stop();
        timer->deleteLater();
    }
};

template <auto function>
struct Call
{
    template <typename Object>
    void operator()(Object *object) const
    {
        function(object);
    }
};

// The library waits for nothing by itself: it names the sockets and the time to wait for, and is
// told when they are ready. The time is the library's own pace, such as between tries of several
// addresses of a server.
class CurlTransfer final : public FeedTransfer
{
public:
    CurlTransfer(const QUrl &address, std::function<void(FeedAnswer)> handler)
        : m_handler(std::move(handler))
        , m_timer(new QTimer)
    {
        [[maybe_unused]] static const CURLcode initialised = curl_global_init(CURL_GLOBAL_DEFAULT);
        m_multi.reset(curl_multi_init());
        m_easy.reset(curl_easy_init());
        m_timer->setSingleShot(true);
        QObject::connect(m_timer.get(), &QTimer::timeout, m_timer.get(),
                         [this] { goOn(CURL_SOCKET_TIMEOUT, 0); });
        if (!prepare(address) || curl_multi_add_handle(m_multi.get(), m_easy.get()) != CURLM_OK) {
            m_failure = u"The request cannot be made."_s;
            m_timer->start(0);
        }
    }

private:
    // What is not set is as it should be: no cookies, no credentials, no redirections, no
    // decompression, and a server must prove who it is.
    bool prepare(const QUrl &address)
    {
        CURLM *multi = m_multi.get();
        curl_multi_setopt(multi, CURLMOPT_SOCKETFUNCTION, &CurlTransfer::watchSocket);
        curl_multi_setopt(multi, CURLMOPT_SOCKETDATA, this);
        curl_multi_setopt(multi, CURLMOPT_TIMERFUNCTION, &CurlTransfer::startTimer);
        curl_multi_setopt(multi, CURLMOPT_TIMERDATA, this);

        CURL *easy = m_easy.get();
        curl_easy_setopt(easy, CURLOPT_ERRORBUFFER, m_reason.data());
        curl_easy_setopt(easy, CURLOPT_WRITEFUNCTION, &CurlTransfer::takeBody);
        curl_easy_setopt(easy, CURLOPT_WRITEDATA, this);
        curl_easy_setopt(easy, CURLOPT_HEADERFUNCTION, &CurlTransfer::takeField);
        curl_easy_setopt(easy, CURLOPT_HEADERDATA, this);
        curl_easy_setopt(easy, CURLOPT_HTTP_VERSION, long{CURL_HTTP_VERSION_1_1});
        curl_easy_setopt(easy, CURLOPT_USERAGENT, "Tovel/" TOVEL_VERSION);
        m_fields.reset(curl_slist_append(nullptr, "Accept-Encoding: identity"));
        curl_easy_setopt(easy, CURLOPT_HTTPHEADER, m_fields.get());
        // Whoever ends the transfer is not to wait for the name look-up.
        curl_easy_setopt(easy, CURLOPT_QUICK_EXIT, 1L);
        // What stays on this machine is not to go through another one.
        if (address.scheme() == u"http")
            curl_easy_setopt(easy, CURLOPT_PROXY, "");
        // Certificates are to be looked up where each has its file; to read them all in one file
        // takes some 40 ms.
        const char *folder = nullptr;
        if (curl_easy_getinfo(easy, CURLINFO_CAPATH, &folder) == CURLE_OK && folder)
            curl_easy_setopt(easy, CURLOPT_CAINFO, nullptr);
        return curl_easy_setopt(easy, CURLOPT_PROTOCOLS_STR, "http,https") == CURLE_OK
            && curl_easy_setopt(easy, CURLOPT_URL, address.toEncoded().constData()) == CURLE_OK;
    }

    static int watchSocket(CURL *, curl_socket_t socket, int what, void *self, void *)
    {
        auto *transfer = static_cast<CurlTransfer *>(self);
        transfer->watch(socket, QSocketNotifier::Read,
                        what == CURL_POLL_IN || what == CURL_POLL_INOUT);
        transfer->watch(socket, QSocketNotifier::Write,
                        what == CURL_POLL_OUT || what == CURL_POLL_INOUT);
        return 0;
    }

    static int startTimer(CURLM *, long milliseconds, void *self)
    {
        QTimer *timer = static_cast<CurlTransfer *>(self)->m_timer.get();
        if (milliseconds < 0)
            timer->stop();
        else
            timer->start(static_cast<int>(milliseconds));
        return 0;
    }

    // A callback that takes less than all ends the transfer.
    static size_t takeBody(const char *bytes, size_t, size_t count, void *self)
    {
        auto *transfer = static_cast<CurlTransfer *>(self);
        transfer->m_body.append(bytes, static_cast<qsizetype>(count));
        if (transfer->m_body.size() <= bodyLimit)
            return count;
        transfer->m_failure = tooLarge();
        return 0;
    }

    static size_t takeField(const char *, size_t, size_t count, void *self)
    {
        auto *transfer = static_cast<CurlTransfer *>(self);
        transfer->m_headSize += static_cast<qsizetype>(count);
        if (transfer->m_headSize <= headLimit)
            return count;
        transfer->m_failure = headTooLarge();
        return 0;
    }

    void watch(curl_socket_t socket, QSocketNotifier::Type type, bool wanted)
    {
        auto &notifier = m_notifiers[{socket, type}];
        if (!wanted) {
            notifier.reset();
        } else if (!notifier) {
            notifier.reset(new QSocketNotifier(socket, type));
            const int event = type == QSocketNotifier::Read ? CURL_CSELECT_IN : CURL_CSELECT_OUT;
            QObject::connect(notifier.get(), &QSocketNotifier::activated, notifier.get(),
                             [this, socket, event] { goOn(socket, event); });
        }
    }

    void goOn(curl_socket_t socket, int event)
    {
        if (socket != CURL_SOCKET_TIMEOUT && bytesReceived(socket) > receptionLimit)
            m_failure = tooLarge();
        int count = 0;
        if (m_failure.isEmpty())
            curl_multi_socket_action(m_multi.get(), socket, event, &count);
        if (!m_failure.isEmpty())
            finish({.error = m_failure});
        else if (const CURLMsg *message = curl_multi_info_read(m_multi.get(), &count))
            finish(answer(message->data.result));
    }

    FeedAnswer answer(CURLcode outcome)
    {
        if (outcome != CURLE_OK)
            return {.error = reason(outcome)};
        const char *redirection = nullptr;
        curl_easy_getinfo(m_easy.get(), CURLINFO_REDIRECT_URL, &redirection);
        if (redirection)
            return {.redirection = QUrl::fromEncoded(redirection, QUrl::StrictMode)};
        long status = 0;
        curl_easy_getinfo(m_easy.get(), CURLINFO_RESPONSE_CODE, &status);
        if (status != statusOk)
            return {.error = u"The server answered with status %1."_s.arg(status)};
        return {.body = std::move(m_body)};
    }

    QString reason(CURLcode outcome) const
    {
        // So some of its releases call a line of a head that is longer than they take.
        if (outcome == CURLE_OUT_OF_MEMORY)
            return headTooLarge();
        QString text
            = QString::fromUtf8(m_reason[0] ? m_reason.data() : curl_easy_strerror(outcome))
                  .simplified();
        text[0] = text[0].toUpper();
        return text.endsWith(u'.') ? text : text + u'.';
    }

    void finish(FeedAnswer answer)
    {
        // On the stack, as the transfer may go with the call.
        const auto handler = std::exchange(m_handler, nullptr);
        handler(std::move(answer));
    }

    std::function<void(FeedAnswer)> m_handler;
    QString m_failure; // what ended the transfer on this side
    QByteArray m_body;
    qsizetype m_headSize = 0;
    std::array<char, CURL_ERROR_SIZE> m_reason{};
    std::unique_ptr<QTimer, DeleteLater> m_timer;
    std::map<std::pair<curl_socket_t, QSocketNotifier::Type>,
             std::unique_ptr<QSocketNotifier, DeleteLater>>
        m_notifiers;
    // These go first, in reverse order, and tell the ones above that nothing is to be waited for.
    std::unique_ptr<curl_slist, Call<curl_slist_free_all>> m_fields;
    std::unique_ptr<CURLM, Call<curl_multi_cleanup>> m_multi;
    std::unique_ptr<CURL, Call<curl_easy_cleanup>> m_easy;
};

} // namespace

std::unique_ptr<FeedTransfer> startFeedTransfer(const QUrl &address,
                                                std::function<void(FeedAnswer)> handler)
{
    return std::make_unique<CurlTransfer>(address, std::move(handler));
}

} // namespace tovel
