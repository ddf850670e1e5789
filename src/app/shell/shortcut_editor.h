#pragma once

#include "settings/shortcut.h"

#include <QDialog>

#include <functional>

class QKeyEvent;
class QLabel;
class QPushButton;

namespace tovel {

class ShortcutRecordButton;

// Lets the user record a shortcut. Accepted once the candidate could be registered; rejected by
// Cancel. Nothing is stored here. Modal to its parent, whether or not that is shown.
class ShortcutEditor final : public QDialog
{
    Q_OBJECT

public:
    // Tells whether the shortcut could be registered.
    using Registration = std::function<bool(const TovelShortcut &)>;

    ShortcutEditor(const TovelShortcut &current, Registration tryToRegister,
                   QWidget *parent = nullptr);
    ~ShortcutEditor() override;

    const TovelShortcut &candidate() const { return m_candidate; }

    bool eventFilter(QObject *watched, QEvent *event) override;

private:
    bool takeKey(const QKeyEvent &event);
    void stopRecording();
    void save();
    void resetToDefault();

    TovelShortcut m_candidate;
    Registration m_tryToRegister;
    QLabel *m_informativeText;
    ShortcutRecordButton *m_record;
    QPushButton *m_save;
};

} // namespace tovel
