#pragma once

#include <QDialog>

class QLineEdit;

namespace tovel {

// Asks for a desktop's name. Accepted by Save, rejected by everything else.
class RenameAlert final : public QDialog
{
    Q_OBJECT

public:
    RenameAlert(const QString &name, QWidget *parent);

    QString newName() const;

private:
    QLineEdit *m_name;
};

} // namespace tovel
