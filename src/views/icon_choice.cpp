#include "views/icon_choice.h"

#include "views/components/symbol.h"
#include "views/icon_images.h"
#include "views/theme.h"

#include <QActionGroup>
#include <QMenu>
#include <QPainter>

namespace tovel {

using namespace Qt::StringLiterals;

namespace {

constexpr QRectF badge(9, 9, 11, 11); // in the corner of a picture of 20
constexpr double checkMargin = 2;

// Beside a picture the style of menus hardly shows what is checked, so the picture does.
QIcon picture(TovelIconStyle style, bool checked, const QMenu &menu)
{
    const auto plain = menuImage(style, menu.devicePixelRatioF());
    if (!plain)
        return {};
    QPixmap pixmap = QPixmap::fromImage(*plain);
    if (checked) {
        QPainter painter(&pixmap);
        painter.setRenderHint(QPainter::Antialiasing);
        painter.setPen(TovelTheme::chrome(menu.palette()));
        painter.setBrush(TovelTheme::accent(menu.palette()));
        painter.drawEllipse(badge);
        const double margin = checkMargin;
        paintSymbol(painter, u"checkmark"_s, badge.adjusted(margin, margin, -margin, -margin),
                    TovelTheme::chrome(menu.palette()));
    }
    return pixmap;
}

} // namespace

QMenu *addIconChoice(QMenu &menu, const std::function<void(TovelIconStyle)> &choose)
{
    QMenu *choice = menu.addMenu(u"App icon"_s);
    auto *group = new QActionGroup(choice);
    for (const TovelIconStyle style : allIconStyles()) {
        QAction *action = choice->addAction(title(style));
        action->setCheckable(true);
        action->setData(static_cast<int>(style));
        action->setIconVisibleInMenu(true);
        group->addAction(action);
        QObject::connect(action, &QAction::triggered, choice, [choose, style] { choose(style); });
    }
    return choice;
}

void markIconChoice(const QMenu &choice, TovelIconStyle current)
{
    for (QAction *action : choice.actions()) {
        const auto style = static_cast<TovelIconStyle>(action->data().toInt());
        action->setChecked(style == current);
        action->setIcon(picture(style, style == current, choice));
    }
}

} // namespace tovel
