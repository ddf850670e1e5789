#include "views/tovel_title_view.h"

#include "model/tovel_model.h"
#include "views/components/accessible_surface.h"
#include "views/components/device_pixels.h"
#include "views/icon_images.h"
#include "views/mirrored.h"
#include "views/model_watch.h"
#include "views/text_style.h"
#include "views/theme.h"

#include <QFontMetrics>
#include <QPainter>

#include <algorithm>
#include <utility>

namespace tovel {

using namespace Qt::StringLiterals;

namespace {

constexpr QSize frame(132, 32);
constexpr int usualImage = 23;
constexpr int largestImage = 30;
constexpr int spacing = 7;
constexpr int textSize = 16;
constexpr int largestText = 24; // in the frame

int imageSize() { return std::min(grown(usualImage), largestImage); }

} // namespace

TovelTitleView::TovelTitleView(TovelModel &model, QWidget *parent)
    : QWidget(parent)
    , m_model(model)
    , m_watch(new ModelWatch(
          model, [this] { redraw(); }, this))
    , m_style(model.iconStyle())
{
    setAccessibleRole(*this, QAccessible::StaticText);
    setFixedSize(frame);
    setAccessibleName(u"Tovel"_s);
}

void TovelTitleView::redraw()
{
    if (m_style == m_model.iconStyle())
        return;
    m_style = m_model.iconStyle();
    m_markSide.reset();
    update();
}

void TovelTitleView::loadMark()
{
    const int side = qRound(imageSize() * devicePixelRatioF());
    if (std::exchange(m_markSide, side) != side)
        m_mark = image(m_style, side).value_or(QImage());
}

void TovelTitleView::paintEvent(QPaintEvent *)
{
    const QString title = u"Tovel"_s;
    const QFont font = systemFont(std::min(grown(textSize), largestText), QFont::DemiBold);
    loadMark();
    const int imageWidth = m_mark.isNull() ? 0 : imageSize() + spacing;
    const double textWidth = QFontMetricsF(font).horizontalAdvance(title);
    const double left = (width() - imageWidth - textWidth) / 2;

    QPainter painter(this);
    if (!m_mark.isNull()) {
        const int side = imageSize();
        const QRectF box(left, (height() - side) / 2.0, side, side);
        const QRect pixels = devicePixels(painter, mirrored(box, *this));
        paintDeviceImage(painter, pixels.topLeft(), m_mark);
    }
    painter.setFont(font);
    painter.setPen(TovelTheme::accent(palette()));
    painter.drawText(mirrored(QRectF(left + imageWidth, 0, textWidth + 1, height()), *this),
                     Qt::AlignVCenter | Qt::AlignAbsolute | Qt::AlignLeft, title);
}

} // namespace tovel
