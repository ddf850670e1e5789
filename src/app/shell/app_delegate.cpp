#include "app/shell/app_delegate.h"

#include "app/panel/own_window.h"
#include "app/panel/tovel_window.h"
#include "app/session_bus.h"
#include "app/shell/about_panel.h"
#include "app/shell/application_menu.h"
#include "app/shell/note.h"
#include "app/shell/shortcut_editor.h"
#include "app/shell/status_menu.h"
#include "app/tray/status_item.h"
#include "model/texts.h"
#include "model/tovel_model.h"
#include "platform/application.h"
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

#include <utility>

namespace tovel {

using namespace Qt::StringLiterals;

namespace {

const QString accessGrantedKey = QStringLiteral("lastAppAccessibilityGranted");
const QString frameName = QStringLiteral("TovelMainWindow");
const QString accessRequestedKey = QStringLiteral("requestedPersistentSigningAccess");
const QString toldWaysBackKey = QStringLiteral("toldWhereThePanelWent");

// How a hidden panel comes back: by the key that the label names, unless that is empty, and where
// byStarting is set, by starting the program again; one of them at least.
QString waysBackText(const QString &keyLabel, bool byStarting)
{
    QStringList ways;
    if (!keyLabel.isEmpty())
        ways.append(u"press "_s + keyLabel);
    if (byStarting)
        ways.append(u"start Tovel again"_s);
    QString text = ways.join(u" or "_s) + u" to show the panel."_s;
    text[0] = text[0].toUpper();
    return text;
}

NSWindowLevel levelFor(bool pinned) { return pinned ? NSFloatingWindowLevel : NSNormalWindowLevel; }

} // namespace

AppDelegate::AppDelegate(Platform &platform, SPUStandardUpdaterControllerFactory makeUpdater)
    : m_platform(platform)
    , m_shortcuts(platform.userDefaults().standardUserDefaults())
    , m_updates(std::move(makeUpdater), [this] { activateIgnoringOtherApps(); })
    , m_dialogs(platform.ownWindows())
    , m_hotKey(platform.hotKeys(), [this] { toggle(); })
{ }

AppDelegate::~AppDelegate() = default;

void AppDelegate::applicationDidFinishLaunching(Launch launch)
{
    qApp->installEventFilter(this);
    connect(qApp, &QGuiApplication::applicationStateChanged, this,
            [this](Qt::ApplicationState state) {
                if (state == Qt::ApplicationActive)
                    applyAppIcon();
            });
    makeApplicationMenu();
    m_model = std::make_unique<TovelModel>(m_platform);
    m_model->onIconChanged([this](TovelIconStyle) { applyAppIcon(); });
    applyAppIcon();
    rememberAccess();
    connect(m_model.get(), &TovelModel::didChange, this, [this](TovelModel::Property property) {
        if (property == TovelModel::Property::choicesProblem)
            takeUpShortcut();
        if (property == TovelModel::Property::issues)
            m_tellsShortcut = false;
        if (property != TovelModel::Property::trusted)
            return;
        rememberAccess();
        registerAnew();
        delete m_accessNote; // it speaks of how it was
    });
    makePanel();
    makeStatusItem();
    installHotKey();
    m_updates.start();
    if (launch == Launch::Shown || !isReachable())
        show();
    requestAccessOnce();
}

void AppDelegate::makePanel()
{
    m_panel = std::make_unique<TovelWindow>();
    m_panel->installEventFilter(this);
    m_panel->setLevel(levelFor(m_model->pinned()));
    m_model->onPinChanged([this](bool pinned) { m_panel->setLevel(levelFor(pinned)); });
    m_model->onMigrationFinished([this] { m_panel->bringToFrontAfterMigration(); });
    m_panel->setHiddenHandler([this] { panelWasHidden(); });
    auto *view = new TovelView(*m_model);
    view->setAccessAdvice(m_accessAdvice);
    m_panel->setContentWidget(view);
    m_panel->setTitleWidget(new TovelTitleView(*m_model));
    m_panel->setSettingsWidget(
        new TovelSettingsView(*m_model, m_updates, m_shortcuts, [this] { editShortcut(); }));
    m_applicationMenu->install(*m_panel);
    m_panel->setMenu(&m_applicationMenu->menu());
    m_panel->setFrameAutosaveName(frameName);
    if (!m_panel->setFrameUsingName(frameName))
        m_panel->center();
}

void AppDelegate::show()
{
    m_model->refresh();
    applyAppIcon();
    m_note.reset();
    m_panel->makeKeyAndOrderFront();
    for (const QPointer<QDialog> &dialog : std::exchange(m_hiddenDialogs, {})) {
        if (dialog)
            dialog->show();
    }
}

void AppDelegate::hide()
{
    // A dialog that is waited for would take being hidden for an answer.
    if (QApplication::activeModalWidget())
        return;
    for (QWidget *window : QApplication::topLevelWidgets()) {
        auto *dialog = qobject_cast<QDialog *>(window);
        if (dialog && dialog->isVisible()) {
            dialog->hide();
            m_hiddenDialogs.append(dialog);
        }
    }
    m_panel->orderOut();
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
        if (window->isVisible() && qobject_cast<const QDialog *>(window))
            m_platform.ownWindows().makeKeyAndOrderFront(ownWindow(*window->windowHandle()));
    }
}

