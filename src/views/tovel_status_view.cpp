#include "views/tovel_status_view.h"

#include "model/tovel_model.h"
#include "views/busy_indicator.h"
#include "views/colored_label.h"
#include "views/components/accessible_surface.h"
#include "views/components/overlay_scroll_area.h"
#include "views/components/plain_button.h"
#include "views/components/popover.h"
#include "views/components/symbol.h"
#include "views/mirrored.h"
#include "views/model_watch.h"
#include "views/skipped_list.h"
#include "views/status_values.h"
#include "views/text_style.h"
#include "views/theme.h"

#include <QHBoxLayout>
#include <QPainter>

#include <algorithm>

namespace tovel {

using namespace Qt::StringLiterals;

namespace {

constexpr int sideMargin = 24;
constexpr int verticalMargin = 12;
constexpr int spacing = 8;
constexpr int lowestStrip = 42;
constexpr int highestText = 160; // a longer text scrolls
constexpr int wheelSize = 10;
constexpr int symbolSize = 14;
constexpr int dotSize = 6;
constexpr int infoSize = 14;
constexpr int narrowestText = 240; // beside the longest label of skipped windows
constexpr int textSlack = 2; // so that a text never wraps by a fraction
constexpr double separatorHeight = 1;
const QColor together = QColor::fromRgbF(0.4F, 0.64F, 0.47F);

// Labels wrap between words alone: words wider than a line get places where they may.
QString breakable(const QString &text, const QFontMetrics &metrics, int width)
{
    constexpr QChar zeroWidthSpace(0x200B);
    QString result;
    int word = 0;
    for (const QChar character : text) {
        word = character.isSpace() ? 0 : word + metrics.horizontalAdvance(character);
        if (word > width && !character.isLowSurrogate()) {
            result += zeroWidthSpace;
            word = metrics.horizontalAdvance(character);
        }
        result += character;
    }
    return result;
}

} // namespace

TovelStatusView::TovelStatusView(TovelModel &model, QWidget *parent)
    : QWidget(parent)
    , m_model(model)
    , m_watch(new ModelWatch(
          model, [this] { redraw(); }, this))
    , m_indicatorRoom(new QSpacerItem(0, 0))
    , m_busy(new BusyIndicator(this))
    , m_text(new ColoredLabel({}, textFont(TextStyle::caption),
                              [this](const QPalette &palette) { return textColor(palette); }))
    , m_textArea(new OverlayScrollArea)
    , m_together(new ColoredLabel(
          u"All together now."_s, textFont(TextStyle::caption2),
          [](const QPalette &palette) { return withOpacity(TovelTheme::accent(palette), 0.45); }))
    , m_skipped(new PlainButton)
    , m_skippedList(new SkippedList)
    , m_popover(new Popover(m_skipped))
{
    setAccessibleRole(*this, QAccessible::Grouping);
    m_text->setWordWrap(true);
    m_text->setTextInteractionFlags(Qt::TextSelectableByMouse | Qt::TextSelectableByKeyboard);
    m_textArea->setWidget(m_text);

    m_skipped->setSymbol(u"info.circle"_s, grown(infoSize));
    m_skipped->setFont(textFont(TextStyle::caption));
    m_skipped->setColor(
        [](const QPalette &palette) { return withOpacity(TovelTheme::accent(palette), 0.7); });
    m_skipped->setElideMode(Qt::ElideMiddle);
    m_skipped->setToolTip(u"Show which windows won’t move and why"_s);
    m_popover->setContent(m_skippedList);
    m_popover->setArrow(Popover::TopArrow);
    connect(m_skipped, &PlainButton::clicked, this, &TovelStatusView::toggleSkipped);
    connect(m_popover, &Popover::closed, this, [this] { m_showingSkipped = false; });

    auto *layout = new QHBoxLayout(this);
    // The button's own margin is part of the strip's.
    constexpr int endMargin = sideMargin - PlainButton::textMargin;
    layout->setContentsMargins(sideMargin, verticalMargin, endMargin, verticalMargin);
    m_together->setContentsMargins(0, 0, PlainButton::textMargin, 0);
    layout->setSpacing(spacing);
    layout->addSpacerItem(m_indicatorRoom);
    layout->addWidget(m_textArea, 1);
    layout->addWidget(m_together);
    layout->addWidget(m_skipped);
    redraw();
}

// An open popover closes when it goes, which is after everything here has gone.
TovelStatusView::~TovelStatusView() { m_popover->disconnect(this); }

void TovelStatusView::redraw()
{
    const std::optional<QString> warning = statusWarning(m_model);
    const bool flockIsTogether = flockDesktop(m_model).has_value();
    m_indicator = m_model.busy() ? Indicator::Busy
        : warning                ? Indicator::Warning
        : flockIsTogether        ? Indicator::Together
                                 : Indicator::Apart;
    m_busy->setVisible(m_indicator == Indicator::Busy);
    m_shown = shownText();
    m_text->updateColor();

    const QList<TravelWindow> skipped = skippedWindows(m_model);
    m_skipped->setText(skippedLabel(skipped));
    m_skipped->setVisible(!skipped.isEmpty());
    m_together->setVisible(skipped.isEmpty() && flockIsTogether);
    if (m_showingSkipped)
        m_skippedList->setWindows(skipped);
    fitHeight();
    update();
}

QString TovelStatusView::shownText() const
{
    const bool asks = !m_model.busy() && !(m_model.available() && m_model.trusted());
    return statusText(m_model, asks && m_accessAdvice ? m_accessAdvice() : QString());
}

void TovelStatusView::setAccessAdvice(std::function<QString()> advice)
{
    m_accessAdvice = std::move(advice);
    redraw();
}

void TovelStatusView::toggleSkipped()
{
    m_showingSkipped = !m_showingSkipped;
    if (m_showingSkipped) {
        m_skippedList->setWindows(skippedWindows(m_model));
        m_popover->open();
    } else {
        m_popover->close();
    }
}

int TovelStatusView::textWidth() const
{
    int result = width() - 2 * sideMargin - indicatorSize() - spacing;
    for (const QWidget *item :
         {static_cast<QWidget *>(m_together), static_cast<QWidget *>(m_skipped)}) {
        if (!item->isHidden())
            result -= spacing + std::min(item->sizeHint().width(), item->maximumWidth());
    }
    return std::max(result, 1);
}

void TovelStatusView::fitHeight()
{
    const int rest = width() - 2 * sideMargin - indicatorSize() - 2 * spacing;
    m_skipped->setMaximumWidth(std::max(rest - narrowestText, narrowestText));
    m_indicatorRoom->changeSize(indicatorSize() + spacing, 0, QSizePolicy::Fixed);
    layout()->invalidate();
    const QString text = breakable(m_shown, m_text->fontMetrics(), textWidth());
    if (m_text->text() != text)
        m_text->setText(text);
    // A press beside the text is the window's, which it moves.
    m_text->setMaximumWidth(m_text->fontMetrics().size(0, m_text->text()).width() + textSlack);
    const int height = std::min(grown(highestText), m_text->heightForWidth(textWidth()));
    m_textArea->setFixedHeight(std::max(lowestStrip - 2 * verticalMargin, height));
    setFixedHeight(m_textArea->height() + 2 * verticalMargin);
    m_busy->move((indicatorBox().center() - QRectF(m_busy->rect()).center()).toPoint());
}

void TovelStatusView::resizeEvent(QResizeEvent *event)
{
    QWidget::resizeEvent(event);
    fitHeight();
}

void TovelStatusView::paintEvent(QPaintEvent *)
{
    QPainter painter(this);
    painter.setRenderHint(QPainter::Antialiasing);
    painter.fillRect(rect(), TovelTheme::chrome(palette()));
    painter.fillRect(QRectF(0, 0, width(), separatorHeight), TovelTheme::separator(palette()));

    const QRectF box = indicatorBox();
    switch (m_indicator) {
    case Indicator::Busy:
        break;
    case Indicator::Warning:
        paintSymbol(painter, u"exclamationmark.circle"_s, box, systemOrange(palette()));
        break;
    case Indicator::Together:
    case Indicator::Apart:
        painter.setPen(Qt::NoPen);
        painter.setBrush(m_indicator == Indicator::Together
                             ? together
                             : withOpacity(TovelTheme::accent(palette()), 0.45));
        painter.drawEllipse(box);
        break;
    }
}

QColor TovelStatusView::textColor(const QPalette &palette) const
{
    return m_indicator == Indicator::Warning ? systemOrange(palette)
                                             : withOpacity(TovelTheme::accent(palette), 0.65);
}

int TovelStatusView::indicatorSize() const
{
    switch (m_indicator) {
    case Indicator::Busy:
        return wheelSize;
    case Indicator::Warning:
        return grown(symbolSize);
    case Indicator::Together:
    case Indicator::Apart:
        return grown(dotSize);
    }
    Q_UNREACHABLE();
}

QRectF TovelStatusView::indicatorBox() const
{
    const int size = indicatorSize();
    return mirrored(QRectF(sideMargin, (height() - size) / 2.0, size, size), *this);
}

} // namespace tovel
