#pragma once

#include <QPushButton>

#include <functional>

namespace tovel {

// Shows a shortcut, and once pressed, that the next keys become the new one. Taking the keys is
// others' work. Return and Enter are left to the dialog, in every session.
class ShortcutRecordButton final : public QPushButton
{
    Q_OBJECT

public:
    explicit ShortcutRecordButton(QWidget *parent = nullptr);

    bool isRecording() const { return m_recording; }
    void onStart(std::function<void()> callback) { m_onStart = std::move(callback); }

    void startRecording();
    // Shows the label again, whether or not it was recording.
    void stopRecording(const QString &label);

protected:
    void keyPressEvent(QKeyEvent *event) override;

private:
    bool m_recording = false;
    std::function<void()> m_onStart;
};

} // namespace tovel
