#include "app/panel/tovel_style.h"

#include "app/panel/appearance_palette.h"
#include "app/panel/menu_painting.h"
#include "views/components/button_look.h"
#include "views/components/continuous_corners.h"
#include "views/components/floating_window.h"
#include "views/theme.h"

#include <QMenu>
#include <QPainter>
#include <QPushButton>
#include <QStyleOptionButton>
#include <QStyleOptionMenuItem>

#include <algorithm>

namespace tovel {

using namespace Qt::StringLiterals;

namespace {

constexpr double fieldRadius = 7;
constexpr int fieldSidePadding = 7;
constexpr int fieldPadding = 5;
constexpr int buttonSidePadding = 16;
constexpr int buttonPadding = 6;
constexpr int narrowestButton = 76;
constexpr double borderOpacity = 0.3;

// Grey or nearly so, but not black or white, as of a session whose user needs the contrast.
bool isPlainGrey(const QColor &color)
{
    const auto [least, most] = std::minmax({color.red(), color.green(), color.blue()});
    return most - least <= 12 && least >= 16 && most <= 250;
}

void paintField(QPainter &painter, const QStyleOption &option)
{
    const QPalette &palette = option.palette;
    paintContinuousRoundedRect(painter, option.rect, fieldRadius, palette.color(QPalette::Base),
                               withOpacity(secondary(palette), borderOpacity));
    if (option.state.testFlag(QStyle::State_HasFocus))
        paintContinuousRoundedRect(painter, option.rect, fieldRadius, {},
                                   TovelTheme::accent(palette), 2);
}

bool isDefault(const QStyleOption &option)
{
    const auto *button = qstyleoption_cast<const QStyleOptionButton *>(&option);
    return button && button->features.testFlag(QStyleOptionButton::DefaultButton)
        && option.state.testFlag(QStyle::State_Enabled);
}

void paintButton(QPainter &painter, const QStyleOption &option)
{
    const QPalette &palette = option.palette;
    const bool filled = isDefault(option);
    const QStyle::State state = option.state;
    paintContinuousRoundedRect(painter, option.rect, fieldRadius,
                               filled ? TovelTheme::accent(palette) : controlBackground(palette),
                               filled ? QColor() : withOpacity(secondary(palette), borderOpacity));
    const QColor tint = stateTint(palette, state.testFlag(QStyle::State_MouseOver),
                                  state.testFlag(QStyle::State_Sunken));
    paintContinuousRoundedRect(
        painter, option.rect, fieldRadius,
        filled && tint.isValid() ? withOpacity(windowBackground(palette), tint.alphaF()) : tint,
        {});
    if (state.testFlag(QStyle::State_HasFocus) && state.testFlag(QStyle::State_KeyboardFocusChange))
        paintFocusRing(painter, palette, option.rect, fieldRadius);
}

} // namespace

TovelStyle::TovelStyle()
    : QProxyStyle(u"fusion"_s)
{ }

void TovelStyle::polish(QPalette &palette)
{
    QProxyStyle::polish(palette);
    if (isPlainGrey(palette.color(QPalette::Active, QPalette::Window)))
        palette = appearancePalette(isDark(palette)).resolve(palette);
    for (const auto group : {QPalette::Active, QPalette::Inactive}) {
        palette.setColor(group, QPalette::Highlight, TovelTheme::accent(palette));
        palette.setColor(group, QPalette::HighlightedText, TovelTheme::chrome(palette));
#if QT_VERSION >= QT_VERSION_CHECK(6, 6, 0)
        palette.setColor(group, QPalette::Accent, TovelTheme::accent(palette));
#endif
    }
}

void TovelStyle::polish(QWidget *widget)
{
    QProxyStyle::polish(widget);
    if (qobject_cast<QMenu *>(widget))
        widget->setAttribute(Qt::WA_TranslucentBackground); // else its mask hides its corners
}

int TovelStyle::pixelMetric(PixelMetric metric, const QStyleOption *option,
                            const QWidget *widget) const
{
    switch (metric) {
    case PM_MenuPanelWidth:
        return 0;
    case PM_MenuHMargin:
    case PM_MenuVMargin:
        return menuPadding;
    case PM_SmallIconSize:
        if (qobject_cast<const QMenu *>(widget))
            return menuPictureSize;
        break;
    case PM_ButtonShiftHorizontal:
    case PM_ButtonShiftVertical:
        return 0;
    default:
        break;
    }
    return QProxyStyle::pixelMetric(metric, option, widget);
}

int TovelStyle::styleHint(StyleHint hint, const QStyleOption *option, const QWidget *widget,
                          QStyleHintReturn *result) const
{
    switch (hint) {
    case SH_DialogButtonBox_ButtonsHaveIcons:
    case SH_Menu_AllowActiveAndDisabled:
        return 0;
    case SH_Menu_Mask: {
        if (blendsWindows())
            return 0;
        if (auto *mask = qstyleoption_cast<QStyleHintReturnMask *>(result))
            mask->region = menuMask(option->rect.size());
        return 1;
    }
    default:
        return QProxyStyle::styleHint(hint, option, widget, result);
    }
}

QRect TovelStyle::subElementRect(SubElement element, const QStyleOption *option,
                                 const QWidget *widget) const
{
    if (element == SE_LineEditContents)
        return option->rect.adjusted(fieldSidePadding, 0, -fieldSidePadding, 0);
    return QProxyStyle::subElementRect(element, option, widget);
}

QSize TovelStyle::sizeFromContents(ContentsType type, const QStyleOption *option,
                                   const QSize &contents, const QWidget *widget) const
{
    switch (type) {
    case CT_MenuItem:
        if (const auto *item = qstyleoption_cast<const QStyleOptionMenuItem *>(option))
            return menuItemSize(*item, contents);
        break;
    case CT_LineEdit:
        return contents.grownBy({fieldSidePadding, fieldPadding, fieldSidePadding, fieldPadding});
    case CT_PushButton: {
        const QSize size = contents.grownBy(
            {buttonSidePadding, buttonPadding, buttonSidePadding, buttonPadding});
        return size.expandedTo({narrowestButton, 0});
    }
    default:
        break;
    }
    return QProxyStyle::sizeFromContents(type, option, contents, widget);
}

void TovelStyle::drawPrimitive(PrimitiveElement element, const QStyleOption *option,
                               QPainter *painter, const QWidget *widget) const
{
    switch (element) {
    case PE_PanelMenu:
        paintMenuGround(*painter, option->palette, option->rect, !widget->mask().isEmpty());
        break;
    case PE_FrameMenu:
        break;
    case PE_PanelLineEdit:
        paintField(*painter, *option);
        break;
    case PE_PanelButtonCommand:
        paintButton(*painter, *option);
        break;
    case PE_FrameFocusRect:
        if (qobject_cast<const QPushButton *>(widget))
            break;
        [[fallthrough]];
    default:
        QProxyStyle::drawPrimitive(element, option, painter, widget);
    }
}

void TovelStyle::drawControl(ControlElement element, const QStyleOption *option, QPainter *painter,
                             const QWidget *widget) const
{
    if (element == CE_MenuEmptyArea)
        return;
    const auto *item = qstyleoption_cast<const QStyleOptionMenuItem *>(option);
    const auto *button = qstyleoption_cast<const QStyleOptionButton *>(option);
    if (element == CE_MenuItem && item) {
        paintMenuItem(*painter, *item);
    } else if (element == CE_PushButtonLabel && button && isDefault(*option)) {
        QStyleOptionButton label(*button);
        label.palette.setColor(QPalette::ButtonText, TovelTheme::chrome(option->palette));
        QProxyStyle::drawControl(element, &label, painter, widget);
    } else {
        QProxyStyle::drawControl(element, option, painter, widget);
    }
}

} // namespace tovel
