#pragma once

#include "platform/linux/applications/process_clues.h"

#include <QHash>
#include <QString>

#include <optional>
#include <vector>

namespace tovel {

// An installed application: a desktop entry (Desktop Entry Specification).
struct ApplicationEntry
{
    QString bundleIdentifier; // the desktop-file id without ".desktop"
    QString name; // localized
    QString icon; // a file path or an icon-theme name
    QString path; // of the desktop file
    QString startupWMClass;
    QString executable; // base name; empty where it does not tell applications apart
    bool visible = true; // false for NoDisplay entries

    bool operator==(const ApplicationEntry &) const = default;
};

// All that is known of whose window a window is. The texts are the programs' own and not trusted.
struct WindowClues
{
    QString appId; // of a Wayland window
    QString instance; // of WM_CLASS
    QString className; // of WM_CLASS
    QString gtkApplicationId; // _GTK_APPLICATION_ID
    QString kdeDesktopFile; // _KDE_NET_WM_DESKTOP_FILE: an id or a path, with or without ".desktop"
    ProcessClues process;
};

// The application that a window was found to belong to.
struct ApplicationIdentity
{
    QString bundleIdentifier; // never empty
    QString name;
    QString icon;
    bool installed = false;

    bool operator==(const ApplicationIdentity &) const = default;
};

// A fixed set of installed applications, and the rules by which windows find theirs. Look-ups cost
// a few hashes and give null when there is no such entry; the index owns what they return.
class ApplicationIndex final
{
public:
    ApplicationIndex() = default;

    // The identifiers must be unique. Where two entries claim the same, a visible one wins over
    // one that is not, then one that is named like its StartupWMClass, then the earlier.
    explicit ApplicationIndex(std::vector<ApplicationEntry> entries);

    const ApplicationEntry *find(const QString &bundleIdentifier) const;

    // Compares exactly first, then without regard to case.
    const ApplicationEntry *byStartupWMClass(const QString &windowClass) const;

    // By identifier, exactly, then without regard to case; then by the last component of a
    // reverse-DNS identifier, provided that a single entry ends in it. Takes a path or a
    // ".desktop" name as well.
    const ApplicationEntry *byDesktopFileName(const QString &name) const;

    // The visible entry that starts this program, provided that it is the only one.
    const ApplicationEntry *byExecutable(const QString &baseName) const;

    // Decides in this order: WM_CLASS instance, then class, as a StartupWMClass, to the letter
    // before without regard to case; instance, then class, as a desktop-file name; a Wayland
    // window's id stands for both, so that it makes the same application; sandbox; GTK
    // and KDE properties; the process's desktop file; its program, unless that runs other programs,
    // and never an entry that nobody sees. Instance before class because
    // web applications share the class and the process of their browser. A window that matches
    // nothing is an application of its own, named by its class or its id, else its program.
    ApplicationIdentity identify(const WindowClues &clues) const;
    // The same where what comes before the sandbox decides; nothing where it does not.
    std::optional<ApplicationIdentity> identifyByTexts(const WindowClues &clues) const;

    const std::vector<ApplicationEntry> &entries() const { return m_entries; }

private:
    using Positions = QHash<QString, std::size_t>;

    const ApplicationEntry *at(const Positions &positions, const QString &key) const;
    const ApplicationEntry *byWindowClass(const QString &text) const;
    const ApplicationEntry *matchTexts(const WindowClues &clues) const;
    const ApplicationEntry *match(const WindowClues &clues) const;

    std::vector<ApplicationEntry> m_entries;
    Positions m_identifiers;
    Positions m_foldedIdentifiers;
    Positions m_windowClasses;
    Positions m_foldedWindowClasses;
    Positions m_lastComponents;
    Positions m_executables;
    Positions m_paths;
};

} // namespace tovel
