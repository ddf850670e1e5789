#include "app/shell/access_note.h"

#include "views/tint.h"
#include "views/wrapped_text.h"

#include <QDialogButtonBox>
#include <QLabel>
#include <QVBoxLayout>

namespace tovel {

using namespace Qt::StringLiterals;

namespace {

constexpr int margin = 20;
constexpr int spacing = 14;
constexpr int dialogWidth = 420;

} // namespace

AccessNote::AccessNote(const QString &text, QWidget *parent)
    : QDialog(parent)
{
    const QString heading = u"Access to windows"_s;
    setWindowTitle(heading);
    setAccessibleName(heading);
    setAccessibleDescription(text);
    auto *buttons = new QDialogButtonBox(QDialogButtonBox::Ok);
    connect(buttons, &QDialogButtonBox::accepted, this, &QDialog::accept);
    auto *layout = new QVBoxLayout(this);
    layout->setContentsMargins(margin, margin, margin, margin);
    layout->setSpacing(spacing);
    layout->addWidget(makeWrappedText(heading, TextStyle::headline));
    layout->addWidget(makeWrappedText(text, TextStyle::body));
    layout->addWidget(buttons);
    setFixedWidth(dialogWidth);
    applyTint(*this);
}

AccessNote::~AccessNote() = default;

} // namespace tovel
