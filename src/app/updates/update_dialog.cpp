#include "app/updates/update_dialog.h"

#include "views/dialog_buttons.h"
#include "views/text_style.h"
#include "views/wrapped_text.h"

#include <QLabel>
#include <QPlainTextEdit>
#include <QProgressBar>
#include <QPushButton>
#include <QVBoxLayout>

namespace tovel {

using namespace Qt::StringLiterals;

namespace {

constexpr int margin = 20;
constexpr int spacing = 14;
constexpr int dialogWidth = 380;
constexpr QSize notesSize(480, 220);

} // namespace

UpdateDialog::UpdateDialog(const QString &heading, const QString &text)
    : m_text(makeWrappedText(text, TextStyle::body))
    , m_body(new QVBoxLayout)
    , m_buttons(new QDialogButtonBox)
{
    setAttribute(Qt::WA_QuitOnClose, false);
    setWindowTitle(u"Software Update"_s);
    setAccessibleName(heading);
    setMinimumWidth(grown(dialogWidth));

    auto *layout = new QVBoxLayout(this);
    layout->setContentsMargins(margin, margin, margin, margin);
    layout->setSpacing(spacing);
    layout->addWidget(makeWrappedText(heading, TextStyle::headline));
    layout->addWidget(m_text);
    layout->addLayout(m_body, 1);
    layout->addWidget(m_buttons);
    setText(text);
    connect(m_buttons, &QDialogButtonBox::rejected, this, &QDialog::reject);
}

void UpdateDialog::setText(const QString &text)
{
    m_text->setText(text);
    m_text->setVisible(!text.isEmpty());
    setAccessibleDescription(text);
}

void UpdateDialog::addBusyBar()
{
    auto *bar = new QProgressBar;
    bar->setRange(0, 0);
    bar->setTextVisible(false);
    bar->setAccessibleName(accessibleName());
    m_body->addWidget(bar);
}

void UpdateDialog::addNotes(const QString &accessibleName, const QString &text)
{
    auto *notes = new QPlainTextEdit(text);
    notes->setReadOnly(true);
    notes->setTabChangesFocus(true);
    notes->setTextInteractionFlags(Qt::TextSelectableByMouse | Qt::TextSelectableByKeyboard);
    notes->setFont(textFont(TextStyle::body));
    notes->setAccessibleName(accessibleName);
    notes->setMinimumSize(notesSize);
    m_body->addWidget(notes);
}

void UpdateDialog::addClosingButton(QDialogButtonBox::StandardButton which)
{
    adopt(m_buttons->addButton(which));
}

QPushButton *UpdateDialog::addActionButton(const QString &text)
{
    QPushButton *button = m_buttons->addButton(text, QDialogButtonBox::ActionRole);
    adopt(button);
    return button;
}

void UpdateDialog::adopt(QPushButton *button)
{
    const bool first = m_buttons->buttons().size() == 1;
    button->setAutoDefault(first);
    button->setDefault(first);
    letTabReachAll(*m_buttons);
    if (first)
        button->setFocus();
}

} // namespace tovel
