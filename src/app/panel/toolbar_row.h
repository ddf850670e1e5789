#pragma once

#include <QWidget>

namespace tovel {

// The row at the top of the panel: the title in the true middle of the window, the settings at its
// trailing edge. The window's chrome colour shows between them.
class ToolbarRow final : public QWidget
{
    Q_OBJECT

public:
    static constexpr int Height = 52;
    static constexpr QSize TitleSize{132, 32};
    static constexpr QSize SettingsSize{36, 32};

    explicit ToolbarRow(QWidget *parent = nullptr);

    // The row owns what it is given. Null takes the item away.
    void setTitle(QWidget *title);
    void setSettings(QWidget *settings);

protected:
    void resizeEvent(QResizeEvent *event) override;
    void changeEvent(QEvent *event) override;

private:
    void setItem(QWidget *&item, QWidget *replacement);
    void place();

    QWidget *m_title = nullptr;
    QWidget *m_settings = nullptr;
};

} // namespace tovel
