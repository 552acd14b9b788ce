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

# Editions see the public headers alone, but for those that one names in its sources.cmake: `sed` finds the list
# NAME_internal_headers there.
drop_allowed_headers() {
  local file line rest
  while IFS= read -r line; do
    file=${line%%:*}
    rest=${line##*include}
    if [[ $file == editions/*/* && -f editions/$(cut -d/ -f2 <<< "$file")/sources.cmake ]] &&
      sed -n '/_internal_headers$/,/)/p' "editions/$(cut -d/ -f2 <<< "$file")/sources.cmake" |
      grep -qF "  $(tr -d ' "<>' <<< "$rest")"; then
      continue
    fi
    echo "$line"
  done | grep .
}

failed=0
for folder in "${!may_include[@]}"; do
  [[ -d $folder ]] || continue
  allowed=$(tr ' ' '|' <<< "$folder qel ${may_include[$folder]}" | sed 's/|$//')
  # Of the folders of this repository only: an edition includes other libraries, and its own headers.
  others='core|ids|transforms|topology|metrics|quality|search|io|tests|fuzz|benchmarks|editions'
  if grep -rnE "^ *# *include *[\"<](\.\./)*($others)/" "$folder" --include='*.h' --include='*.cpp' |
    grep -vE "include *[\"<]($allowed)/" | drop_allowed_headers; then
    echo "$folder/ may include of the other folders: ${may_include[$folder]:-none}"
    failed=1
  fi
done
exit $failed
