#include "ui/hotkeys/KeyRecorder.h"

#include <QFocusEvent>
#include <QKeyEvent>

KeyRecorder::KeyRecorder(QWidget *parent)
    : QLineEdit(parent)
{
    setReadOnly(true);
    setObjectName(QStringLiteral("keyRecorder"));
    setAccessibleName(tr("New key"));
    setPlaceholderText(tr("Select a command, then Add Key…"));
}

void KeyRecorder::start()
{
    m_recording = true;
    setFocus(Qt::OtherFocusReason);
    showPrompt({});
}

void KeyRecorder::cancel()
{
    if (!m_recording)
        return;
    m_recording = false;
    clear();
    Q_EMIT cancelled();
}

std::optional<QKeySequence> KeyRecorder::keyForEvent(const QKeyEvent &event)
{
    int key = event.key();
    switch (key) {
    case 0:
    case Qt::Key_unknown:
    case Qt::Key_Shift:
    case Qt::Key_Control:
    case Qt::Key_Meta:
    case Qt::Key_Alt:
    case Qt::Key_AltGr:
    case Qt::Key_Super_L:
    case Qt::Key_Super_R:
    case Qt::Key_Hyper_L:
    case Qt::Key_Hyper_R:
    case Qt::Key_CapsLock:
    case Qt::Key_NumLock:
    case Qt::Key_ScrollLock: return std::nullopt;
    default: break;
    }
    Qt::KeyboardModifiers modifiers =
        event.modifiers() & (Qt::ShiftModifier | Qt::ControlModifier | Qt::AltModifier | Qt::MetaModifier);
    // Shift+Tab arrives as Backtab; the key the user pressed is Tab.
    if (key == Qt::Key_Backtab) {
        key = Qt::Key_Tab;
        modifiers |= Qt::ShiftModifier;
    }
    return QKeySequence(QKeyCombination(modifiers, Qt::Key(key)));
}

bool KeyRecorder::event(QEvent *event)
{
    if (m_recording) {
        // While it records, no window shortcut takes the key, and Tab is a key like another.
        if (event->type() == QEvent::ShortcutOverride) {
            event->accept();
            return true;
        }
        if (event->type() == QEvent::KeyPress) {
            keyPressEvent(static_cast<QKeyEvent *>(event));
            return true;
        }
    }
    return QLineEdit::event(event);
}

void KeyRecorder::keyPressEvent(QKeyEvent *event)
{
    if (!m_recording)
        return QLineEdit::keyPressEvent(event);
    event->accept();
    if (event->key() == Qt::Key_Escape && !(event->modifiers() & ~Qt::KeypadModifier))
        return cancel();
    const std::optional<QKeySequence> key = keyForEvent(*event);
    if (!key)
        return showPrompt(event->modifiers());
    m_recording = false;
    setText(key->toString(QKeySequence::NativeText));
    Q_EMIT recorded(*key);
}

void KeyRecorder::keyReleaseEvent(QKeyEvent *event)
{
    if (!m_recording)
        return QLineEdit::keyReleaseEvent(event);
    event->accept();
    showPrompt(event->modifiers());
}

void KeyRecorder::focusOutEvent(QFocusEvent *event)
{
    QLineEdit::focusOutEvent(event);
    // A popup (an input method's) takes the focus for a moment; leaving for elsewhere cancels.
    if (event->reason() != Qt::PopupFocusReason)
        cancel();
}

void KeyRecorder::showPrompt(Qt::KeyboardModifiers held)
{
    held &= Qt::ShiftModifier | Qt::ControlModifier | Qt::AltModifier | Qt::MetaModifier;
    if (!held) {
        setText(tr("Press a key…"));
        return;
    }
    // The modifiers as the keyboard names them: the text of modifiers+A without the A.
    setText(QKeySequence(QKeyCombination(held, Qt::Key_A)).toString(QKeySequence::NativeText).chopped(1)
            + QStringLiteral("…"));
}
