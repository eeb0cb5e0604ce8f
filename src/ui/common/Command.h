#pragma once

#include <QKeySequence>
#include <QList>
#include <QObject>
#include <QString>
#include <QVariant>

#include <functional>
#include <type_traits>

class QObject;
class QWidget;

namespace Commands {
Q_NAMESPACE

// Every command of the program's menus, toolbar and context menus. The registry describes each
// one; code names a command by its enumerator, so a misspelt command does not compile. The
// enumerator's name is the command's identifier.
enum class Id : int {
    // The application
    newMainWindow,
    newMainWindowTab,
    openAboutWindow,
    openBugReporterWindow,
    openActivityWindow,
    openQuickview,
    openRenameWindow,
    openSettings,
    openOpenWithEditor,
    openMoveToEditor,
    startSlideshowWithOpenImageWindows,
    previousImageWindow,
    nextImageWindow,
    goToSite,
    goToReleaseNotes,
    checkForUpdates,
    terminate,
    // The tabbed top-level window
    performClose,
    toggleFullScreen,
    selectNextTab,
    selectPreviousTab,
    openWithApplication,
    // The window's content
    showHideSidebar,
    showHideInspector,
    showHideFavorites,
    toggleToolbarShown,
    runToolbarCustomizationPalette,
    changeBrowserLayout,
    toggleThumbnailInfo,
    showThumbInfo,
    back,
    forward,
    backForward,
    changeSidebarSource,
    changeSidebarSourceFromTree,
    changeBaseUpOneLevel,
    expandSelected,
    collapseSelected,
    changeThumbnailSize,
    changeFolderDepth,
    changeThumbnailFileSort,
    changeThumbnailReverseSort,
    changeThumbnailFolderSort,
    changeThumbnailSubfolderGrouping,
    changeThumbnailFileFilter,
    changeThumbnailHideFolders,
    filterThumbnails,
    setThumbnailViewSearchCategory,
    thumbnailViewSearch,
    changeSidebarFileSort,
    changeSidebarReverseSort,
    changeSidebarFileFilter,
    changeSidebarInfo,
    inspectorDoubleClicked,
    scaleToFit,
    fitToScreen,
    zoomTo200Percent,
    zoomTo100Percent,
    zoomTo50Percent,
    zoomIn,
    zoomOut,
    rotate180,
    rotateClockwise,
    rotateCounterclockwise,
    // The viewer's commands without menu items (hotkeys only)
    moveImageLeft,
    moveImageRight,
    moveImageUp,
    moveImageDown,
    moveImageUpLeft,
    moveImageUpRight,
    moveImageDownLeft,
    moveImageDownRight,
    recenterImage,
    nextImageInFolder,
    previousImageInFolder,
    videoPlayPause,
    videoFastBackward,
    videoFastForward,
    videoSlow,
    videoJumpBackward15,
    videoJumpForward15,
    videoNextFrame,
    videoPreviousFrame,
    videoMute,
    videoVolumeDown,
    videoVolumeUp,
    // The thumbnail pane
    performOpen,
    openInApp,
    openWithMenuAction,
    openInCreator,
    selectAll,
    deselectAll,
    renameFile,
    makeAlias,
    makeSymlink,
    duplicate,
    moveToTrash,
    moveToMenuAction,
    copyToMenuAction,
    aliasToMenuAction,
    revealInFileManager,
    revealOriginal,
    newFolder,
    ejectSelected,
    changeFinderLabel,
    flagItem,
    rejectItem,
    clearItemFlag,
    selectFlagged,
    selectRejected,
    nextImageInBrowser,
    previousImageInBrowser,
    scrollSelectionToVisible,
    startSlideshow,
    startSlideshowWithSelected,
    startSlideshowInFolder,
    rotateClockwisePermanent,
    rotateCounterclockwisePermanent,
    // File operations: the way back, and the rejects to the trash
    undo,
    redo,
    deleteRejected,
};
Q_ENUM_NS(Id)

} // namespace Commands

using CommandId = Commands::Id;

// The object that runs a command: the tabbed top-level window, the content of its current tab,
// that content's thumbnail pane, the media viewer of the window (the main window's embedded
// viewer, the quick view's, an image window's, a slideshow's), or the application.
enum class CommandOwner { tabbedWindow, window, pane, viewer, application };

// What a command takes besides the window it was sent from: nothing, a number (the value of a
// choice, a step) or a text (a path, a search).
enum class CommandArgument { none, integer, text };

// Whether a command can run now and, for a choice or a switch, whether it is the current one.
struct CommandState
{
    bool enabled = false;
    bool checked = false;
};

// One command: its stable identifier (hotkeys are stored under it), its title, its default keys,
// and the member functions of its owner that run it and tell its state. A command that does not
// exist yet (the viewer's, the slideshow's, ...) is unavailable: shown, always disabled.
//
// The functions are member-function pointers of the owner class, type-erased here: an owner class
// names its kind in `static constexpr CommandOwner commandOwner`, and a function's parameter
// decides what it is given: nothing, an `int` or an enum (the argument's number), a `QString`
// (the argument's text) or a `QWidget *` (the window the command came from).
class Command
{
public:
    // One default key, for the command alone or for one value of it ("Larger" is +1).
    struct Key
    {
        QKeySequence sequence;
        QVariant argument;
    };
    using Performer = std::function<void(QObject *owner, const QVariant &argument, QWidget *window)>;
    using Validator = std::function<CommandState(const QObject *owner, const QVariant &argument)>;

