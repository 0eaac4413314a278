#!/usr/bin/env bash
# Fuzzes each reader of property lists for a while: tests/fuzz/run.sh SECONDS [xml|binary|text ...]
#
# Starts from a copy of the committed corpus under build/fuzz/corpus, where new finds stay from one run to the next.
# Exits with 1 when an input crashes a reader, leaks, takes longer than 10 seconds or more than 1 GB; the input is then
# in build/fuzz/crashes.
set -euo pipefail

if [[ $# -lt 1 || ! $1 =~ ^[1-9][0-9]*$ ]]; then
    echo "usage: $0 SECONDS [xml|binary|text ...]" >&2
    exit 2
fi
seconds=$1
shift
forms=("$@")
[[ ${#forms[@]} -gt 0 ]] || forms=(xml binary text)

root=$(cd "$(dirname "${BASH_SOURCE[0]}")/../.." && pwd)
build=$root/build/fuzz
cd "$root"
cmake --preset fuzz
cmake --build "$build" --target "${forms[@]/#/vxkit_fuzz_}"

status=0
mkdir -p "$build/crashes"
for form in "${forms[@]}"; do
    corpus=$build/corpus/$form
    mkdir -p "$corpus"
    cp -n "$root/tests/fuzz/corpus/$form/"* "$corpus/"
    echo "== $form: $seconds seconds"
    # leak checks, one time out and one memory limit for all; a long input is not worth more than the time it takes
    "$build/tests/fuzz/vxkit_fuzz_$form" "$corpus" \
        -dict="$root/tests/fuzz/dictionaries/$form.dict" -artifact_prefix="$build/crashes/$form-" \
        -max_total_time="$seconds" -timeout=10 -rss_limit_mb=1024 -max_len=4096 -detect_leaks=1 -print_final_stats=1 \
        || status=1
done
exit $status
