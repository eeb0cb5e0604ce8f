#include "core/fs/operations/ZQTrashPerformer.h"

#include "core/fs/FileOperationsSupport.h"

#include <QDateTime>
#include <QFileInfo>
#include <QRegularExpression>

#include <gtest/gtest.h>

namespace {

using Type = ZQFileOperationType;
using Resolution = ZQFileOperationResolution;
namespace Code = ZQFileOperationErrorCode;

class TrashOperations : public ::testing::Test
{
protected:
    void SetUp() override
    {
        ::chmod(QFile::encodeName(dir.path()).constData(), 0755);
        homeTrash = dir.filePath(QStringLiteral("data/Trash")); // "data" is not there yet
        const ZQTrash trash = testTrash();
        for (Type type : {Type::trash, Type::restoreFromTrash})
            controller.setPerformerFactory(type,
                                           [type, trash] { return std::make_unique<ZQTrashPerformer>(type, trash); });
    }

    // The home trash in the test's folder; the test's folder on /dev/shm stands for a volume.
    ZQTrash testTrash() const
    {
        ZQTrash trash(QFile::encodeName(homeTrash));
        const QByteArray top = volume ? QFile::encodeName(volume->path()) : QByteArray();
        trash.setTopDirectoryFinder([top](const QByteArray &path) {
            return !top.isEmpty() && path.startsWith(top) ? top : ZQTrash::topDirectoryOf(path);
        });
        return trash;
    }

    bool makeVolume()
    {
        volume = std::make_unique<QTemporaryDir>(QStringLiteral("/dev/shm/pixcove-trash-XXXXXX"));
        struct stat a
        {
        }, b{};
        const bool other = volume->isValid() && ::stat("/dev/shm", &a) == 0
            && ::stat(QFile::encodeName(dir.path()).constData(), &b) == 0 && a.st_dev != b.st_dev;
        ::chmod(QFile::encodeName(volume->path()).constData(), 0755);
        SetUp(); // the performers see the volume
        return other;
    }

    QList<ZQFileOperationUnit> run(Type type, const QStringList &paths)
    {
        QList<ZQFileOperationUnit> units;
        for (const QString &path : paths)
            units.append(ZQFileOperationUnit(ZQStandardFile::newFileForPath(path), {}));
        delegate = RecordingOperationDelegate();
        delegate.answer = answer;
        QPointer<ZQFileOperationHandler> handler =
            controller.performOperation(type, ZQFileOperationGroup(std::move(units)), &delegate);
        if (!handler || !waitUntil([&] { return delegate.completed; }))
            return {};
        return delegate.finalUnits;
    }

    static QStringList trashedPaths(const QList<ZQFileOperationUnit> &units)
    {
        QStringList paths;
        for (const ZQFileOperationUnit &unit : units)
            paths.append(unit.destinationPath());
        return paths;
    }

    TestDir dir;
    QString homeTrash;
    std::unique_ptr<QTemporaryDir> volume;
    ZQFileController controller;
    RecordingOperationDelegate delegate;
    Resolution answer = Resolution::skip;
};

} // namespace

TEST_F(TrashOperations, TheHomeTrashIsMadeAndNamesItemsAsTheSpecificationSays)
{
    const QString first = dir.write(QStringLiteral("Photos/Été 100%/IMG_0001.JPG"), "first");
    const QString second = dir.write(QStringLiteral("Photos/Été 100%/Copy/IMG_0001.JPG"), "second");
    const QString folder = dir.write(QStringLiteral("Photos/Trip.2024/a.jpg"), "a");
    const QList<ZQFileOperationUnit> units = run(Type::trash, {first, second, QFileInfo(folder).path()});
    ASSERT_EQ(units.size(), 3);
    EXPECT_FALSE(delegate.error.isError()) << qPrintable(delegate.error.description);
    EXPECT_EQ(trashedPaths(units),
              (QStringList{homeTrash + "/files/IMG_0001.JPG", homeTrash + "/files/IMG_0001 2.JPG",
                           homeTrash + "/files/Trip.2024"}));
    EXPECT_EQ(entriesOf(homeTrash + "/info"),
              (QStringList{"IMG_0001 2.JPG.trashinfo", "IMG_0001.JPG.trashinfo", "Trip.2024.trashinfo"}));
    const QString info = QString::fromUtf8(readAll(homeTrash + "/info/IMG_0001.JPG.trashinfo"));
    const QRegularExpressionMatch match =
        QRegularExpression(
            QStringLiteral("^\\[Trash Info\\]\nPath=(.*)\nDeletionDate=(\\d{4}-\\d\\d-\\d\\dT\\d\\d:\\d\\d:\\d\\d)\n$"))
            .match(info);
    ASSERT_TRUE(match.hasMatch()) << qPrintable(info);
    EXPECT_EQ(match.captured(1), QString::fromLatin1(QFile::encodeName(first).toPercentEncoding("/")));
    EXPECT_TRUE(match.captured(1).contains(QStringLiteral("/%C3%89t%C3%A9%20100%25/")));
    EXPECT_LE(qAbs(QDateTime::fromString(match.captured(2), Qt::ISODate).secsTo(QDateTime::currentDateTime())), 60);
    struct stat trashInfo
    { };
    ::stat(QFile::encodeName(homeTrash).constData(), &trashInfo);
    EXPECT_EQ(trashInfo.st_mode & 0777, 0700u);

    // Back where they came from; an item that took an original name meanwhile is asked about.
    dir.write(QStringLiteral("Photos/Été 100%/IMG_0001.JPG"), "newcomer");
    answer = Resolution::keepBoth;
    run(Type::restoreFromTrash, trashedPaths(units));
    EXPECT_EQ(delegate.questions, 1);
    EXPECT_EQ(readAll(first), "newcomer");
    EXPECT_EQ(readAll(QFileInfo(first).path() + "/IMG_0001 2.JPG"), "first");
    EXPECT_EQ(readAll(second), "second");
    EXPECT_EQ(readAll(folder), "a");
    EXPECT_EQ(entriesOf(homeTrash + "/info"), QStringList());
    EXPECT_EQ(entriesOf(homeTrash + "/files"), QStringList());
}

