#pragma once

#include "model/running_app.h"

#include <QWidget>

#include <functional>

class QLineEdit;
class QVBoxLayout;

namespace tovel {

class AppRow;
class ColoredLabel;

// What the add popover holds: a search field above the applications that can join the flock. Down
// and Up go through the rows, Return adds the current one, or the first from the search field.
class AddPopoverContent final : public QWidget
{
    Q_OBJECT

public:
    struct Actions
    {
        std::function<void(const QString &)> search;
        std::function<void(const RunningApp &)> add;
    };

    explicit AddPopoverContent(Actions actions, QWidget *parent = nullptr);

    // A row for each application, in this order. When the row with the focus goes, the focus passes
    // to the one that takes its place, or to the search field.
    void setApps(const QList<RunningApp> &apps);
    void setSearch(const QString &search);

    bool eventFilter(QObject *watched, QEvent *event) override;

private:
    bool handleKey(QWidget *widget, int key, const QString &text);
    AppRow *makeRow();

    Actions m_actions;
    QLineEdit *m_search;
    QWidget *m_list;
    QVBoxLayout *m_stack;
    ColoredLabel *m_none;
    QList<AppRow *> m_rows; // as many as were ever needed; those not in use are hidden
    qsizetype m_shown = 0;
};

} // namespace tovel
