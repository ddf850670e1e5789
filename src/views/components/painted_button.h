#pragma once

#include <QAbstractButton>

namespace tovel {

// What the buttons that paint themselves have in common: Space, Return and Enter click them, the
// hand shows that they can be clicked, the focus is marked once the keyboard is used, and
// assistive programs read name, value, selection and whether they can be pressed.
class PaintedButton : public QAbstractButton
{
    Q_OBJECT

public:
    explicit PaintedButton(QWidget *parent = nullptr);

    // One that is not actionable looks, reads and behaves as disabled, but keeps the focus and can
    // have a context menu, which a disabled widget cannot.
    void setActionable(bool actionable);
    bool isActionable() const { return m_actionable && isEnabled(); }

    // Read after the name. Told to assistive programs when it changes, as is the selection.
    void setAccessibleValue(const QString &value);
    const QString &accessibleValue() const { return m_value; }

    // A button that was never selected reads as one that cannot be.
    void setAccessibleSelected(bool selected);
    bool isAccessibleSelected() const { return m_selected; }
    bool isAccessibleSelectable() const { return m_selectable; }

protected:
    bool showsFocus() const { return hasFocus() && m_keyboardFocus; }
    bool isHovered() const { return isActionable() && underMouse() && !isBlocked(); }
    bool isPressed() const { return isActionable() && isDown(); }

    void changeEvent(QEvent *event) override;
    bool event(QEvent *event) override;
    void focusInEvent(QFocusEvent *event) override;
    void keyPressEvent(QKeyEvent *event) override;
    void mousePressEvent(QMouseEvent *event) override;

private:
    bool isBlocked() const; // by an alert that has to be answered first
    void showCursor();
    void tellActionable();

    bool m_actionable = true;
    bool m_keyboardFocus = false;
    QString m_value;
    bool m_selected = false;
    bool m_selectable = false;
};

} // namespace tovel
