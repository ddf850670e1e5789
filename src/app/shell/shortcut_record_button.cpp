#include "app/shell/shortcut_record_button.h"

#include <QKeyEvent>

namespace tovel {

using namespace Qt::StringLiterals;

namespace {

constexpr QSize frame(300, 36);

// Buttons take an ampersand for the mark of a key.
QString buttonText(QString text) { return text.replace(u'&', u"&&"_s); }

} // namespace

ShortcutRecordButton::ShortcutRecordButton(QWidget *parent)
    : QPushButton(parent)
{
    setFixedSize(frame);
    setAutoDefault(false);
    setAccessibleName(u"Record keyboard shortcut"_s);
    connect(this, &QPushButton::clicked, this, &ShortcutRecordButton::startRecording);
}

void ShortcutRecordButton::startRecording()
{
    m_recording = true;
    setText(u"Press shortcut…"_s);
    setAccessibleDescription(text());
    if (m_onStart)
        m_onStart();
}

void ShortcutRecordButton::stopRecording(const QString &label)
{
    m_recording = false;
    setText(buttonText(label));
    setAccessibleDescription(label);
}

void ShortcutRecordButton::keyPressEvent(QKeyEvent *event)
{
    // Some desktops have them press whatever button has the keyboard.
    if (event->key() == Qt::Key_Return || event->key() == Qt::Key_Enter)
        event->ignore();
    else
        QPushButton::keyPressEvent(event);
}

} // namespace tovel
