#pragma once

#include <QByteArray>
#include <QString>

#include <memory>

class CoefficientArena;

// Turns JPEG files a quarter or half turn as they are seen, without re-encoding: the DCT blocks
// are moved (LosslessJpegTransform), the EXIF orientation is folded into the turn and
// set to 1, the EXIF thumbnail is turned too, and the pixel dimensions in the EXIF follow. Every
// other marker (ICC profile, IPTC, XMP, maker notes) is kept; a multi-picture (MPF) preview after
// the image cannot follow the picture and is dropped with its index.
//
// A picture whose width or height is not a whole number of blocks (8 or 16 pixels) cannot be
// turned losslessly without cropping its edge: that is never done silently. The caller chooses
// what happens then: nothing (an error says why), only the orientation tag changes (the pixels
// stay as they are), or the picture is re-encoded at high quality.
//
// The file is replaced in one step: the new bytes are written under a temporary name beside it
// with its permissions and extended attributes (colour labels), synced and renamed over it. Runs
// on any thread; never throws.
namespace JpegRotation {

enum class Turn { clockwise, counterclockwise, halfTurn };
enum class Fallback { refuse, orientationTag, reencode };

struct Result
{
    enum class Kind { failed, lossless, orientationTagOnly, reencoded };
    Kind kind = Kind::failed;
    QString error; // what went wrong, for the user; empty unless failed
    bool isOk() const { return kind != Kind::failed; }
};

// What the turns of a batch reuse from one file to the next: the memory of the pictures' blocks
// and of the files' bytes (mapping some 100 MB afresh for each 24 MP picture costs a tenth of its
// turn). Held while the batch runs; one thread at a time.
struct Workspace
{
    Workspace();
    ~Workspace();
    Workspace(const Workspace &) = delete;
    Workspace &operator=(const Workspace &) = delete;

    std::unique_ptr<CoefficientArena> arena;
    QByteArray input; // the file being turned
    QByteArray output; // its picture moved
};

// The turned bytes of a JPEG in memory, with the same rules; `kind` says what was done.
QByteArray rotated(const QByteArray &jpeg, Turn turn, Fallback fallback, Result &result);
// Turns the file at `path` in place, in `workspace` when given (else one of its own).
Result rotateFile(const QString &path, Turn turn, Fallback fallback, Workspace *workspace = nullptr);

} // namespace JpegRotation
