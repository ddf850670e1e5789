#pragma once

#include "settings/icon_style.h"

#include <QImage>
#include <QWidget>

#include <optional>

namespace tovel {

class ModelWatch;
class TovelModel;

// The product's mark in the toolbar: the icon in the chosen style, and the name.
class TovelTitleView final : public QWidget
{
    Q_OBJECT

public:
    // Borrows the model.
    explicit TovelTitleView(TovelModel &model, QWidget *parent = nullptr);

protected:
    void paintEvent(QPaintEvent *event) override;

private:
    void redraw();
    void loadMark();

    TovelModel &m_model;
    ModelWatch *m_watch;
    TovelIconStyle m_style;
    QImage m_mark; // null when the style has none
    std::optional<int> m_markSide; // that the mark was loaded for, in pixels
};

} // namespace tovel
