#include "ui/hotkeys/HotkeysController.h"

#include "core/model/ColorLabels.h"
#include "core/settings/AppSettings.h"
#include "ui/windows/CommandAction.h"
#include "ui/windows/CommandKeys.h"
#include "ui/windows/CommandRegistry.h"
#include "ui/windows/MainMenuBar.h"

#include <QMenu>
#include <QMenuBar>

#include <functional>

namespace {

// The viewer's commands go by short names in the hotkeys, as the user's bindings store them.
const QHash<int, QString> &shortNames()
{
    using C = CommandId;
    static const QHash<int, QString> names{
        {int(C::openQuickview), QStringLiteral("OpenQuickview")},
        {int(C::fitToScreen), QStringLiteral("FitToScreen")},
        {int(C::scaleToFit), QStringLiteral("FitToWindow")},
        {int(C::zoomTo200Percent), QStringLiteral("Scale200Percent")},
        {int(C::zoomTo100Percent), QStringLiteral("Scale100Percent")},
        {int(C::zoomTo50Percent), QStringLiteral("Scale50Percent")},
        {int(C::zoomIn), QStringLiteral("ZoomIn")},
        {int(C::zoomOut), QStringLiteral("ZoomOut")},
        {int(C::rotate180), QStringLiteral("Rotate180")},
        {int(C::rotateClockwise), QStringLiteral("RotateClockwise")},
        {int(C::rotateCounterclockwise), QStringLiteral("RotateCounterclockwise")},
        {int(C::moveImageUp), QStringLiteral("IV-MoveUp")},
        {int(C::moveImageDown), QStringLiteral("IV-MoveDown")},
        {int(C::moveImageLeft), QStringLiteral("IV-MoveLeft")},
        {int(C::moveImageRight), QStringLiteral("IV-MoveRight")},
        {int(C::moveImageUpLeft), QStringLiteral("IV-MoveNorthWest")},
        {int(C::moveImageUpRight), QStringLiteral("IV-MoveNorthEast")},
        {int(C::moveImageDownLeft), QStringLiteral("IV-MoveSouthWest")},
        {int(C::moveImageDownRight), QStringLiteral("IV-MoveSouthEast")},
        {int(C::recenterImage), QStringLiteral("IV-Recenter")},
        {int(C::videoPlayPause), QStringLiteral("VID-PlayPause")},
        {int(C::videoFastBackward), QStringLiteral("VID-FastBackward")},
        {int(C::videoFastForward), QStringLiteral("VID-FastForward")},
        {int(C::videoSlow), QStringLiteral("VID-Slow")},
        {int(C::videoJumpBackward15), QStringLiteral("VID-JumpBackward15")},
        {int(C::videoJumpForward15), QStringLiteral("VID-JumpForward15")},
        {int(C::videoNextFrame), QStringLiteral("VID-NextFrame")},
        {int(C::videoPreviousFrame), QStringLiteral("VID-PrevFrame")},
        {int(C::videoMute), QStringLiteral("VID-Mute")},
        {int(C::videoVolumeDown), QStringLiteral("VID-VolumeDown")},
        {int(C::videoVolumeUp), QStringLiteral("VID-VolumeUp")},
        {int(C::nextImageInFolder), QStringLiteral("NextImageInFolder")},
        {int(C::previousImageInFolder), QStringLiteral("PreviousImageInFolder")},
    };
    return names;
}

// "&File" is "File"; "&&" stays one "&".
QString plainTitle(const QString &text)
{
    QString title = text;
    title.replace(QLatin1String("&&"), QStringLiteral("\x01"));
    title.remove(QLatin1Char('&'));
    title.replace(QLatin1Char('\x01'), QLatin1Char('&'));
    return title;
}

} // namespace

HotkeysController::HotkeysController(AppSettings *settings, const CommandRegistry &registry, CommandKeys &keys,
                                     QObject *parent)
    : QObject(parent)
    , m_settings(settings)
    , m_keys(&keys)
{
    buildTable(registry);
    loadBindings();
    connect(settings, &AppSettings::hotkeysChanged, this, [this] {
        if (!m_storing)
            loadBindings();
    });
}

// The windows go back to the default keys with the controller: nobody keeps the user's in step.
HotkeysController::~HotkeysController()
{
    if (m_keys)
        m_keys->setUserKeys({});
}

QString HotkeysController::shortName(CommandId id)
{
    return shortNames().value(int(id));
}

QString HotkeysController::keyText(const QKeySequence &key)
{
    return key.toString(QKeySequence::NativeText);
}

QString HotkeysController::keysText(const QList<QKeySequence> &keys)
{
    QStringList texts;
    for (const QKeySequence &key : keys)
        texts.append(keyText(key));
    return texts.join(QStringLiteral(", "));
}

