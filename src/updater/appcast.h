#pragma once

#include "platform/updater.h"

#include <QByteArrayView>
#include <QList>
#include <QString>

namespace tovel {

// No feed may be larger, tell of more releases or nest deeper; no tag of it may be longer or
// declare more namespaces. What a release says is cut to the lengths below, and a release with a
// longer version is left out.
inline constexpr qsizetype appcastSizeLimit = 1024 * 1024; // bytes
inline constexpr qsizetype appcastItemLimit = 1000;
inline constexpr int appcastDepthLimit = 32;
inline constexpr qsizetype appcastTagLimit = 4 * 1024; // characters
inline constexpr qsizetype appcastNamespaceLimit = 32;
inline constexpr qsizetype appcastNotesLimit = 20000;
inline constexpr qsizetype appcastTitleLimit = 200;
inline constexpr qsizetype appcastVersionLimit = 100;

struct AppcastReading
{
    QList<SUAppcastItem> items; // in the order of the feed
    QString error; // why the bytes are no feed; empty when they are one

    bool operator==(const AppcastReading &) const = default;
};

// Reads an RSS 2.0 feed in UTF-8 whose items state their version in the namespace
// "http://www.andymatuschak.org/xml-namespaces/sparkle": "version" and "shortVersionString", as
// elements of the item or else as attributes of its enclosure. Items without any version, of a
// channel other than the default one, and for another system than Linux are left out. Document
// type declarations are refused, and with them every entity of the feed's own. Nothing is loaded.
AppcastReading parseAppcast(QByteArrayView bytes);

} // namespace tovel
