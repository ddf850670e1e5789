#include "app/shell/note.h"

#include "views/dialog_buttons.h"
#include "views/wrapped_text.h"

#include <QLabel>
#include <QPushButton>
#include <QVBoxLayout>

namespace tovel {

namespace {

constexpr int margin = 20;
constexpr int spacing = 14;
constexpr int textWidth = 380;

} // namespace

Note::Note(const QString &heading, const QString &text, QWidget *parent)
    : QDialog(parent)
    , m_buttons(new QDialogButtonBox(QDialogButtonBox::Ok))
{
    setWindowTitle(heading);
    setAccessibleName(heading);
    setAccessibleDescription(text);
    QPushButton *ok = m_buttons->button(QDialogButtonBox::Ok);
    ok->setDefault(true);
    connect(m_buttons, &QDialogButtonBox::accepted, this, &QDialog::accept);

    auto *layout = new QVBoxLayout(this);
    layout->setContentsMargins(margin, margin, margin, margin);
    layout->setSpacing(spacing);
    layout->setSizeConstraint(QLayout::SetFixedSize);
    layout->addWidget(makeWrappedText(heading, TextStyle::headline, textWidth));
    layout->addWidget(makeWrappedText(text, TextStyle::body, textWidth));
    layout->addWidget(m_buttons);
    ok->setFocus();
}

Note::~Note() = default;

void Note::addButton(const QString &label, const std::function<void()> &action)
{
    QPushButton *button = m_buttons->addButton(label, QDialogButtonBox::ActionRole);
    button->setAutoDefault(false);
    connect(button, &QPushButton::clicked, this, action);
    letTabReachAll(*m_buttons);
}

} // namespace tovel
