#!/usr/bin/env bash
# Dependencies go one way: what each folder may include of the others.
# usage: arrows_test.sh ROOT
set -euo pipefail
cd "$1"

declare -A may_include=(
  [core]=''
  [ids]='core'
  [transforms]='core ids'
  [topology]='core ids'
  [metrics]='core ids topology'
  [quality]='core ids metrics topology'
  [search]='core ids'
  [io]='core ids search'
  [include/qel]=''
  [editions]=''
)

failed=0
for folder in "${!may_include[@]}"; do
  [[ -d $folder ]] || continue
  allowed=$(tr ' ' '|' <<< "$folder qel ${may_include[$folder]}" | sed 's/|$//')
  # Of the folders of this repository only: an edition includes other libraries, and its own headers.
  others='core|ids|transforms|topology|metrics|quality|search|io|tests|fuzz|benchmarks|editions'
  if grep -rnE "^ *# *include *[\"<](\.\./)*($others)/" "$folder" --include='*.h' --include='*.cpp' |
    grep -vE "include *[\"<]($allowed)/"; then
    echo "$folder/ may include of the other folders: ${may_include[$folder]:-none}"
    failed=1
  fi
done
exit $failed
