#pragma once

#include <QByteArray>
#include <QByteArrayView>
#include <QString>

class CoefficientArena;

// Moves the DCT blocks of a JPEG picture to flip or turn it without decoding it: no pixel changes.
// Every marker before the picture (EXIF, ICC profile, XMP, comments) is written again as it was;
// the caller edits what the move makes wrong. A baseline picture stays baseline, a progressive one
// progressive, and restart markers keep their interval.
//
// Only whole transforms are done: a flip needs the flipped side to be a whole number of blocks
// (8 or 16 pixels), or the blocks at its edge would have to be cropped or left unturned. Damaged
// picture data (cut short, a corrupt segment) is refused rather than written into a new file.
namespace LosslessJpegTransform {

// What happens to the stored picture, by the EXIF orientation it undoes.
enum class Operation {
    none, // 1
    flipHorizontal, // 2
    rotate180, // 3
    flipVertical, // 4
    transpose, // 5: about the top-left to bottom-right diagonal
    rotate90, // 6: clockwise
    transverse, // 7: about the other diagonal
    rotate270, // 8: counterclockwise
};

enum class Outcome { done, imperfect, damaged, unreadable };

struct Result
{
    Outcome outcome = Outcome::unreadable;
    QString error; // libjpeg's words, when damaged or unreadable
};

// Writes the moved picture into `out` (its memory is reused: resized, never shrunk). The blocks
// live in `arena`, which is reset first.
Result transform(QByteArrayView jpeg, Operation operation, CoefficientArena &arena, QByteArray &out);

} // namespace LosslessJpegTransform
