#!/usr/bin/env bash
# The library as a guest in a process: it exports its interface and nothing else, holds no data that can be written, and
# calls nothing that prints, ends the process, looks at or changes its surroundings, or depends on the locale. And each
# function that it exports is named in the output of the program `determinism`.
# Usage: exports_test.sh LIBRARY DETERMINISM
set -euo pipefail
failures=0

# Takes a complaint, and on the standard input the lines that it holds for, if there are any.
forbid() {
  local found
  found=$(cat)
  if [[ -z $found ]]; then return; fi
  printf '%s:\n%s\n' "$1" "$found"
  failures=$((failures + 1))
}

# Functions, virtual tables and type information in the namespace qel; and the version of the symbols (A).
nm -D --defined-only "$1" | awk '{print $2, $3}' | 
  { grep -Ev "^(A |[TW] _ZNK?3qel|[VDR] _ZT[VIS]N3qel)" || true; } > exports.txt
forbid "exported, but not of the interface" < exports.txt

toolchain='__dso_handle|__TMC_END__|completed\.[0-9]+|DW\.ref\.__gxx_personality_v0|_edata|__bss_start|_end'
objdump -t "$1" | awk '/ \.(data|bss|tdata|tbss)\t/ && $NF !~ /^\.(data|bss)$/ {print $NF}' |
  { grep -Evx "$toolchain" || true; } > exports.txt
forbid "data that can be written" < exports.txt

ends='_?exit|_Exit|quick_exit|abort|atexit|__cxa_atexit|__assert_fail|raise|kill'
surroundings='(secure_)?getenv|setenv|putenv|setlocale|uselocale|localeconv|chdir|umask|signal|sigaction|system|fork|exec.*'
globals='s?rand|random|strtok|time|clock|localtime|gmtime|pthread_create|dlopen'
formatted='.*printf(_chk)?|.*scanf|ato[fil]l?|strto[dfl].*|f?put(s|c|char)|perror|strerror|_ZSt4(cout|cerr|clog).*|_ZNSo.*|_ZNSt6locale.*'
nm -D --undefined-only "$1" | awk '{print $NF}' | sed 's/@.*//' |
  { grep -Ex "$ends|$surroundings|$globals|$formatted" || true; } > exports.txt
forbid "called, but not for a library" < exports.txt

comm -23 <(nm -DC --defined-only "$1" | sed -nE 's/^\w+ \w qel::(gridwork|lapack|misc)::(\w+).*/\2/p' | sort -u) \
  <("$2" | grep -oE '[A-Za-z]\w*' | sort -u) > exports.txt
forbid "not called in tests/calls.cpp" < exports.txt

rm -f exports.txt
exit $((failures != 0))
