#pragma once

#include <QKeySequence>
#include <QLineEdit>

#include <optional>

class QKeyEvent;

// A field that records one key combination: start() and the next key pressed with its modifiers
// ("Ctrl+Shift+R", "F2", "Space") is recorded; Escape, or leaving the field, cancels. Modifiers
// pressed alone are shown while they are held and recorded with the key that follows. Tab and
// Backtab are recorded too while it records, so that they can be bound.
class KeyRecorder : public QLineEdit
{
    Q_OBJECT
public:
    explicit KeyRecorder(QWidget *parent = nullptr);

    void start();
    void cancel();
    bool isRecording() const { return m_recording; }

    // The combination a key press stands for; nothing for a modifier alone or an unknown key.
    static std::optional<QKeySequence> keyForEvent(const QKeyEvent &event);

Q_SIGNALS:
    void recorded(const QKeySequence &key);
    void cancelled();

protected:
    bool event(QEvent *event) override;
    void keyPressEvent(QKeyEvent *event) override;
    void keyReleaseEvent(QKeyEvent *event) override;
    void focusOutEvent(QFocusEvent *event) override;

private:
    void showPrompt(Qt::KeyboardModifiers held);

    bool m_recording = false;
};
