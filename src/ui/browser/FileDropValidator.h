#pragma once

#include "core/model/PXFileForward.h"

#include <QList>
#include <QUrl>
#include <Qt>

// What a drop of files onto the grid does; `ask` offers the choice in a menu at the drop.
enum class FileDropOperation { none, move, copy, link, open, ask };

Qt::DropAction dropActionForOperation(FileDropOperation operation);

// Decides what dropping file URLs onto a folder or an application does. Without modifiers files
// move within a volume and are copied across volumes; as on the Linux desktop, Ctrl copies, Shift
// moves, Ctrl and Shift together make symbolic links, and Alt asks. Dropping onto an application opens the
// files with it. The decision for one drag over one destination is kept, so that the stream of
// move events of a hovering drag does not stat the files again.
class FileDropValidator
{
public:
    FileDropOperation validate(const QList<QUrl> &urls, const PXFilePtr &destination, Qt::KeyboardModifiers modifiers);
    void reset();

    static FileDropOperation defaultOperation(const QList<PXFilePtr> &sources, const PXFilePtr &destination);
    static FileDropOperation applyModifiers(FileDropOperation operation, Qt::KeyboardModifiers modifiers);

private:
    QList<QUrl> m_previousValidationURLs;
    FileDropOperation m_previousResult = FileDropOperation::none;
    PXFilePtr m_previousDestination;
};
