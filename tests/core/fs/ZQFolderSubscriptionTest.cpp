#include "core/fs/ZQFolderSubscription.h"

#include "core/fs/ZQEventCoalescer.h"
#include "core/fs/ZQInotifyWatcher.h"
#include "support/FileNames.h"
#include "support/TestDir.h"

#include <QDir>
#include <QFile>
#include <QSet>

#include <gtest/gtest.h>

#include <cstdio>
#include <fcntl.h>
#include <sys/stat.h>
#include <unistd.h>

namespace {

const char *typeName(ZQFileEventType type)
{
    switch (type) {
    case ZQFileEventType::contentModified: return "modified";
    case ZQFileEventType::created: return "created";
    case ZQFileEventType::removed: return "removed";
    case ZQFileEventType::replaced: return "replaced";
    case ZQFileEventType::attributesChanged: return "attributes";
    case ZQFileEventType::rescanNeeded: return "rescan";
    }
    return "?";
}

// Events as "type name" lines, names relative to `base`.
struct EventLog
{
    QByteArray base;
    QStringList lines;
    QList<ZQFileEvent> events;

    void append(const QList<ZQFileEvent> &received)
    {
        for (const ZQFileEvent &event : received) {
            events.append(event);
            QByteArray name = event.nativePath;
            if (name.startsWith(base + '/'))
                name = name.mid(base.size() + 1);
            lines.append(QString::fromLatin1(typeName(event.type)) + QLatin1Char(' ') + QString::fromUtf8(name));
        }
    }
    bool has(const QString &line) const { return lines.contains(line); }
    std::string text() const { return lines.join(QStringLiteral(", ")).toStdString(); }
    bool waitFor(const QString &line)
    {
        return waitUntil([&] { return has(line); });
    }
    void clear()
    {
        lines.clear();
        events.clear();
    }
};

bool rename(const QString &from, const QString &to)
{
    return std::rename(QFile::encodeName(from).constData(), QFile::encodeName(to).constData()) == 0;
}

class ZQFolderSubscriptionTest : public ::testing::Test
{
protected:
    std::shared_ptr<ZQFolderSubscription> subscribe(const QString &path)
    {
        auto subscription = ZQFolderSubscription::forFolder(ZQStandardFile::newFileForPath(path));
        log.base = QFile::encodeName(path);
        QObject::connect(subscription.get(), &ZQFolderSubscription::eventsReceived, subscription.get(),
                         [this](const QList<ZQFileEvent> &events) { log.append(events); });
        return subscription;
    }
    std::shared_ptr<ZQFolderSubscription> subscribeLoaded(const QString &path)
    {
        auto subscription = subscribe(path);
        subscription->load();
        EXPECT_TRUE(waitUntil([&] { return subscription->isLoaded(); }));
        return subscription;
    }

    TestDir dir;
    EventLog log;
};

} // namespace

TEST_F(ZQFolderSubscriptionTest, IsSharedPerFolderAndStopsWatchingWithTheLastHolder)
{
    dir.write(QStringLiteral("a.jpg"));
    dir.write(QStringLiteral("sub/b.jpg"));
    const ZQFilePtr folder = ZQStandardFile::newFileForPath(dir.path());
    const int watchesBefore = ZQInotifyWatcher::shared().watchCount();

    auto first = ZQFolderSubscription::forFolder(folder);
    auto second = ZQFolderSubscription::forFolder(folder);
    EXPECT_EQ(first, second);
    EXPECT_EQ(ZQFolderSubscription::existingForFolder(folder), first);

    QList<ZQFilePtr> batched;
    int finished = 0;
    QObject::connect(first.get(), &ZQFolderSubscription::batchLoaded, first.get(),
                     [&](const QList<ZQFilePtr> &files) { batched += files; });
    QObject::connect(first.get(), &ZQFolderSubscription::loadFinished, first.get(), [&] { ++finished; });
    first->load();
    EXPECT_TRUE(first->isLoading());
    ASSERT_TRUE(waitUntil([&] { return first->isLoaded(); }));
    second->load();
    EXPECT_EQ(finished, 1);
    EXPECT_FALSE(first->isLoading());
    EXPECT_TRUE(first->errorString().isEmpty());
    EXPECT_EQ(nameList(first->files()), "a.jpg, sub");
    EXPECT_EQ(nameList(batched), nameList(first->files()));
    EXPECT_EQ(ZQInotifyWatcher::shared().watchCount(), watchesBefore + 1);

    first.reset();
    EXPECT_EQ(ZQInotifyWatcher::shared().watchCount(), watchesBefore + 1);
    second.reset();
    EXPECT_EQ(ZQInotifyWatcher::shared().watchCount(), watchesBefore);
    EXPECT_FALSE(ZQFolderSubscription::existingForFolder(folder));
    EXPECT_FALSE(ZQFolderSubscription::forFolder(folder)->isLoaded());
}

