#!/bin/sh
# Standard input read ahead through a pipe: an error found early ends the tool at once, though
# the writer keeps the pipe open; a long input ended inside an element is placed by the lines
# of every chunk handed out.
tool=$1
failures=0

# Records of a line each, many chunks' worth.
records() {
    i=0
    while [ $i -lt "$1" ]; do
        printf '<x n="%d"/>\n' $i
        i=$((i + 1))
    done
}
work=$(mktemp -d)
trap 'kill "$writer" 2>/dev/null; rm -rf "$work"' EXIT
records 9000 > "$work/body"
mkfifo "$work/pipe"

# The error lies after a hundred kilobytes of records, so that the reading thread has taken
# all the input by the time the error stands; the writer then sleeps with the pipe open, and
# timeout ends a tool that would wait for it.
( printf '<r>\n'; cat "$work/body"; printf '<a =x>\n'
  cat "$work/body" "$work/body" "$work/body"; exec sleep 60 ) > "$work/pipe" &
writer=$!
actual=$(timeout 20 "$tool" check - < "$work/pipe" 2>&1)
code=$?
expected="<stdin>:9002:4: Expected a name, found '='"
if [ "$code" != 1 ] || [ "$actual" != "$expected" ]; then
    echo "error before an open pipe: exit $code, '$actual'; expected exit 1, '$expected'"
    failures=$((failures + 1))
fi

actual=$( { printf '<r>\n'; cat "$work/body" "$work/body" "$work/body"; } | "$tool" check --lenient - 2>&1)
code=$?
expected="<stdin>:27002:1: document ends inside element r"
if [ "$code" != 1 ] || [ "$actual" != "$expected" ]; then
    echo "unclosed long input: exit $code, '$actual'; expected exit 1, '$expected'"
    failures=$((failures + 1))
fi
exit $failures
