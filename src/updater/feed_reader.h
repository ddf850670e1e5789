#pragma once

#include <QByteArray>
#include <QString>
#include <QUrl>

#include <functional>
#include <memory>

namespace tovel {

class Clock;
class FeedTransfer;
class Timer;
struct FeedAnswer;

struct FeedReading
{
    QByteArray bytes;
    QString error; // why nothing was read; empty on success
};

// Fetches a feed over HTTP, one at a time. Follows the rules of feed_address.h at every step. Sends
// no cookies and no credentials, stores nothing, and touches the network only during a read.
class FeedReader final
{
public:
    using Handler = std::function<void(FeedReading)>;

    // For a whole read, redirections included.
    static constexpr double timeLimit = 15; // seconds
    static constexpr int redirectionLimit = 5;

    // The clock must outlive the reader.
    explicit FeedReader(Clock &clock);
    // Ends a read that is under way, without calling its handler.
    ~FeedReader();
    FeedReader(const FeedReader &) = delete;
    FeedReader &operator=(const FeedReader &) = delete;

    // Reads from an address that isFeedAddress(). The handler is called once, never from within
    // this call, and may destroy the reader. To be called only while not reading.
    void read(const QUrl &address, Handler handler);

    bool isReading() const { return m_handler != nullptr; }

    // Ends a read that is under way, without calling its handler.
    void cancel();

private:
    void request(const QUrl &address);
    void take(FeedAnswer answer);
    void finish(FeedReading reading);

    Clock &m_clock;
    QUrl m_address;
    std::unique_ptr<FeedTransfer> m_transfer;
    std::unique_ptr<Timer> m_timer;
    int m_redirections = 0;
    Handler m_handler;
};

} // namespace tovel
