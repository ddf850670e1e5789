#pragma once

#include "views/panel_values.h"

#include <QPointer>
#include <QWidget>

#include <functional>

namespace tovel {

class AddPopoverContent;
class DestinationSection;
class FlockSection;
class ModelWatch;
class Popover;
class RenameAlert;
class TovelModel;
class TovelStatusView;

// The content of the panel: the flock, the displays and desktops, and the status strip. Holds
// nothing but its interface state, reads the model and calls its operations.
class TovelView final : public QWidget
{
    Q_OBJECT

public:
    // Borrows the model.
    explicit TovelView(TovelModel &model, QWidget *parent = nullptr);
    ~TovelView() override;

    // Shown beside the strip's own text while the panel asks for access.
    void setAccessAdvice(std::function<QString()> advice);

    const PanelState &state() const { return m_state; }

protected:
    void paintEvent(QPaintEvent *event) override;

private:
    void redraw();
    void orderTabs();
    void redrawAddPopover();
    void toggleAdding();
    void startRenaming(const Desktop &desktop);
    void endRenaming(int result);

    TovelModel &m_model;
    PanelState m_state;
    ModelWatch *m_watch;
    FlockSection *m_flock;
    DestinationSection *m_destination;
    TovelStatusView *m_status;
    AddPopoverContent *m_addContent;
    Popover *m_addPopover;
    QPointer<RenameAlert> m_alert;
};

} // namespace tovel
