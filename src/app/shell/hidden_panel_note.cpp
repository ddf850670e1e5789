#include "app/shell/hidden_panel_note.h"

#include "views/dialog_buttons.h"
#include "views/tint.h"
#include "views/wrapped_text.h"

#include <QDialogButtonBox>
#include <QLabel>
#include <QPushButton>
#include <QVBoxLayout>

namespace tovel {

using namespace Qt::StringLiterals;

namespace {

constexpr int margin = 20;
constexpr int spacing = 14;
constexpr int dialogWidth = 420;

} // namespace

QString waysBackText(const QString &keyLabel, bool byStarting)
{
    QStringList ways;
    if (!keyLabel.isEmpty())
        ways.append(u"press "_s + keyLabel);
    if (byStarting)
        ways.append(u"start Tovel again"_s);
    if (ways.isEmpty())
        return {};
    QString text = ways.join(u" or "_s) + u" to show the panel."_s;
    text[0] = text[0].toUpper();
    return text;
}

HiddenPanelNote::HiddenPanelNote(const QString &text, const std::function<void()> &quit)
{
    const QString heading = u"Tovel keeps running"_s;
    setWindowTitle(heading);
    setAccessibleName(heading);
    setAccessibleDescription(text);

    auto *buttons = new QDialogButtonBox;
    QPushButton *ok = buttons->addButton(QDialogButtonBox::Ok);
    ok->setDefault(true);
    connect(buttons, &QDialogButtonBox::accepted, this, &QDialog::accept);
    QPushButton *quitButton = buttons->addButton(u"Quit Tovel"_s, QDialogButtonBox::ActionRole);
    quitButton->setAutoDefault(false);
    letTabReachAll(*buttons);
    connect(quitButton, &QPushButton::clicked, this, quit);

    auto *layout = new QVBoxLayout(this);
    layout->setContentsMargins(margin, margin, margin, margin);
    layout->setSpacing(spacing);
    layout->addWidget(makeWrappedText(heading, TextStyle::headline));
    layout->addWidget(makeWrappedText(text, TextStyle::body));
    layout->addWidget(buttons);
    setFixedWidth(dialogWidth);
    applyTint(*this);
    ok->setFocus();
}

HiddenPanelNote::~HiddenPanelNote() = default;

} // namespace tovel
