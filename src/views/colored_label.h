#pragma once

#include <QLabel>

#include <functional>

class QPalette;

namespace tovel {

// A label whose colour follows the appearance. Shows its text as it stands, from the leading side
// unless it is centred.
class ColoredLabel final : public QLabel
{
    Q_OBJECT

public:
    using Color = std::function<QColor(const QPalette &)>;

    ColoredLabel(const QString &text, const QFont &font, Color color, QWidget *parent = nullptr);

    // For a colour that depends on more than the appearance, after that has changed.
    void updateColor();

protected:
    void changeEvent(QEvent *event) override;

private:
    void alignToLeadingSide();

    Color m_color;
};

// The small dimmed line above a part of the panel.
ColoredLabel *makeHeading(const QString &text, QWidget *parent = nullptr);

} // namespace tovel
