#pragma once

#include "model/running_app.h"

#include <QWidget>

#include <functional>

class QLineEdit;
class QVBoxLayout;

namespace tovel {

class AppRow;
class ColoredLabel;
class OverlayScrollArea;

// What the add popover holds: a search field above the applications that can join the flock. Down
// and Up go through the rows, Return adds the one that has the focus. In the search field it adds
// the first of those that were searched for, which is marked meanwhile.
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
    // Whether no application can join now.
    void setBusy(bool busy);
    // Shows the list from its top, as typing does.
    void setSearch(const QString &search);

    bool eventFilter(QObject *watched, QEvent *event) override;

private:
    bool handleKey(QWidget *widget, int key, const QString &text);
    AppRow *makeRow();
    void mark();

    Actions m_actions;
    QLineEdit *m_search;
    OverlayScrollArea *m_area;
    QWidget *m_list;
    QVBoxLayout *m_stack;
    ColoredLabel *m_none;
    AppRow *m_marked = nullptr; // what Return adds from the search field
    QList<AppRow *> m_rows; // as many as were ever needed; those not in use are hidden
    qsizetype m_shown = 0;
    bool m_busy = false;
};

} // namespace tovel
