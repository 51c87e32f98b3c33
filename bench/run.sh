#!/usr/bin/env bash
# Regenerates the benchmark results in one go: a Release build with the benchmarks, the
# corpora, the harness run, bench/results.tsv, bench/results.svg and the table in
# bench/README.md.
#
#   bench/run.sh [--scale F] [--out DIR] [harness options]
#
# --scale multiplies the corpus sizes (default 0.2: about 10 MB per document). --out puts
# results.tsv and results.svg in DIR instead of bench/, and then leaves the README alone.
# Harness options are passed on; with --corpus=, --only= or --no-memory the harness only
# prints its table, so that a subset can be rerun quickly while iterating.
set -euo pipefail
cd "$(dirname "$0")/.."

scale=0.2
out=bench
while [ $# -gt 0 ]; do
    case $1 in
        --scale) scale=$2 ;;
        --out) out=$2 ;;
        *) break ;;
    esac
    shift 2
done
build=${BENCH_BUILD_DIR:-build-bench}
generator=${GEN_CORPUS:-../shared/bench/gen_corpus.py}
corpus=$build/corpus-$scale
# Debian's interpreter, which has python3-matplotlib, even when another one comes first.
python=$(command -v /usr/bin/python3 || command -v python3)

cmake -S . -B "$build" -G Ninja -DCMAKE_BUILD_TYPE=Release -DQZXML_WERROR=ON \
    -DQZXML_BUILD_BENCHMARKS=ON -DQZXML_BUILD_TESTS=OFF -DQZXML_BUILD_TOOLS=OFF >/dev/null
cmake --build "$build" -j2

# The generator is deterministic, so corpora of one scale are made once and kept.
if [ ! -f "$corpus/records-utf16.xml" ]; then
    "$python" "$generator" "$corpus" --scale "$scale"
    # The transcoding path: the records corpus in UTF-16LE, told by its first bytes and its
    # declaration (no byte-order mark).
    "$python" - "$corpus/records.xml" "$corpus/records-utf16.xml" <<'PYTHON'
import sys
text = open(sys.argv[1], encoding="utf-8").read()
text = text.replace('encoding="UTF-8"', 'encoding="UTF-16LE"', 1)
open(sys.argv[2], "wb").write(text.encode("utf-16-le"))
PYTHON
fi

# Many small messages, each its own document, as a service reads them all day: 20,000 SOAP
# requests of about 1.6 KB (whatever the scale), separated by NUL bytes.
if [ ! -f "$corpus/messages.xmls" ]; then
    "$python" - "$corpus/messages.xmls" <<'PYTHON'
import random, sys
rng = random.Random(1604)
words = ["alpha", "bravo", "cobalt", "delta", "ember", "fjord", "garnet", "harbor", "indigo"]
def text(n):
    return " ".join(rng.choice(words) for _ in range(n))
def message(seq):
    items = "".join(
        f'\n    <o:Item sku="SKU-{rng.randrange(10**6):06d}" qty="{rng.randrange(1, 20)}">'
        f'<o:Name>{text(3)}</o:Name><o:Price currency="EUR">{rng.randrange(100, 99999) / 100}'
        f'</o:Price></o:Item>' for _ in range(rng.randrange(4, 7)))
    return f"""<?xml version="1.0" encoding="UTF-8"?>
<s:Envelope xmlns:s="http://www.w3.org/2003/05/soap-envelope" xmlns:wsa="http://www.w3.org/2005/08/addressing" xmlns:xsi="http://www.w3.org/2001/XMLSchema-instance">
 <s:Header>
  <wsa:MessageID>urn:uuid:{rng.getrandbits(128):032x}</wsa:MessageID>
  <wsa:To s:mustUnderstand="1">https://svc{seq % 7}.example.com/orders</wsa:To>
  <wsa:Action>urn:example:orders:SubmitOrder</wsa:Action>
  <wsa:ReplyTo><wsa:Address>http://www.w3.org/2005/08/addressing/anonymous</wsa:Address></wsa:ReplyTo>
 </s:Header>
 <s:Body>
  <o:SubmitOrder xmlns:o="urn:example:orders" o:version="2">
   <o:Customer id="C{rng.randrange(10**5)}" xsi:type="o:Business"><o:Name>{text(2)} &amp; Co</o:Name><o:Note>{text(20)}</o:Note></o:Customer>
   <o:Items>{items}
   </o:Items>
  </o:SubmitOrder>
 </s:Body>
</s:Envelope>
"""
with open(sys.argv[1], "wb") as out:
    out.write(b"\0".join(message(i).encode() for i in range(20000)))
PYTHON
fi

files=("$corpus"/records.xml "$corpus"/text.xml "$corpus"/soap.xml "$corpus"/deep.xml
       "$corpus"/records-utf16.xml "$corpus"/messages.xmls)
full=true
for argument in "$@"; do
    case $argument in --corpus=* | --only=* | --no-memory) full=false ;; esac
done
if [ "$full" = false ]; then
    exec "$build/bin/qzxml-bench" "$@" "${files[@]}"
fi
mkdir -p "$out"
"$build/bin/qzxml-bench" --tsv="$out/results.tsv" "$@" "${files[@]}"
readme=()
if [ "$out" = bench ]; then readme=(--readme bench/README.md); fi
"$python" bench/chart.py "$out/results.tsv" "$out/results.svg" --scale "$scale" "${readme[@]}"
