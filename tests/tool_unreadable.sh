#!/bin/sh
# Every command that reads input, given a directory, a missing file, a file it may not read
# and a directory as standard input: one message on standard error, exit status 2, no abort.
tool=$1
work=$(mktemp -d)
trap 'chmod -R u+rwx "$work"; rm -rf "$work"' EXIT
mkdir "$work/dir"
printf '<a/>' > "$work/good.xml"
printf '<a/>' > "$work/secret.xml"
chmod 000 "$work/secret.xml"
failures=0

# expect STATUS MESSAGE COMMAND...: runs the tool and compares status and standard error.
expect() {
    status=$1 message=$2
    shift 2
    actual=$("$tool" "$@" 2>&1 >/dev/null)
    code=$?
    if [ "$code" != "$status" ] || [ "$actual" != "$message" ]; then
        echo "qzxml $*: exit $code, '$actual'; expected exit $status, '$message'"
        failures=$((failures + 1))
    fi
}

for command in events format check compare convert; do
    case $command in
        compare) before="$work/good.xml" ;;
        convert) before="--from UTF-8 --to UTF-8" ;;
        *) before= ;;
    esac
    # shellcheck disable=SC2086
    expect 2 "qzxml $command: $work/dir: cannot read: Is a directory" $command $before "$work/dir"
    # shellcheck disable=SC2086
    expect 2 "qzxml $command: $work/none.xml: cannot read: No such file or directory" \
        $command $before "$work/none.xml"
    # Root reads any file, so the permission case needs an ordinary user.
    if [ "$(id -u)" != 0 ]; then
        # shellcheck disable=SC2086
        expect 2 "qzxml $command: $work/secret.xml: cannot read: Permission denied" \
            $command $before "$work/secret.xml"
    fi
    # shellcheck disable=SC2086
    expect 2 "qzxml $command: <stdin>: cannot read: Is a directory" $command $before - < "$work/dir"
done
exit $failures