TEST_F(ZQFolderSubscriptionTest, ReportsEachKindOfChangeAndKeepsTheListInStep)
{
    dir.write(QStringLiteral("keep.jpg"), "1");
    dir.write(QStringLiteral("old name.jpg"));
    const QString doomed = dir.write(QStringLiteral("doomed.jpg"));
    auto subscription = subscribeLoaded(dir.path());

    dir.write(QStringLiteral("new.jpg"), "n");
    ASSERT_TRUE(log.waitFor("created new.jpg")) << log.text();
    EXPECT_EQ(log.text(), "created new.jpg");
    EXPECT_TRUE(namesOf(subscription->files()).contains("new.jpg"));

    log.clear();
    dir.write(QStringLiteral("keep.jpg"), "22");
    ASSERT_TRUE(log.waitFor("modified keep.jpg")) << log.text();
    EXPECT_EQ(log.text(), "modified keep.jpg");

    log.clear();
    ::chmod(QFile::encodeName(dir.filePath(QStringLiteral("keep.jpg"))).constData(), 0600);
    ASSERT_TRUE(log.waitFor("attributes keep.jpg")) << log.text();

    log.clear();
    ASSERT_TRUE(rename(dir.filePath(QStringLiteral("old name.jpg")), dir.filePath(QStringLiteral("new name.jpg"))));
    ASSERT_TRUE(waitUntil([&] { return log.lines.size() >= 2; }));
    EXPECT_EQ(log.text(), "removed old name.jpg, created new name.jpg");

    log.clear();
    QFile::remove(doomed);
    ASSERT_TRUE(log.waitFor("removed doomed.jpg"));
    EXPECT_EQ(log.events.value(0).nativePath, QFile::encodeName(doomed));

    EXPECT_EQ(nameList(subscription->files()), "keep.jpg, new name.jpg, new.jpg");
    EXPECT_EQ(subscription->files().size(), 3);
}

TEST_F(ZQFolderSubscriptionTest, CoalescesSavesAndShortLivedFiles)
{
    dir.write(QStringLiteral("photo.jpg"), "v1");
    auto subscription = subscribeLoaded(dir.path());

    // Moved onto an existing name from elsewhere.
    TestDir elsewhere;
    const QString outside = elsewhere.write(QStringLiteral("photo.jpg"), "v2");
    ASSERT_TRUE(rename(outside, dir.filePath(QStringLiteral("photo.jpg"))));
    ASSERT_TRUE(log.waitFor("replaced photo.jpg")) << log.text();
    EXPECT_EQ(log.text(), "replaced photo.jpg");

    // A save through a temporary file, a file that comes and goes, a file written after creation:
    // all in one burst.
    log.clear();
    const QString temporary = dir.write(QStringLiteral(".photo.jpg.part"), "v3");
    ASSERT_TRUE(rename(temporary, dir.filePath(QStringLiteral("photo.jpg"))));
    QFile::remove(dir.write(QStringLiteral("flash.jpg"), "x"));
    dir.write(QStringLiteral("fresh.jpg"));
    dir.write(QStringLiteral("fresh.jpg"), "written");
    ASSERT_TRUE(waitUntil([&] { return log.lines.size() >= 2; }));
    EXPECT_EQ(log.text(), "replaced photo.jpg, created fresh.jpg");
    EXPECT_EQ(nameList(subscription->files()), "fresh.jpg, photo.jpg");

    // A new version exchanged with the old one, which is then deleted (how a turned picture
    // replaces its original): the kernel tells of the name given before it tells of it taken, yet
    // the file stands throughout.
    log.clear();
    const QByteArray version = QFile::encodeName(dir.write(QStringLiteral(".photo.jpg.turned"), "v4"));
    const QByteArray photo = QFile::encodeName(dir.filePath(QStringLiteral("photo.jpg")));
    ASSERT_EQ(::renameat2(AT_FDCWD, version.constData(), AT_FDCWD, photo.constData(), RENAME_EXCHANGE), 0);
    ASSERT_EQ(::unlink(version.constData()), 0);
    ASSERT_TRUE(log.waitFor("replaced photo.jpg")) << log.text();
    EXPECT_EQ(log.text(), "replaced photo.jpg");
    EXPECT_EQ(nameList(subscription->files()), "fresh.jpg, photo.jpg");

    // A file written unnamed and then linked under its name (how a copy appears whole): the
    // kernel tells of its writes under a name of its own ("#inode") that is never in the folder.
    log.clear();
    const int unnamed = ::open(QFile::encodeName(dir.path()).constData(), O_TMPFILE | O_WRONLY, 0644);
    if (unnamed < 0)
        GTEST_SKIP() << "no unnamed files on this file system";
    ASSERT_EQ(::write(unnamed, "copy", 4), 4);
    ASSERT_EQ(::fchmod(unnamed, 0640), 0);
    const QByteArray procPath = "/proc/self/fd/" + QByteArray::number(unnamed);
    const QByteArray copy = QFile::encodeName(dir.filePath(QStringLiteral("photo copy.jpg")));
    ASSERT_EQ(::linkat(AT_FDCWD, procPath.constData(), AT_FDCWD, copy.constData(), AT_SYMLINK_FOLLOW), 0);
    ::close(unnamed);
    ASSERT_TRUE(log.waitFor("created photo copy.jpg")) << log.text();
    dir.write(QStringLiteral("marker"));
    ASSERT_TRUE(log.waitFor("created marker")) << log.text();
    EXPECT_EQ(log.text(), "created photo copy.jpg, created marker");
    EXPECT_EQ(nameList(subscription->files()), "fresh.jpg, marker, photo copy.jpg, photo.jpg");
}

