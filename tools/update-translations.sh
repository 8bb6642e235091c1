#!/usr/bin/env bash
# Refreshes translations/*.ts from the texts in src/: new texts come in unfinished, texts no
# longer in the sources are dropped, finished translations stay. Builds never do this; run it
# after changing a visible text and commit the .ts with the translation filled in.
#   tools/update-translations.sh [language ...]     e.g. tools/update-translations.sh de fr
set -euo pipefail
cd "$(dirname "$0")/.."
lupdate=$(command -v lupdate || true)
[ -n "$lupdate" ] || lupdate=/usr/lib/qt6/bin/lupdate

languages=("$@")
if [ ${#languages[@]} -eq 0 ]; then
  for ts in translations/korvane_*.ts; do
    [ -e "$ts" ] || continue
    name=${ts##*/korvane_}
    languages+=("${name%.ts}")
  done
fi
[ ${#languages[@]} -gt 0 ] || { echo "no translations/korvane_*.ts; name a language" >&2; exit 2; }

for language in "${languages[@]}"; do
  # No source locations: a moved line would otherwise rewrite every entry below it. korvane::tr
  # is a function, not a class's tr, which lupdate remarks on for every file.
  "$lupdate" -silent -no-obsolete -locations none -source-language en \
    -target-language "$language" src -ts "translations/korvane_$language.ts" \
    2> >(grep -v "lacks Q_OBJECT macro" >&2)
done
