#!/usr/bin/env bash
# The windowed start of a program with no course beside it: it says so to the
# learner, says what exactly failed, and ends with a failure, without a window.
#   course_missing.sh <kestrun>
set -u
home=$(mktemp -d)
trap 'rm -rf "$home"' EXIT
cp "$1" "$home/kestrun"
said=$(HOME=$home XDG_CONFIG_HOME=$home/config QT_QPA_PLATFORM=offscreen \
       timeout 30 "$home/kestrun" 2>&1 >/dev/null)
status=$?
fail() { echo "$1"; echo "it said: $said"; exit 1; }
[ "$status" -eq 1 ] || fail "exit status $status, not 1"
grep -qxF "The course is missing from the app." <<<"$said" || fail "no sentence for the learner"
grep -qF "course.json is missing" <<<"$said" || fail "no detail of what failed"
echo "course_missing: the learner's sentence and the detail, exit status 1"
