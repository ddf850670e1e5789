#include "app/panel/tovel_window.h"

#include "app/panel/own_window.h"
#include "app/panel/toolbar_row.h"
#include "app/panel/window_frame.h"
#include "platform/clock.h"
#include "platform/platform.h"
#include "platform/user_defaults.h"
#include "views/components/accessible_surface.h"
#include "views/components/window_system.h"
#include "views/theme.h"

#include <QApplication>
#include <QKeyEvent>
#include <QMenu>
#include <QPainter>
#include <QScreen>
#include <QStyle>
#include <QVBoxLayout>
#include <QWindow>

namespace tovel {

using namespace Qt::StringLiterals;

namespace {

constexpr double SettlingTime = 0.3; // seconds without a move before a frame is kept

// Seconds from a hiding to the next showing. A manager drops what it is told of a window that it is
// still withdrawing, and Qt takes its late loss of the keyboard for one of the new showing.
constexpr double HidingTime = 0.15;

// Seconds after which a window is there that is never exposed, since others cover it.
constexpr double ArrivalTime = 0.5;

// A compositor has a window only once it has its picture, a little after the toolkit shows it.
constexpr double RetryTime = 0.05; // seconds
constexpr int MostAttempts = 20;

constexpr int MenuMargin = 8; // from the leading edge to a menu that was opened by key

// What a manager's frame may add to the content, allowed for while it is not known.
constexpr QSize FrameAllowance(4, 32);

constexpr Qt::WindowStates LargeStates = Qt::WindowMaximized | Qt::WindowFullScreen;

constexpr NSWindowCollectionBehavior Behavior
    = NSWindowCollectionBehaviorCanJoinAllSpaces | NSWindowCollectionBehaviorFullScreenAuxiliary;

UserDefaults &defaults() { return currentPlatform().userDefaults().standardUserDefaults(); }

QString defaultsKey(const QString &name) { return u"NSWindow Frame "_s + name; }

QRect withoutAllowance(const QRect &frame)
{
    return QRect(frame.topLeft(), frame.size() - FrameAllowance);
}

QRect broughtOntoScreens(const WindowFrame &kept)
{
    QList<QRect> screens;
    bool isScreenThere = false;
    for (const QScreen *screen : QGuiApplication::screens()) {
        screens.append(screen->availableGeometry());
        isScreenThere = isScreenThere || screen->geometry() == kept.screen;
    }
    return isScreenThere ? fittedFrame(kept.frame, screens) : wholeFrame(kept.frame, screens);
}

} // namespace

TovelWindow::TovelWindow(QWidget *parent)
    : QWidget(parent)
    , m_toolbar(new ToolbarRow(this))
{
    setAccessibleRole(*this, QAccessible::Window);
    setWindowFlags(Qt::Window | Qt::CustomizeWindowHint | Qt::WindowTitleHint
                   | Qt::WindowSystemMenuHint | Qt::WindowMaximizeButtonHint
                   | Qt::WindowCloseButtonHint);
    setWindowTitle(u"Tovel"_s);
    setMinimumSize(ContentMinSize + QSize(0, ToolbarRow::Height));
    resize(InitialSize + QSize(0, ToolbarRow::Height));
    auto *rows = new QVBoxLayout(this);
    // The content's own wishes do not make the window larger.
    rows->setSizeConstraint(QLayout::SetNoConstraint);
    rows->setContentsMargins({});
    rows->setSpacing(0);
    rows->addWidget(m_toolbar);
    rows->addStretch();
    connect(qApp, &QCoreApplication::aboutToQuit, this, [this] {
        if (isVisible())
            saveWindowFrame();
    });
}

TovelWindow::~TovelWindow() = default;

void TovelWindow::setTitleWidget(QWidget *title) { m_toolbar->setTitle(title); }

void TovelWindow::setSettingsWidget(QWidget *settings) { m_toolbar->setSettings(settings); }

void TovelWindow::setContentWidget(QWidget *content)
{
    auto *rows = static_cast<QVBoxLayout *>(layout());
    delete rows->takeAt(1);
    delete m_content;
    m_content = content;
    rows->addWidget(content, 1);
}

void TovelWindow::setLevel(NSWindowLevel level)
{
    if (std::exchange(m_level, level) == level)
        return;
    if (isVisible() && !m_awaitsExposure)
        applyLevel();
}

bool TovelWindow::setFrameUsingName(const QString &name)
{
    const auto kept = parseFrame(
        defaults().dictionaryRepresentation().text(defaultsKey(name)).value_or(QString()));
    if (!kept)
        return false;
    const QRect frame(kept->frame.topLeft(), kept->frame.size() + FrameAllowance);
    place(withoutAllowance(broughtOntoScreens({frame, kept->screen})));
    return true;
}

void TovelWindow::center()
{
    const QRect screen = QGuiApplication::primaryScreen()->availableGeometry();
    place(withoutAllowance(centeredFrame(size() + FrameAllowance, screen)));
}

void TovelWindow::makeKeyAndOrderFront()
{
    m_showTimer.reset();
    Clock &clock = currentPlatform().clock();
    const double wait = m_hiddenUntil - clock.monotonicTime();
    if (!isVisible() && wait > 0) {
        m_showTimer = clock.startTimer(wait, false, [this] { makeKeyAndOrderFront(); });
        return;
    }
    if (isMinimized())
        setWindowState(windowState() & ~Qt::WindowMinimized);
    show();
    raise();
    takeFocus();
}

void TovelWindow::orderOut()
{
    m_showTimer.reset();
    saveWindowFrame();
    if (isVisible())
        hide();
    else
        tellHidden();
}

void TovelWindow::bringToFrontAfterMigration()
{
    if (isVisible())
        makeKeyAndOrderFront();
}

bool TovelWindow::eventFilter(QObject *watched, QEvent *event)
{
    if (event->type() == QEvent::Expose && watched == windowHandle() && windowHandle()->isExposed()
        && m_awaitsExposure)
        arrive();
    return QWidget::eventFilter(watched, event);
}

void TovelWindow::showEvent(QShowEvent *event)
{
    QWidget::showEvent(event);
    if (event->spontaneous())
        return;
    m_awaitsExposure = true;
    m_arrivalTimer = currentPlatform().clock().startTimer(ArrivalTime, false, [this] { arrive(); });
    windowHandle()->installEventFilter(this);
    currentPlatform().ownWindows().prepare(ownWindow(*windowHandle()));
    // A manager takes the size of a window that comes maximised for the one to go back to.
    if (m_arrivalState)
        setWindowState(windowState() & ~LargeStates);
    if (m_resting) {
        const QRect frame = m_resting->frame.marginsAdded(m_restingMargins);
        const QRect brought = broughtOntoScreens({frame, m_resting->screen});
        m_wantedOrigin = brought.topLeft();
        m_wanted = brought.marginsRemoved(m_restingMargins);
        setGeometry(*m_wanted);
    }
}

void TovelWindow::hideEvent(QHideEvent *event)
{
    QWidget::hideEvent(event);
    if (event->spontaneous())
        return;
    m_saveTimer.reset();
    m_arrivalTimer.reset();
    m_settlingTimer.reset();
    // Managers take the state off the window as they withdraw it.
    m_arrivalState = windowState() & LargeStates;
    m_drag.reset();
    m_wantsFocus = false;
    m_hiddenUntil = currentPlatform().clock().monotonicTime() + HidingTime;
    tellHidden();
}

void TovelWindow::closeEvent(QCloseEvent *event)
{
    saveWindowFrame();
    event->accept();
}

void TovelWindow::changeEvent(QEvent *event)
{
    QWidget::changeEvent(event);
    if (event->type() != QEvent::WindowStateChange || !isMinimized())
        return;
    // Some managers minimise what does not offer it, and nothing would show the window again.
    const auto comeBack = [this] {
        if (isVisible() && isMinimized())
            setWindowState(windowState() & ~Qt::WindowMinimized);
    };
    QMetaObject::invokeMethod(this, comeBack, Qt::QueuedConnection);
}

void TovelWindow::moveEvent(QMoveEvent *event)
{
    QWidget::moveEvent(event);
    saveFrameSoon();
}

void TovelWindow::resizeEvent(QResizeEvent *event)
{
    QWidget::resizeEvent(event);
    saveFrameSoon();
}

void TovelWindow::keyPressEvent(QKeyEvent *event)
{
    if (event->matches(QKeySequence::Cancel)) {
        cancelOperation();
    } else if (event->key() == Qt::Key_F10 && event->modifiers() == Qt::NoModifier && m_menu) {
        const QRect place(QPoint(MenuMargin, ToolbarRow::Height), m_menu->sizeHint());
        openMenu(QStyle::visualRect(layoutDirection(), rect(), place).topLeft());
        m_menu->setActiveAction(m_menu->actions().value(0));
    } else {
        QWidget::keyPressEvent(event);
    }
}

void TovelWindow::mousePressEvent(QMouseEvent *event)
{
    if (event->button() == Qt::LeftButton)
        m_drag = {event->globalPosition().toPoint(), pos()};
}

void TovelWindow::mouseMoveEvent(QMouseEvent *event)
{
    if (!m_drag || !event->buttons().testFlag(Qt::LeftButton))
        return;
    const QPoint way = event->globalPosition().toPoint() - m_drag->press;
    if (!m_drag->isMoving && way.manhattanLength() < QApplication::startDragDistance())
        return;
    if (!std::exchange(m_drag->isMoving, true) && windowHandle()->startSystemMove()) {
        m_drag.reset();
        return;
    }
    // Without a manager that moves windows.
    if (hasNormalFrame())
        move(m_drag->frame + way);
}

void TovelWindow::mouseReleaseEvent(QMouseEvent *event)
{
    if (event->button() == Qt::LeftButton)
        m_drag.reset();
}

void TovelWindow::contextMenuEvent(QContextMenuEvent *event)
{
    if (m_menu && m_toolbar->geometry().contains(event->pos()))
        openMenu(event->pos());
    else
        QWidget::contextMenuEvent(event);
}

void TovelWindow::paintEvent(QPaintEvent *event)
{
    QPainter(this).fillRect(event->rect(), TovelTheme::chromeColor(palette()));
}

void TovelWindow::openMenu(QPoint position) { m_menu->popup(mapToGlobal(position)); }

void TovelWindow::arrive()
{
    m_arrivalTimer.reset();
    m_awaitsExposure = false;
    settle(MostAttempts);
    // Of a window that appears i3 puts the frame where the content should be; of one that is there
    // it does not.
    const std::optional<QRect> wanted = std::exchange(m_wanted, {});
    if (wanted && hasNormalFrame() && !isOnWayland())
        windowHandle()->setGeometry(*wanted);
    if (std::exchange(m_wantsFocus, false))
        takeFocus();
    if (m_arrivalState)
        setWindowState(windowState() | m_arrivalState);
    saveFrameSoon();
}

void TovelWindow::settle(int attempts)
{
    m_settlingTimer.reset();
    OwnWindows &ownWindows = currentPlatform().ownWindows();
    const OwnWindow self = ownWindow(*windowHandle());
    const bool isThere = ownWindows.setCollectionBehavior(self, Behavior);
    // A compositor may choose a place after the window was put at its own.
    if (isThere && m_wantedOrigin && hasNormalFrame()) {
        const bool isKept
            = attempts < MostAttempts && ownWindows.frameOrigin(self) == m_wantedOrigin;
        if (isKept || attempts == 1 || !ownWindows.setFrameOrigin(self, *m_wantedOrigin))
            m_wantedOrigin.reset();
    }
    if (m_level != NSNormalWindowLevel)
        applyLevel();
    const bool isSettled = isThere && (!m_wantedOrigin || !hasNormalFrame());
    if (!isSettled && attempts > 1) {
        m_settlingTimer = currentPlatform().clock().startTimer(
            RetryTime, false, [this, attempts] { settle(attempts - 1); });
    }
}

void TovelWindow::applyLevel()
{
    // Qt's own hint would hide the window and make it anew.
    currentPlatform().ownWindows().setLevel(ownWindow(*windowHandle()), m_level);
}

void TovelWindow::takeFocus()
{
    m_wantsFocus = m_awaitsExposure;
    // A compositor gives the keyboard to a window that it has; what it is asked with holds once.
    if (m_wantsFocus && isOnWayland())
        return;
    activateWindow();
    if (m_wantsFocus)
        return;
    OwnWindows &ownWindows = currentPlatform().ownWindows();
    ownWindows.makeKeyAndOrderFront(ownWindow(*windowHandle()));
    // The panel behind it takes no click and no key.
    if (const QWidget *dialog = QApplication::activeModalWidget())
        ownWindows.makeKeyAndOrderFront(ownWindow(*dialog->windowHandle()));
}

void TovelWindow::saveWindowFrame()
{
    m_saveTimer.reset();
    // Until a manager has put its frame around the window, the position means nothing.
    if (!isVisible() || m_awaitsExposure || !hasNormalFrame())
        return;
    m_restingMargins = windowHandle()->frameMargins();
    const auto origin = currentPlatform().ownWindows().frameOrigin(ownWindow(*windowHandle()));
    QRect content = geometry();
    if (origin)
        content.moveTopLeft(*origin + QPoint(m_restingMargins.left(), m_restingMargins.top()));
    // A screen that changes under a window that stays is not the one it was put on.
    if (!m_resting || m_resting->frame != content)
        m_resting = {content, screen()->geometry()};
    if (m_frameAutosaveName.isEmpty())
        return;
    // The widget's own position counts with the margins of its last move.
    const QRect frame(origin.value_or(windowHandle()->framePosition()), size());
    const QString text = frameText({frame, m_resting->screen});
    // Nobody chose it in so many words: one that cannot be stored is not worth a word either.
    const QString key = defaultsKey(m_frameAutosaveName);
    if (defaults().dictionaryRepresentation().text(key) != text)
        (void)defaults().setObject(key, text);
}

void TovelWindow::saveFrameSoon()
{
    if (isVisible()) {
        m_saveTimer = currentPlatform().clock().startTimer(SettlingTime, false,
                                                           [this] { saveWindowFrame(); });
    }
}

bool TovelWindow::hasNormalFrame() const
{
    return !(windowState() & (LargeStates | Qt::WindowMinimized));
}

void TovelWindow::place(const QRect &frame)
{
    m_wantedOrigin = frame.topLeft();
    move(frame.topLeft());
    resize(frame.size());
}

void TovelWindow::tellHidden()
{
    if (!isVisible() && m_hiddenHandler)
        m_hiddenHandler();
}

} // namespace tovel
