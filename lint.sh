#!/usr/bin/env bash
# Checks the sources without running them, the same for a person and for CI. Nothing is changed; clang-format -i FILE
# mends what the format check says.
#
# Looks at the files that git tracks and at new ones that it does not ignore. What passed is not checked again until it,
# a header it includes or the check's configuration changes.
# shellcheck disable=SC2317 # shellcheck does not see that check() calls the functions it is handed
set -uo pipefail
cd "$(dirname "${BASH_SOURCE[0]}")" || exit 1
scripts/install-packages.sh build lint || exit 1

readonly build=build/lint
status=0

# files PATTERN…: the existing files that match, one a line.
files() {
  git ls-files --cached --others --exclude-standard -- "$@" | while IFS= read -r file; do
    [[ ! -f $file ]] || printf '%s\n' "$file"
  done
}

# check NAME COMMAND…: runs the command, and prints what it says only where it fails.
check() {
  local name=$1 said start=$SECONDS
  shift
  if said=$("$@" 2>&1 </dev/null); then
    printf '  %-24s ok    %4d s\n' "$name" $((SECONDS - start))
  else
    printf '  %-24s FAILED %3d s\n%s\n' "$name" $((SECONDS - start)) "$said"
    status=1
  fi
}

format() { files '*.cpp' '*.h' | xargs -d '\n' clang-format --dry-run -Werror; }
licence_lines() {
  local without
  without=$(files '*.cpp' '*.h' | while IFS= read -r file; do
    [[ $(head -n 1 "$file") == '// SPDX-License-Identifier: MIT' ]] || printf '%s: no licence line\n' "$file"
  done)
  printf '%s' "$without"
  [[ -z $without ]]
}
merge_markers() { ! files . | xargs -d '\n' grep -nIE '^(<{7}|>{7}|\|{7})( |$)'; }
layers() { files '*.cpp' '*.h' | scripts/check-layers.py; }
cppcheck_sources() {
  files 'VXKit/*.cpp' 'designer/*.cpp' 'examples/*.cpp' | cppcheck --file-list=- -j "$(nproc)" --quiet --std=c++20 \
    --language=c++ --library=qt --enable=warning,performance,portability --error-exitcode=1 -I. \
    --suppressions-list=scripts/cppcheck-suppressions --template='{file}:{line}: {severity}: {message} [{id}]'
}
shell_scripts() { files '*.sh' .ci/run | xargs -d '\n' shellcheck; }

# Every target there is, so that each source has a command line, with what moc and uic make; without precompiled headers,
# which would hide an include that is missing. The fuzzing harnesses are a configuration of their own.
configure() {
  cmake --preset release -B "$build" -DCMAKE_CXX_COMPILER=clang++ -DCMAKE_DISABLE_PRECOMPILE_HEADERS=ON \
    -DVXKIT_BUILD_BENCH=ON &&
    # What the targets for it run, without all that they wait for.
    find "$build" -name AutogenInfo.json -print0 |
    xargs -0 -P "$(nproc)" -I '{}' cmake -E cmake_autogen '{}' RelWithDebInfo &&
    cmake --preset fuzz -B "$build/fuzz" -DCMAKE_DISABLE_PRECOMPILE_HEADERS=ON
}
headers_alone() { files 'VXKit/*.h' | scripts/lint-units.py headers "$build"; }
tidy() { files '*.cpp' | scripts/lint-units.py tidy "$build"; }

check format format
check 'licence lines' licence_lines
check 'merge markers' merge_markers
check layers layers
check documentation scripts/docs.sh
check 'shell scripts' shell_scripts
check cppcheck cppcheck_sources
check configure configure
check 'headers alone' headers_alone
check clang-tidy tidy
exit "$status"
