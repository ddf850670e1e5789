#include "updater/feed_reader.h"

#include "platform/clock.h"
#include "updater/feed_address.h"
#include "updater/feed_transfer.h"

#include <utility>

namespace tovel {

using namespace Qt::StringLiterals;

FeedReader::FeedReader(Clock &clock)
    : m_clock(clock)
{ }

FeedReader::~FeedReader() = default;

void FeedReader::read(const QUrl &address, Handler handler)
{
    Q_ASSERT(!isReading() && isFeedAddress(address));
    m_handler = std::move(handler);
    m_redirections = 0;
    m_timer = m_clock.startTimer(timeLimit, false, [this] {
        finish({{}, u"The server took longer than %1 seconds."_s.arg(timeLimit)});
    });
    request(address);
}

void FeedReader::cancel()
{
    m_transfer.reset();
    m_timer.reset();
    m_handler = nullptr;
}

void FeedReader::request(const QUrl &address)
{
    m_address = address;
    m_transfer = startFeedTransfer(address, [this](FeedAnswer answer) { take(std::move(answer)); });
}

void FeedReader::take(FeedAnswer answer)
{
    if (!answer.redirection)
        finish({std::move(answer.body), answer.error});
    else if (!mayRedirect(m_address, *answer.redirection))
        finish({{}, u"The server referred to an address that is not secure."_s});
    else if (++m_redirections > redirectionLimit)
        finish({{}, u"The server referred to other addresses too often."_s});
    else
        request(*answer.redirection);
}

void FeedReader::finish(FeedReading reading)
{
    const Handler handler = std::exchange(m_handler, nullptr);
    cancel();
    handler(std::move(reading));
}

} // namespace tovel
