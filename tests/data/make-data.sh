#!/usr/bin/env bash
# Remakes the small files in this folder (they are checked in; run this only to change them).
# Needs ImageMagick, jpegtran, exiftool, heif-enc (libheif-examples) and a C compiler with libheif-dev.
set -euo pipefail
cd "$(dirname "$0")"
tmp=$(mktemp -d)
trap 'rm -rf "$tmp"' EXIT

# An upright picture that no turn or mirror maps onto itself: a gradient with a block in the top
# left corner and a bar along the bottom.
convert -size 120x90 gradient:'#3060c0'-'#c0e040' \
    -fill '#e02020' -draw 'rectangle 0,0 39,29' -fill black -draw 'rectangle 0,80 119,89' "$tmp/upright.png"

# orientation-N.jpg stores the picture so that turning it as EXIF orientation N says shows it
# upright again.
stored=(none -flop "-rotate 180" -flip -transpose "-rotate -90" -transverse "-rotate 90")
for n in 1 2 3 4 5 6 7 8; do
    op=${stored[$((n - 1))]}
    if [ "$op" = none ]; then op=""; fi
    # shellcheck disable=SC2086
    convert "$tmp/upright.png" $op -quality 92 -strip "orientation-$n.jpg"
    exiftool -q -overwrite_original -n -Orientation="$n" "orientation-$n.jpg"
done

# A HEIC with a thumbnail image.
heif-enc -q 60 -t 32 -o small-with-thumbnail.heic "$tmp/upright.png"

# A flat HEIC whose only colour description is an nclx box saying Display P3 with sRGB's curve
# (heif-enc leaves such a box out): rgb(60, 160, 90) in P3 is about rgb(0, 163, 82) in sRGB.
cc -O1 make-nclx-heic.c -o "$tmp/make-nclx-heic" $(pkg-config --cflags --libs libheif)
"$tmp/make-nclx-heic" nclx-display-p3.heic 60 160 90 12 13

# A baseline JPEG with a restart marker after every MCU row, as many cameras write them.
convert -size 640x480 plasma:fractal -seed 11 -quality 85 -sampling-factor 2x2 "$tmp/plasma.jpg"
jpegtran -restart 1 -outfile restart-markers.jpg "$tmp/plasma.jpg"

# A baseline JPEG with its EXIF block, cut off in the middle of its scan.
convert -size 320x240 plasma:fractal -seed 7 -quality 90 "$tmp/whole.jpg" 2>/dev/null \
    || convert -size 320x240 gradient:red-blue -quality 90 "$tmp/whole.jpg"
exiftool -q -overwrite_original -ImageDescription="TRUNCATED" -Make="Pixcove" "$tmp/whole.jpg"
size=$(stat -c %s "$tmp/whole.jpg")
head -c $((size * 6 / 10)) "$tmp/whole.jpg" > truncated-in-scan.jpg

# The same file whole but with a run of 0xFF bytes in the scan data: every header segment is intact.
cp "$tmp/whole.jpg" damaged-scan-hole.jpg
printf '\xff%.0s' $(seq 1 512) | dd of=damaged-scan-hole.jpg bs=1 seek=$((size * 7 / 10)) conv=notrunc status=none

# Broken EXIF blocks in an otherwise sound JPEG: the first IFD's offset points past the block,
# and the first IFD claims 65535 entries.
python3 - "$tmp/whole.jpg" <<'PY'
import struct, sys
data = bytearray(open(sys.argv[1], 'rb').read())
app1 = data.find(b'Exif\0\0')
tiff = app1 + 6
little = data[tiff:tiff + 2] == b'II'
fmt = '<' if little else '>'
ifd_offset_at = tiff + 4
ifd0 = struct.unpack_from(fmt + 'I', data, ifd_offset_at)[0]

bad_offset = bytearray(data)
struct.pack_into(fmt + 'I', bad_offset, ifd_offset_at, 0x7ffffff0)
open('exif-ifd-offset-out-of-range.jpg', 'wb').write(bad_offset)

bad_count = bytearray(data)
struct.pack_into(fmt + 'H', bad_count, tiff + ifd0, 0xffff)
open('exif-entry-count-too-large.jpg', 'wb').write(bad_count)
PY
ls -l