// The rows follow the menu bar that every main window builds, item by item, so the table cannot
// miss a menu item or name one the menus do not have. The Open With and Move To submenus are
// filled when they open and have no items here.
void HotkeysController::buildTable(const CommandRegistry &registry)
{
    const auto addItem = [this, &registry](CommandId id, const QVariant &argument, const QString &title,
                                           const QString &group) {
        const QString itemName = CommandKeys::itemName(id, argument);
        if (m_items.contains(itemName) || m_table.indexOf(itemName) >= 0)
            return;
        HotkeyTable::Row row;
        const QString shortName = argument.isValid() ? QString() : shortNames().value(int(id));
        row.identifier = shortName.isEmpty() ? itemName : shortName;
        if (!shortName.isEmpty())
            row.aliases.append(itemName);
        row.title = title;
        row.group = group;
        row.defaultKeys = CommandKeys::defaultKeys(registry.command(id), argument);
        m_items.insert(row.identifier, Item{id, argument});
        m_table.addRow(std::move(row));
    };

    QMenuBar scratch;
    MainMenuBar::build(&scratch, registry);
    std::function<void(QMenu *, const QString &, const QString &)> walk = [&](QMenu *menu, const QString &group,
                                                                              const QString &path) {
        for (QAction *action : menu->actions()) {
            if (QMenu *submenu = action->menu()) {
                const QString title = plainTitle(submenu->title());
                walk(submenu, group, path.isEmpty() ? title : path + QStringLiteral(" › ") + title);
            } else if (auto *item = qobject_cast<CommandAction *>(action)) {
                const QString title = plainTitle(item->text());
                addItem(item->commandId(), item->argument(),
                        path.isEmpty() ? title : path + QStringLiteral(" › ") + title, group);
            }
        }
    };
    for (QAction *top : scratch.actions()) {
        if (QMenu *menu = top->menu())
            walk(menu, plainTitle(menu->title()), {});
    }

    // The label swatches share one widget in the File menu instead of being items of their own.
    for (int value = 0; value <= 7; ++value) {
        if (m_table.row(CommandKeys::itemName(CommandId::changeFinderLabel, value)))
            continue;
        const QString title = value ? ColorLabels::title(value) : tr("No Label");
        addItem(CommandId::changeFinderLabel, value, tr("Label") + QStringLiteral(" › ") + title, tr("File"));
    }

    // The viewer's commands without a menu item work by their keys alone.
    for (const Command &command : registry.commands()) {
        if (command.owner() != CommandOwner::viewer || !command.isAvailable())
            continue;
        const QString name = shortNames().value(int(command.id()));
        const QString group = name.startsWith(QLatin1String("IV-")) ? tr("Keyboard Image Scrolling")
            : name.startsWith(QLatin1String("VID-"))                ? tr("Video Player Control")
                                                                    : tr("Image Viewer");
        addItem(command.id(), {}, command.title(), group);
    }
}

bool HotkeysController::itemOf(const QString &identifier, CommandId *id, QVariant *argument) const
{
    const int index = m_table.indexOf(identifier);
    if (index < 0)
        return false;
    const Item item = m_items.value(m_table.rows().at(index).identifier);
    if (id)
        *id = item.id;
    if (argument)
        *argument = item.argument;
    return true;
}

QString HotkeysController::identifierOf(CommandId id, const QVariant &argument) const
{
    const HotkeyTable::Row *row = m_table.row(CommandKeys::itemName(id, argument));
    return row ? row->identifier : QString();
}

void HotkeysController::setKeys(const QString &identifier, const QList<QKeySequence> &keys)
{
    m_table.setKeys(identifier, keys);
    store();
    publish();
}

void HotkeysController::reset(const QString &identifier)
{
    m_table.reset(identifier);
    store();
    publish();
}

void HotkeysController::resetAll()
{
    m_table.resetAll();
    store();
    publish();
}

void HotkeysController::loadBindings()
{
    if (m_settings)
        m_table.applyBindings(m_settings->hotkeys());
    publish();
}

void HotkeysController::publish()
{
    QHash<QString, QList<QKeySequence>> keys;
    for (const HotkeyTable::Row &row : m_table.rows()) {
        if (row.userKeys) {
            const Item item = m_items.value(row.identifier);
            keys.insert(CommandKeys::itemName(item.id, item.argument), *row.userKeys);
        }
    }
    if (m_keys)
        m_keys->setUserKeys(keys);
    Q_EMIT tableChanged();
}

void HotkeysController::store()
{
    if (!m_settings)
        return;
    m_storing = true;
    m_settings->setHotkeys(m_table.bindings());
    m_storing = false;
}
