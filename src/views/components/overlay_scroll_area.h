#pragma once

#include <QScrollArea>

namespace tovel {

class OverlayScroller;

// Scrolls vertically, without frame and background. A thin scroller lies over the trailing edge of
// the content, whatever the style of the session, and takes no room from it. The content follows
// the width of the area; a control in it that takes the focus is scrolled into view.
class OverlayScrollArea : public QScrollArea
{
    Q_OBJECT

public:
    // Takes no focus itself. One whose content has nothing to focus may be given it, so that the
    // keys scroll; the keyboard's way to it is marked by a ring just inside the area.
    explicit OverlayScrollArea(QWidget *parent = nullptr);

    // Hides the method of the same name, which would fill the content's background.
    void setWidget(QWidget *widget);

protected:
    void focusInEvent(QFocusEvent *event) override;
    void keyPressEvent(QKeyEvent *event) override;
    void resizeEvent(QResizeEvent *event) override;
    bool viewportEvent(QEvent *event) override;
    void changeEvent(QEvent *event) override;

private:
    void showFocused(QWidget *focused);

    OverlayScroller *m_scroller;
    bool m_keyboardFocus = false;
};

} // namespace tovel
