#pragma once

#include <QByteArrayView>
#include <QList>
#include <QString>
#include <QStringList>

namespace tovel {

// A folder of an icon theme, and the sizes its pictures are good for, in pixels.
struct IconFolder
{
    QString path; // below the theme's own folder
    int smallest = 0;
    int largest = 0;

    bool operator==(const IconFolder &) const = default;
};

struct IconTheme
{
    QStringList parents;
    QList<IconFolder> folders;

    bool operator==(const IconTheme &) const = default;
};

// Reads an "index.theme" (freedesktop.org icon themes). What is malformed counts as absent; no
// theme has more folders or parents than any has in earnest.
IconTheme parseIconTheme(QByteArrayView index);

// Where icon themes are, the user's own first.
QStringList iconRoots();

// The file of an icon in these themes, in those they inherit from, in "hicolor", or beside all
// themes; the one that suits the size best, larger before smaller. Empty when there is none.
QString findIcon(const QString &name, const QStringList &themes, int pixels,
                 const QStringList &roots = iconRoots());

} // namespace tovel