TEST_F(TrashOperations, ItemsOfAnotherVolumeGoToThatVolumesTrash)
{
    if (!makeVolume())
        GTEST_SKIP() << "/dev/shm is not another file system here";
    const QString top = volume->path();
    const QString photo = top + "/DCIM/IMG_0001.JPG";
    QDir().mkpath(top + "/DCIM");
    QFile file(photo);
    ASSERT_TRUE(file.open(QIODevice::WriteOnly));
    file.write("on the card");
    file.close();

    QList<ZQFileOperationUnit> units = run(Type::trash, {photo});
    ASSERT_EQ(units.size(), 1);
    const QString own = top + "/.Trash-" + QString::number(::geteuid());
    EXPECT_EQ(units[0].destinationPath(), own + "/files/IMG_0001.JPG");
    // Relative to the volume's top folder, so that the trash still works mounted elsewhere.
    EXPECT_TRUE(readAll(own + "/info/IMG_0001.JPG.trashinfo").contains("\nPath=DCIM/IMG_0001.JPG\n"));
    EXPECT_FALSE(QFile::exists(homeTrash + "/files/IMG_0001.JPG"));
    run(Type::restoreFromTrash, trashedPaths(units));
    EXPECT_EQ(readAll(photo), "on the card");

    // The administrator's sticky .Trash is used first; a .Trash that is not sticky is not.
    QDir().mkpath(top + "/.Trash");
    units = run(Type::trash, {photo});
    EXPECT_EQ(units[0].destinationPath(), own + "/files/IMG_0001.JPG");
    run(Type::restoreFromTrash, trashedPaths(units));
    ::chmod(QFile::encodeName(top + "/.Trash").constData(), 01777);
    units = run(Type::trash, {photo});
    EXPECT_EQ(units[0].destinationPath(), top + "/.Trash/" + QString::number(::geteuid()) + "/files/IMG_0001.JPG");
    run(Type::restoreFromTrash, trashedPaths(units));
    EXPECT_EQ(readAll(photo), "on the card");
}

// A volume where no trash can be made: the item stays, and the message says why.
TEST_F(TrashOperations, AVolumeWithoutATrashKeepsTheItemAndSaysSo)
{
    if (!makeVolume())
        GTEST_SKIP() << "/dev/shm is not another file system here";
    const QString top = volume->path(); // root's, not writable by the other user
    QDir().mkpath(top + "/Shared");
    ::chmod(QFile::encodeName(top + "/Shared").constData(), 0777);
    const QString photo = top + "/Shared/IMG_0001.JPG";
    QFile file(photo);
    ASSERT_TRUE(file.open(QIODevice::WriteOnly));
    file.write("kept");
    file.close();
    ::chmod(QFile::encodeName(dir.path() + "/data").constData(), 0777);
    const ZQTrash trash = testTrash();
    const QByteArray answer = inChildProcess(
        [&] {
            const ZQTrash::Result result = trash.moveToTrash(QFile::encodeName(photo));
            return QByteArray::number(result.error.code) + '\n' + result.error.description.toUtf8() + '\n'
                + result.error.failureReason.toUtf8();
        },
        65534);
    EXPECT_EQ(answer,
              QByteArray::number(Code::noTrash)
                  + "\n“IMG_0001.JPG” can’t be moved to the trash.\nIts volume has no trash, and none could "
                    "be made there. The item was left where it is.");
    EXPECT_EQ(readAll(photo), "kept");
    EXPECT_EQ(entriesOf(top), QStringList{"Shared"});

    // A trash of another user's making, or a link, is not taken as ours.
    const QByteArray own = QFile::encodeName(top + "/.Trash-" + QString::number(::geteuid()));
    for (bool link : {true, false}) {
        if (link) {
            ::symlink(QFile::encodeName(dir.path()).constData(), own.constData());
        } else {
            ::unlink(own.constData());
            QDir().mkpath(QFile::decodeName(own + "/files"));
            QDir().mkpath(QFile::decodeName(own + "/info"));
            for (const QByteArray &folder : {own, own + "/files", own + "/info"})
                ::chown(folder.constData(), 65534, 65534);
        }
        const ZQTrash::Result result = trash.moveToTrash(QFile::encodeName(photo));
        EXPECT_EQ(result.error.code, Code::noTrash) << link;
        EXPECT_EQ(readAll(photo), "kept");
    }
}
