#!/usr/bin/env bash
# Fuzzes the version reader with libFuzzer (clang from Debian: clang-14, libclang-rt-14-dev), seeded with
# the corpus' executables and the test build's fixtures. Not part of the tests; run on demand:
#   tools/fuzz/run-fuzz.sh [SECONDS]      (default 300)
# Work lands in ${KEVRO_FUZZ_DIR:-build/fuzz}; findings are written there as crash-*, leak-* or timeout-*.
set -euo pipefail
root=$(cd "$(dirname "$0")/../.." && pwd)
seconds=${1:-300}
work=${KEVRO_FUZZ_DIR:-$root/build/fuzz}
mkdir -p "$work/corpus"
clang++-14 -std=c++20 -g -O1 -fPIC -fsanitize=fuzzer,address,undefined -fno-sanitize-recover=undefined \
    -I"$root/src" $(pkg-config --cflags Qt6Core) \
    "$root/tools/fuzz/fuzz_pe_version.cpp" "$root/src/platform/PeVersion.cpp" \
    $(pkg-config --libs Qt6Core) -o "$work/fuzz_pe_version"
for seed in "$root"/../shared/corpus/pe/* "$root"/build/tests/pe-fixtures/*.exe; do
    [ -f "$seed" ] && cp -f "$seed" "$work/corpus/" || true
done
cd "$work"
./fuzz_pe_version -max_total_time="$seconds" -max_len=262144 -timeout=10 -print_final_stats=1 corpus
