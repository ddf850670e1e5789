#include "views/skipped_list.h"

#include "views/colored_label.h"
#include "views/components/overlay_scroll_area.h"
#include "views/components/text_block.h"
#include "views/text_style.h"
#include "views/theme.h"

#include <QVBoxLayout>

#include <algorithm>

namespace tovel {

using namespace Qt::StringLiterals;

namespace {

constexpr int usualWidth = 320;
constexpr int padding = 18;
constexpr int spacing = 14;
constexpr int ringRoom = 6; // of the padding, for the mark of the focus around the list
constexpr int outerPadding = padding - ringRoom;
constexpr int lineSpacing = 4;
constexpr int highestRow = 78;
constexpr int highestList = 280;
constexpr int mostLines = 20; // of a name or a reason

QColor textColor(const QPalette &palette)
{
    return palette.color(QPalette::Active, QPalette::WindowText);
}

TextLabel *makeLine(const QString &text, QFont::Weight weight, const ColoredLabel::Color &color)
{
    auto *line = new TextLabel(mostLines);
    line->setFont(textFont(TextStyle::callout, weight));
    line->setContent(text);
    line->setColor(color);
    return line;
}

} // namespace

SkippedList::SkippedList(QWidget *parent)
    : QWidget(parent)
    , m_area(new OverlayScrollArea)
{
    m_area->setFocusPolicy(Qt::TabFocus); // it has nothing else that the keys could scroll
    auto *layout = new QVBoxLayout(this);
    layout->setContentsMargins(outerPadding, padding, outerPadding, outerPadding);
    layout->setSpacing(spacing - ringRoom);
    auto *title
        = new ColoredLabel(u"Windows not moving"_s, textFont(TextStyle::headline), textColor);
    title->setContentsMargins(ringRoom, 0, ringRoom, 0);
    layout->addWidget(title);
    layout->addWidget(m_area);
    setFixedWidth(grown(usualWidth));
}

void SkippedList::setWindows(const QList<TravelWindow> &windows)
{
    if (m_rows && m_windows == windows)
        return;
    m_windows = windows;

    m_rows = new QWidget;
    auto *rows = new QVBoxLayout(m_rows);
    rows->setContentsMargins(ringRoom, ringRoom, ringRoom, ringRoom);
    rows->setSpacing(spacing);
    for (const TravelWindow &window : windows) {
        auto *row = new QVBoxLayout;
        row->setSpacing(lineSpacing);
        row->addWidget(makeLine(window.appName, QFont::DemiBold, textColor));
        row->addWidget(makeLine(window.skipReason.value_or(QString()), QFont::Normal, secondary));
        rows->addLayout(row);
    }
    rows->addStretch(1);
    m_area->setWidget(m_rows);

    const int highest = static_cast<int>(
        std::min<qsizetype>(grown(highestRow) * windows.size(), grown(highestList)));
    m_area->setFixedHeight(std::min(highest, rows->heightForWidth(width() - 2 * outerPadding)));
}

} // namespace tovel
