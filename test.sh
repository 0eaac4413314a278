#!/usr/bin/env bash
# Builds and checks everything, and ends with CTest's own closing line for the release build. Needs no display and no
# terminal. Each step says how it went and how long it took; what it printed is in build/logs, and on the screen where
# it failed. A failed step does not keep the others from running, but the exit status tells of it.
set -uo pipefail
cd "$(dirname "${BASH_SOURCE[0]}")" || exit 1
scripts/install-packages.sh build test lint desktop || exit 1

readonly logs=build/logs
readonly locales=$PWD/build/locales
readonly lines_of_a_failure=200
readonly fuzz_seconds=10
cores=$(nproc)
failed=()
mkdir -p "$logs"

# step NAME COMMAND…
step() {
  local name=$1 start=$SECONDS verdict=ok
  local log=$logs/${name// /-}.log
  shift
  "$@" >"$log" 2>&1 </dev/null || verdict=FAILED
  printf '%-28s %-6s %4d s\n' "$name" "$verdict" $((SECONDS - start))
  [[ $verdict == FAILED ]] || return 0
  failed+=("$name")
  printf '%s\n' "---- the end of $log"
  tail -n "$lines_of_a_failure" "$log"
  printf '%s\n' '----'
  return 1
}

build() {
  cmake --preset "$1" -DVXKIT_WARNINGS_AS_ERRORS=ON && cmake --build --preset "$1" --parallel "$cores"
}

# A run that finds no test has failed.
tests() {
  ctest --preset "$1" --parallel "$cores" --no-tests=error "${@:2}"
}

tests_in_locale() {
  LC_ALL=$1 tests release --label-exclude desktop
}

# Numbers with a comma, and letters whose upper case is not the usual one. In a folder of this build, so that the
# system's own locales stay as they are.
make_locales() {
  local locale
  mkdir -p "$locales"
  for locale in de_DE tr_TR; do
    [[ -d $locales/$locale.UTF-8 ]] || localedef -i "$locale" -f UTF-8 "$locales/$locale.UTF-8" || return
  done
}

unset LC_ALL LANGUAGE "${!LC_@}"
export LANG=C.UTF-8
export LOCPATH=$locales:/usr/lib/locale
export ASAN_OPTIONS=detect_leaks=1:detect_stack_use_after_return=1
export UBSAN_OPTIONS=print_stacktrace=1

step 'locales' make_locales
step 'build release' build release && released=yes
step 'lint' ./lint.sh
step 'fuzz' tests/fuzz/run.sh "$fuzz_seconds"
step 'build asan+ubsan' build asan+ubsan && step 'tests asan+ubsan' tests asan+ubsan
if [[ -n ${released:-} ]]; then
  step 'tests in German' tests_in_locale de_DE.UTF-8
  step 'tests in Turkish' tests_in_locale tr_TR.UTF-8
  step 'tests release' tests release
fi

if ((${#failed[@]})); then
  printf '\nFailed: %s\n' "$(IFS=,; echo "${failed[*]}")"
else
  printf '\nAll steps passed in %d s\n' "$SECONDS"
fi
[[ -z ${released:-} ]] || grep 'tests passed, .* tests failed out of' "$logs/tests-release.log" | tail -n 1
((${#failed[@]} == 0))
