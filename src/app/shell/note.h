#pragma once

#include <QDialog>
#include <QDialogButtonBox>

#include <functional>

namespace tovel {

// Tells one thing, until OK or Escape closes it. Blocks nothing.
class Note final : public QDialog
{
    Q_OBJECT

public:
    Note(const QString &heading, const QString &text, QWidget *parent = nullptr);
    ~Note() override;

    // Another button beside OK, which leaves the note open.
    void addButton(const QString &label, const std::function<void()> &action);

private:
    QDialogButtonBox *m_buttons;
};

} // namespace tovel
