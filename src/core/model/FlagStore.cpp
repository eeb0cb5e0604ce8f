#include "core/model/FlagStore.h"

#include "core/app/Dispatch.h"
#include "core/app/Log.h"
#include "core/fs/ExtendedAttributes.h"

#include <QCoreApplication>
#include <QDir>
#include <QFile>
#include <QFileInfo>
#include <QJsonDocument>
#include <QJsonObject>
#include <QPointer>
#include <QSaveFile>
#include <QStandardPaths>
#include <QThread>

#include <sys/stat.h>

namespace {

FlagStore *installedStore = nullptr;

QByteArray attributeValue(FileFlag flag)
{
    switch (flag) {
    case FileFlag::flagged: return QByteArrayLiteral("flagged");
    case FileFlag::rejected: return QByteArrayLiteral("rejected");
    case FileFlag::none: break;
    }
    return {};
}

FileFlag flagFromText(const QByteArray &text)
{
    if (text == "flagged")
        return FileFlag::flagged;
    if (text == "rejected")
        return FileFlag::rejected;
    return FileFlag::none;
}

bool statOf(const QByteArray &path, qint64 *size, qint64 *modified)
{
    struct stat info
    { };
    if (::stat(path.constData(), &info) != 0)
        return false;
    *size = qint64(info.st_size);
    *modified = qint64(info.st_mtim.tv_sec);
    return true;
}

} // namespace

FlagStore::FlagStore(const QString &storeFile, QObject *parent)
    : QObject(parent)
    , m_storeFile(storeFile)
{
    if (m_storeFile.isEmpty())
        m_storeFile = QStandardPaths::writableLocation(QStandardPaths::GenericDataLocation)
            + QStringLiteral("/Pixcove/flags.json");
    m_throttle.setSingleShot(true);
    m_throttle.setInterval(defaultSaveInterval);
    connect(&m_throttle, &QTimer::timeout, this, &FlagStore::saveNow);
    m_writer.setMaxThreadCount(1);
    m_writer.setObjectName(QStringLiteral("Flag Store"));
}

FlagStore::~FlagStore()
{
    flush();
}

FlagStore &FlagStore::shared()
{
    if (installedStore)
        return *installedStore;
    static FlagStore *own = [] {
        auto *store = new FlagStore;
        // Made by whichever thread asked first: its timer belongs to the GUI thread.
        if (QCoreApplication *app = QCoreApplication::instance(); app && store->thread() != app->thread())
            store->moveToThread(app->thread());
        return store;
    }();
    return *own;
}

void FlagStore::setShared(FlagStore *store)
{
    installedStore = store;
}

// MARK: flags

FileFlag FlagStore::read(const QByteArray &nativePath) const
{
    {
        QMutexLocker locker(&m_mutex);
        ensureLoaded();
        if (!m_entries.isEmpty()) {
            const auto found = m_entries.constFind(nativePath);
            if (found != m_entries.cend()) {
                // Another file given the name since differs in size and in date.
                qint64 size = 0;
                qint64 modified = 0;
                if (statOf(nativePath, &size, &modified) && (size == found->size || modified == found->modified))
                    return found->flag;
            }
        }
    }
    const std::optional<QByteArray> value = ExtendedAttributes::read(nativePath, flagAttribute);
    return value ? flagFromText(*value) : FileFlag::none;
}

bool FlagStore::write(const QByteArray &nativePath, FileFlag flag, QString *error)
{
    std::optional<QByteArray> value;
    if (flag != FileFlag::none)
        value = attributeValue(flag);
    const ExtendedAttributes::WriteResult result = ExtendedAttributes::write(nativePath, flagAttribute, value);
    QMutexLocker locker(&m_mutex);
    ensureLoaded();
    if (result.ok()) {
        if (m_entries.remove(nativePath))
            changed();
        return true;
    }
    if (result.status == ExtendedAttributes::WriteStatus::failed) {
        if (error)
            *error = result.message;
        return false;
    }
    // The file keeps no attribute of ours: the store keeps the flag. A "none" is kept only where
    // an attribute the file still carries says otherwise.
    const std::optional<QByteArray> current = ExtendedAttributes::read(nativePath, flagAttribute);
    if (flag == FileFlag::none && (!current || flagFromText(*current) == FileFlag::none)) {
        if (m_entries.remove(nativePath))
            changed();
        return true;
    }
    Entry entry;
    entry.flag = flag;
    if (!statOf(nativePath, &entry.size, &entry.modified)) {
        if (error)
            *error = result.message;
        return false;
    }
    m_entries.insert(nativePath, entry);
    changed();
    return true;
}

void FlagStore::noteMoved(const QByteArray &from, const QByteArray &to)
{
    if (from == to)
        return;
    QMutexLocker locker(&m_mutex);
    ensureLoaded();
    // The item itself, and everything inside it when it is a folder.
    const QByteArray inside = from + '/';
    QList<QByteArray> moved;
    for (auto it = m_entries.cbegin(); it != m_entries.cend(); ++it) {
        if (it.key() == from || it.key().startsWith(inside))
            moved.append(it.key());
    }
    for (const QByteArray &key : std::as_const(moved)) {
        const Entry entry = m_entries.take(key);
        m_entries.insert(to + key.mid(from.size()), entry);
    }
    if (!moved.isEmpty())
        changed();
}

