#pragma once

#include <QByteArray>
#include <QImage>
#include <QList>
#include <QMimeType>
#include <QString>
#include <QStringList>

#include <optional>

// The thumbnail programs that the desktop installs as `.thumbnailer` entries (in the
// `thumbnailers` folder of every XDG data folder): each names the MIME types it handles and a
// command line with `%i` (input path), `%u` (input URI), `%o` (output PNG) and `%s` (size).
// Entries are read once; a program runs with a time limit on the calling thread.
class DesktopThumbnailers
{
public:
    struct Entry
    {
        QString name;
        QStringList mimeTypes;
        QString tryExec;
        QString exec;
    };

    // Reads the entries of `folders` (default: `thumbnailers` under every XDG data folder).
    explicit DesktopThumbnailers(const QStringList &folders = {});
    static DesktopThumbnailers &shared();

    const QList<Entry> &entries() const { return m_entries; }
    // The entry for `mime` or one of its parents; null when none handles it.
    const Entry *entryFor(const QMimeType &mime) const;

    // Runs the entry for `mime` and reads its picture; null with a reason otherwise.
    QImage render(const QByteArray &nativePath, const QMimeType &mime, int pixels, QString *error) const;

    static std::optional<Entry> parseEntry(const QString &path, QString *error);

private:
    QList<Entry> m_entries;
};
