#include "settings/updates.h"

#include "platform/variants.h"

#include <utility>

namespace tovel {

using namespace Qt::StringLiterals;

TovelUpdates::TovelUpdates(SPUStandardUpdaterControllerFactory makeController,
                           std::function<void()> activateIgnoringOtherApps, QObject *parent)
    : QObject(parent)
    , m_makeController(std::move(makeController))
    , m_activate(std::move(activateIgnoringOtherApps))
{ }

TovelUpdates::~TovelUpdates() = default;

void TovelUpdates::start()
{
    if (m_controller)
        return;
    m_controller = m_makeController(true, this, this);
    SPUUpdater &updater = m_controller->updater();
    m_observation = updater.observeCanCheckForUpdates([this, &updater] {
        const bool canCheck = updater.canCheckForUpdates();
        QMetaObject::invokeMethod(
            this, [this, canCheck] { setCanCheck(canCheck); }, Qt::QueuedConnection);
    });
}

void TovelUpdates::check()
{
    if (!m_canCheck)
        return;
    m_activate();
    m_controller->checkForUpdates();
}

QString TovelUpdates::versionDescription(const Bundle &bundle)
{
    const auto value = [&bundle](const QString &key) {
        return text(bundle.objectForInfoDictionaryKey(key)).value_or(u"?"_s);
    };
    return u"Version "_s + value(u"CFBundleShortVersionString"_s) + u" ("_s
        + value(u"CFBundleVersion"_s) + u')';
}

void TovelUpdates::standardUserDriverWillHandleShowingUpdate(bool handleShowingUpdate,
                                                             const SUAppcastItem &,
                                                             const SPUUserUpdateState &)
{
    if (handleShowingUpdate)
        QMetaObject::invokeMethod(
            this, [this] { m_activate(); }, Qt::QueuedConnection);
}

void TovelUpdates::setCanCheck(bool canCheck)
{
    if (m_canCheck == canCheck)
        return;
    m_canCheck = canCheck;
    Q_EMIT canCheckChanged();
}

} // namespace tovel
