#pragma once

#include "model/running_app.h"

#include <QCoroTask>
#include <QHash>
#include <QWidget>

#include <functional>

namespace tovel {

class ChosenAppCard;
class ColoredLabel;
class EqualColumnsLayout;
class PlainButton;

// The chosen applications, and the button that adds more.
class FlockSection final : public QWidget
{
    Q_OBJECT

public:
    // What its controls do, given the application.
    struct Actions
    {
        std::function<void(const RunningApp &)> remove;
        std::function<QCoro::Task<>(RunningApp)> reopen;
    };

    explicit FlockSection(Actions actions, QWidget *parent = nullptr);

    PlainButton *addButton() const { return m_add; }

    // A card for each application, in this order. Cards that stay keep their state and the focus.
    void setApps(const QList<RunningApp> &apps);
    // Whether nothing can be changed now. What has the focus keeps it.
    void setBusy(bool busy);
    // What takes the keyboard, in reading order.
    QList<QWidget *> tabStops() const;

protected:
    void resizeEvent(QResizeEvent *event) override;

private:
    ChosenAppCard *makeCard(const RunningApp &app);

    Actions m_actions;
    ColoredLabel *m_heading;
    PlainButton *m_add;
    QWidget *m_cards;
    EqualColumnsLayout *m_grid;
    QHash<QString, ChosenAppCard *> m_cardByApp;
    QList<RunningApp> m_apps;
    bool m_busy = false;
};

} // namespace tovel
