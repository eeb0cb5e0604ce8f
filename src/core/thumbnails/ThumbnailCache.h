#pragma once

#include <QByteArray>
#include <QImage>
#include <QString>

// The freedesktop thumbnail cache: PNG files named by the MD5 of the file's URI in one folder
// per size (`normal` 128, `large` 256, `x-large` 512, `xx-large` 1024 pixels), each carrying
// `Thumb::URI` and `Thumb::MTime`. An entry is valid only while its MTime equals the file's
// modification time (whole seconds). Failures are empty PNGs under `fail/pixcove/`.
//
// Entries are written to a temporary file and renamed, so a reader never sees half an entry;
// folders are made 0700 and files 0600. The root is `$XDG_CACHE_HOME/thumbnails` unless given
// (tests redirect it). Safe to use from several threads.
class ThumbnailCache
{
public:
    enum class Flavor { normal = 0, large, xLarge, xxLarge };

    explicit ThumbnailCache(QString root = {});
    static QString defaultRoot();
    const QString &root() const { return m_root; }

    // The smallest flavour whose size covers `pixels`, the largest when none does.
    static Flavor flavorForPixels(int pixels);
    static int flavorPixels(Flavor flavor);
    static QString flavorFolder(Flavor flavor);

    // "file://" followed by the percent-encoded absolute path.
    static QString uriForNativePath(const QByteArray &nativePath);
    QString entryPath(const QString &uri, Flavor flavor) const;
    QString failurePath(const QString &uri) const;

    // The entry of `flavor` or a larger one that is valid for `mtime`; null otherwise. A damaged
    // entry reads as missing, with the reason in `error`.
    QImage lookup(const QString &uri, qint64 mtime, Flavor flavor, QString *error = nullptr) const;
    bool store(const QString &uri, qint64 mtime, Flavor flavor, const QImage &image, QString *error = nullptr) const;

    bool hasFailure(const QString &uri, qint64 mtime) const;
    bool storeFailure(const QString &uri, qint64 mtime, QString *error = nullptr) const;

private:
    bool writeAtomically(const QString &path, const QImage &image, const QString &uri, qint64 mtime,
                         QString *error) const;

    QString m_root;
};
