#include "core/model/FileModel.h"

#include "core/fs/ZQFolderSubscription.h"
#include "core/model/PXFile.h"

#include <QTimer>
#include <QtConcurrent/QtConcurrentMap>

namespace {
// A load shorter than this never shows as long loading, so quick folders do not flash a spinner.
constexpr int longLoadingDelayMs = 300;
// Below this many children, counting on one thread costs less than handing out the work.
constexpr qsizetype parallelCountMinimum = 2000;
} // namespace

FileModelPtr FileModel::create(PXFilePtr file, const FileModelPtr &parent)
{
    // One allocation for the node and its count: a folder of 100 000 makes as many nodes, and
    // every pass over them touches both.
    return std::make_shared<FileModel>(CreateTag(), std::move(file), parent);
}

FileModel::FileModel(CreateTag, PXFilePtr file, const FileModelPtr &parent)
    : m_id(file ? file->path() : QString())
    , m_file(std::move(file))
    , m_isLeaf(!m_file || !m_file->isDirectory())
    , m_depth(parent ? parent->depth() + 1 : 0)
{
    m_content.parent = parent;
}

FileModel::~FileModel() = default;

void FileModel::setFile(PXFilePtr file)
{
    if (!m_isLeaf)
        qFatal("We should never swap out a folder.");
    m_file = std::move(file);
    m_id = m_file ? m_file->path() : QString();
}

FileModelPtr FileModel::parent() const
{
    return m_content.parent.lock();
}

FileModelPtr FileModel::childForFile(const PXFilePtr &file)
{
    QMutexLocker locker(&m_content.recursiveLock);
    if (!m_content.allChildren)
        m_content.allChildren.emplace();
    FileModelPtr &child = (*m_content.allChildren)[file.get()];
    if (!child)
        child = create(file, shared_from_this());
    return child;
}

void FileModel::reserveChildren(qsizetype count)
{
    QMutexLocker locker(&m_content.recursiveLock);
    if (!m_content.allChildren)
        m_content.allChildren.emplace();
    m_content.allChildren->reserve(m_content.allChildren->size() + count);
}

FileModelPtr FileModel::removeChildForFile(const PXFile *file)
{
    QMutexLocker locker(&m_content.recursiveLock);
    if (!m_content.allChildren)
        return nullptr;
    return m_content.allChildren->take(file);
}

QList<FileModelPtr> FileModel::allChildrenList() const
{
    QMutexLocker locker(&m_content.recursiveLock);
    return m_content.allChildren ? m_content.allChildren->values() : QList<FileModelPtr>();
}

QList<FileModelPtr> FileModel::subscribedChildren() const
{
    QMutexLocker locker(&m_content.recursiveLock);
    QList<FileModelPtr> result;
    if (m_content.allChildren) {
        for (const FileModelPtr &child : std::as_const(*m_content.allChildren)) {
            if (child->directorySubscription)
                result.append(child);
        }
    }
    return result;
}

bool FileModel::hasChild(const FileModel *child) const
{
    QMutexLocker locker(&m_content.recursiveLock);
    return child && m_content.allChildren && m_content.allChildren->value(child->file().get()).get() == child;
}

FileModel::ChildCounts FileModel::countChildren(const QList<FileModelPtr> &children)
{
    // Whether a file is an image needs its type: for a large folder, found on every core first.
    if (children.size() > parallelCountMinimum) {
        QtConcurrent::blockingMap(children.cbegin(), children.cend(), [](const FileModelPtr &child) {
            if (child->isLeaf())
                child->file()->isImage();
        });
    }
    ChildCounts counts;
    for (const FileModelPtr &child : children)
        countChild(counts, *child, 1);
    return counts;
}

void FileModel::countChild(ChildCounts &counts, FileModel &child, int sign)
{
    if (child.isLeaf()) {
        counts.files += sign;
        if (sign > 0)
            child.m_countedAsImage = child.file()->isImage();
        counts.images += child.m_countedAsImage ? sign : 0;
    } else {
        counts.folders += sign;
    }
}

FileModel::ChildCounts FileModel::childCounts() const
{
    QMutexLocker locker(&m_content.recursiveLock);
    return {m_content.calculatedChildImageCount, m_content.calculatedChildFileCount,
            m_content.calculatedChildFolderCount};
}

void FileModel::setArrangedChildren(QList<FileModelPtr> children)
{
    const ChildCounts counts = countChildren(children);
    setArrangedChildren(std::move(children), counts);
}

void FileModel::setArrangedChildren(QList<FileModelPtr> children, ChildCounts counts)
{
    {
        QMutexLocker locker(&m_content.recursiveLock);
        m_content.arrangedChildren = std::move(children);
        m_content.calculatedChildImageCount = counts.images;
        m_content.calculatedChildFileCount = counts.files;
        m_content.calculatedChildFolderCount = counts.folders;
    }
    if (m_delegate && m_delegateObject)
        m_delegate->fileModelChildrenChanged(*this);
}

QList<FileModelPtr> FileModel::arrangedChildren() const
{
    QMutexLocker locker(&m_content.recursiveLock);
    return m_content.arrangedChildren.value_or(QList<FileModelPtr>());
}

void FileModel::setDelegate(FileModelDelegate *delegate, QObject *delegateObject)
{
    m_delegate = delegate;
    m_delegateObject = delegateObject;
}

LoadingState FileModel::loadingState() const
{
    QMutexLocker locker(&m_content.recursiveLock);
    return m_content.loadingState;
}

void FileModel::setLoading(bool loading)
{
    const auto setState = [this](LoadingState state) {
        {
            QMutexLocker locker(&m_content.recursiveLock);
            if (m_content.loadingState == state)
                return;
            m_content.loadingState = state;
        }
        if (m_delegate && m_delegateObject)
            m_delegate->fileModelLoadingStateChanged(*this);
    };
    m_loadingStateTimer.reset();
    if (!loading) {
        setState(LoadingState::none);
        return;
    }
    setState(LoadingState::initialLoading);
    m_loadingStateTimer = std::make_unique<QTimer>();
    m_loadingStateTimer->setSingleShot(true);
    QObject::connect(m_loadingStateTimer.get(), &QTimer::timeout, [this, setState] {
        if (loadingState() == LoadingState::initialLoading)
            setState(LoadingState::longLoading);
    });
    m_loadingStateTimer->start(longLoadingDelayMs);
}