    Command() = default;
    // `title`: untranslated, marked for translation in the context "Commands".
    Command(CommandId id, const char *title);

    CommandId id() const { return m_id; }
    // "changeBrowserLayout": the enumerator's name.
    QString identifier() const { return QLatin1String(m_identifier); }
    // Translated.
    QString title() const;
    const QList<Key> &defaultKeys() const { return m_keys; }
    QKeySequence defaultKey(const QVariant &argument = {}) const;
    bool isCheckable() const { return m_checkable; }
    bool isAvailable() const { return m_available; }
    // Whether something runs it (an unavailable command, or an application command before the
    // application has bound it, has nothing).
    bool hasHandler() const { return bool(m_perform); }
    // From the class of its functions, or declared for the application's, which it binds later;
    // means nothing for an unavailable command.
    CommandOwner owner() const { return m_owner; }
    CommandArgument argument() const { return m_argument; }

    // The state on `owner` (an object of the owner's kind): disabled without an owner or a handler.
    CommandState state(const QObject *owner, const QVariant &argument = {}) const;
    // Runs the command on `owner` when it is enabled; answers whether it ran.
    bool perform(QObject *owner, const QVariant &argument = {}, QWidget *window = nullptr) const;

    // Declaring (the registry's table).
    Command &key(const QKeySequence &sequence, const QVariant &argument = {});
    Command &checkable();
    Command &unavailable();
    // For a command whose functions are bound later (the application's).
    Command &ownedBy(CommandOwner owner);
    // `perform` and `validate` are member functions of the same owner class; without `validate`
    // the command is always enabled and never checked.
    template<typename Perform, typename Validate = std::nullptr_t>
    Command &on(Perform perform, Validate validate = nullptr);

private:
    CommandId m_id{};
    const char *m_identifier = "";
    const char *m_title = "";
    QList<Key> m_keys;
    bool m_checkable = false;
    bool m_available = true;
    CommandOwner m_owner = CommandOwner::application;
    CommandArgument m_argument = CommandArgument::none;
    Performer m_perform;
    Validator m_validate;
};

namespace CommandBinding {

template<typename>
struct Method;
template<typename C, typename R>
struct Method<R (C::*)()>
{
    using Class = C;
    using Argument = void;
};
template<typename C, typename R>
struct Method<R (C::*)() const> : Method<R (C::*)()>
{ };
template<typename C, typename R, typename A>
struct Method<R (C::*)(A)>
{
    using Class = C;
    using Argument = std::remove_cvref_t<A>;
};
template<typename C, typename R, typename A>
struct Method<R (C::*)(A) const> : Method<R (C::*)(A)>
{ };

template<typename A>
constexpr CommandArgument argumentKind()
{
    if constexpr (std::is_same_v<A, QString>)
        return CommandArgument::text;
    else if constexpr (std::is_same_v<A, int> || std::is_enum_v<A>)
        return CommandArgument::integer;
    else
        return CommandArgument::none;
}

template<typename A>
A argumentValue(const QVariant &argument, QWidget *window)
{
    if constexpr (std::is_same_v<A, QWidget *>) {
        return window;
    } else if constexpr (std::is_same_v<A, QString>) {
        return argument.toString();
    } else if constexpr (std::is_enum_v<A>) {
        return A(argument.toInt());
    } else {
        static_assert(std::is_same_v<A, int>, "a command function takes nothing, int, an enum, QString or QWidget *");
        return argument.toInt();
    }
}

template<typename M, typename Object>
auto call(M method, Object *object, const QVariant &argument, QWidget *window)
{
    using A = typename Method<M>::Argument;
    if constexpr (std::is_void_v<A>)
        return (object->*method)();
    else
        return (object->*method)(argumentValue<A>(argument, window));
}

} // namespace CommandBinding

template<typename Perform, typename Validate>
Command &Command::on(Perform perform, Validate validate)
{
    using P = CommandBinding::Method<Perform>;
    using Owner = typename P::Class;
    m_owner = Owner::commandOwner;
    m_argument = CommandBinding::argumentKind<typename P::Argument>();
    m_perform = [perform](QObject *owner, const QVariant &argument, QWidget *window) {
        CommandBinding::call(perform, static_cast<Owner *>(owner), argument, window);
    };
    if constexpr (!std::is_null_pointer_v<Validate>) {
        using V = CommandBinding::Method<Validate>;
        static_assert(std::is_same_v<typename V::Class, Owner>, "a command's functions belong to one owner");
        m_validate = [validate](const QObject *owner, const QVariant &argument) -> CommandState {
            const auto result = CommandBinding::call(validate, static_cast<const Owner *>(owner), argument, nullptr);
            if constexpr (std::is_same_v<std::remove_cvref_t<decltype(result)>, bool>)
                return {result, false};
            else
                return result;
        };
    } else {
        m_validate = nullptr;
    }
    return *this;
}
