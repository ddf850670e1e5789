#include "views/components/accessible_surface.h"

#include "views/components/painted_button.h"
#include "views/components/popover.h"

#include <QAccessibleWidget>

namespace tovel {

using namespace Qt::StringLiterals;

namespace {

constexpr char roleProperty[] = "tovelAccessibleRole";

class AccessibleSurface final : public QAccessibleWidget
{
public:
    explicit AccessibleSurface(PaintedButton *button)
        : QAccessibleWidget(button, QAccessible::Button)
        , m_button(button)
    { }

    QString text(QAccessible::Text kind) const override
    {
        if (kind == QAccessible::Name && m_button->accessibleName().isEmpty())
            return m_button->text();
        if (kind == QAccessible::Value)
            return m_button->accessibleValue();
        // What is read of a button besides its name is the description alone.
        if (kind == QAccessible::Description && m_button->accessibleDescription().isEmpty()
            && !m_button->accessibleValue().isEmpty())
            return m_button->accessibleValue();
        return QAccessibleWidget::text(kind);
    }

    QAccessible::State state() const override
    {
        QAccessible::State state = QAccessibleWidget::state();
        state.disabled = !m_button->isActionable();
        state.pressed = m_button->isDown();
        state.selectable = m_button->isAccessibleSelectable();
        state.selected = m_button->isAccessibleSelected();
        return state;
    }

    QStringList actionNames() const override
    {
        QStringList names;
        if (m_button->isActionable())
            names.append(pressAction());
        return names + QAccessibleWidget::actionNames();
    }

    void doAction(const QString &name) override
    {
        if (name != pressAction())
            QAccessibleWidget::doAction(name);
        else if (m_button->isActionable())
            m_button->animateClick();
    }

    // A popover is a window of its own, which the toolkit lists nowhere.
    int childCount() const override
    {
        return QAccessibleWidget::childCount() + static_cast<int>(popovers().size());
    }

    QAccessibleInterface *child(int index) const override
    {
        const int inside = QAccessibleWidget::childCount();
        if (index < inside)
            return QAccessibleWidget::child(index);
        return QAccessible::queryAccessibleInterface(popovers().value(index - inside));
    }

    int indexOfChild(const QAccessibleInterface *child) const override
    {
        const auto at = child ? popovers().indexOf(qobject_cast<Popover *>(child->object())) : -1;
        return at < 0 ? QAccessibleWidget::indexOfChild(child)
                      : QAccessibleWidget::childCount() + static_cast<int>(at);
    }

private:
    QList<Popover *> popovers() const
    {
        QList<Popover *> open
            = m_button->findChildren<Popover *>(QString(), Qt::FindDirectChildrenOnly);
        open.removeIf([](const Popover *popover) { return !popover->isOpen(); });
        return open;
    }

    PaintedButton *m_button;
};

// Belongs to its anchor rather than to the application.
class AccessiblePopover final : public QAccessibleWidget
{
public:
    explicit AccessiblePopover(QWidget *popover)
        : QAccessibleWidget(popover, QAccessible::Dialog)
    { }

    QAccessibleInterface *parent() const override
    {
        return QAccessible::queryAccessibleInterface(widget()->parentWidget());
    }
};

// Stays in the tree, as every widget does, but is not shown there.
class AccessibleOrnament final : public QAccessibleWidget
{
public:
    explicit AccessibleOrnament(QWidget *widget)
        : QAccessibleWidget(widget, QAccessible::Graphic)
    { }

    QAccessible::State state() const override
    {
        QAccessible::State state = QAccessibleWidget::state();
        state.invisible = true;
        return state;
    }
};

QAccessibleInterface *makeInterface(const QString &key, QObject *object)
{
    if (!object || !object->isWidgetType())
        return nullptr;
    auto *widget = static_cast<QWidget *>(object);
    if (key == "tovel::PaintedButton"_L1)
        return new AccessibleSurface(static_cast<PaintedButton *>(widget));
    if (key == "tovel::Popover"_L1)
        return new AccessiblePopover(widget);
    if (key == "tovel::AppIcon"_L1)
        return new AccessibleOrnament(widget);
    const QVariant role = widget->property(roleProperty);
    if (role.isValid())
        return new QAccessibleWidget(widget, static_cast<QAccessible::Role>(role.toInt()));
    return nullptr;
}

} // namespace

void installAccessibleSurfaces()
{
    [[maybe_unused]] static const bool installed
        = (QAccessible::installFactory(makeInterface), true);
}

void setAccessibleRole(QWidget &widget, QAccessible::Role role)
{
    installAccessibleSurfaces();
    widget.setProperty(roleProperty, static_cast<int>(role));
}

} // namespace tovel
