#pragma once

#include "core/model/PXFileForward.h"

#include <QHash>
#include <QList>
#include <QPointer>
#include <QRecursiveMutex>
#include <QString>

#include <any>
#include <memory>
#include <optional>

class FileModel;
class QObject;
class QTimer;
class ZQFolderSubscription;
using FileModelPtr = std::shared_ptr<FileModel>;

enum class LoadingState { none, initialLoading, longLoading };

// Told of a node's loading state and of changes of its arranged children (GUI thread).
class FileModelDelegate
{
public:
    virtual ~FileModelDelegate() = default;
    virtual void fileModelLoadingStateChanged(FileModel &model) = 0;
    virtual void fileModelChildrenChanged(FileModel &model) = 0;
};

// One node of a tree of files: a record, and for a folder its children, their counts and its
// loading state. Nodes keep their identity across reloads (children are kept by record), so a
// view's item for a file survives a re-sort. Children are read and written under the node's
// recursive lock; loading-state changes happen on the GUI thread.
class FileModel : public std::enable_shared_from_this<FileModel>
{
public:
    struct Content
    {
        mutable QRecursiveMutex recursiveLock;
        std::weak_ptr<FileModel> parent;
        std::optional<QList<FileModelPtr>> arrangedChildren; // filtered and sorted
        std::optional<QHash<const PXFile *, FileModelPtr>> allChildren; // every child, by record
        int calculatedChildImageCount = 0;
        int calculatedChildFileCount = 0;
        int calculatedChildFolderCount = 0;
        LoadingState loadingState = LoadingState::none;
    };

    static FileModelPtr create(PXFilePtr file, const FileModelPtr &parent = nullptr);
    ~FileModel();

    const QString &id() const { return m_id; }
    const PXFilePtr &file() const { return m_file; }
    // Gives a file node the record it has after a rename; a folder keeps its record for life.
    void setFile(PXFilePtr file);

    std::any representedItem;
    std::optional<int> currentAutoloadDepth;
    bool isVisible = false;

    bool isLeaf() const { return m_isLeaf; }
    int depth() const { return m_depth; }
    FileModelPtr parent() const;
    Content &content() { return m_content; }
    const Content &content() const { return m_content; }

    // The child for `file`, made (and kept) on first request.
    FileModelPtr childForFile(const PXFilePtr &file);
    // Makes room for `count` more children at once, rather than growing step by step.
    void reserveChildren(qsizetype count);
    // Drops the child for `file`; answers it, or null when there was none.
    FileModelPtr removeChildForFile(const PXFile *file);
    QList<FileModelPtr> allChildrenList() const;
    // The children that have a folder subscription (the listed subfolders), without copying the rest.
    QList<FileModelPtr> subscribedChildren() const;
    // Whether `child` is (still) one of this node's children.
    bool hasChild(const FileModel *child) const;

    // How many of the arranged children are images, files and folders.
    struct ChildCounts
    {
        int images = 0;
        int files = 0;
        int folders = 0;
    };
    static ChildCounts countChildren(const QList<FileModelPtr> &children);
    // Adds (`sign` 1) or takes away (-1) what `child` counts for.
    static void countChild(ChildCounts &counts, FileModel &child, int sign);
    ChildCounts childCounts() const;
    void setArrangedChildren(QList<FileModelPtr> children);
    // Takes counts made beforehand (off the GUI thread) for `children`.
    void setArrangedChildren(QList<FileModelPtr> children, ChildCounts counts);
    QList<FileModelPtr> arrangedChildren() const;

    // The subscription that lists and watches this folder while its children are wanted.
    std::shared_ptr<ZQFolderSubscription> directorySubscription;

    void setDelegate(FileModelDelegate *delegate, QObject *delegateObject);
    LoadingState loadingState() const;
    // Loading started (initialLoading, then longLoading after 0.3 s) or ended (none). GUI thread.
    void setLoading(bool loading);

    // For create() only (through std::make_shared, which needs a public constructor).
    struct CreateTag
    {
        explicit CreateTag() = default;
    };
    FileModel(CreateTag, PXFilePtr file, const FileModelPtr &parent);

private:
    QString m_id;
    PXFilePtr m_file;
    bool m_isLeaf;
    // Whether this node counted as an image when its parent's counts last took it in, so that
    // taking it out again subtracts the same (the file may be gone by then).
    bool m_countedAsImage = false;
    int m_depth;
    Content m_content;
    FileModelDelegate *m_delegate = nullptr;
    QPointer<QObject> m_delegateObject; // the delegate's lifetime guard
    std::unique_ptr<QTimer> m_loadingStateTimer;
};
