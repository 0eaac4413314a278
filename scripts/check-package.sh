#!/usr/bin/env bash
# Tries the Debian packages in a clean system:
#
#   scripts/check-package.sh [BUILD]
#
# BUILD is a folder with everything built in it, build/release where none is named. Makes the packages, makes a Debian
# system with nothing in it but apt (from where this machine's apt gets its packages), installs them there as a person
# would, builds and runs the outside project of tests/consumer in it, and removes them again. Takes some minutes and
# several hundred megabytes from the network; the system is gone afterwards.
set -euo pipefail
root=$(cd "$(dirname "${BASH_SOURCE[0]}")/.." && pwd)
build=$(cd "${1:-$root/build/release}" && pwd)
"$root/scripts/install-packages.sh" package

fail() {
  printf '%s: %s\n' "${0##*/}" "$1" >&2
  exit 1
}

packages=$(mktemp -d)
trap 'rm -rf "$packages"' EXIT
(cd "$build" && cpack -G DEB -B "$packages" >"$packages/cpack.log" 2>&1) || { cat "$packages/cpack.log"; fail 'cpack'; }
rm -rf "$packages/_CPack_Packages"

# The sources of the release that this machine runs, its updates included, and nobody else's.
# shellcheck disable=SC1091 # the system's own file
codename=$(. /etc/os-release && printf '%s' "$VERSION_CODENAME")
# shellcheck disable=SC2016 # the fields are apt's
sources=$(apt-get indextargets --format '$(SITE) $(RELEASE) $(COMPONENT)' |
  awk -v codename="$codename" '$2 ~ "^" codename { print "deb", $0 }' | sort -u)
[[ -n $sources ]] || fail 'apt of this machine has no source of packages'

# shellcheck disable=SC2016 # $1 is the folder of the new system
mmdebstrap --quiet --variant=apt --format=null \
  --customize-hook='mkdir -p "$1/packages" "$1/consumer"' \
  --customize-hook="copy-in $(printf "'%s' " "$packages"/*.deb)/packages" \
  --customize-hook="sync-in '$root/tests/consumer' /consumer" \
  --customize-hook='chroot "$1" bash /consumer/clean_system_test.sh /packages' \
  "$codename" - <<<"$sources" >/dev/null
