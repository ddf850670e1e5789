#include "app/shell/app_delegate.h"

#include "app/panel/tovel_window.h"
#include "model/tovel_model.h"
#include "platform/platform.h"
#include "platform/user_defaults.h"
#include "views/icon_images.h"
#include "views/tovel_settings_view.h"
#include "views/tovel_title_view.h"
#include "views/tovel_view.h"

#include <QGuiApplication>
#include <QIcon>

namespace tovel {

using namespace Qt::StringLiterals;

namespace {

const QString accessGrantedKey = QStringLiteral("lastAppAccessibilityGranted");
const QString frameName = QStringLiteral("TovelMainWindow");
const QString accessRequestedKey = QStringLiteral("requestedPersistentSigningAccess");

NSWindowLevel levelFor(bool pinned) { return pinned ? NSFloatingWindowLevel : NSNormalWindowLevel; }

} // namespace

AppDelegate::AppDelegate(Platform &platform, SPUStandardUpdaterControllerFactory makeUpdater)
    : m_platform(platform)
    , m_shortcuts(platform.userDefaults().standardUserDefaults())
    , m_updates(std::move(makeUpdater), [this] { activate(); })
{ }

AppDelegate::~AppDelegate() = default;

void AppDelegate::applicationDidFinishLaunching()
{
    m_model = std::make_unique<TovelModel>(m_platform);
    m_model->onIconChanged([this](TovelIconStyle) { applyAppIcon(); });
    applyAppIcon();
    rememberAccess();
    connect(m_model.get(), &TovelModel::didChange, this, [this](TovelModel::Property property) {
        if (property == TovelModel::Property::trusted)
            rememberAccess();
    });
    makePanel();
    m_updates.start();
    show();
    requestAccessOnce();
}

void AppDelegate::makePanel()
{
    m_panel = std::make_unique<TovelWindow>();
    m_panel->setLevel(levelFor(m_model->pinned()));
    m_model->onPinChanged([this](bool pinned) { m_panel->setLevel(levelFor(pinned)); });
    m_model->onMigrationFinished([this] { m_panel->bringToFrontAfterMigration(); });
    m_panel->setContentWidget(new TovelView(*m_model));
    m_panel->setTitleWidget(new TovelTitleView(*m_model));
    m_panel->setSettingsWidget(new TovelSettingsView(*m_model, m_updates, m_shortcuts, {}));
    m_panel->setFrameAutosaveName(frameName);
    if (!m_panel->setFrameUsingName(frameName))
        m_panel->center();
}

void AppDelegate::show()
{
    m_model->refresh();
    applyAppIcon();
    activate();
}

void AppDelegate::toggle()
{
    if (isPanelVisible() && m_panel->isActiveWindow())
        m_panel->orderOut();
    else
        show();
}

bool AppDelegate::isPanelVisible() const { return m_panel && m_panel->isVisible(); }

void AppDelegate::applyAppIcon()
{
    QIcon icon;
    for (const QImage &picture : windowImages(m_model->iconStyle()))
        icon.addPixmap(QPixmap::fromImage(picture));
    if (!icon.isNull())
        QGuiApplication::setWindowIcon(icon);
}

void AppDelegate::activate() { m_panel->makeKeyAndOrderFront(); }

void AppDelegate::rememberAccess()
{
    m_platform.userDefaults().standardUserDefaults().setObject(accessGrantedKey,
                                                               m_model->trusted());
}

void AppDelegate::requestAccessOnce()
{
    UserDefaults &defaults = m_platform.userDefaults().standardUserDefaults();
    if (m_model->trusted() || defaults.boolean(accessRequestedKey).value_or(false))
        return;
    defaults.setObject(accessRequestedKey, true);
    m_model->requestAccess();
}

} // namespace tovel
