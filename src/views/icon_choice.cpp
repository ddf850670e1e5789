#include "views/icon_choice.h"

#include "views/icon_images.h"

#include <QActionGroup>
#include <QMenu>

namespace tovel {

using namespace Qt::StringLiterals;

namespace {

QIcon picture(TovelIconStyle style, const QMenu &menu)
{
    const auto image = menuImage(style, menu.devicePixelRatioF());
    return image ? QIcon(QPixmap::fromImage(*image)) : QIcon();
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
        action->setIcon(picture(style, choice));
    }
}

} // namespace tovel
