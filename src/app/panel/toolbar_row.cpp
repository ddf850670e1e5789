#include "app/panel/toolbar_row.h"

#include <QEvent>
#include <QStyle>

namespace tovel {

namespace {

constexpr int Margin = 20; // sets the gear above the button that adds applications

} // namespace

ToolbarRow::ToolbarRow(QWidget *parent)
    : QWidget(parent)
{
    setFixedHeight(Height);
}

void ToolbarRow::setTitle(QWidget *title) { setItem(m_title, title); }

void ToolbarRow::setSettings(QWidget *settings) { setItem(m_settings, settings); }

void ToolbarRow::resizeEvent(QResizeEvent *event)
{
    QWidget::resizeEvent(event);
    place();
}

void ToolbarRow::changeEvent(QEvent *event)
{
    QWidget::changeEvent(event);
    if (event->type() == QEvent::LayoutDirectionChange)
        place();
}

void ToolbarRow::setItem(QWidget *&item, QWidget *replacement)
{
    if (item == replacement)
        return;
    delete item;
    item = replacement;
    if (!item)
        return;
    item->setParent(this);
    // The keyboard goes through the row in reading order, whichever item came first.
    if (m_title && m_settings)
        setTabOrder(m_title, m_settings);
    place();
    item->show();
}

void ToolbarRow::place()
{
    const int middle = (Height - TitleSize.height()) / 2;
    if (m_title)
        m_title->setGeometry({{(width() - TitleSize.width()) / 2, middle}, TitleSize});
    if (m_settings) {
        const QRect trailing({width() - Margin - SettingsSize.width(), middle}, SettingsSize);
        m_settings->setGeometry(QStyle::visualRect(layoutDirection(), rect(), trailing));
    }
}

} // namespace tovel
