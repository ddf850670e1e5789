#include "app/shell/about_panel.h"

#include "platform/variants.h"
#include "settings/updates.h"
#include "views/wrapped_text.h"

#include <QDialogButtonBox>
#include <QEvent>
#include <QLabel>
#include <QVBoxLayout>

namespace tovel {

using namespace Qt::StringLiterals;

namespace {

constexpr int margin = 24;
constexpr int spacing = 10;
constexpr int iconSide = 96;
constexpr int textWidth = 272;

void addLine(QVBoxLayout &layout, const QString &text, TextStyle style)
{
    QLabel *label = makeWrappedText(text, style, textWidth);
    label->setAlignment(Qt::AlignCenter);
    layout.addWidget(label);
}

} // namespace

AboutPanel::AboutPanel(QWidget *parent, const Bundle &bundle)
    : QDialog(parent)
    , m_icon(new QLabel)
{
    const QString title = u"About Tovel"_s;
    const QString version = TovelUpdates::versionDescription(bundle);
    const QString copyright
        = text(bundle.objectForInfoDictionaryKey(u"NSHumanReadableCopyright"_s)).value_or(u""_s);
    setWindowTitle(title);
    setAccessibleName(title);
    setAccessibleDescription(version);
    m_icon->setAccessibleName(u"Icon of Tovel"_s);
    m_icon->setAlignment(Qt::AlignCenter);

    auto *buttons = new QDialogButtonBox(QDialogButtonBox::Ok);
    buttons->setCenterButtons(true);
    connect(buttons, &QDialogButtonBox::accepted, this, &QDialog::accept);

    auto *layout = new QVBoxLayout(this);
    layout->setContentsMargins(margin, margin, margin, margin);
    layout->setSpacing(spacing);
    layout->setSizeConstraint(QLayout::SetFixedSize);
    layout->addWidget(m_icon);
    addLine(*layout, u"Tovel"_s, TextStyle::headline);
    addLine(*layout, version, TextStyle::body);
    if (!copyright.isEmpty())
        addLine(*layout, copyright, TextStyle::caption);
    layout->addWidget(buttons);
    showIcon();
}

AboutPanel::~AboutPanel() = default;

bool AboutPanel::event(QEvent *event)
{
    if (event->type() == QEvent::ApplicationWindowIconChange)
        showIcon();
    return QDialog::event(event);
}

void AboutPanel::showIcon()
{
    const QSize size(iconSide, iconSide);
    m_icon->setPixmap(windowIcon().pixmap(size, devicePixelRatio()));
}

} // namespace tovel
