#include "views/tovel_view.h"

#include "model/tovel_model.h"
#include "views/add_popover_content.h"
#include "views/components/overlay_scroll_area.h"
#include "views/components/plain_button.h"
#include "views/components/popover.h"
#include "views/destination_section.h"
#include "views/flock_section.h"
#include "views/model_watch.h"
#include "views/rename_alert.h"
#include "views/theme.h"
#include "views/tovel_status_view.h"

#include <QEvent>
#include <QPainter>
#include <QVBoxLayout>

namespace tovel {

namespace {

constexpr QSize smallestSize(900, 440);
constexpr int contentPadding = 24;
constexpr int sectionSpacing = 20;
constexpr int separatorHeight = 1;
constexpr int lowestDestinations = 60;

// As high as its content while there is room; scrolls when there is none.
class DestinationArea final : public OverlayScrollArea
{
public:
    explicit DestinationArea(QWidget *content)
    {
        setWidget(content);
        setSizePolicy(QSizePolicy::Preferred, QSizePolicy::Maximum);
        setMinimumHeight(lowestDestinations);
    }

    QSize sizeHint() const override
    {
        return {width(), widget()->layout()->totalHeightForWidth(width())};
    }

protected:
    void resizeEvent(QResizeEvent *event) override
    {
        OverlayScrollArea::resizeEvent(event);
        updateGeometry();
    }

    bool eventFilter(QObject *watched, QEvent *event) override
    {
        if (event->type() == QEvent::LayoutRequest)
            updateGeometry();
        return OverlayScrollArea::eventFilter(watched, event);
    }
};

} // namespace

TovelView::TovelView(TovelModel &model, QWidget *parent)
    : QWidget(parent)
    , m_model(model)
    , m_watch(new ModelWatch(
          model, [this] { redraw(); }, this))
    , m_flock(new FlockSection(
          {.remove = [this](const RunningApp &app) { m_model.select(app, false); },
           .reopen = [this](RunningApp app) { return m_model.reopen(std::move(app)); }}))
    , m_destination(new DestinationSection(
          {.selectDisplay =
               [this](const QString &display) {
                   m_state.selectedDisplay = display;
                   redraw();
               },
           .move = [this](const Desktop &desktop) { m_model.migrate(desktop); },
           .startRenaming = [this](const Desktop &desktop) { startRenaming(desktop); }}))
    , m_status(new TovelStatusView(model))
    , m_addContent(new AddPopoverContent(
          {.search =
               [this](const QString &search) {
                   m_state.search = search;
                   redrawAddPopover();
               },
           .add = [this](const RunningApp &app) { m_model.select(app, true); }}))
    , m_addPopover(new Popover(m_flock->addButton()))
{
    setMinimumSize(smallestSize);

    auto *content = new QVBoxLayout;
    content->setContentsMargins(0, 0, 0, contentPadding); // the flock brings its own at the top
    content->setSpacing(sectionSpacing);
    content->addWidget(m_flock, 1);
    content->addWidget(new DestinationArea(m_destination));
    auto *layout = new QVBoxLayout(this);
    layout->setContentsMargins(0, separatorHeight, 0, 0);
    layout->setSpacing(0);
    layout->addLayout(content, 1);
    layout->addWidget(m_status);

    m_addPopover->setContent(m_addContent);
    m_addPopover->setArrow(Popover::LeadingArrow);
    connect(m_flock->addButton(), &PlainButton::clicked, this, &TovelView::toggleAdding);
    connect(m_addPopover, &Popover::closed, this, [this] { m_state.adding = false; });
    redraw();
}

// An open popover closes when it goes, which is after everything here has gone.
TovelView::~TovelView() { m_addPopover->disconnect(this); }

void TovelView::setAccessAdvice(std::function<QString()> advice)
{
    m_status->setAccessAdvice(std::move(advice));
}

void TovelView::paintEvent(QPaintEvent *)
{
    QPainter painter(this);
    painter.fillRect(rect(), windowBackground(palette()));
    painter.fillRect(0, 0, width(), separatorHeight, TovelTheme::separator(palette()));
}

void TovelView::redraw()
{
    m_flock->setApps(m_model.chosenApps());
    m_flock->setBusy(m_model.busy());
    m_destination->setDisplays(displayValues(m_model, m_state), m_model.busy());
    m_destination->setDesktops(tileValues(m_model, m_state), columnCount(m_model, m_state));
    m_destination->setEmpty(m_model.desktops().isEmpty());
    orderTabs();
    if (m_state.adding)
        redrawAddPopover();
}

void TovelView::orderTabs()
{
    // Cards, displays and tiles come later than what follows them.
    const QList<QWidget *> stops = m_flock->tabStops() + m_destination->tabStops();
    for (qsizetype i = 1; i < stops.size(); ++i)
        setTabOrder(stops[i - 1], stops[i]);
}

void TovelView::redrawAddPopover()
{
    m_addContent->setApps(availableApps(m_model, m_state));
    m_addContent->setBusy(m_model.busy());
}

void TovelView::toggleAdding()
{
    m_model.refresh();
    m_state.search.clear();
    m_addContent->setSearch({});
    m_state.adding = !m_state.adding;
    if (!m_state.adding) {
        m_addPopover->close();
        return;
    }
    redrawAddPopover();
    m_addPopover->open();
}

void TovelView::startRenaming(const Desktop &desktop)
{
    m_state.newName = m_model.name(desktop);
    m_state.renaming = desktop;
    delete m_alert;
    m_alert = new RenameAlert(m_state.newName, this);
    m_alert->setAttribute(Qt::WA_DeleteOnClose);
    connect(m_alert, &QDialog::finished, this, &TovelView::endRenaming);
    m_alert->open();
}

void TovelView::endRenaming(int result)
{
    m_state.newName = m_alert->newName();
    if (m_state.renaming && result == QDialog::Accepted)
        m_model.rename(*m_state.renaming, m_state.newName);
    m_state.renaming.reset();
}

} // namespace tovel
