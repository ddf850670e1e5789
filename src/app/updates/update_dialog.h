#pragma once

#include <QDialog>
#include <QDialogButtonBox>
#include <QString>

class QLabel;
class QPushButton;
class QVBoxLayout;

namespace tovel {

// A small window that says one thing about updates: a heading, a text, what is put below them, and
// a row of buttons. Escape closes it. Never keeps the program from going on or ending.
class UpdateDialog final : public QDialog
{
public:
    UpdateDialog(const QString &heading, const QString &text);

    void setText(const QString &text);

    // A bar that shows that something is under way.
    void addBusyBar();

    // Text to read and to copy, shown as it is.
    void addNotes(const QString &accessibleName, const QString &text);

    // A button that closes the window. The first button added is the one that Return presses.
    void addClosingButton(QDialogButtonBox::StandardButton which);
    // A button that leaves closing to its owner.
    QPushButton *addActionButton(const QString &text);

private:
    void adopt(QPushButton *button);

    QLabel *m_text;
    QVBoxLayout *m_body;
    QDialogButtonBox *m_buttons;
};

} // namespace tovel
