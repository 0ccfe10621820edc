#!/bin/sh
# Every code lesson's other answers are judged as their headings say, and no
# mutant of a solution survives its tests; the runs use the app's own runner.
#   check_answers.sh PYTHON COURSE_CHECK SOURCE_DIR
set -eu
python=$1 course_check=$2 root=$3
tmp=$(mktemp -d)
trap 'rm -rf "$tmp"' EXIT
"$python" "$root/course/build.py" --out "$tmp" --answers "$tmp/answers.json"
"$course_check" "$tmp/course.json" "$tmp/solutions.json" --answers "$tmp/answers.json"
