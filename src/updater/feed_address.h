#pragma once

#include <QString>
#include <QUrl>

#include <optional>

namespace tovel {

// Whether a feed may be read from there: https, or http from this machine itself ("localhost",
// 127.0.0.0/8, ::1). Never with a user name or password.
bool isFeedAddress(const QUrl &address);

// The address that a text states, when a feed may be read from there.
std::optional<QUrl> feedAddress(const QString &text);

// Whether reading may go on at the second address when the first one refers to it: never from https
// to http.
bool mayRedirect(const QUrl &from, const QUrl &to);

// Whether the user may be sent there to read about a release: https, without user name or password.
bool isReleasePage(const QUrl &address);

} // namespace tovel