TEST_F(ZQFolderSubscriptionTest, ManyWritesToOneFileMakeOneEvent)
{
    const QString path = dir.write(QStringLiteral("growing.log"));
    auto subscription = subscribeLoaded(dir.path());

    for (int i = 0; i < 100; ++i) {
        QFile file(path);
        ASSERT_TRUE(file.open(QIODevice::Append));
        file.write("line\n");
    }
    ASSERT_TRUE(log.waitFor("modified growing.log"));
    // Whatever else the writes caused is queued before this marker's own events.
    dir.write(QStringLiteral("marker"));
    ASSERT_TRUE(log.waitFor("created marker"));
    EXPECT_EQ(log.lines.count(QStringLiteral("modified growing.log")), 1) << log.text();
}

TEST_F(ZQFolderSubscriptionTest, FolderDeletedEndsTheSubscription)
{
    const QString album = dir.mkdir(QStringLiteral("album"));
    dir.write(QStringLiteral("album/a.jpg"));
    dir.write(QStringLiteral("album/b.jpg"));
    const int watchesBefore = ZQInotifyWatcher::shared().watchCount();
    auto subscription = subscribeLoaded(album);
    EXPECT_EQ(subscription->files().size(), 2);
    EXPECT_EQ(ZQInotifyWatcher::shared().watchCount(), watchesBefore + 1);

    ASSERT_TRUE(QDir(album).removeRecursively());
    ASSERT_TRUE(waitUntil([&] {
        return !log.events.isEmpty() && log.events.last().nativePath == QFile::encodeName(album);
    })) << log.text();
    EXPECT_EQ(log.events.last().type, ZQFileEventType::removed);
    EXPECT_TRUE(subscription->files().isEmpty());
    EXPECT_EQ(ZQInotifyWatcher::shared().watchCount(), watchesBefore);

    // A folder that is not there lists as a failure and is not watched.
    subscription.reset();
    auto missing = ZQFolderSubscription::forFolder(ZQStandardFile::newFileForPath(album));
    missing->loadSynchronously();
    EXPECT_TRUE(missing->isLoaded());
    EXPECT_FALSE(missing->errorString().isEmpty());
    EXPECT_EQ(ZQInotifyWatcher::shared().watchCount(), watchesBefore);
}

