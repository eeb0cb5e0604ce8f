#include "support/TestDir.h"

#include <QDir>
#include <QFile>
#include <QFileInfo>

#include <filesystem>

TestDir::TestDir()
{
    m_dir.setAutoRemove(true);
}

TestDir::~TestDir()
{
    // QTemporaryDir cannot name files whose names are not UTF-8, and then leaves the folder behind.
    std::error_code ignored;
    std::filesystem::remove_all(std::filesystem::path(QFile::encodeName(m_dir.path()).toStdString()), ignored);
}

QString TestDir::write(const QString &relative, const QByteArray &bytes, const QDateTime &modified)
{
    const QString path = filePath(relative);
    QDir().mkpath(QFileInfo(path).absolutePath());
    QFile file(path);
    if (!file.open(QIODevice::WriteOnly | QIODevice::Truncate))
        qFatal("TestDir: cannot write %s", qPrintable(path));
    file.write(bytes);
    // Written out first: the write would otherwise set the time again when the file closes.
    file.flush();
    if (modified.isValid())
        file.setFileTime(modified, QFileDevice::FileModificationTime);
    return path;
}

QString TestDir::mkdir(const QString &relative)
{
    const QString path = filePath(relative);
    QDir().mkpath(path);
    return path;
}

QString TestDir::symlink(const QString &target, const QString &relative)
{
    const QString path = filePath(relative);
    QFile::link(target, path);
    return path;
}