void AppDelegate::rememberAccess()
{
    (void)m_platform.userDefaults().standardUserDefaults().setObject(accessGrantedKey,
                                                                     m_model->trusted());
}

// The choices may be readable now that were not when the program started.
void AppDelegate::takeUpShortcut()
{
    const TovelShortcut before = m_shortcuts.shortcut();
    m_shortcuts.readAgain();
    if (m_editing || m_shortcuts.shortcut() == before)
        return;
    registerAnew();
    showShortcut();
}

// A session may have no key to give while it lets no windows be moved, and may have given this one
// to another program meanwhile.
void AppDelegate::registerAnew()
{
    if (m_editing)
        return;
    if (m_tellsShortcut)
        m_model->setIssues({});
    registerStoredShortcut();
}

void AppDelegate::requestAccessOnce()
{
    UserDefaults &defaults = m_platform.userDefaults().standardUserDefaults();
    const DefaultsReading stored = defaults.dictionaryRepresentation();
    // Whoever cannot tell whether it was asked for does not ask.
    if (m_model->trusted() || !stored.succeeded() || stored.boolean(accessRequestedKey) == true)
        return;
    (void)defaults.setObject(accessRequestedKey, true);
    m_model->requestAccess();
}

void AppDelegate::installHotKey()
{
    if (!m_hotKey.installHandler()) {
        tellShortcutFailure(u"Could not register the shortcut. Use the menu bar icon."_s);
        return;
    }
    registerStoredShortcut();
}

void AppDelegate::registerStoredShortcut()
{
    const TovelShortcut &shortcut = m_shortcuts.shortcut();
    m_hotKey.unregisterShortcut();
    if (!m_hotKey.registerShortcut(shortcut) && m_model->trusted()) {
        tellShortcutFailure(shortcut.label()
                            + u" is unavailable. Choose another shortcut in Settings."_s);
    }
}

void AppDelegate::tellShortcutFailure(const QString &text)
{
    m_model->setMessage(text);
    // The panel shows the message only while a move runs.
    m_model->setIssues({text});
    m_tellsShortcut = true;
}

void AppDelegate::editShortcut()
{
    if (std::exchange(m_editing, true))
        return;
    m_hotKey.unregisterShortcut();
    // Without access it can only be tried later.
    const auto tryToRegister = [this](const TovelShortcut &shortcut) {
        return m_hotKey.registerShortcut(shortcut) || !m_model->trusted();
    };
    DefaultsOutcome outcome;
    {
        m_panel->winId(); // or a panel that is shown later would not be the editor's
        ShortcutEditor editor(m_shortcuts.shortcut(), tryToRegister, m_panel.get());
        if (editor.exec() == QDialog::Accepted)
            outcome = m_shortcuts.save(editor.candidate());
    }
    if (m_tellsShortcut)
        m_model->setIssues({});
    if (!outcome.isStored())
        tellShortcutFailure(
            u"The shortcut works until Tovel ends, but could not be stored; record it "
            "again later: "_s
            + outcome.failure);
    else if (!outcome.notice.isEmpty())
        m_model->setIssues({outcome.notice});
    if (!m_hotKey.isRegistered() && !m_hotKey.registerShortcut(m_shortcuts.shortcut())
        && m_model->trusted())
        tellShortcutFailure(u"Shortcut unavailable. Choose another shortcut in Settings."_s);
    showShortcut();
    m_editing = false;
}

