#!/usr/bin/env bash
# Inside a clean Debian system, where it may install what it likes: are the packages in the folder of the first argument
# as good as they say? scripts/check-package.sh makes such a system.
set -euo pipefail
here=$(cd "$(dirname "${BASH_SOURCE[0]}")" && pwd)
packages=$(cd "$1" && pwd)
export DEBIAN_FRONTEND=noninteractive LANG=C.UTF-8

fail() {
  printf '%s: %s\n' "${0##*/}" "$1" >&2
  exit 1
}

say() { printf '%4d s  %s\n' "$SECONDS" "$1"; }

install() { apt-get -qqy -o Dpkg::Use-Pty=0 install --no-install-recommends "$@" >/tmp/apt.log 2>&1 || {
  cat /tmp/apt.log
  fail "apt cannot install $*"
}; }

# finds_its_libraries FILE…: what a package depends on is all that its programs need.
finds_its_libraries() {
  local missing
  missing=$(ldd "$@" 2>&1 | grep 'not found' || true)
  [[ -z $missing ]] || fail "$*: $missing"
}

# as_user COMMAND…: with the rights and the surroundings of anybody.
as_user() { setpriv --reuid=65534 --regid=65534 --clear-groups env -i PATH="$PATH" HOME=/tmp/user QT_QPA_PLATFORM=offscreen "$@"; }

mkdir -p /tmp/user
chown 65534:65534 /tmp/user
find / -xdev -iname '*vxkit*' -not -path "$packages/*" | grep . && fail 'the system is not clean'

apt-get -qq update
install "$packages"/libvxkit1_*.deb
finds_its_libraries "$(ldconfig -p | awk '/libVXKit.so.1 / { print $NF }')"
say 'the library is installed'

install "$packages"/*.deb cmake g++ make pkgconf
mapfile -t installed < <(for package in "$packages"/*.deb; do dpkg-deb --field "$package" Package; done)
mapfile -t binaries < <(dpkg --listfiles "${installed[@]}" | grep -E '^/usr/bin/.|\.so$|\.so\.[0-9.]+$')
finds_its_libraries "${binaries[@]}"
say "${#installed[@]} packages are installed"

as_user cmake -S "$here" -B /tmp/user/cmake
as_user cmake --build /tmp/user/cmake
[[ $(as_user /tmp/user/cmake/consumer) == 'consumer: all works' ]] || fail 'the consumer built with CMake fails'
say 'the consumer works, built with CMake'

mkdir -m 777 /tmp/user/pkg-config
as_user "$(pkg-config --variable=libexecdir Qt6Core)/rcc" -o /tmp/user/pkg-config/resources.cpp "$here/Consumer.qrc"
# shellcheck disable=SC2046 # each of the flags is a word
as_user c++ -std=c++20 -o /tmp/user/pkg-config/consumer "$here"/*.cpp /tmp/user/pkg-config/resources.cpp \
  $(pkg-config --cflags --libs vxkit)
[[ $(as_user /tmp/user/pkg-config/consumer) == 'consumer: all works' ]] || fail 'the consumer built with pkg-config fails'
say 'the consumer works, built with pkg-config'

if [[ -x /usr/bin/snippets ]]; then
  [[ $(as_user snippets --version) == *1.* ]] || fail 'snippets does not tell its version'
  say 'the example program starts'
fi

apt-get -qqy -o Dpkg::Use-Pty=0 purge "${installed[@]}" >/dev/null
rm -rf /tmp/user
find / -xdev \( -path /proc -o -path /sys -o -path "$packages" \) -prune -o -iname '*vxkit*' -print | grep . &&
  fail 'the packages leave these behind'
say 'the packages are gone without a trace'
