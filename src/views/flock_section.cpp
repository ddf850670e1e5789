#include "views/flock_section.h"

#include "views/colored_label.h"
#include "views/components/chosen_app_card.h"
#include "views/components/equal_columns_layout.h"
#include "views/components/overlay_scroll_area.h"
#include "views/components/plain_button.h"
#include "views/mirrored.h"
#include "views/text_style.h"
#include "views/theme.h"

#include <QVBoxLayout>

#include <algorithm>

namespace tovel {

using namespace Qt::StringLiterals;

namespace {

constexpr int sideMargin = 24;
constexpr int topMargin = 24;
constexpr int spacing = 12;
constexpr int columns = 4;
constexpr int narrowestColumn = 10;
constexpr int gridPadding = 2;
constexpr int lowestArea = 80;
constexpr int addButtonSize = 28;
constexpr int usualPlus = 16;

} // namespace

FlockSection::FlockSection(Actions actions, QWidget *parent)
    : QWidget(parent)
    , m_actions(std::move(actions))
    , m_heading(makeHeading(u"Fly these tovel…"_s, this))
    , m_add(new PlainButton(this))
    , m_cards(new QWidget)
    , m_grid(new EqualColumnsLayout(m_cards))
{
    m_add->setSymbol(u"plus"_s, std::min(grown(usualPlus), addButtonSize));
    m_add->setFixedSize(addButtonSize, addButtonSize);
    m_add->setAccessibleName(u"Add app"_s);
    m_add->setColor([](const QPalette &palette) { return TovelTheme::accent(palette); });

    m_heading->setContentsMargins(sideMargin, 0, sideMargin, 0);
    m_grid->setColumns(columns);
    m_grid->setColumnWidths(narrowestColumn, QWIDGETSIZE_MAX);
    m_grid->setSpacings(spacing, spacing);
    m_grid->setContentsMargins(sideMargin + gridPadding, 0, sideMargin + gridPadding, gridPadding);
    auto *area = new OverlayScrollArea;
    area->setWidget(m_cards);
    area->setMinimumHeight(lowestArea);

    auto *layout = new QVBoxLayout(this);
    layout->setContentsMargins(0, topMargin, 0, 0);
    layout->setSpacing(spacing);
    layout->addWidget(m_heading);
    layout->addWidget(area, 1);
}

void FlockSection::setApps(const QList<RunningApp> &apps)
{
    QStringList order;
    for (const RunningApp &app : apps)
        order.append(app.id);
    for (const RunningApp &app : m_apps) {
        if (!order.contains(app.id))
            delete m_cardByApp.take(app.id);
    }

    while (QLayoutItem *item = m_grid->takeAt(0))
        delete item;
    for (const RunningApp &app : apps) {
        ChosenAppCard *&card = m_cardByApp[app.id];
        if (card)
            card->setApp(app);
        else
            card = makeCard(app);
        m_grid->addWidget(card);
    }
    m_apps = apps;
}

void FlockSection::setBusy(bool busy)
{
    m_busy = busy;
    m_add->setActionable(!busy);
    for (ChosenAppCard *card : std::as_const(m_cardByApp))
        card->setActionable(!busy);
}

QList<QWidget *> FlockSection::tabStops() const
{
    QList<QWidget *> stops{m_add};
    for (const RunningApp &app : m_apps) {
        for (PaintedButton *button : m_cardByApp[app.id]->findChildren<PaintedButton *>())
            stops.append(button);
    }
    return stops;
}

void FlockSection::resizeEvent(QResizeEvent *event)
{
    QWidget::resizeEvent(event);
    // Over the end of the heading, which it does not make any higher.
    const QRectF heading = m_heading->geometry();
    const QRectF button(width() - sideMargin - addButtonSize,
                        heading.center().y() - addButtonSize / 2.0, addButtonSize, addButtonSize);
    m_add->setGeometry(mirrored(button, *this).toRect());
    m_add->raise();
}

ChosenAppCard *FlockSection::makeCard(const RunningApp &app)
{
    auto *card = new ChosenAppCard(app, m_cards);
    card->onRemove([this, card] { m_actions.remove(card->app()); });
    card->setActionable(!m_busy);
    card->onReopen([this, card] { return m_actions.reopen(card->app()); });
    card->show();
    return card;
}

} // namespace tovel