void AppDelegate::makeStatusItem()
{
    m_status = std::make_unique<StatusItem>(
        StatusItem::Actions{.toggle = [this] { toggle(); },
                            .makeMenu = [this] { return makeMenu(); }},
        sessionBus());
    StatusItem *status = m_status.get();
    connect(m_model.get(), &TovelModel::didChange, status, &StatusItem::noteMenuChange);
    connect(&m_updates, &TovelUpdates::canCheckChanged, status, &StatusItem::noteMenuChange);
    connect(&m_shortcuts, &ShortcutPreferences::shortcutChanged, status,
            &StatusItem::noteMenuChange);
    showShortcut();
}

void AppDelegate::makeApplicationMenu()
{
    m_applicationMenu = std::make_unique<ApplicationMenu>(
        m_updates,
        ApplicationMenuActions{.showAbout = [this] { showAbout(); },
                               .checkForUpdates = [this] { m_updates.check(); },
                               .hide = [this] { hide(); },
                               .quit = [] { QCoreApplication::quit(); }});
}

void AppDelegate::showAbout()
{
    if (!m_about) {
        m_about = new AboutPanel(m_panel.get());
        m_about->setAttribute(Qt::WA_DeleteOnClose);
    }
    m_about->show();
    m_about->raise();
    m_about->activateWindow();
}

void AppDelegate::tellAccess(const QString &text)
{
    show();
    delete m_accessNote;
    m_accessNote = new Note(u"Access to windows"_s, text, m_panel.get());
    m_accessNote->setAttribute(Qt::WA_DeleteOnClose);
    m_accessNote->show();
}

bool AppDelegate::eventFilter(QObject *watched, QEvent *event)
{
    // Quitting closes the windows before it ends anything.
    if (watched == qApp && event->type() == QEvent::Quit)
        m_quitting = true;
    const bool isShown = event->type() == QEvent::Show;
    if (watched == m_panel.get() && (isShown || event->type() == QEvent::Hide))
        m_platform.application().setHasVisibleWindow(isShown || isPanelVisible());
    return QObject::eventFilter(watched, event);
}

void AppDelegate::setReachableByStarting(bool reachable)
{
    m_reachableByStarting = reachable;
    if (m_panel && !isPanelVisible() && !isReachable())
        show();
}

bool AppDelegate::isReachable() const
{
    return m_hotKey.isRegistered() || m_reachableByStarting || m_status->isShown();
}

void AppDelegate::panelWasHidden()
{
    if (m_quitting || m_editing)
        return;
    // The program would run on unseen.
    if (!isReachable())
        QCoreApplication::quit();
    else if (!m_status->isShown())
        tellWaysBack();
}

void AppDelegate::tellWaysBack()
{
    UserDefaults &defaults = m_platform.userDefaults().standardUserDefaults();
    if (defaults.dictionaryRepresentation().boolean(toldWaysBackKey).value_or(false))
        return;
    (void)defaults.setObject(toldWaysBackKey, true);
    const QString key = m_hotKey.isRegistered() ? m_shortcuts.shortcut().label() : QString();
    m_note = std::make_unique<Note>(u"Tovel keeps running"_s,
                                    waysBackText(key, m_reachableByStarting));
    m_note->addButton(u"Quit Tovel"_s, [] { QCoreApplication::quit(); });
    m_note->show();
    m_note->raise();
    m_note->activateWindow();
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
    if (const Desktop *target = desktopWithID(m_model->desktops(), desktop)) {
        moveAndReport(*target);
        return;
    }
    m_model->setIssues({ModelTexts::desktopGone()});
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
