#pragma once

#include <QDialog>

namespace tovel {

// Tells what this session lets Tovel do with windows, and what its user can do about it.
class AccessNote final : public QDialog
{
    Q_OBJECT

public:
    explicit AccessNote(const QString &text, QWidget *parent = nullptr);
    ~AccessNote() override;
};

} // namespace tovel
