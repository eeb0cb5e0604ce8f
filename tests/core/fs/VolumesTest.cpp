#include "core/fs/Volumes.h"

#include "core/app/Dispatch.h"

#include "support/TestDir.h"

#include <QObject>

#include <gtest/gtest.h>

// Ejecting what is no volume answers with a reason, on the GUI thread, and never for a receiver
// that is gone. (A real eject needs a removable medium, which a test machine does not have.)
TEST(Volumes, EjectingWhatIsNoVolumeAnswersWithAReason)
{
    TestDir dir;
    QObject receiver;
    QString answer;
    bool answered = false;
    Volumes::eject(dir.filePath(QStringLiteral("no such card")), &receiver, [&](const QString &error) {
        answer = error;
        answered = true;
    });
    ASSERT_TRUE(waitUntil([&] { return answered; }, 20000));
    EXPECT_FALSE(answer.isEmpty());

    bool late = false;
    {
        QObject shortLived;
        Volumes::eject(dir.filePath(QStringLiteral("gone too")), &shortLived, [&](const QString &) { late = true; });
    }
    ASSERT_TRUE(namedThreadPool(QStringLiteral("Volumes"))->waitForDone(20000));
    for (int i = 0; i < 3; ++i)
        QCoreApplication::processEvents();
    EXPECT_FALSE(late);
}