TEST_F(ZQFolderSubscriptionTest, ChangesDuringTheListingAreNeitherLostNorDoubled)
{
    QSet<QString> expected;
    for (int i = 0; i < 300; ++i) {
        dir.write(QStringLiteral("old%1").arg(i));
        if (i >= 40)
            expected.insert(QStringLiteral("old%1").arg(i));
    }
    auto subscription = subscribe(dir.path());
    QList<ZQFilePtr> batched;
    QObject::connect(subscription.get(), &ZQFolderSubscription::batchLoaded, subscription.get(),
                     [&](const QList<ZQFilePtr> &files) { batched += files; });
    subscription->load();
    for (int i = 0; i < 60; ++i) {
        dir.write(QStringLiteral("new%1").arg(i));
        expected.insert(QStringLiteral("new%1").arg(i));
    }
    for (int i = 0; i < 40; ++i)
        QFile::remove(dir.filePath(QStringLiteral("old%1").arg(i)));

    ASSERT_TRUE(waitUntil([&] { return subscription->isLoaded() && namesOf(subscription->files()) == expected; }))
        << subscription->files().size();
    EXPECT_EQ(subscription->files().size(), expected.size());
    // What the batches and the events told a subscriber adds up to the same list.
    QSet<QString> told = namesOf(batched);
    for (const ZQFileEvent &event : std::as_const(log.events)) {
        const QString name = QFile::decodeName(event.nativePath).section(QLatin1Char('/'), -1);
        if (event.type == ZQFileEventType::created) {
            EXPECT_FALSE(told.contains(name)) << "told twice: " << qPrintable(name);
            told.insert(name);
        } else if (event.type == ZQFileEventType::removed) {
            told.remove(name);
        }
    }
    EXPECT_TRUE(told == expected);
}

TEST_F(ZQFolderSubscriptionTest, ListsAgainWhenTheKernelDropsEvents)
{
    QFile limitFile(QStringLiteral("/proc/sys/fs/inotify/max_queued_events"));
    const int queueLimit = limitFile.open(QIODevice::ReadOnly) ? limitFile.readAll().trimmed().toInt() : 0;
    if (queueLimit <= 0 || queueLimit > 1000000)
        GTEST_SKIP() << "inotify queue limit " << queueLimit;

    const QString doomed = dir.write(QStringLiteral("doomed"));
    auto subscription = subscribeLoaded(dir.path());

    // More events than the kernel queues, without a turn of the event loop: writes that take
    // turns between two files (the kernel folds only repeats of its last event).
    const int first = ::open(QFile::encodeName(dir.write(QStringLiteral("a"))).constData(), O_WRONLY);
    const int second = ::open(QFile::encodeName(dir.write(QStringLiteral("b"))).constData(), O_WRONLY);
    ASSERT_GE(first, 0);
    ASSERT_GE(second, 0);
    for (int i = 0; i < queueLimit; ++i) {
        ASSERT_EQ(::write(first, "x", 1), 1);
        ASSERT_EQ(::write(second, "y", 1), 1);
    }
    ::close(first);
    ::close(second);
    // Their own events are lost: only the listing again can find these.
    for (int i = 0; i < 10; ++i)
        dir.write(QStringLiteral("late%1").arg(i));
    QFile::remove(doomed);

    ASSERT_TRUE(waitUntil([&] { return log.has("removed doomed") && subscription->files().size() == 12; }, 20000))
        << log.text();
    EXPECT_TRUE(log.lines.contains(QStringLiteral("rescan ") + QString::fromUtf8(log.base))) << log.text();
    EXPECT_EQ(nameList(subscription->files()),
              "a, b, late0, late1, late2, late3, late4, late5, late6, late7, late8, late9");
    QSet<QByteArray> created;
    for (const ZQFileEvent &event : std::as_const(log.events)) {
        if (event.type == ZQFileEventType::created) {
            EXPECT_FALSE(created.contains(event.nativePath)) << event.nativePath.constData();
            created.insert(event.nativePath);
        }
    }
    EXPECT_EQ(created.size(), 12);
}

