#!/bin/sh
# Packages for arm64 on a machine of another kind: unpacked over a copy of what they were built with, used through
# qemu. Arguments: a directory with packages/, consumer/, c_consumer/, convert_chart.sh, use_python.py; that system
# root; the cross build's toolchain file; the digest that convert_chart.sh has to print.
set -eu
cd "$1"
sysroot=$2 toolchain=$3 digest=$4
root=$PWD/root
lib=usr/lib/aarch64-linux-gnu

step() { echo "== $*"; }
fail() { echo "test_extracted.sh: $*" >&2; exit 1; }
arm() { qemu-aarch64 -L "$root" -E LD_LIBRARY_PATH="/$lib/blas:/$lib/lapack" "$@"; }

step "unpack"
cp -al "$sysroot" "$root"
for package in packages/*.deb; do
  dpkg-deb --extract "$package" "$root"
  dpkg-deb --show "$package"
  dpkg-deb --field "$package" Depends
done

step "every library that is linked belongs to a package"
mkdir debian trees
touch debian/control
for package in packages/*.deb; do
  dpkg-deb --raw-extract "$package" "trees/$(dpkg-deb --field "$package" Package)"
done
# shellcheck disable=SC2046
DEB_HOST_ARCH=arm64 dpkg-shlibdeps -O \
  $(printf ' -l%s' trees/*/"$lib" trees/*/"$lib"/korvex2 "$sysroot"/packages/*/"$lib" "$sysroot"/packages/*/lib/*) \
  trees/*/usr/bin/* trees/*/"$lib"/*.so.?.* trees/*/"$lib"/korvex2/*.so.?.* trees/*/usr/lib/python3/dist-packages/*/*.so

step "the tool"
arm "$root/usr/bin/korvex2" --version
found=$(./convert_chart.sh qemu-aarch64 -L "$root" "$root/usr/bin/korvex2")
[ "$found" = "$digest" ] || fail "the chart converts to $found, not to $digest"
echo "$found"
if arm "$root/usr/bin/korvex2" convert /nowhere.raw nothing.png --to rgb8; then fail "a missing file was converted"; fi

step "man page and completions"
zcat "$root/usr/share/man/man1/korvex2.1.gz" | grep '^.SH NAME'
ls "$root/usr/share/bash-completion/completions/korvex2" "$root/usr/share/zsh/vendor-completions/_korvex2" \
   "$root/usr/share/fish/vendor_completions.d/korvex2.fish"

step "C++ through CMake"
cmake -S consumer -B build -DCMAKE_TOOLCHAIN_FILE="$toolchain" -DKORVEX2_SYSROOT="$root" >/dev/null
cmake --build build >/dev/null
arm build/consumer

step "C++ through pkg-config"
# shellcheck disable=SC2046
aarch64-linux-gnu-g++ --sysroot="$root" -std=c++20 consumer/main.cpp -o build/again \
  $(PKG_CONFIG_LIBDIR="$root/$lib/pkgconfig" pkg-config --cflags --libs korvex2)
arm build/again

step "C through CMake"
cmake -S c_consumer -B build/c -DCMAKE_TOOLCHAIN_FILE="$toolchain" -DKORVEX2_SYSROOT="$root" >/dev/null
cmake --build build/c >/dev/null
arm build/c/c_consumer

step "C through pkg-config"
# shellcheck disable=SC2046
aarch64-linux-gnu-gcc --sysroot="$root" -std=c99 c_consumer/main.c -o build/c/again \
  $(PKG_CONFIG_LIBDIR="$root/$lib/pkgconfig" pkg-config --cflags --libs vorbayer)
arm build/c/again

step "Python"
arm "$root/usr/bin/python3.11" -B ./use_python.py
