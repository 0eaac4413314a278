#!/usr/bin/env bash
# The installed kit as somebody else's project finds it:
#
#   consumer_test.sh install BUILD WORK          installs what BUILD has built into WORK/prefix
#   consumer_test.sh cmake WORK                  builds and runs the consumer with find_package against it
#   consumer_test.sh pkg-config WORK             the same with the compiler and pkg-config alone
#   consumer_test.sh other-version WORK          a consumer that wants another major version is refused
#   consumer_test.sh packages BUILD WORK         makes the Debian packages, looks into them, unpacks them, and builds and
#                                                runs the consumer against that
#
# CXX is the compiler.
set -euo pipefail
here=$(cd "$(dirname "${BASH_SOURCE[0]}")" && pwd)
readonly here
readonly seconds_to_run=60
readonly expected='consumer: all works'

fail() {
  printf '%s: %s\n' "${0##*/}" "$1" >&2
  exit 1
}

# The one folder below PREFIX that holds the file or folder NAME.
folder_of() {
  local found
  found=$(find "$1" -name "$2" -printf '%h\n')
  [[ -n $found && $found != *$'\n'* ]] || fail "$2 is not there once below $1: $found"
  printf '%s' "$found"
}

# Runs a consumer where neither the build folder nor anything else of the kit's can help it.
run_consumer() {
  local said home=$2/home
  rm -rf "$home"
  mkdir -p "$home"
  said=$(env -i HOME="$home" PATH="$PATH" LANG=C.UTF-8 QT_QPA_PLATFORM=offscreen "${@:3}" \
    timeout "$seconds_to_run" "$1") || fail "the consumer ends with $?"
  [[ $said == "$expected" ]] || fail "the consumer says: $said"
  printf '%s\n' "$said"
}

# Configures the consumer against a prefix, from nothing.
configure_consumer() {
  rm -rf "$2"
  env -u CMAKE_PREFIX_PATH cmake -S "$here" -B "$2" -DCMAKE_BUILD_TYPE=Debug -DCMAKE_PREFIX_PATH="$1" "${@:3}"
}

# Nothing that is installed names the folders it was made in, but for the services of D-Bus, which must.
check_paths() {
  local named=$1 prefix=$2 file
  if grep -rlIF --exclude='*.service' "$named" "$prefix"; then
    fail "the files above name $named"
  fi
  while IFS= read -r file; do
    if readelf --dynamic "$file" 2>/dev/null | grep -E '\((RPATH|RUNPATH)\)' | grep -v '\[[$]ORIGIN[^:]*\]'; then
      fail "$file has a path of this machine to look for libraries in"
    fi
  done < <(find "$prefix" -type f \( -name '*.so*' -o -perm -u+x \))
}

install_kit() {
  local build=$1 work=$2
  rm -rf "$work/first" "$work/prefix"
  DESTDIR='' cmake --install "$build" --prefix "$work/first" --strip >"$work/install.log"
  # To another place than it was installed to, which must be as good.
  mv "$work/first" "$work/prefix"
  check_paths "$work/first" "$work/prefix"
  check_paths "$build" "$work/prefix"
  [[ -f $work/prefix/include/VXKit/VXKit.h && -f $work/prefix/include/VXKit/VXKitExport.h ]] || fail 'headers are missing'
  [[ ! -e $work/prefix/include/VXKit/pch.h ]] || fail 'headers are there that are nobody else'\''s business'
  folder_of "$work/prefix" Inter-LICENSE.txt >/dev/null
}

consume_with_cmake() {
  local work=$1
  configure_consumer "$work/prefix" "$work/cmake"
  cmake --build "$work/cmake"
  run_consumer "$work/cmake/consumer" "$work"
}

# The compiler and the resource compiler, without a build system.
consume_with_pkg_config() {
  local work=$1 folder flags
  folder=$(folder_of "$work/prefix" vxkit.pc)
  export PKG_CONFIG_PATH=$folder
  [[ $(pkg-config --modversion vxkit) == 1.* ]] || fail 'pkg-config finds another version'
  read -ra flags < <(pkg-config --cflags --libs vxkit)
  rm -rf "$work/pkg-config"
  mkdir "$work/pkg-config"
  "$(pkg-config --variable=libexecdir Qt6Core)/rcc" -o "$work/pkg-config/resources.cpp" "$here/Consumer.qrc"
  "${CXX:-c++}" -std=c++20 "$here/main.cpp" "$here/Greeting.cpp" "$work/pkg-config/resources.cpp" \
    -o "$work/pkg-config/consumer" "${flags[@]}"
  run_consumer "$work/pkg-config/consumer" "$work" "LD_LIBRARY_PATH=${folder%/pkgconfig}"
}

