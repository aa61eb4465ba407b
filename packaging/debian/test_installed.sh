#!/bin/sh
# Run in a Debian that has never seen Korvex2, as root: installs the packages, uses them, removes them. The working
# directory holds packages/, consumer/, c_consumer/, convert_chart.sh, use_python.py; the argument is the digest that
# convert_chart.sh has to print.
set -eu
digest=$1
here=$PWD
export DEBIAN_FRONTEND=noninteractive
HOME=$(mktemp -d)  # shells keep files of their own there
export HOME

step() { echo "== $*"; }
fail() { echo "test_installed.sh: $*" >&2; exit 1; }
# Everything but what apt and dpkg keep for themselves.
files() {
  find / -xdev \( -path "$here" -o -path /proc -o -path /sys -o -path /dev -o -path /tmp -o -path /var/log \
    -o -path /var/cache -o -path /var/lib/apt -o -path /var/lib/dpkg \) -prune -o -print | sort
}

step "what a user brings"
apt-get install -q -y --no-install-recommends \
  g++ cmake make pkg-config man-db bash-completion fish zsh >/dev/null 2>&1
files >"$here/before"

step "install"
apt-get install -q -y --no-install-recommends "$here"/packages/*.deb
ldconfig -p | grep libkorvex2.so.2
ldconfig -p | grep libvorbayer.so.2

step "the tool"
korvex2 --version
found=$("$here/convert_chart.sh" korvex2)
[ "$found" = "$digest" ] || fail "the chart converts to $found, not to $digest"
echo "$found"
if korvex2 convert /nowhere.raw /tmp/nothing.png --to rgb8; then fail "a missing file was converted"; fi

step "man page and completions"
man --where korvex2
man korvex2 | grep -A2 '^NAME'
bash -c '. /usr/share/bash-completion/bash_completion; _completion_loader korvex2; complete -p korvex2'
zsh -fc 'autoload -U compinit; compinit -D; echo $_comps[korvex2]' | grep -x _korvex2
fish -c 'complete -C "korvex2 con"' | grep convert

step "C++ through CMake"
cmake -S consumer -B /tmp/consumer >/dev/null
cmake --build /tmp/consumer >/dev/null
/tmp/consumer/consumer

step "C++ through pkg-config"
# shellcheck disable=SC2046
g++ -std=c++20 consumer/main.cpp -o /tmp/consumer/again $(pkg-config --cflags --libs korvex2)
/tmp/consumer/again

step "C through CMake"
cmake -S c_consumer -B /tmp/consumer/c >/dev/null
cmake --build /tmp/consumer/c >/dev/null
/tmp/consumer/c/c_consumer

step "C through pkg-config"
# shellcheck disable=SC2046
gcc -std=c99 c_consumer/main.c -o /tmp/consumer/c/again $(pkg-config --cflags --libs vorbayer)
/tmp/consumer/c/again

step "Python"
python3 -c "import korvex2"
python3 -B ./use_python.py

step "purge"
apt-get purge -q -y libvorbayer2 libvorbayer-dev libkorvex2-2 libkorvex2-dev korvex2-tools python3-korvex2
apt-get autoremove --purge -q -y >/dev/null
rm -r /tmp/consumer
files >"$here/after"
if ! diff "$here/before" "$here/after"; then fail "the purged packages have left or taken files"; fi
for names in '*korvex2*' '*vorbayer*'; do
  if dpkg-query -W "$names" 2>/dev/null; then fail "dpkg still knows the packages"; fi
done
if ldconfig -p | grep -E 'korvex2|vorbayer'; then fail "the cache of libraries still has the libraries"; fi
echo "nothing is left"
