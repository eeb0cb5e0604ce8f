#include "core/viewer/ColorTransform.h"

#include "core/app/Log.h"

#include <QCryptographicHash>
#include <QHash>
#include <QMutex>
#include <QMutexLocker>

#include <lcms2.h>

#include <cmath>
#include <memory>

namespace ColorTransform {
namespace {

struct TransformDeleter
{
    void operator()(void *transform) const { cmsDeleteTransform(static_cast<cmsHTRANSFORM>(transform)); }
};
using Transform = std::shared_ptr<void>;

struct State
{
    QMutex mutex;
    QByteArray displayProfile;
    // By the hash of source and target profile; a null transform marks a pair that cannot be
    // converted (so that a broken profile is not parsed for every picture).
    QHash<QByteArray, Transform> transforms;
};

State &state()
{
    static State instance;
    return instance;
}

cmsHPROFILE openProfile(const QByteArray &bytes)
{
    if (bytes.isEmpty())
        return cmsCreate_sRGBProfile();
    return cmsOpenProfileFromMem(bytes.constData(), cmsUInt32Number(bytes.size()));
}

// 32-bit pixels of QImage's RGB32 and ARGB32 formats are B, G, R, A in memory on little-endian
// machines and A, R, G, B on big-endian ones.
cmsUInt32Number pixelType()
{
    return Q_BYTE_ORDER == Q_LITTLE_ENDIAN ? TYPE_BGRA_8 : TYPE_ARGB_8;
}

// Whether `profile` is sRGB in all but name: the same primaries and tone curves (most cameras
// and editors embed one of several sRGB profiles). Converting from it would change nothing.
bool isSrgbLike(cmsHPROFILE profile)
{
    if (!cmsIsMatrixShaper(profile))
        return false;
    cmsHPROFILE srgb = cmsCreate_sRGBProfile();
    bool same = srgb != nullptr;
    // Colorants within 0.002 of sRGB's (D50-adapted) values: far below what an eye sees.
    const cmsTagSignature colorants[] = {cmsSigRedColorantTag, cmsSigGreenColorantTag, cmsSigBlueColorantTag};
    for (const cmsTagSignature tag : colorants) {
        const auto *theirs = static_cast<const cmsCIEXYZ *>(cmsReadTag(profile, tag));
        const auto *ours = srgb ? static_cast<const cmsCIEXYZ *>(cmsReadTag(srgb, tag)) : nullptr;
        if (!same || !theirs || !ours || std::abs(theirs->X - ours->X) > 0.002 || std::abs(theirs->Y - ours->Y) > 0.002
            || std::abs(theirs->Z - ours->Z) > 0.002) {
            same = false;
            break;
        }
    }
    const cmsTagSignature curves[] = {cmsSigRedTRCTag, cmsSigGreenTRCTag, cmsSigBlueTRCTag};
    for (const cmsTagSignature tag : curves) {
        if (!same)
            break;
        const auto *theirs = static_cast<const cmsToneCurve *>(cmsReadTag(profile, tag));
        const auto *ours = static_cast<const cmsToneCurve *>(cmsReadTag(srgb, tag));
        if (!theirs || !ours) {
            same = false;
            break;
        }
        // Within half a step of 8-bit output along the curve.
        for (int i = 0; i <= 32 && same; ++i) {
            const float x = float(i) / 32;
            same = std::abs(cmsEvalToneCurveFloat(theirs, x) - cmsEvalToneCurveFloat(ours, x)) < 0.002f;
        }
    }
    if (srgb)
        cmsCloseProfile(srgb);
    return same;
}

// A transform from `source` to `target`; null when there is nothing to do (`identity` set) or
// the profiles cannot be used.
Transform makeTransform(const QByteArray &source, const QByteArray &target, bool *identity)
{
    cmsHPROFILE input = openProfile(source);
    cmsHPROFILE output = openProfile(target);
    cmsHTRANSFORM transform = nullptr;
    *identity = target.isEmpty() && input && isSrgbLike(input);
    if (!*identity && input && output && cmsGetColorSpace(input) == cmsSigRgbData
        && cmsGetColorSpace(output) == cmsSigRgbData) {
        // The alpha byte is copied as it is; perceptual intent as photo viewers use it; no
        // one-pixel cache, so that several threads may share the transform.
        transform = cmsCreateTransform(input, pixelType(), output, pixelType(), INTENT_PERCEPTUAL,
                                       cmsFLAGS_COPY_ALPHA | cmsFLAGS_NOCACHE);
    }
    if (input)
        cmsCloseProfile(input);
    if (output)
        cmsCloseProfile(output);
    if (!transform)
        return {};
    return Transform(transform, TransformDeleter());
}

Transform transformFor(const QByteArray &source, const QByteArray &target)
{
    QCryptographicHash hash(QCryptographicHash::Sha1);
    hash.addData(source);
    hash.addData(QByteArrayView("\0", 1));
    hash.addData(target);
    const QByteArray key = hash.result();
    State &s = state();
    {
        QMutexLocker lock(&s.mutex);
        const auto it = s.transforms.constFind(key);
        if (it != s.transforms.constEnd())
            return it.value();
    }
    bool identity = false;
    Transform transform = makeTransform(source, target, &identity);
    if (!transform && !identity)
        logDebug(QStringLiteral("An embedded colour profile cannot be applied; the picture is shown unconverted"));
    QMutexLocker lock(&s.mutex);
    s.transforms.insert(key, transform);
    return transform;
}

} // namespace

void setDisplayProfile(const QByteArray &profile)
{
    QMutexLocker lock(&state().mutex);
    state().displayProfile = profile;
}

QByteArray displayProfile()
{
    QMutexLocker lock(&state().mutex);
    return state().displayProfile;
}

void toDisplay(QImage &image, const QByteArray &sourceProfile)
{
    if (sourceProfile.isEmpty() || image.isNull())
        return;
    const QByteArray target = displayProfile();
    if (sourceProfile == target)
        return;
    switch (image.format()) {
    case QImage::Format_RGB32:
    case QImage::Format_ARGB32: break;
    case QImage::Format_ARGB32_Premultiplied: image.convertTo(QImage::Format_ARGB32); break;
    default: image.convertTo(image.hasAlphaChannel() ? QImage::Format_ARGB32 : QImage::Format_RGB32); break;
    }
    const Transform transform = transformFor(sourceProfile, target);
    if (!transform)
        return;
    const auto handle = static_cast<cmsHTRANSFORM>(transform.get());
    const int width = image.width();
    for (int y = 0; y < image.height(); ++y) {
        uchar *line = image.scanLine(y);
        cmsDoTransform(handle, line, line, cmsUInt32Number(width));
    }
}

QByteArray jpegIccProfile(const QByteArray &segments)
{
    // APP2 segments "ICC_PROFILE\0", then the chunk's number (from 1) and the chunk count.
    static const QByteArray signature("ICC_PROFILE\0", 12);
    QHash<int, QByteArray> chunks;
    int count = 0;
    qsizetype at = 2; // after SOI
    const qsizetype size = segments.size();
    const auto *bytes = reinterpret_cast<const uchar *>(segments.constData());
    while (at + 4 <= size) {
        if (bytes[at] != 0xFF)
            break;
        const uchar marker = bytes[at + 1];
        if (marker == 0xFF) { // fill byte
            ++at;
            continue;
        }
        if (marker == 0xDA || marker == 0xD9) // start of scan, end of image
            break;
        const int length = (bytes[at + 2] << 8) | bytes[at + 3];
        if (length < 2 || at + 2 + length > size)
            break;
        if (marker == 0xE2 && length >= 2 + 14 && segments.mid(at + 4, 12) == signature) {
            const int number = bytes[at + 16];
            const int total = bytes[at + 17];
            if (number < 1 || total < 1 || (count && total != count))
                return {};
            count = total;
            chunks.insert(number, segments.mid(at + 18, length - 16));
        }
        at += 2 + length;
    }
    QByteArray profile;
    for (int number = 1; number <= count; ++number) {
        const auto it = chunks.constFind(number);
        if (it == chunks.constEnd())
            return {};
        profile += it.value();
    }
    return profile;
}

} // namespace ColorTransform