TEST(ZQFilesSubscription, WatchesChosenFilesInAnyFolder)
{
    TestDir dir;
    const QString a = dir.write(QStringLiteral("one/a.jpg"));
    dir.write(QStringLiteral("one/sibling.jpg"));
    const QString b = dir.write(QStringLiteral("two/b.jpg"));
    const QString later = dir.filePath(QStringLiteral("two/later.jpg"));
    const int watchesBefore = ZQInotifyWatcher::shared().watchCount();

    EventLog log;
    log.base = QFile::encodeName(dir.path());
    auto subscription = std::make_unique<ZQFilesSubscription>();
    QObject::connect(subscription.get(), &ZQFilesSubscription::foundChanges, subscription.get(),
                     [&](const QList<ZQFileEvent> &events) { log.append(events); });
    for (const QString &path : {a, b, later, a})
        subscription->addFile(ZQStandardFile::newFileForPath(path));
    EXPECT_EQ(subscription->files().size(), 3);
    EXPECT_EQ(ZQInotifyWatcher::shared().watchCount(), watchesBefore + 2);

    dir.write(QStringLiteral("one/sibling.jpg"), "s");
    dir.write(QStringLiteral("one/a.jpg"), "a");
    ASSERT_TRUE(log.waitFor("modified one/a.jpg"));
    QFile::remove(b);
    dir.write(QStringLiteral("two/later.jpg"));
    ASSERT_TRUE(waitUntil([&] { return log.lines.size() >= 3; }));
    EXPECT_EQ(log.text(), "modified one/a.jpg, removed two/b.jpg, created two/later.jpg");

    log.clear();
    const QString temporary = dir.write(QStringLiteral("one/.a.jpg.part"), "saved");
    ASSERT_TRUE(rename(temporary, a));
    ASSERT_TRUE(log.waitFor("replaced one/a.jpg")) << log.text();

    // Let go of a file: its folder is no longer watched and its changes are not reported.
    log.clear();
    subscription->removeFile(ZQStandardFile::newFileForPath(a));
    EXPECT_EQ(ZQInotifyWatcher::shared().watchCount(), watchesBefore + 1);
    dir.write(QStringLiteral("one/a.jpg"), "again");
    ASSERT_TRUE(QDir(dir.filePath(QStringLiteral("two"))).removeRecursively());
    ASSERT_TRUE(log.waitFor("removed two/later.jpg"));
    EXPECT_EQ(log.text(), "removed two/later.jpg");
    EXPECT_TRUE(waitUntil([&] { return ZQInotifyWatcher::shared().watchCount() == watchesBefore; }));
}

TEST(ZQEventCoalescer, JudgesABurstByWhatSubscribersKnow)
{
    int windows = 0;
    ZQEventCoalescer coalescer([&] { ++windows; });
    // Names given and taken within the burst are judged by the disk: these two stand there.
    TestDir dir;
    const QByteArray k1 = QFile::encodeName(dir.write(QStringLiteral("k1")));
    const QByteArray k6 = QFile::encodeName(dir.write(QStringLiteral("k6")));
    const QByteArray n3 = QFile::encodeName(dir.write(QStringLiteral("n3")));
    const QSet<QByteArray> known{k1, "/k2", "/k3", "/k4", "/k5", k6};

    coalescer.add(ZQFileEventType::created, "/n1");
    coalescer.add(ZQFileEventType::contentModified, "/n1");
    coalescer.add(ZQFileEventType::created, "/n2");
    coalescer.add(ZQFileEventType::removed, "/n2");
    coalescer.add(ZQFileEventType::removed, k1);
    coalescer.add(ZQFileEventType::created, k1);
    coalescer.add(ZQFileEventType::contentModified, "/k2");
    coalescer.add(ZQFileEventType::attributesChanged, "/k2");
    coalescer.add(ZQFileEventType::rescanNeeded, "/");
    coalescer.add(ZQFileEventType::attributesChanged, "/k3");
    coalescer.add(ZQFileEventType::contentModified, "/k4");
    coalescer.add(ZQFileEventType::removed, "/k4");
    coalescer.add(ZQFileEventType::created, "/k5");
    // Touched before the listing delivered it; written while unnamed (O_TMPFILE's "#inode").
    coalescer.add(ZQFileEventType::attributesChanged, n3);
    coalescer.add(ZQFileEventType::contentModified, "/#1234");
    coalescer.add(ZQFileEventType::rescanNeeded, "/");
    // An exchange: the kernel tells of the name given, then of it taken.
    coalescer.add(ZQFileEventType::created, k6);
    coalescer.add(ZQFileEventType::removed, k6);
    ASSERT_TRUE(waitUntil([&] { return windows == 1; }));

    EventLog log;
    log.base = QFile::encodeName(dir.path());
    QList<QByteArray> vanished;
    log.append(coalescer.take([&](const QByteArray &path) { return known.contains(path); }, &vanished));
    EXPECT_EQ(log.text(),
              "created /n1, replaced k1, modified /k2, rescan /, attributes /k3, removed /k4, replaced "
              "/k5, created n3, replaced k6");
    // What came and went unknown gives no event, but a listing under way must hear that it is gone.
    EXPECT_EQ(vanished, QList<QByteArray>{"/n2"});
    EXPECT_TRUE(coalescer.isEmpty());
}
