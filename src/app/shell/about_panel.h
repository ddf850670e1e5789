#pragma once

#include "settings/bundle.h"

#include <QDialog>

class QLabel;

namespace tovel {

// What the program is: its icon, name and version, and whose it is, as the bundle's key
// "NSHumanReadableCopyright" says. Blocks nothing.
class AboutPanel final : public QDialog
{
    Q_OBJECT

public:
    explicit AboutPanel(QWidget *parent = nullptr, const Bundle &bundle = mainBundle());
    ~AboutPanel() override;

protected:
    bool event(QEvent *event) override;

private:
    void showIcon();

    QLabel *m_icon;
};

} // namespace tovel
