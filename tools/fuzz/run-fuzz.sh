#!/usr/bin/env bash
# Fuzzes the version reader or the disc image readers with libFuzzer (clang from Debian: clang-14,
# libclang-rt-14-dev). Not part of the tests; run on demand:
#   tools/fuzz/run-fuzz.sh [SECONDS] [pe|image]      (default 300 seconds, the version reader)
# The version reader is seeded with the corpus' executables and the test build's fixtures; the image
# readers with small images made here by xorriso, genisoimage and mkudffs.
# Work lands in ${KEVRO_FUZZ_DIR:-build/fuzz}/<target>; findings are written there as crash-*, leak-* or
# timeout-*.
set -euo pipefail
root=$(cd "$(dirname "$0")/../.." && pwd)
seconds=${1:-300}
target=${2:-pe}
work=${KEVRO_FUZZ_DIR:-$root/build/fuzz}/$target
mkdir -p "$work/corpus"
flags=(-std=c++20 -g -O1 -fPIC -fsanitize=fuzzer,address,undefined -fno-sanitize-recover=undefined
       -I"$root/src" $(pkg-config --cflags Qt6Core))
if [ "$target" = image ]; then
    clang++-14 "${flags[@]}" "$root/tools/fuzz/fuzz_disc_image.cpp" "$root/src/platform/DiscImage.cpp" \
        "$root/src/platform/IsoImage.cpp" "$root/src/platform/UdfImage.cpp" \
        $(pkg-config --libs Qt6Core) -o "$work/fuzz"
    tree=$(mktemp -d)
    mkdir -p "$tree/Docs/Deep"
    echo "read me" > "$tree/README.TXT"; echo hidden > "$tree/.hidden"; echo deep > "$tree/Docs/Deep/A.DAT"
    xorriso -as mkisofs -quiet -no-pad -R -J -o "$work/corpus/rrj.iso" "$tree"
    genisoimage -quiet -J -o "$work/corpus/joliet.iso" "$tree"
    genisoimage -quiet -udf -o "$work/corpus/bridge.iso" "$tree"
    truncate -s 2M "$work/corpus/vat.udf" && mkudffs --media-type=bdr --udfrev=2.50 "$work/corpus/vat.udf" >/dev/null
    rm -rf "$tree"
    max=1048576
else
    clang++-14 "${flags[@]}" "$root/tools/fuzz/fuzz_pe_version.cpp" "$root/src/platform/PeVersion.cpp" \
        $(pkg-config --libs Qt6Core) -o "$work/fuzz"
    for seed in "$root"/../shared/corpus/pe/* "$root"/build/tests/pe-fixtures/*.exe; do
        [ -f "$seed" ] && cp -f "$seed" "$work/corpus/" || true
    done
    max=262144
fi
cd "$work"
./fuzz -max_total_time="$seconds" -max_len="$max" -timeout=10 -rss_limit_mb=2048 -print_final_stats=1 corpus
