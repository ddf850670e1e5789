#pragma once

#include <QObject>

class QKeyEvent;

namespace tovel {

// Lets a key that presses what has the keyboard (Return, Enter, Space) or closes it (Escape) act
// once, however long it is held: what it opens would take the repeated presses for its own. Spaces
// that are typed into a field repeat. For all windows, for as long as it lives.
class HeldKeys final : public QObject
{
    Q_OBJECT

public:
    explicit HeldKeys(QObject *parent = nullptr);

    bool eventFilter(QObject *watched, QEvent *event) override;

private:
    bool isRepeated(const QKeyEvent &press) const;

    quint32 m_releasedKey = 0; // of the session's codes
    quint64 m_releaseTime = 0;
};

} // namespace tovel