int FlagStore::entryCount() const
{
    QMutexLocker locker(&m_mutex);
    ensureLoaded();
    return int(m_entries.size());
}

// MARK: the store file

void FlagStore::ensureLoaded() const
{
    if (m_loaded)
        return;
    m_loaded = true;
    QFile file(m_storeFile);
    if (!file.exists())
        return;
    QString problem;
    QJsonObject files;
    if (!file.open(QIODevice::ReadOnly)) {
        problem = file.errorString();
    } else {
        QJsonParseError parseError;
        const QJsonDocument document = QJsonDocument::fromJson(file.readAll(), &parseError);
        file.close();
        if (!document.isObject())
            problem = parseError.errorString();
        else
            files = document.object().value(QStringLiteral("files")).toObject();
    }
    if (!problem.isEmpty()) {
        // The user's marks may still be in there: keep the file for them, beside the new one.
        const QString aside = m_storeFile + QStringLiteral(".unreadable");
        QFile::remove(aside);
        const bool setAside = QFile::rename(m_storeFile, aside);
        m_keepFile = !setAside;
        logError(QStringLiteral("Error loading flags file %1: %2; %3")
                     .arg(m_storeFile, problem,
                          setAside ? QStringLiteral("kept as ") + aside
                                   : QStringLiteral("left in place, marks on such files will not be kept")));
        return;
    }
    for (auto it = files.constBegin(); it != files.constEnd(); ++it) {
        const QJsonObject object = it.value().toObject();
        Entry entry;
        entry.flag = flagFromText(object.value(QStringLiteral("flag")).toString().toLatin1());
        entry.size = qint64(object.value(QStringLiteral("size")).toDouble(-1));
        entry.modified = qint64(object.value(QStringLiteral("modified")).toDouble());
        m_entries.insert(QFile::encodeName(it.key()), entry);
    }
}

void FlagStore::changed()
{
    m_dirty = true;
    if (m_saveRequested.exchange(true))
        return;
    // The first change of a quiet period starts the interval; the changes made meanwhile are
    // written together at its end.
    QMetaObject::invokeMethod(
        this,
        [this] {
            if (!m_throttle.isActive())
                m_throttle.start();
        },
        Qt::QueuedConnection);
}

QByteArray FlagStore::snapshotJson() const
{
    QJsonObject files;
    for (auto it = m_entries.cbegin(); it != m_entries.cend(); ++it) {
        QJsonObject object;
        object.insert(QStringLiteral("flag"), QString::fromLatin1(attributeValue(it->flag)));
        object.insert(QStringLiteral("size"), double(it->size));
        object.insert(QStringLiteral("modified"), double(it->modified));
        files.insert(QFile::decodeName(it.key()), object);
    }
    QJsonObject root;
    root.insert(QStringLiteral("version"), 1);
    root.insert(QStringLiteral("files"), files);
    return QJsonDocument(root).toJson(QJsonDocument::Compact);
}

void FlagStore::saveNow()
{
    QByteArray json;
    {
        QMutexLocker locker(&m_mutex);
        m_saveRequested = false;
        if (!m_dirty || m_keepFile)
            return;
        m_dirty = false;
        json = snapshotJson();
    }
    const QPointer<FlagStore> self(this);
    m_writer.start([self, this, json] {
        QString error;
        // The destructor waits for this pool, so `this` outlives the job.
        if (writeSnapshot(json, &error))
            return;
        postTo(this, [self, error] {
            if (!self)
                return;
            {
                QMutexLocker locker(&self->m_mutex);
                self->m_dirty = true; // tried again with the next change, and at quit
            }
            self->reportFailure(error);
        });
    });
}

bool FlagStore::writeSnapshot(const QByteArray &json, QString *error)
{
    QDir().mkpath(QFileInfo(m_storeFile).absolutePath());
    QSaveFile file(m_storeFile);
    // Unbuffered: a short write (a full disk) shows in write()'s count here; buffered, it is lost
    // in the flush at commit, which then renames a cut-off file over the store. An unfinished
    // QSaveFile removes its temporary file, and the previous store stays whole.
    if (!file.open(QIODevice::WriteOnly | QIODevice::Unbuffered) || file.write(json) != json.size() || !file.commit()) {
        *error = file.errorString();
        return false;
    }
    ++m_fileWriteCount;
    return true;
}

bool FlagStore::flush(QString *error)
{
    m_writer.waitForDone();
    QByteArray json;
    {
        QMutexLocker locker(&m_mutex);
        m_saveRequested = false;
        if (!m_dirty || m_keepFile)
            return true;
        m_dirty = false;
        json = snapshotJson();
    }
    if (isGuiThread() || thread() == QThread::currentThread())
        m_throttle.stop();
    QString message;
    if (writeSnapshot(json, &message))
        return true;
    {
        QMutexLocker locker(&m_mutex);
        m_dirty = true;
    }
    reportFailure(message);
    if (error)
        *error = message;
    return false;
}

void FlagStore::reportFailure(const QString &message)
{
    logError(QStringLiteral("Error saving flags file %1: %2").arg(m_storeFile, message));
    if (m_reportedFailure)
        return;
    m_reportedFailure = true;
    Q_EMIT saveFailed(message);
}
