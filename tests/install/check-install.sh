#!/usr/bin/env bash
# Installs the build into a temporary prefix and checks what a user's system gets: the layout, the
# desktop entry and metainfo as the desktop's own validators judge them, the manual pages, the
# completion, and the installed pixcove-cli running on its installed module.
#     check-install.sh BUILD_DIR SOURCE_DIR
set -uo pipefail
build=$1
source=$2
prefix=$(mktemp -d)
trap 'rm -rf "$prefix"' EXIT
failures=0
fail() {
  echo "FAIL: $*"
  failures=$((failures + 1))
}

cmake --install "$build" --prefix "$prefix" >/dev/null || { echo "FAIL: cmake --install"; exit 1; }

for file in bin/pixcove bin/pixcove-cli lib/pixcove/pixcove_app.so lib/pixcove/pixcove_cli.so \
  share/applications/pixcove.desktop share/metainfo/com.tallowmere.Pixcove.metainfo.xml \
  share/icons/hicolor/scalable/apps/pixcove.svg share/man/man1/pixcove.1.gz share/man/man1/pixcove-cli.1.gz \
  share/bash-completion/completions/pixcove-cli; do
  [ -e "$prefix/$file" ] || fail "$file is not installed"
done
[ -x "$prefix/bin/pixcove" ] && [ -x "$prefix/bin/pixcove-cli" ] || fail "the programs are not executable"

# Each PNG is the size its folder names.
python3 - "$prefix/share/icons/hicolor" <<'PYTHON' || fail "icon sizes"
import glob, os, struct, sys
found = 0
for path in glob.glob(os.path.join(sys.argv[1], "*x*", "apps", "pixcove.png")):
    with open(path, "rb") as f:
        head = f.read(24)
    width, height = struct.unpack(">II", head[16:24])
    expected = int(os.path.basename(os.path.dirname(os.path.dirname(path))).split("x")[0])
    if head[:8] != b"\x89PNG\r\n\x1a\n" or (width, height) != (expected, expected):
        sys.exit(f"{path} is {width}x{height}")
    found += 1
if found < 6:
    sys.exit(f"only {found} PNG sizes")
PYTHON

# The desktop's validators.
if command -v desktop-file-validate >/dev/null; then
  output=$(desktop-file-validate "$prefix/share/applications/pixcove.desktop" 2>&1) || fail "desktop-file-validate: $output"
  [ -z "$output" ] || fail "desktop-file-validate: $output"
else
  fail "desktop-file-validate is missing (scripts/setup installs desktop-file-utils)"
fi
if command -v appstreamcli >/dev/null; then
  output=$(appstreamcli validate --no-net "$prefix/share/metainfo/com.tallowmere.Pixcove.metainfo.xml" 2>&1) ||
    fail "appstreamcli validate: $output"
else
  fail "appstreamcli is missing (scripts/setup installs appstream)"
fi
grep -q '^Exec=pixcove --rename %F$' "$prefix/share/applications/pixcove.desktop" || fail "no rename action"
grep -q '^Exec=pixcove --slideshow %F$' "$prefix/share/applications/pixcove.desktop" || fail "no slideshow action"

# The installed tool answers, and runs a command on the module installed beside it, not the build's.
version=$("$prefix/bin/pixcove-cli" --version) || fail "pixcove-cli --version failed"
[ "$version" = "pixcove-cli $(sed -n 's/^project(Pixcove VERSION \([0-9.]*\).*/\1/p' "$source/CMakeLists.txt")" ] ||
  fail "pixcove-cli --version printed '$version'"
mkdir -p "$prefix/sample"
: >"$prefix/sample/a.txt"
listing=$(LD_DEBUG=files "$prefix/bin/pixcove-cli" ls "$prefix/sample" 2>"$prefix/loader.log") || fail "installed pixcove-cli ls failed"
[ "$listing" = "$prefix/sample/a.txt" ] || fail "installed pixcove-cli ls printed '$listing'"
grep -Eq "file=$prefix/(bin/\.\./)?lib/pixcove/pixcove_cli\.so" "$prefix/loader.log" || fail "pixcove-cli did not load its installed module"

# The manual page of pixcove-cli names every option the tool reads, and renders without warnings.
options=$(grep -ho 'QLatin1String("--[a-z-]*")' "$source"/src/cli/*.cpp | grep -o -- '--[a-z-]*' | sort -u)
page=$(zcat "$prefix/share/man/man1/pixcove-cli.1.gz" | sed 's/\\-/-/g')
completion=$(cat "$prefix/share/bash-completion/completions/pixcove-cli")
for option in $options; do
  grep -q -- "$option\b" <<<"$page" || fail "pixcove-cli.1 does not document $option"
  [ "$option" = "--help" ] || grep -q -- "$option\b" <<<"$completion" || fail "the completion does not offer $option"
done
if command -v groff >/dev/null; then
  for page in pixcove.1 pixcove-cli.1; do
    warnings=$(zcat "$prefix/share/man/man1/$page.gz" | groff -man -ww -z 2>&1)
    [ -z "$warnings" ] || fail "$page: $warnings"
  done
fi

# The completion completes.
offered=$(bash -c 'source "$1"; COMP_WORDS=(pixcove-cli ls --hid); COMP_CWORD=2; _pixcove_cli; echo "${COMPREPLY[*]}"' _ \
  "$prefix/share/bash-completion/completions/pixcove-cli")
[ "$offered" = "--hide-folders" ] || fail "completing 'ls --hid' offered '$offered'"

[ $failures -eq 0 ] && echo "installation checked" || exit 1
