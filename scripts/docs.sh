#!/usr/bin/env bash
# Builds the reference into build/docs/html: pictures and tables from the library, then pages from them and from the public
# headers. Fails on every warning of doxygen, on a program in the pages that does not compile or run, and on figures in the
# README that docs/benchmarks.md does not have.
set -euo pipefail
cd "$(dirname "${BASH_SOURCE[0]}")/.."
source scripts/packages.sh

need_packages g++ cmake ninja-build doxygen doxygen-awesome-css

build=build/release
export DOCS_OUT=$PWD/build/docs DOCS_THEME=/usr/share/doxygen-awesome-css
rm -rf "$DOCS_OUT"
mkdir -p "$DOCS_OUT/pictures" "$DOCS_OUT/pages" "$DOCS_OUT/programs"

echo "== pictures and tables"
cmake --preset release -DQEL_GRIDWORK_BUILD_DOCS=ON > /dev/null
cmake --build "$build" --target docs_programs
for program in draw_elements draw_qualities draw_metrics; do "$build/docs/$program" "$DOCS_OUT/pictures"; done
{
  echo '# Result codes {#result_codes}'
  echo
  echo 'What each function returns besides 0 and counts, from the tables of `qel/gridwork/messages.h`.'
  "$build/docs/list_result_codes"
} > "$DOCS_OUT/pages/result_codes.md"
cat docs/elements.md "$DOCS_OUT/pictures/element_drawings.md" > "$DOCS_OUT/pages/elements.md"

echo "== programs in the pages"
ln -sn "$PWD/examples" "$DOCS_OUT/programs/examples"
awk -v folder="$DOCS_OUT/programs" '/^```cpp$/ { file = folder "/" ++n ".cpp"; next } /^```$/ { file = "" } file { print > file }' \
  README.md docs/*.md
for source in $(grep -l 'int main' "$DOCS_OUT"/programs/*.cpp); do
  "${CXX:-g++}" -std=c++17 -Wall -Wextra -Iinclude "$source" -L"$build" -lqel_gridwork -Wl,-rpath,"$PWD/$build" \
    -o "${source%.cpp}"
  (cd "$DOCS_OUT/programs" && "${source%.cpp}")
done

echo "== figures in the README"
sed -n '/^| operation/,/^$/p' README.md | while read -r row; do
  [[ -z $row ]] || grep -qxF -- "$row" docs/benchmarks.md || { echo "README.md: not in docs/benchmarks.md: $row"; exit 1; }
done

echo "== doxygen"
# Doxygen's own page header, with the scripts of the theme.
doxygen -w html "$DOCS_OUT/header.html" "$DOCS_OUT/footer.html" "$DOCS_OUT/style.css" 2> /dev/null
sed -i '/<\/head>/i\
<script src="$relpath^doxygen-awesome-darkmode-toggle.js"></script>\
<script src="$relpath^doxygen-awesome-fragment-copy-button.js"></script>\
<script>DoxygenAwesomeDarkModeToggle.init(); DoxygenAwesomeFragmentCopyButton.init();</script>' "$DOCS_OUT/header.html"
DOCS_VERSION=$(sed -nE 's/^#define QEL_GRIDWORK_VERSION_[A-Z]+ ([0-9]+).*/\1/p' include/qel/gridwork/version.h | paste -sd.) doxygen docs/Doxyfile
echo "built: build/docs/html/index.html"
