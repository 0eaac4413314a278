#!/usr/bin/env bash
# Installs the packages of scripts/packages that are missing, for each purpose named:
#
#   scripts/install-packages.sh build test
#
# Where everything is there already nothing is asked of apt, so this costs a few milliseconds. VXKIT_NO_INSTALL=1 says
# that whoever calls takes care of the packages, on a system that is not Debian, say.
set -euo pipefail

list=$(dirname "${BASH_SOURCE[0]}")/packages
[[ -z ${VXKIT_NO_INSTALL:-} ]] || exit 0

fail() {
  printf '%s: %s\n' "${0##*/}" "$1" >&2
  printf 'Needed: %s\n' "${missing[*]}" >&2
  exit 1
}

wanted=()
for purpose in "$@"; do
  mapfile -t -O "${#wanted[@]}" wanted < <(awk -v purpose="$purpose" '$1 == purpose { print $2 }' "$list")
done
mapfile -t wanted < <(printf '%s\n' "${wanted[@]}" | sort -u)

missing=("${wanted[@]}")
command -v dpkg-query >/dev/null ||
  fail 'this is no Debian system. Install what these packages hold, then set VXKIT_NO_INSTALL=1.'

# dpkg-query fails when it knows nothing of one of the packages; those are missing like the ones it knows as removed.
installed=$(dpkg-query --show --showformat '${db:Status-Status} ${Package}\n' "${wanted[@]}" 2>/dev/null || true)
mapfile -t missing < <(comm -23 <(printf '%s\n' "${wanted[@]}" | LC_ALL=C sort -u) \
  <(awk '$1 == "installed" { print $2 }' <<<"$installed" | LC_ALL=C sort -u))
((${#missing[@]})) || exit 0

command -v apt-get >/dev/null || fail 'apt-get is not here to install what is missing.'
as_root=()
if ((EUID != 0)); then
  command -v sudo >/dev/null || fail 'neither root nor sudo, so nothing can be installed.'
  as_root=(sudo)
fi

log=$(mktemp)
trap 'rm -f "$log"' EXIT
apt() {
  "${as_root[@]}" env DEBIAN_FRONTEND=noninteractive apt-get -qy -o DPkg::Lock::Timeout=300 "$@" >"$log" 2>&1 && return
  cat "$log" >&2
  fail "apt-get $1 failed."
}

printf 'Installing %s\n' "${missing[*]}"
apt update
apt install --no-install-recommends "${missing[@]}"
