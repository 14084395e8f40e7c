#!/usr/bin/env bash
# check_changelogs.sh PROJECT VERSION: the project's own changelog is in order, the check finds each fault of others, and the
# form that Debian wants is as written here.
set -euo pipefail
project=$1
version=$2
work=$(mktemp -d)
trap 'rm -rf "$work"' EXIT
failures=0

# row NAME CODE OPTION TEXT: the check ends with CODE for a changelog of this text.
row() {
    local code=0
    printf '# Changelog\n\n%b' "$4" > "$work/changelog"
    "$project/packaging/changelog-check" $3 2.1.0 "$work/changelog" 2> "$work/message" || code=$?
    if [ "$code" -ne "$2" ]; then
        echo "$1: ended with $code: $(cat "$work/message")"
        failures=$((failures + 1))
    fi
}
row "a dated section with an item is taken" 0 "" '## 2.1.0 (2026-11-30)\n\n- A.\n'
row "an older section behind it is taken" 0 "" '## 2.1.0 (2026-11-30)\n\n- A.\n\n## 2.0.9 (2026-11-30)\n\n- B.\n'
row "2.0.10 is older than 2.1.0" 0 "" '## 2.1.0 (2026-11-30)\n\n- A.\n\n## 2.0.10 (2026-01-01)\n\n- B.\n'
row "an unreleased section is refused" 1 "" '## 2.1.0 (unreleased)\n\n- A.\n'
row "an unreleased section is taken on trial" 0 --trial '## 2.1.0 (unreleased)\n\n- A.\n'
row "an unreleased section behind another is refused" 1 --trial '## 2.1.0 (unreleased)\n\n- A.\n\n## 2.0.0 (unreleased)\n\n- B.\n'
row "a section of another version is refused" 1 "" '## 2.0.0 (2026-11-30)\n\n- A.\n'
row "a section that lists nothing is refused" 1 "" '## 2.1.0 (2026-11-30)\n\n## 2.0.0 (2026-01-01)\n\n- B.\n'
row "a heading without date is refused" 1 "" '## 2.1.0\n\n- A.\n'
row "a version that comes twice is refused" 1 "" '## 2.1.0 (2026-11-30)\n\n- A.\n\n## 2.1.0 (2026-01-01)\n\n- B.\n'
row "a newer version behind an older is refused" 1 "" '## 2.1.0 (2026-11-30)\n\n- A.\n\n## 2.2.0 (2026-01-01)\n\n- B.\n'
row "a later date behind an earlier is refused" 1 "" '## 2.1.0 (2026-11-30)\n\n- A.\n\n## 2.0.0 (2026-12-01)\n\n- B.\n'
row "a text without section is refused" 1 "" '- A.\n'

if ! "$project/packaging/changelog-check" --trial "$version" "$project/CHANGELOG.md"; then failures=$((failures + 1)); fi

printf '# Changelog\n\n## 2.1.0 (unreleased)\n\nNews.\n\n- First\n  item.\n- `Second`.\n\n## 2.0.0 (2026-01-02)\n\n- Old.\n' > "$work/changelog"
cat > "$work/expected" <<'END'
orva-fd (2.1.0-1) unstable; urgency=medium

  * News.
  * First item.
  * `Second`.

 -- A Name <a@b.example>  Thu, 01 Jan 1970 00:01:40 +0000

orva-fd (2.0.0-1) unstable; urgency=medium

  * Old.

 -- A Name <a@b.example>  Fri, 02 Jan 2026 12:00:00 +0000
END
"$project/packaging/debian-changelog" "$work/changelog" 'A Name <a@b.example>' 100 > "$work/debian"
diff "$work/expected" "$work/debian" || failures=$((failures + 1))
[ "$failures" -eq 0 ] || { echo "$failures rows failed"; exit 1; }
