#include "app/shell/app_delegate.h"

#include "app/panel/tovel_window.h"
#include "app/shell/shortcut_editor.h"
#include "app/shell/status_item.h"
#include "app/shell/status_menu.h"
#include "model/tovel_model.h"
#include "platform/own_windows.h"
#include "platform/platform.h"
#include "platform/user_defaults.h"
#include "views/icon_images.h"
#include "views/tovel_settings_view.h"
#include "views/tovel_title_view.h"
#include "views/tovel_view.h"

#include <QApplication>
#include <QDialog>
#include <QIcon>
#include <QMenu>
#include <QPointer>
#include <QSystemTrayIcon>

#include <utility>

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
    , m_updates(std::move(makeUpdater), [this] { activateIgnoringOtherApps(); })
    , m_hotKey(platform.hotKeys(), [this] { toggle(); })
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
    // Later, when what has changed was stored, or was not.
    connect(m_model.get(), &TovelModel::didChange, this, &AppDelegate::tellUnstored,
            Qt::QueuedConnection);
    makePanel();
    makeStatusItem();
    installHotKey();
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
    m_panel->setHiddenHandler([this] { endUnreachable(); });
    m_panel->setContentWidget(new TovelView(*m_model));
    m_panel->setTitleWidget(new TovelTitleView(*m_model));
    m_panel->setSettingsWidget(
        new TovelSettingsView(*m_model, m_updates, m_shortcuts, [this] { editShortcut(); }));
    m_panel->setFrameAutosaveName(frameName);
    if (!m_panel->setFrameUsingName(frameName))
        m_panel->center();
}

void AppDelegate::show()
{
    m_model->refresh();
    applyAppIcon();
    m_panel->makeKeyAndOrderFront();
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
    // The session keeps an icon until it is given another one.
    const TovelIconStyle style = m_model->iconStyle();
    if (m_shownIcon == style)
        return;
    QIcon icon;
    for (const QImage &picture : windowImages(style))
        icon.addPixmap(QPixmap::fromImage(picture));
    if (icon.isNull())
        return;
    QGuiApplication::setWindowIcon(icon);
    m_shownIcon = style;
}

void AppDelegate::activateIgnoringOtherApps()
{
    if (isPanelVisible())
        m_panel->makeKeyAndOrderFront();
    for (const QWidget *window : QApplication::topLevelWidgets()) {
        if (window->isVisible() && qobject_cast<const QDialog *>(window)) {
            m_platform.ownWindows().makeKeyAndOrderFront(
                static_cast<std::uint32_t>(window->winId()));
        }
    }
}

void AppDelegate::rememberAccess()
{
    m_platform.userDefaults().standardUserDefaults().setObject(accessGrantedKey,
                                                               m_model->trusted());
}

void AppDelegate::tellUnstored(TovelModel::Property property)
{
    using enum TovelModel::Property;
    const bool isChoice = property == selected || property == aliases || property == follow
        || property == iconStyle || property == pinned;
    const QString error = m_platform.userDefaults().standardUserDefaults().errorString();
    if (isChoice && !error.isEmpty())
        m_model->setIssues({u"Your choices could not be stored: "_s + error});
}

void AppDelegate::requestAccessOnce()
{
    UserDefaults &defaults = m_platform.userDefaults().standardUserDefaults();
    if (m_model->trusted() || defaults.boolean(accessRequestedKey).value_or(false))
        return;
    defaults.setObject(accessRequestedKey, true);
    m_model->requestAccess();
}

void AppDelegate::installHotKey()
{
    if (!m_hotKey.installHandler()) {
        m_model->setMessage(u"Could not register the shortcut. Use the menu bar icon."_s);
        return;
    }
    const TovelShortcut &shortcut = m_shortcuts.shortcut();
    if (!m_hotKey.registerShortcut(shortcut)) {
        m_model->setMessage(shortcut.label()
                            + u" is unavailable. Choose another shortcut in Settings."_s);
    }
}

void AppDelegate::editShortcut()
{
    if (std::exchange(m_editing, true))
        return;
    m_hotKey.unregisterShortcut();
    const auto tryToRegister
        = [this](const TovelShortcut &shortcut) { return m_hotKey.registerShortcut(shortcut); };
    {
        ShortcutEditor editor(m_shortcuts.shortcut(), tryToRegister,
                              isPanelVisible() ? m_panel.get() : nullptr);
        if (editor.exec() == QDialog::Accepted)
            m_shortcuts.save(editor.candidate());
    }
    if (!m_hotKey.isRegistered() && !m_hotKey.registerShortcut(m_shortcuts.shortcut()))
        m_model->setMessage(u"Shortcut unavailable. Choose another shortcut in Settings."_s);
    showShortcut();
    m_editing = false;
}

void AppDelegate::makeStatusItem()
{
    m_status = std::make_unique<StatusItem>(StatusItem::Actions{
        .toggle = [this] { toggle(); }, .makeMenu = [this] { return makeMenu(); }});
    showShortcut();
}

void AppDelegate::endUnreachable()
{
    // Hidden without a key or an icon that brings it back, the program would run on unseen.
    if (!m_hotKey.isRegistered() && !m_editing && !QSystemTrayIcon::isSystemTrayAvailable())
        QCoreApplication::quit();
}

void AppDelegate::showShortcut()
{
    m_status->setToolTip(u"Tovel · "_s + m_shortcuts.shortcut().label());
}

std::unique_ptr<QMenu> AppDelegate::makeMenu()
{
    if (!m_model->busy())
        m_model->refreshDesktopList();
    return makeStatusMenu(
        *m_model, m_updates, m_shortcuts,
        {.move = [this](std::uint64_t desktop) { moveFromMenu(desktop); },
         .togglePin = [this] { m_model->setPinned(!m_model->pinned()); },
         .toggleFollow = [this] { m_model->setFollow(!m_model->follow()); },
         .refresh = [this] { m_model->refresh(); },
         .openAccessSettings = [this] { m_model->requestAccess(); },
         .changeIcon = [this](TovelIconStyle style) { m_model->setIconStyle(style); },
         .checkForUpdates = [this] { m_updates.check(); },
         .editShortcut = [this] { editShortcut(); },
         .quit = [] { QCoreApplication::quit(); }});
}

void AppDelegate::moveFromMenu(std::uint64_t desktop)
{
    if (m_model->busy())
        return;
    m_model->refreshDesktopList();
    for (const Desktop &target : m_model->desktops()) {
        if (target.id == desktop) {
            moveAndReport(target);
            return;
        }
    }
    m_model->setIssues({u"That desktop is no longer available."_s});
    show();
}

QCoro::Task<> AppDelegate::moveAndReport(Desktop desktop)
{
    const QPointer<AppDelegate> self(this);
    co_await m_model->migrate(desktop);
    if (self && !m_model->issues().isEmpty())
        show();
}

} // namespace tovel