refuse_another_version() {
  local work=$1 said
  if said=$(configure_consumer "$work/prefix" "$work/other-version" -DVXKIT_WANTED=2 2>&1); then
    fail 'version 1 is taken for version 2'
  fi
  grep -q 'VXKitConfig.cmake, version: 1\.' <<<"$said" || fail "it is refused for another reason: $said"
}

# field PACKAGE FIELD
field() { dpkg-deb --field "$1" "$2"; }

package() {
  local found
  found=$(find "$1" -name "$2_*.deb")
  [[ -n $found && $found != *$'\n'* ]] || fail "there is not one package $2: $found"
  printf '%s' "$found"
}

# holds PACKAGE PATTERN: some file of the package matches.
files_like() { dpkg-deb --contents "$1" | awk '{ print $6 }' | grep -E -- "$2"; }
holds() { files_like "$@" >/dev/null || fail "$1 holds no $2"; }
lacks() { ! files_like "$@" || fail "$1 holds $2"; }
needs() { [[ ", $(field "$1" Depends)," == *", $2"[\ ,]* ]] || fail "$1 does not depend on $2: $(field "$1" Depends)"; }

make_packages() {
  local build=$1 work=$2 packages=$2/packages root=$2/root deb name
  rm -rf "$packages" "$root"
  mkdir -p "$packages" "$root"
  (cd "$build" && cpack -G DEB -B "$packages" >"$work/cpack.log" 2>&1) || { cat "$work/cpack.log"; fail 'cpack'; }
  rm -rf "$packages/_CPack_Packages"

  deb=$(package "$packages" libvxkit1)
  holds "$deb" '^\./usr/lib/.*/?libVXKit\.so\.1$'
  lacks "$deb" '/libVXKit\.so$|\.h$|VXKit/plugins'
  needs "$deb" libqt6widgets6
  needs "$deb" libdw1
  [[ $(dpkg-deb --info "$deb" postinst) == *ldconfig* ]] || fail 'the loader is not told'
  deb=$(package "$packages" libvxkit-dev)
  holds "$deb" '^\./usr/include/VXKit/hud/LTHUDAlert\.h$'
  holds "$deb" '^\./usr/include/VXKit/VXKitExport\.h$'
  holds "$deb" '/cmake/VXKit/VXKitConfigVersion\.cmake$'
  holds "$deb" '/pkgconfig/vxkit\.pc$'
  holds "$deb" '/libVXKit\.so$'
  lacks "$deb" '\.so\.1|VXKit/pch\.h'
  needs "$deb" libvxkit1
  needs "$deb" qt6-base-dev
  if [[ -e $build/VXKit/VXKit/plugins/libVXKitWebEngine.so ]]; then
    deb=$(package "$packages" vxkit-webengine)
    holds "$deb" '/VXKit/plugins/libVXKitWebEngine\.so$'
    needs "$deb" libvxkit1
    needs "$deb" libqt6webenginewidgets6
  fi
  if [[ -e $build/plugins/designer/libVXKitDesigner.so ]]; then
    deb=$(package "$packages" vxkit-designer)
    holds "$deb" '/qt6/plugins/designer/libVXKitDesigner\.so$'
    needs "$deb" libvxkit1
  fi

  while IFS= read -r deb; do
    name=$(field "$deb" Package)
    holds "$deb" "^\\./usr/share/doc/$name/copyright\$"
    if dpkg-deb --contents "$deb" | awk '$2 != "root/root" || $1 ~ /^.....w|^........w/' | grep -v '^l' | grep .; then
      fail "$deb: others than root may change these, or own them"
    fi
    dpkg-deb --extract "$deb" "$root"
  done < <(find "$packages" -name '*.deb')
  check_paths "$build" "$root"

  configure_consumer "$root/usr" "$work/unpacked"
  cmake --build "$work/unpacked"
  run_consumer "$work/unpacked/consumer" "$work"
}

case ${1:-} in
  install) mkdir -p "$3" && install_kit "$2" "$3" ;;
  cmake) consume_with_cmake "$2" ;;
  pkg-config) consume_with_pkg_config "$2" ;;
  other-version) refuse_another_version "$2" ;;
  packages) mkdir -p "$3" && make_packages "$2" "$3" ;;
  *) fail 'see the head of this file' ;;
esac
