#include "views/rename_alert.h"

#include "views/dialog_buttons.h"
#include "views/text_style.h"

#include <QDialogButtonBox>
#include <QLabel>
#include <QLineEdit>
#include <QPushButton>
#include <QVBoxLayout>

namespace tovel {

using namespace Qt::StringLiterals;

namespace {

constexpr int margin = 20;
constexpr int spacing = 14;
constexpr int fieldWidth = 260;

} // namespace

RenameAlert::RenameAlert(const QString &name, QWidget *parent)
    : QDialog(parent)
    , m_name(new QLineEdit(name))
{
    const QString title = u"Rename desktop"_s;
    setWindowTitle(title);
    auto *heading = new QLabel(title);
    heading->setFont(textFont(TextStyle::headline));

    m_name->setPlaceholderText(u"Name"_s);
    m_name->setAccessibleName(u"Name"_s);
    m_name->setMinimumWidth(fieldWidth);
    m_name->selectAll();

    auto *buttons = new QDialogButtonBox;
    QPushButton *save = buttons->addButton(u"Save"_s, QDialogButtonBox::AcceptRole);
    save->setDefault(true);
    buttons->addButton(u"Cancel"_s, QDialogButtonBox::RejectRole);
    letTabReachAll(*buttons);
    connect(buttons, &QDialogButtonBox::accepted, this, &QDialog::accept);
    connect(buttons, &QDialogButtonBox::rejected, this, &QDialog::reject);

    auto *layout = new QVBoxLayout(this);
    layout->setContentsMargins(margin, margin, margin, margin);
    layout->setSpacing(spacing);
    layout->setSizeConstraint(QLayout::SetFixedSize);
    layout->addWidget(heading);
    layout->addWidget(m_name);
    layout->addWidget(buttons);
    m_name->setFocus();
}

QString RenameAlert::newName() const { return m_name->text(); }

} // namespace tovel
