#include "ui/common/CloseKeys.h"

#include <QAction>
#include <QPointer>
#include <QWidget>

namespace CloseKeys {

void install(QWidget *window, Escape escape, std::function<void()> close)
{
    auto *action = new QAction(window);
    // Ctrl+W whatever the platform's theme says: without a desktop's theme, "Close" is only
    // Ctrl+F4.
    QList<QKeySequence> keys{QKeySequence(Qt::CTRL | Qt::Key_W)};
    for (const QKeySequence &key : QKeySequence::keyBindings(QKeySequence::Close))
        if (!keys.contains(key))
            keys.append(key);
    if (escape == Escape::closes)
        keys.append(QKeySequence(Qt::Key_Escape));
    action->setShortcuts(keys);
    action->setShortcutContext(Qt::WindowShortcut);
    window->addAction(action);
    if (!close) {
        const QPointer<QWidget> target(window);
        close = [target] {
            if (target)
                target->close();
        };
    }
    QObject::connect(action, &QAction::triggered, window, std::move(close));
}

} // namespace CloseKeys
