#include "app/shell/shortcut_editor.h"

#include "app/shell/key_down.h"
#include "app/shell/shortcut_record_button.h"
#include "views/dialog_buttons.h"
#include "views/text_style.h"

#include <QApplication>
#include <QDialogButtonBox>
#include <QKeyEvent>
#include <QLabel>
#include <QPushButton>
#include <QVBoxLayout>

namespace tovel {

using namespace Qt::StringLiterals;

namespace {

constexpr int margin = 20;
constexpr int spacing = 14;
constexpr std::uint32_t escapeKey = 53;

const QString instruction
    = QStringLiteral("Click the field, then press your shortcut to show or hide Tovel.");

} // namespace

ShortcutEditor::ShortcutEditor(const TovelShortcut &current, Registration tryToRegister,
                               QWidget *parent)
    : QDialog(parent)
    , m_candidate(current)
    , m_tryToRegister(std::move(tryToRegister))
    , m_informativeText(new QLabel(instruction))
    , m_record(new ShortcutRecordButton)
{
    const QString title = u"Keyboard Shortcut"_s;
    setWindowTitle(title);
    setWindowModality(Qt::WindowModal); // a tray icon is a window, too, and is to take clicks
    auto *heading = new QLabel(title);
    heading->setFont(textFont(TextStyle::headline));
    m_informativeText->setFont(textFont(TextStyle::callout));
    m_informativeText->setWordWrap(true);
    // So that a text of two lines hardly moves the buttons.
    m_informativeText->setMinimumHeight(2 * m_informativeText->fontMetrics().lineSpacing());

    auto *buttons = new QDialogButtonBox;
    m_save = buttons->addButton(u"Save"_s, QDialogButtonBox::AcceptRole);
    m_save->setDefault(true);
    buttons->addButton(u"Cancel"_s, QDialogButtonBox::RejectRole);
    QPushButton *reset = buttons->addButton(u"Reset to Default"_s, QDialogButtonBox::ResetRole);
    letTabReachAll(*buttons);
    connect(m_save, &QPushButton::clicked, this, &ShortcutEditor::save);
    connect(reset, &QPushButton::clicked, this, &ShortcutEditor::resetToDefault);
    connect(buttons, &QDialogButtonBox::rejected, this, &QDialog::reject);

    m_record->stopRecording(m_candidate.label());
    m_record->onStart([this] {
        m_save->setEnabled(false);
        m_informativeText->setText(instruction);
    });

    auto *layout = new QVBoxLayout(this);
    layout->setContentsMargins(margin, margin, margin, margin);
    layout->setSpacing(spacing);
    layout->setSizeConstraint(QLayout::SetFixedSize);
    layout->addWidget(heading);
    layout->addWidget(m_informativeText);
    layout->addWidget(m_record, 0, Qt::AlignHCenter);
    layout->addWidget(buttons);
    m_record->setFocus();
    qApp->installEventFilter(this);
}

ShortcutEditor::~ShortcutEditor() = default;

bool ShortcutEditor::eventFilter(QObject *watched, QEvent *event)
{
    const bool isKey
        = event->type() == QEvent::KeyPress || event->type() == QEvent::ShortcutOverride;
    if (!isKey || !m_record->isRecording() || !isActiveWindow())
        return QDialog::eventFilter(watched, event);
    if (event->type() == QEvent::KeyPress)
        return takeKey(*static_cast<QKeyEvent *>(event));
    event->accept(); // keeps the keys of commands from acting
    return true;
}

bool ShortcutEditor::takeKey(const QKeyEvent &event)
{
    if (isModifier(event))
        return true;
    const std::optional<KeyDownEvent> key = keyDown(event);
    if (!key) {
        m_informativeText->setText(
            u"That key cannot be used in a shortcut. Try another combination."_s);
        return true;
    }
    if (key->keyCode == escapeKey && key->modifierFlags == 0) {
        stopRecording();
        return true;
    }
    const std::optional<TovelShortcut> shortcut = shortcutFromEvent(*key);
    if (!shortcut) {
        m_informativeText->setText(u"Include Command, Control, or Option in your shortcut."_s);
        return true;
    }
    m_candidate = *shortcut;
    stopRecording();
    m_informativeText->setText(u"Click Save to use this shortcut."_s);
    return true;
}

void ShortcutEditor::stopRecording()
{
    m_record->stopRecording(m_candidate.label());
    m_save->setEnabled(true);
}

void ShortcutEditor::save()
{
    stopRecording();
    if (m_tryToRegister(m_candidate)) {
        accept();
        return;
    }
    m_informativeText->setText(
        u"That shortcut is unavailable. Click the field and try another combination."_s);
}

void ShortcutEditor::resetToDefault()
{
    m_candidate = TovelShortcut::standard();
    save();
}

} // namespace tovel
