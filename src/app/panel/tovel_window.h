#pragma once

#include "app/panel/window_frame.h"
#include "platform/own_windows.h"

#include <QPoint>
#include <QRect>
#include <QWidget>

#include <functional>
#include <limits>
#include <memory>
#include <optional>

class QMenu;

namespace tovel {

class Timer;
class ToolbarRow;

// The panel's window. It is made once and never destroyed by being closed: closing and ordering out
// both hide it, and showing it again shows the same object where it stood. It is on every space,
// cannot be minimised, and moves when it is dragged by any place that takes no mouse press itself.
// Needs a current platform for as long as it lives.
class TovelWindow final : public QWidget
{
    Q_OBJECT

public:
    static constexpr QSize InitialSize{940, 720}; // below the toolbar row
    static constexpr QSize ContentMinSize{900, 440}; // below the toolbar row

    explicit TovelWindow(QWidget *parent = nullptr);
    ~TovelWindow() override;

    // The window owns what it is given.
    void setTitleWidget(QWidget *title); // 132 × 32, in the middle of the toolbar row
    void setSettingsWidget(QWidget *settings); // 36 × 32, at its trailing edge
    void setContentWidget(QWidget *content); // all below it

    // What F10 and a right click on the toolbar row open. Borrowed.
    void setMenu(QMenu *menu) { m_menu = menu; }

    // Called each time the window has been ordered out or closed and is no longer visible.
    void setHiddenHandler(std::function<void()> handler) { m_hiddenHandler = std::move(handler); }

    NSWindowLevel level() const { return m_level; }
    // NSFloatingWindowLevel is above the windows of other programs. A window that is shown stays
    // the same and stays shown.
    void setLevel(NSWindowLevel level);

    // The frame is kept in the standard user defaults under the name: whenever the window is
    // hidden, and once moving and resizing have come to rest. Empty to begin with: nothing is kept.
    void setFrameAutosaveName(const QString &name) { m_frameAutosaveName = name; }
    // Takes the frame that was kept under the name, brought onto a screen that is there. False when
    // there is none that can be read; the window then stays where it is. For a window that was not
    // shown yet.
    bool setFrameUsingName(const QString &name);
    // In the middle of the primary screen, at its present size.
    void center();

    // Shows the window, before the others and with the keyboard, but behind a dialog that has to be
    // answered first. So soon after a hiding that the
    // session is still busy with it, a moment later. When the screen on which it stood has become
    // another one, it is brought wholly onto one that is there.
    void makeKeyAndOrderFront();
    // Keeps the frame, then hides. Hiding a hidden window calls the handler again.
    void orderOut();
    void cancelOperation() { orderOut(); } // the Escape key
    // Only when visible.
    void bringToFrontAfterMigration();

protected:
    bool eventFilter(QObject *watched, QEvent *event) override;
    void showEvent(QShowEvent *event) override;
    void hideEvent(QHideEvent *event) override;
    void closeEvent(QCloseEvent *event) override;
    void changeEvent(QEvent *event) override;
    void moveEvent(QMoveEvent *event) override;
    void resizeEvent(QResizeEvent *event) override;
    void keyPressEvent(QKeyEvent *event) override;
    void mousePressEvent(QMouseEvent *event) override;
    void mouseMoveEvent(QMouseEvent *event) override;
    void mouseReleaseEvent(QMouseEvent *event) override;
    void contextMenuEvent(QContextMenuEvent *event) override;
    void paintEvent(QPaintEvent *event) override;

private:
    struct Drag
    {
        QPoint press; // global
        QPoint frame; // the window's position then
        bool isMoving = false;
    };

    void openMenu(QPoint position);
    void arrive();
    void settle(int attempts);
    void applyLevel();
    void takeFocus();
    void saveWindowFrame();
    void saveFrameSoon();
    bool hasNormalFrame() const;
    void place(const QRect &frame);
    void tellHidden();

    ToolbarRow *m_toolbar;
    QWidget *m_content = nullptr;
    QMenu *m_menu = nullptr;
    std::function<void()> m_hiddenHandler;
    NSWindowLevel m_level = NSNormalWindowLevel;
    QString m_frameAutosaveName;
    std::optional<WindowFrame> m_resting; // where a new showing returns to, without the margins
    std::optional<QRect> m_wanted; // while it is about to appear
    QMargins m_restingMargins; // of the manager's frame
    Qt::WindowStates m_arrivalState; // that it takes on after that
    std::unique_ptr<Timer> m_saveTimer;
    std::unique_ptr<Timer> m_showTimer;
    std::unique_ptr<Timer> m_arrivalTimer;
    std::unique_ptr<Timer> m_settlingTimer;
    double m_hiddenUntil = -std::numeric_limits<double>::infinity(); // on the platform's clock
    std::optional<QPoint> m_wantedOrigin; // of the frame, where the toolkit may place nothing
    std::optional<Drag> m_drag;
    bool m_awaitsExposure = false;
    bool m_wantsFocus = false;
};

} // namespace tovel
