#include "core/activities/ImageRotationActivity.h"

#include "core/app/Translate.h"
#include "core/fs/operations/ZQItemCopier.h"
#include "core/imaging/OrientationTag.h"
#include "core/thumbnails/ThumbnailCache.h"

#include <QBuffer>
#include <QFile>
#include <QFileInfo>
#include <QImage>
#include <QImageReader>
#include <QImageWriter>
#include <QSet>
#include <QTransform>

#include <algorithm>
#include <cerrno>
#include <cstring>
#include <fcntl.h>
#include <sys/stat.h>
#include <unistd.h>

namespace {

constexpr Translator tr("ImageRotationActivity");

enum class Method { none, jpeg, pixels, tag };

Method methodFor(const QString &path)
{
    static const QSet<QString> jpeg{QStringLiteral("jpg"), QStringLiteral("jpeg"), QStringLiteral("jpe")};
    static const QSet<QString> pixels{QStringLiteral("png"), QStringLiteral("webp")};
    // TIFF and the camera RAW files built on it carry an orientation tag that can be rewritten.
    static const QSet<QString> tag{QStringLiteral("tif"), QStringLiteral("tiff"), QStringLiteral("dng"),
                                   QStringLiteral("nef"), QStringLiteral("cr2"),  QStringLiteral("arw"),
                                   QStringLiteral("orf"), QStringLiteral("pef"),  QStringLiteral("rw2")};
    const QString suffix = QFileInfo(path).suffix().toLower();
    if (jpeg.contains(suffix))
        return Method::jpeg;
    if (pixels.contains(suffix))
        return Method::pixels;
    if (tag.contains(suffix))
        return Method::tag;
    return Method::none;
}

QString errnoText(int code)
{
    return QString::fromLocal8Bit(std::strerror(code));
}

// Puts `bytes` in place of the file at `path` (read as `original`, statted as `before`) in one
// step, with its owner, permissions and extended attributes; a file changed meanwhile is left
// alone. Empty, or why not.
QString replaceFile(const QByteArray &path, int in, const struct stat &before, const QByteArray &bytes)
{
    const int error = ZQItemCopier::replaceContents(path, in, before, bytes);
    if (error == ECANCELED)
        return tr("It changed while it was being turned.");
    return error != 0 ? errnoText(error) : QString();
}

// The picture turned and written again without loss (PNG, lossless WebP).
QByteArray turnedPixels(const QByteArray &bytes, const QByteArray &format, bool clockwise, QString &error)
{
    QBuffer input;
    input.setData(bytes);
    QImageReader reader(&input, format);
    reader.setAutoTransform(false);
    QImage image = reader.read();
    if (image.isNull()) {
        error = reader.errorString();
        return {};
    }
    const QImage turned = image.transformed(QTransform().rotate(clockwise ? 90 : -90));
    QBuffer output;
    output.open(QIODevice::WriteOnly);
    QImageWriter writer(&output, format);
    // 100: the WebP writer's lossless mode; PNG is lossless at every setting.
    writer.setQuality(100);
    for (const QString &key : image.textKeys())
        writer.setText(key, image.text(key));
    if (!writer.write(turned)) {
        error = writer.errorString();
        return {};
    }
    return output.data();
}

} // namespace

void ImageRotationActivity::turnCachedThumbnails(const QString &path, qint64 modifiedBefore, JpegRotation::Turn turn,
                                                 const ThumbnailCache &cache)
{
    const QByteArray nativePath = QFile::encodeName(path);
    struct stat now
    { };
    if (::stat(nativePath.constData(), &now) != 0)
        return;
    const QString uri = ThumbnailCache::uriForNativePath(nativePath);
    const int degrees = turn == JpegRotation::Turn::clockwise ? 90
        : turn == JpegRotation::Turn::counterclockwise        ? -90
                                                              : 180;
    using Flavor = ThumbnailCache::Flavor;
    for (Flavor flavor : {Flavor::normal, Flavor::large, Flavor::xLarge, Flavor::xxLarge}) {
        if (!QFile::exists(cache.entryPath(uri, flavor)))
            continue;
        const QImage old = cache.lookup(uri, modifiedBefore, flavor);
        // lookup() may answer a larger flavour's entry: only this flavour's own is turned here.
        if (old.isNull() || std::max(old.width(), old.height()) > ThumbnailCache::flavorPixels(flavor))
            continue;
        cache.store(uri, qint64(now.st_mtim.tv_sec), flavor, old.transformed(QTransform().rotate(degrees)));
    }
}

bool ImageRotationActivity::canRotate(const QString &path)
{
    return methodFor(path) != Method::none;
}

ImageRotationActivity::Result ImageRotationActivity::rotateFile(const QString &path, JpegRotation::Turn turn,
                                                                JpegRotation::Workspace *workspace)
{
    Result result;
    const QString name = QFileInfo(path).fileName();
    const auto failed = [&](const QString &why) {
        result.error = tr("“%1” couldn’t be turned. %2").arg(name, why);
        return result;
    };
    const bool clockwise = turn == JpegRotation::Turn::clockwise;
    const Method method = methodFor(path);
    if (method == Method::none)
        return failed(tr("Pictures of this kind can’t be turned here."));
    if (turn == JpegRotation::Turn::halfTurn && method != Method::jpeg)
        return failed(tr("Only quarter turns are supported for this kind of picture."));
    if (method == Method::jpeg) {
        // A picture that is not a whole number of blocks keeps its pixels and turns by its tag.
        const JpegRotation::Result turned =
            JpegRotation::rotateFile(path, turn, JpegRotation::Fallback::orientationTag, workspace);
        result.ok = turned.isOk();
        result.pixelsTurned =
            turned.kind == JpegRotation::Result::Kind::lossless || turned.kind == JpegRotation::Result::Kind::reencoded;
        result.error = turned.error;
        return result;
    }

    const QByteArray nativePath = QFile::encodeName(path);
    const int in = ::open(nativePath.constData(), O_RDONLY | O_CLOEXEC);
    struct stat before
    { };
    if (in < 0 || ::fstat(in, &before) != 0) {
        const int code = errno;
        if (in >= 0)
            ::close(in);
        return failed(errnoText(code));
    }
    QFile file;
    file.open(in, QIODevice::ReadOnly, QFileDevice::DontCloseHandle);
    const QByteArray original = file.readAll();
    file.close();
    QString error;
    const QByteArray bytes = method == Method::tag
        ? OrientationTag::turnedFile(original, clockwise, error)
        : turnedPixels(original, QFileInfo(path).suffix().toLower().toLatin1(), clockwise, error);
    if (bytes.isEmpty()) {
        ::close(in);
        return failed(error);
    }
    error = replaceFile(nativePath, in, before, bytes);
    ::close(in);
    if (!error.isEmpty())
        return failed(error);
    result.ok = true;
    result.pixelsTurned = method == Method::pixels;
    return result;
}
