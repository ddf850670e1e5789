#pragma once

#include "model/running_app.h"

#include <QWidget>

#include <QCoroTask>

#include <functional>

namespace tovel {

class AppIcon;
class PlainButton;
class ReopenButton;
class TextLabel;

// One application of the flock: its icon and name, or that it is closed and a way to reopen it. A
// mark that removes it from the flock shows under the mouse and with the focus; the context menu
// removes it too.
class ChosenAppCard : public QWidget
{
    Q_OBJECT

public:
    explicit ChosenAppCard(const RunningApp &app, QWidget *parent = nullptr);

    const RunningApp &app() const { return m_app; }

    // For another state of the same application.
    void setApp(const RunningApp &app);

    // Whether it can be used now; it looks disabled when not, but what has the focus keeps it.
    void setActionable(bool actionable);

    // May destroy the card.
    void onRemove(std::function<void()> remove);

    // The card shows that it is opening until the task ends. It may be destroyed meanwhile; the
    // task runs on.
    void onReopen(std::function<QCoro::Task<>()> reopen);

protected:
    void contextMenuEvent(QContextMenuEvent *event) override;
    bool event(QEvent *event) override;
    void paintEvent(QPaintEvent *event) override;
    void resizeEvent(QResizeEvent *event) override;

private:
    void showApp();
    void remove();
    void reopen();
    void setOpening(bool opening);
    void placeRemoveButton();

    RunningApp m_app;
    std::function<void()> m_remove;
    std::function<QCoro::Task<>()> m_reopen;
    bool m_hovered = false;
    bool m_opening = false;
    bool m_actionable = true;
    AppIcon *m_icon;
    TextLabel *m_closed;
    TextLabel *m_name;
    ReopenButton *m_reopenButton;
    PlainButton *m_removeButton;
};

} // namespace tovel
