#include "views/components/chosen_app_card.h"

#include "views/components/accessible_surface.h"
#include "views/components/app_icon.h"
#include "views/components/continuous_corners.h"
#include "views/components/menu_text.h"
#include "views/components/plain_button.h"
#include "views/components/reopen_button.h"
#include "views/components/text_block.h"
#include "views/text_style.h"
#include "views/theme.h"

#include <QApplication>
#include <QContextMenuEvent>
#include <QMenu>
#include <QPainter>
#include <QPointer>
#include <QStyle>
#include <QVBoxLayout>

namespace tovel {

using namespace Qt::StringLiterals;

namespace {

constexpr double cornerRadius = 12;
constexpr int padding = 12;
constexpr int spacing = 10;
constexpr int lowestContent = 96;
constexpr int iconSize = 36;
constexpr int mostNameLines = 2;
constexpr int removeSize = 28;
constexpr int removePadding = 5;
constexpr int xmarkSize = 11;

QCoro::Task<> runReopen(std::function<QCoro::Task<>()> reopen, std::function<void()> ended)
{
    co_await reopen();
    ended();
}

} // namespace

ChosenAppCard::ChosenAppCard(const RunningApp &app, QWidget *parent)
    : QWidget(parent)
    , m_app(app)
    , m_icon(new AppIcon(grown(iconSize), this))
    , m_closed(new TextLabel(1, this))
    , m_name(new TextLabel(mostNameLines, this))
    , m_reopenButton(new ReopenButton(this))
    , m_removeButton(new PlainButton(this))
{
    setAccessibleRole(*this, QAccessible::Grouping);
    m_closed->setContent(u"App closed"_s);
    m_closed->setFont(textFont(TextStyle::caption));
    m_closed->setColor(secondary);
    m_closed->setAlignment(Qt::AlignCenter);
    m_name->setFont(textFont(TextStyle::body, QFont::Medium));
    m_name->setAlignment(Qt::AlignCenter);
    connect(m_reopenButton, &PlainButton::clicked, this, &ChosenAppCard::reopen);

    m_removeButton->setSymbol(u"xmark"_s, grown(xmarkSize));
    m_removeButton->setFixedSize(removeSize, removeSize);
    m_removeButton->setFocusPolicy(Qt::TabFocus);
    m_removeButton->setColor([this](const QPalette &palette) {
        const bool shown = (m_hovered && m_actionable) || m_removeButton->hasFocus();
        return shown ? secondary(palette) : QColor(Qt::transparent);
    });
    connect(m_removeButton, &PlainButton::clicked, this, &ChosenAppCard::remove);

    auto *content = new QVBoxLayout(this);
    content->setContentsMargins(padding, padding, padding, padding);
    content->setSpacing(spacing);
    content->addStretch(1);
    content->addWidget(m_icon, 0, Qt::AlignHCenter);
    content->addWidget(m_closed);
    content->addWidget(m_name);
    content->addWidget(m_reopenButton, 0, Qt::AlignHCenter);
    content->addStretch(1);
    setMinimumHeight(lowestContent + 2 * padding);
    QSizePolicy policy(QSizePolicy::Preferred, QSizePolicy::Preferred);
    policy.setHeightForWidth(true);
    setSizePolicy(policy);
    showApp();
}

void ChosenAppCard::setApp(const RunningApp &app)
{
    if (app == m_app)
        return;
    m_app = app;
    showApp();
}

void ChosenAppCard::setActionable(bool actionable)
{
    m_actionable = actionable;
    for (QWidget *part : {static_cast<QWidget *>(m_icon), static_cast<QWidget *>(m_closed),
                          static_cast<QWidget *>(m_name)})
        part->setEnabled(actionable);
    m_removeButton->setActionable(actionable);
    m_reopenButton->setActionable(actionable && !m_opening);
    update();
}

void ChosenAppCard::onRemove(std::function<void()> remove) { m_remove = std::move(remove); }

void ChosenAppCard::onReopen(std::function<QCoro::Task<>()> reopen)
{
    m_reopen = std::move(reopen);
}

void ChosenAppCard::showApp()
{
    const bool running = m_app.running != nullptr;
    m_icon->setIcon(m_app.icon);
    m_icon->setVisible(running);
    m_closed->setVisible(!running);
    m_name->setContent(m_app.name);
    m_reopenButton->setText(m_opening ? u"Opening…"_s : u"Reopen"_s);
    m_reopenButton->setActionable(m_actionable && !m_opening);
    m_reopenButton->setVisible(!running);

    const QString removal = u"Remove "_s + m_app.name;
    if (m_removeButton->accessibleName() != removal) {
        setAccessibleName(m_app.name);
        m_reopenButton->setAccessibleName(u"Reopen "_s + m_app.name);
        m_removeButton->setAccessibleName(removal);
    }
}

void ChosenAppCard::remove()
{
    if (!m_actionable)
        return;
    // Removed by the keyboard, the card leaves the focus to what comes after it. The mouse gives
    // it none.
    for (int stops = 2; stops > 0 && isAncestorOf(QApplication::focusWidget()); --stops)
        focusNextChild();
    // A copy, as the card may go.
    if (const auto action = m_remove)
        action();
}

void ChosenAppCard::reopen()
{
    if (m_opening || !m_reopen)
        return;
    setOpening(true);
    runReopen(m_reopen, [card = QPointer(this)] {
        if (card)
            card->setOpening(false);
    });
}

void ChosenAppCard::setOpening(bool opening)
{
    m_opening = opening;
    showApp();
}

void ChosenAppCard::contextMenuEvent(QContextMenuEvent *event)
{
    if (!m_actionable) {
        event->ignore();
        return;
    }
    auto *menu = new QMenu(this);
    menu->setAttribute(Qt::WA_DeleteOnClose);
    QAction *action = menu->addAction(menuText(u"Remove "_s + m_app.name));
    // Later, when the menu that the card owns is no longer at work.
    connect(action, &QAction::triggered, this, &ChosenAppCard::remove, Qt::QueuedConnection);
    if (event->reason() == QContextMenuEvent::Keyboard) {
        menu->setActiveAction(action);
        menu->popup(mapToGlobal(rect().center()));
    } else {
        menu->popup(event->globalPos());
    }
    event->accept();
}

bool ChosenAppCard::event(QEvent *event)
{
    switch (event->type()) {
    case QEvent::Enter:
    case QEvent::Leave:
    case QEvent::Hide:
        m_hovered = event->type() == QEvent::Enter;
        update();
        break;
    case QEvent::LayoutDirectionChange:
        placeRemoveButton();
        break;
    default:
        break;
    }
    return QWidget::event(event);
}

void ChosenAppCard::paintEvent(QPaintEvent *)
{
    QPainter painter(this);
    const QColor fill = m_hovered && m_actionable ? withOpacity(TovelTheme::accent(palette()), 0.04)
                                                  : controlBackground(palette());
    paintContinuousRoundedRect(painter, rect(), cornerRadius, fill,
                               withOpacity(secondary(palette()), 0.18));
}

void ChosenAppCard::resizeEvent(QResizeEvent *event)
{
    QWidget::resizeEvent(event);
    placeRemoveButton();
}

void ChosenAppCard::placeRemoveButton()
{
    const QRect box(width() - removePadding - removeSize, removePadding, removeSize, removeSize);
    m_removeButton->move(QStyle::visualRect(layoutDirection(), rect(), box).topLeft());
    m_removeButton->raise();
}

} // namespace tovel
