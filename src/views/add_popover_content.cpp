#include "views/add_popover_content.h"

#include "views/app_row.h"
#include "views/colored_label.h"
#include "views/components/overlay_scroll_area.h"
#include "views/text_style.h"
#include "views/theme.h"

#include <QKeyEvent>
#include <QLineEdit>
#include <QScrollBar>
#include <QVBoxLayout>

#include <algorithm>

namespace tovel {

using namespace Qt::StringLiterals;

namespace {

constexpr int usualWidth = 280;
constexpr int listHeight = 280;
constexpr int padding = 14;
constexpr int spacing = 12;
constexpr int rowSpacing = 3;
constexpr int textPadding = 16;
constexpr int scrollerRoom = 10; // of the padding, so that the scroller covers no row

} // namespace

AddPopoverContent::AddPopoverContent(Actions actions, QWidget *parent)
    : QWidget(parent)
    , m_actions(std::move(actions))
    , m_search(new QLineEdit)
    , m_area(new OverlayScrollArea)
    , m_list(new QWidget)
    , m_stack(new QVBoxLayout(m_list))
    , m_none(new ColoredLabel(u"No apps found"_s, textFont(TextStyle::body), secondary))
{
    m_search->setPlaceholderText(u"Search apps"_s);
    m_search->setAccessibleName(u"Search apps"_s);
    m_search->setFont(textFont(TextStyle::body));
    m_search->installEventFilter(this);
    connect(m_search, &QLineEdit::textChanged, this, [this](const QString &text) {
        m_actions.search(text);
        mark();
        m_area->verticalScrollBar()->setValue(0);
    });

    m_none->setAlignment(Qt::AlignCenter);
    m_none->setContentsMargins(textPadding, textPadding, textPadding, textPadding);
    m_stack->setContentsMargins(0, 0, scrollerRoom, 0);
    m_stack->setSpacing(rowSpacing);
    m_stack->addWidget(m_none);
    m_stack->addStretch(1);
    m_area->setWidget(m_list);
    m_area->setFixedHeight(grown(listHeight));

    auto *layout = new QVBoxLayout(this);
    layout->setContentsMargins(padding, padding, padding - scrollerRoom, padding);
    layout->setSpacing(spacing);
    auto *searchRow = new QHBoxLayout;
    searchRow->setContentsMargins(0, 0, scrollerRoom, 0);
    searchRow->addWidget(m_search);
    layout->addLayout(searchRow);
    layout->addWidget(m_area);
    setFixedWidth(grown(usualWidth));
    setFocusProxy(m_search);
}

void AddPopoverContent::setApps(const QList<RunningApp> &apps)
{
    const auto focused = m_rows.indexOf(qobject_cast<AppRow *>(focusWidget()));
    while (m_rows.size() < apps.size())
        m_rows.append(makeRow());
    m_shown = apps.size();
    for (qsizetype i = 0; i < m_rows.size(); ++i) {
        if (i < m_shown)
            m_rows[i]->setApp(apps[i]);
        else if (i == focused)
            (m_shown > 0 ? static_cast<QWidget *>(m_rows[m_shown - 1]) : m_search)->setFocus();
        m_rows[i]->setVisible(i < m_shown);
    }
    m_none->setVisible(apps.isEmpty());
    mark();
}

void AddPopoverContent::setBusy(bool busy)
{
    m_busy = busy;
    for (AppRow *row : m_rows)
        row->setActionable(!busy);
}

void AddPopoverContent::setSearch(const QString &search)
{
    if (m_search->text() != search)
        m_search->setText(search);
    m_area->verticalScrollBar()->setValue(0);
}

bool AddPopoverContent::eventFilter(QObject *watched, QEvent *event)
{
    auto *widget = qobject_cast<QWidget *>(watched);
    if (widget == m_search
        && (event->type() == QEvent::FocusIn || event->type() == QEvent::FocusOut))
        mark();
    if (widget && event->type() == QEvent::KeyPress) {
        const auto *key = static_cast<QKeyEvent *>(event);
        if (handleKey(widget, key->key(), key->text()))
            return true;
    }
    return QWidget::eventFilter(watched, event);
}

bool AddPopoverContent::handleKey(QWidget *widget, int key, const QString &text)
{
    const qsizetype at = m_rows.indexOf(qobject_cast<AppRow *>(widget)); // -1: the search field
    switch (key) {
    case Qt::Key_Down:
        if (at + 1 < m_shown)
            m_rows[at + 1]->setFocus(Qt::TabFocusReason);
        return true;
    case Qt::Key_Up:
        if (at > 0)
            m_rows[at - 1]->setFocus(Qt::TabFocusReason);
        else if (at == 0)
            m_search->setFocus(Qt::TabFocusReason);
        return true;
    case Qt::Key_Return:
    case Qt::Key_Enter:
        if (at < 0 && m_marked && !m_busy)
            m_marked->click();
        return at < 0;
    default:
        break;
    }
    const bool types = at >= 0 && !text.isEmpty() && text.front().isLetterOrNumber();
    if (types) {
        m_search->setFocus();
        m_search->setCursorPosition(static_cast<int>(m_search->text().size()));
        m_search->insert(text);
    }
    return types;
}

AppRow *AddPopoverContent::makeRow()
{
    auto *row = new AppRow(m_list);
    row->installEventFilter(this);
    row->setActionable(!m_busy);
    connect(row, &AppRow::clicked, this, [this, row] { m_actions.add(RunningApp(row->app())); });
    m_stack->insertWidget(static_cast<int>(m_rows.size()), row);
    return row;
}

void AddPopoverContent::mark()
{
    const bool isSearching = m_search->hasFocus() && !m_search->text().isEmpty();
    m_marked = isSearching && m_shown > 0 ? m_rows.first() : nullptr;
    for (AppRow *row : m_rows)
        row->setMarked(row == m_marked);
    m_search->setAccessibleDescription(m_marked ? u"Return adds "_s + m_marked->app().name
                                                : QString());
}

} // namespace tovel
