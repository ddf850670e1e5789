#pragma once

#include <QDialog>
#include <QString>

#include <functional>

namespace tovel {

// How a hidden panel comes back: by the key that the label names, unless that is empty, and where
// byStarting is set, by starting the program again. Empty when by neither.
QString waysBackText(const QString &keyLabel, bool byStarting);

// Tells that the program still runs now that its panel is hidden. Blocks nothing.
class HiddenPanelNote final : public QDialog
{
    Q_OBJECT

public:
    HiddenPanelNote(const QString &text, const std::function<void()> &quit);
    ~HiddenPanelNote() override;
};

} // namespace tovel
