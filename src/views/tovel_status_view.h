#pragma once

#include "model/travel_window.h"

#include <QList>
#include <QWidget>

#include <functional>

class QSpacerItem;

namespace tovel {

class BusyIndicator;
class ColoredLabel;
class ModelWatch;
class OverlayScrollArea;
class PlainButton;
class Popover;
class SkippedList;
class TovelModel;

// The strip at the bottom of the panel: what state the flock is in, and which windows cannot move.
class TovelStatusView final : public QWidget
{
    Q_OBJECT

public:
    // Borrows the model.
    explicit TovelStatusView(TovelModel &model, QWidget *parent = nullptr);
    ~TovelStatusView() override;

    // Tells, while the panel asks for access, what the session's user can do about it.
    void setAccessAdvice(std::function<QString()> advice);

protected:
    void paintEvent(QPaintEvent *event) override;
    void resizeEvent(QResizeEvent *event) override;

private:
    // What stands before the text.
    enum class Indicator { Busy, Warning, Together, Apart };

    void redraw();
    QString shownText() const;
    void toggleSkipped();
    void fitHeight();
    int textWidth() const;
    QColor textColor(const QPalette &palette) const;
    int indicatorSize() const;
    QRectF indicatorBox() const;

    TovelModel &m_model;
    std::function<QString()> m_accessAdvice;
    ModelWatch *m_watch;
    QString m_shown; // what the text says
    Indicator m_indicator = Indicator::Apart;
    bool m_showingSkipped = false;
    QSpacerItem *m_indicatorRoom; // the layout's
    BusyIndicator *m_busy;
    ColoredLabel *m_text;
    OverlayScrollArea *m_textArea;
    ColoredLabel *m_together;
    PlainButton *m_skipped;
    SkippedList *m_skippedList;
    Popover *m_popover;
};

} // namespace tovel
