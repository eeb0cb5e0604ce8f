#pragma once

#include <QByteArray>
#include <QDateTime>
#include <QString>
#include <QTemporaryDir>

// A temporary folder that writes files with chosen bytes and modification times, removed
// with the fixture, names that are not UTF-8 included.
class TestDir
{
public:
    TestDir();
    ~TestDir();

    QString path() const { return m_dir.path(); }
    QString filePath(const QString &relative) const { return m_dir.filePath(relative); }

    // Writes `relative` (creating its folders) and returns its absolute path.
    QString write(const QString &relative, const QByteArray &bytes = {}, const QDateTime &modified = {});
    QString mkdir(const QString &relative);
    QString symlink(const QString &target, const QString &relative);

private:
    QTemporaryDir m_dir;
};

// Spins the event loop until `done()` is true or `timeoutMs` passes; answers `done()`.
template<typename Predicate>
bool waitUntil(Predicate done, int timeoutMs = 5000);

#include <QCoreApplication>
#include <QDeadlineTimer>
#include <QThread>

template<typename Predicate>
bool waitUntil(Predicate done, int timeoutMs)
{
    QDeadlineTimer deadline(timeoutMs);
    while (!done()) {
        if (deadline.hasExpired())
            return done();
        QCoreApplication::processEvents(QEventLoop::AllEvents, 10);
        QThread::usleep(200);
    }
    return true;
}
