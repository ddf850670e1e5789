#pragma once

#include <QObject>
#include <QSet>

namespace tovel {

class OwnWindows;

// Keeps the program's dialogs with its panel: on every space, each time one is shown. A dialog that
// has to be answered would otherwise stop a panel whose user cannot see it.
class DialogsOnAllSpaces final : public QObject
{
    Q_OBJECT

public:
    explicit DialogsOnAllSpaces(OwnWindows &ownWindows);
    ~DialogsOnAllSpaces() override;

    bool eventFilter(QObject *watched, QEvent *event) override;

private:
    OwnWindows &m_ownWindows;
    QSet<QObject *> m_shown; // the windows that were asked for
};

} // namespace tovel
