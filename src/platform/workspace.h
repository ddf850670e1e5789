#pragma once

#include <QDateTime>
#include <QList>
#include <QString>
#include <QUrl>

#include <cstdint>
#include <functional>
#include <memory>
#include <optional>

namespace tovel {

// An application's picture, named rather than loaded, so that code without a display can carry it:
// a file path or an icon-theme name.
struct NSImage
{
    QString source;

    bool operator==(const NSImage &) const = default;
};

enum class NSApplicationActivationPolicy { Regular = 0, Accessory = 1, Prohibited = 2 };

// A running application. The handle stays the same object for as long as the application runs, and
// stays usable (and terminated) after it ended.
class NSRunningApplication
{
public:
    virtual ~NSRunningApplication() = default;

    // Unique among running applications at any moment, and what windows and elements name their
    // owner by. Two applications that share one process of the kernel have two different values.
    virtual std::int32_t processIdentifier() const = 0;
    virtual std::optional<QString> bundleIdentifier() const = 0;
    virtual std::optional<QString> localizedName() const = 0;
    virtual std::optional<NSImage> icon() const = 0;
    virtual NSApplicationActivationPolicy activationPolicy() const = 0;
    virtual bool isHidden() const = 0;
    virtual bool isTerminated() const = 0;
    virtual std::optional<QDateTime> launchDate() const = 0;

    // Asks for the application to come to the front, with the window set as "AXMain" or else its
    // frontmost one. False when the request could not be made; true says nothing of its outcome.
    virtual bool activateWithOptions(std::uint32_t options) = 0;
};

using NSRunningApplicationRef = std::shared_ptr<NSRunningApplication>;

struct NSScreen
{
    std::optional<std::uint32_t> NSScreenNumber;
    QString localizedName;
};

// Ends what it stands for when the last copy goes. May outlive its issuer.
using Subscription = std::shared_ptr<void>;

// Running applications, launching, screens, and changes of the active desktop.
class Workspace
{
public:
    // Called once, with nothing on success or the system's reason.
    using LaunchHandler = std::function<void(std::optional<QString> reason)>;

    virtual ~Workspace() = default;

    virtual QList<NSRunningApplicationRef> runningApplications() const = 0;

    // Null when there is none.
    virtual NSRunningApplicationRef runningApplicationWithProcessIdentifier(
        std::int32_t pid) const = 0;

    // Where the application is installed; absent when it is not.
    virtual std::optional<QUrl> URLForApplicationWithBundleIdentifier(
        const QString &bundleIdentifier) const = 0;

    // The name of an installed application as its users know it; absent when it cannot be told.
    virtual std::optional<QString> localizedNameOfApplicationAtURL(const QUrl &location) const = 0;

    // Starts the application and calls the handler later, on the main thread, when the outcome is
    // known. Never calls it from within this call.
    virtual void openApplicationAtURL(const QUrl &location, LaunchHandler handler) = 0;

    // Opens the settings where the user grants access, where the session has such a place.
    virtual void openAccessibilitySettings() = 0;

    // The primary screen first.
    virtual QList<NSScreen> screens() const = 0;

    // NSWorkspaceActiveSpaceDidChangeNotification: the handler is called on the main thread for
    // every change of a display's shown space, until the subscription is dropped.
    [[nodiscard]] virtual Subscription observeActiveSpaceDidChange(std::function<void()> handler)
        = 0;

    // The program's own bundle identifier.
    virtual QString mainBundleIdentifier() const = 0;
};

} // namespace tovel
