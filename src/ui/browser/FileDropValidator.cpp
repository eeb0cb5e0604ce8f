#include "ui/browser/FileDropValidator.h"

#include "core/model/PXFile.h"

#include <QDir>

Qt::DropAction dropActionForOperation(FileDropOperation operation)
{
    switch (operation) {
    case FileDropOperation::move: return Qt::MoveAction;
    case FileDropOperation::copy: return Qt::CopyAction;
    case FileDropOperation::link: return Qt::LinkAction;
    case FileDropOperation::open: return Qt::CopyAction;
    case FileDropOperation::ask: return Qt::CopyAction; // the menu at the drop decides
    case FileDropOperation::none: break;
    }
    return Qt::IgnoreAction;
}

FileDropOperation FileDropValidator::validate(const QList<QUrl> &urls, const PXFilePtr &destination,
                                              Qt::KeyboardModifiers modifiers)
{
    if (urls != m_previousValidationURLs || destination != m_previousDestination) {
        QList<PXFilePtr> sources;
        bool allLocal = !urls.isEmpty();
        for (const QUrl &url : urls) {
            if (!url.isLocalFile()) {
                allLocal = false;
                break;
            }
            sources.append(PXFile::fileForPath(url.toLocalFile()));
        }
        m_previousValidationURLs = urls;
        m_previousDestination = destination;
        m_previousResult = allLocal ? defaultOperation(sources, destination) : FileDropOperation::none;
    }
    return applyModifiers(m_previousResult, modifiers);
}

void FileDropValidator::reset()
{
    m_previousValidationURLs.clear();
    m_previousDestination.reset();
    m_previousResult = FileDropOperation::none;
}

FileDropOperation FileDropValidator::defaultOperation(const QList<PXFilePtr> &sources, const PXFilePtr &destination)
{
    if (!destination || destination->isPlaceholder() || sources.isEmpty())
        return FileDropOperation::none;
    if (destination->isApplication())
        return FileDropOperation::open;
    if (!destination->isDirectory())
        return FileDropOperation::none;
    const QString target = destination->resolvedPath();
    bool allInDestination = true;
    bool sameDevice = true;
    for (const PXFilePtr &source : sources) {
        if (source->isPlaceholder())
            return FileDropOperation::none;
        // A folder cannot go into itself or into one of its own subfolders.
        const QString path = source->path();
        if (target == path || target.startsWith(path + QLatin1Char('/')))
            return FileDropOperation::none;
        if (source->parentPath() != target && source->parentPath() != destination->path())
            allInDestination = false;
        if (source->device() != destination->device())
            sameDevice = false;
    }
    // Files dropped back where they are: nothing to do.
    if (allInDestination)
        return FileDropOperation::none;
    return sameDevice ? FileDropOperation::move : FileDropOperation::copy;
}

FileDropOperation FileDropValidator::applyModifiers(FileDropOperation operation, Qt::KeyboardModifiers modifiers)
{
    if (operation == FileDropOperation::none || operation == FileDropOperation::open)
        return operation;
    const bool control = modifiers.testFlag(Qt::ControlModifier);
    const bool shift = modifiers.testFlag(Qt::ShiftModifier);
    if (modifiers.testFlag(Qt::AltModifier))
        return FileDropOperation::ask;
    if (control && shift)
        return FileDropOperation::link;
    if (control)
        return FileDropOperation::copy;
    if (shift)
        return FileDropOperation::move;
    return operation;
}
