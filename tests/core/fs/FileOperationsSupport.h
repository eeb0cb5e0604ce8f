#pragma once

#include "core/fs/operations/ZQFileController.h"
#include "core/fs/operations/ZQFileOperationHandler.h"
#include "core/fs/operations/ZQFileOperationPerformer.h"

#include "support/TestDir.h"

#include <QByteArray>
#include <QDir>
#include <QFile>
#include <QPointer>
#include <QTemporaryDir>

#include <functional>
#include <signal.h>
#include <sys/resource.h>
#include <sys/stat.h>
#include <sys/wait.h>
#include <sys/xattr.h>
#include <unistd.h>

// Answers every question with one resolution per error code and records what the run reported.
class RecordingOperationDelegate : public ZQFileOperationDelegate
{
public:
    ZQFileOperationResolution answer = ZQFileOperationResolution::skip;
    int questions = 0;
    std::function<void()> whenPerforming; // runs once, as the run starts performing
    QList<ZQFileOperationTransaction> transactions;
    ZQFileOperationError error;
    QList<ZQFileOperationUnit> finalUnits;
    bool completed = false;

    void fileOperationHandlerNeedsInitialResolution(ZQFileOperationHandler *handler,
                                                    ZQFileOperationGroup &group) override
    {
        ++questions;
        group.resolveAll(ZQFileOperationErrorCode::destinationExists, answer);
        handler->continueToPreflight();
    }
    void fileOperationHandlerNeedsPreflightResolution(ZQFileOperationHandler *handler, ZQFileOperationGroup &) override
    {
        handler->continueToPerform();
    }
    void fileOperationHandlerReportingTransaction(ZQFileOperationHandler *,
                                                  const ZQFileOperationTransaction &transaction) override
    {
        transactions.append(transaction);
        if (transaction.isError())
            error = transaction.error;
        if (transaction.stage == ZQFileOperationStage::performing && whenPerforming) {
            whenPerforming();
            whenPerforming = nullptr;
        }
    }
    void fileOperationHandlerCompletedOperation(ZQFileOperationHandler *handler) override
    {
        finalUnits = handler->group().units();
        completed = true;
    }
};

// Progress for a performer driven without a handler: counts, and cancels when told to.
struct CountingProgress : ZQFileOperationProgress
{
    qint64 bytes = 0;
    qint64 files = 0;
    qint64 cancelAfterBytes = -1; // cancel once this many bytes are written; -1 never
    std::function<void()> whileWriting; // called at each report

    bool isCancelled() const override { return cancelAfterBytes >= 0 && bytes > cancelAfterBytes; }
    void advance(qint64 moreBytes, qint64 moreFiles) override
    {
        bytes += moreBytes;
        files += moreFiles;
        if (whileWriting)
            whileWriting();
    }
};

// Runs a performer's stages on this thread as the handler would, every unit error answered with
// `answer`; the first error of a unit's work, or none.
inline ZQFileOperationError performNow(ZQFileOperationPerformer &performer, ZQFileOperationGroup &group,
                                       ZQFileOperationProgress *progress = nullptr,
                                       ZQFileOperationResolution answer = ZQFileOperationResolution::skip)
{
    performer.prepare(group);
    for (ZQFileOperationUnit &unit : group.units()) {
        if (unit.hasError()) {
            unit.setResolution(answer);
            const bool settled =
                answer == ZQFileOperationResolution::keepBoth || answer == ZQFileOperationResolution::replace;
            if (!settled || unit.destinationError().code != ZQFileOperationErrorCode::destinationExists)
                unit.setState(ZQFileOperationUnit::State::skipped);
        }
    }
    performer.preflight(group);
    performer.setProgress(progress);
    for (ZQFileOperationUnit &unit : group.units()) {
        if (unit.state() != ZQFileOperationUnit::State::pending || unit.hasError())
            continue;
        const ZQFileOperationError error = performer.perform(unit, group);
        if (error.isError()) {
            performer.finishPerforming();
            return error;
        }
        unit.setState(ZQFileOperationUnit::State::done);
    }
    return performer.finishPerforming();
}

// Runs `body` in a child process, as `uid` when it is not 0 and with files limited to
// `fileSizeLimit` bytes when that is not 0, and answers what `body` answered. Tests run as root:
// permission cases need another user, and a full disk is a file size limit.
inline QByteArray inChildProcess(const std::function<QByteArray()> &body, uid_t uid = 0, rlim_t fileSizeLimit = 0)
{
    int pipeFds[2];
    if (::pipe(pipeFds) != 0)
        return "pipe failed";
    const pid_t pid = ::fork();
    if (pid == 0) {
        ::close(pipeFds[0]);
        bool ready = true;
        if (fileSizeLimit) {
            ::signal(SIGXFSZ, SIG_IGN); // a write past the limit fails with EFBIG instead
            const struct rlimit limit = {fileSizeLimit, fileSizeLimit};
            ready = ::setrlimit(RLIMIT_FSIZE, &limit) == 0;
        }
        if (uid)
            ready = ready && ::setresgid(uid, uid, uid) == 0 && ::setresuid(uid, uid, uid) == 0;
        const QByteArray answer = ready ? body() : QByteArray("could not become the other user");
        [[maybe_unused]] const ssize_t written = ::write(pipeFds[1], answer.constData(), size_t(answer.size()));
        ::_exit(0);
    }
    ::close(pipeFds[1]);
    QByteArray answer;
    char buffer[4096];
    for (ssize_t count; (count = ::read(pipeFds[0], buffer, sizeof buffer)) > 0;)
        answer.append(buffer, count);
    ::close(pipeFds[0]);
    int status = 0;
    ::waitpid(pid, &status, 0);
    return answer;
}

inline QByteArray readAll(const QString &path)
{
    QFile file(path);
    return file.open(QIODevice::ReadOnly) ? file.readAll() : QByteArray("<missing>");
}

inline QByteArray tagsOf(const QString &path)
{
    char value[256];
    const ssize_t size = ::lgetxattr(QFile::encodeName(path).constData(), "user.xdg.tags", value, sizeof value);
    return size < 0 ? QByteArray() : QByteArray(value, size);
}

inline void setTags(const QString &path, const QByteArray &tags)
{
    ::lsetxattr(QFile::encodeName(path).constData(), "user.xdg.tags", tags.constData(), size_t(tags.size()), 0);
}

// Every entry of a folder, hidden ones included, sorted.
inline QStringList entriesOf(const QString &folder)
{
    return QDir(folder).entryList(QDir::AllEntries | QDir::Hidden | QDir::System | QDir::NoDotAndDotDot, QDir::Name);
}

inline QByteArray bytesOfSize(qsizetype size, char seed)
{
    QByteArray bytes(size, '\0');
    for (qsizetype i = 0; i < size; ++i)
        bytes[i] = char(seed + i * 131 % 251);
    return bytes;
}
