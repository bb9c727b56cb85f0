#!/usr/bin/env bash
# The manual page and the completions of an installed vorl: reference.sh PREFIX
set -euo pipefail
share=$1/share

fail() {
    echo "$*" >&2
    exit 1
}

# What Bash offers for a command line, whose last word is being written.
complete_line() {
    bash -c '
        source "$1"
        shift
        compopt() { echo files; }
        COMP_WORDS=("$@")
        COMP_CWORD=$(($# - 1))
        _vorl
        echo "${COMPREPLY[*]}"' bash "$share/bash-completion/completions/vorl" "$@"
}

expect() {
    local wanted=$1 found
    shift
    found=$(complete_line "$@")
    [ "$found" = "$wanted" ] || fail "\"$*\" is completed by \"$found\" instead of \"$wanted\""
}

expect "communities cluster convert compare cut" vorl c
expect "--sum-duplicates --shuffle --seed --speedup --shares" vorl cluster x.nse --s
expect "standard severe" vorl cluster --validation s
expect "nse nsa rcg list mtx metis pajek gml graphml json" vorl cluster --format =
expect "rcg" vorl convert --to = r
expect "union common first second" vorl compare a b --nodes ""
expect "files" vorl evaluate network.nse ""
expect "" vorl cluster --root-max ""

# Every option of the help is in the manual page and in the completions.
commands=$("$1/bin/vorl" --help | sed -nE '/^Subcommands:/,/^$/s/^  ([a-z]+) .*/\1/p')
[ "$(wc -w <<<"$commands")" -gt 5 ] || fail "the help lists the commands \"$commands\""
for command in $commands; do
    for option in $("$1/bin/vorl" $command --help | grep -oE '^  (-[a-z],)?--[a-z-]+' | grep -oE -- '--[a-z-]+'); do
        grep -qF -- "${option//-/\\-}" "$share/man/man1/vorl.1" || fail "$option isn't in vorl.1"
        for file in zsh/site-functions/_vorl bash-completion/completions/vorl; do
            grep -qE -- "$option\b" "$share/$file" || fail "$option isn't in $file"
        done
        grep -qE -- "from $command'.* -l ${option#--} " "$share/fish/vendor_completions.d/vorl.fish" ||
            fail "$option of $command isn't in vorl.fish"
    done
done

if command -v zsh >/dev/null; then zsh -n "$share/zsh/site-functions/_vorl"; fi
if command -v fish >/dev/null; then
    offered=$(fish --no-config -c "source $share/fish/vendor_completions.d/vorl.fish
        complete -C 'vorl cluster --validation s'" | cut -f 1 | sort | tr '\n' ' ')
    [ "$offered" = "severe standard " ] || fail "fish offers \"$offered\""
fi
if command -v man >/dev/null; then
    warnings=$(LC_ALL=C MANWIDTH=100 man -l --warnings=w -Tutf8 "$share/man/man1/vorl.1" 2>&1 >/dev/null)
    [ -z "$warnings" ] || fail "$warnings"
fi
