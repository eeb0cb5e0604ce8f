#include "ui/windows/ViewerCommands.h"

#include "ui/viewer/MediaViewActionHandler.h"
#include "ui/windows/CommandAction.h"
#include "ui/windows/CommandRegistry.h"

#include <QPointer>
#include <QWidget>

namespace ViewerCommands {

QList<CommandAction *> install(QWidget *window, MediaViewActionHandler *handler, const CommandRegistry &registry,
                               const QList<CommandId> &applicationCommands, bool stepping)
{
    QList<CommandAction *> actions;
    const auto add = [&](const Command &command) {
        auto *action = new CommandAction(command, {}, {}, window);
        action->bindKeys(command);
        action->setShortcutContext(Qt::WindowShortcut);
        window->addAction(action);
        actions.append(action);
        const QPointer<MediaViewActionHandler> target(handler);
        const CommandId id = command.id();
        QObject::connect(action, &QAction::triggered, window, [&registry, target, window, id] {
            const Command &command = registry.command(id);
            QObject *owner = command.owner() == CommandOwner::viewer ? static_cast<QObject *>(target.data())
                                                                     : registry.application();
            command.perform(owner, {}, window);
        });
    };
    for (const Command &command : registry.commands()) {
        const bool steps =
            command.id() == CommandId::nextImageInFolder || command.id() == CommandId::previousImageInFolder;
        // Every one, with keys or not: the user may give keys to any.
        if (command.owner() == CommandOwner::viewer && (stepping || !steps))
            add(command);
    }
    for (CommandId id : applicationCommands)
        add(registry.command(id));
    return actions;
}

} // namespace ViewerCommands
