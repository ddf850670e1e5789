#pragma once

#include "updater/appcast.h"

#include <QByteArray>
#include <QString>
#include <QUrl>

#include <functional>
#include <memory>
#include <optional>

namespace tovel {

// A request for a feed that is under way. Ends at once when destroyed, and then calls no handler.
class FeedTransfer
{
public:
    // Of the body of an answer, of its head with all that comes before it and of the fields behind
    // the body, and of all that the connection brings, in bytes.
    static constexpr qsizetype bodyLimit = appcastSizeLimit;
    static constexpr qsizetype headLimit = 64 * 1024;
    static constexpr qsizetype receptionLimit = bodyLimit + 2 * headLimit;

    FeedTransfer() = default;
    virtual ~FeedTransfer() = default;
    FeedTransfer(const FeedTransfer &) = delete;
    FeedTransfer &operator=(const FeedTransfer &) = delete;
};

struct FeedAnswer
{
    QByteArray body; // of an answer with status 200
    std::optional<QUrl> redirection; // what the server referred to, be it what it may; not followed
    QString error; // why there is neither, as a sentence
};

// Asks for what is at an http or https address, over HTTP/1.1 and with nothing but the address: no
// cookies, no credentials. The certificate of the server must be one that this system trusts. Goes
// through the proxy that the environment names for https, and through none for http.
//
// It has all the time that it likes, but holds up nobody meanwhile. The handler is called once,
// from the event loop, and may destroy the transfer.
std::unique_ptr<FeedTransfer> startFeedTransfer(const QUrl &address,
                                                std::function<void(FeedAnswer)> handler);

} // namespace tovel
