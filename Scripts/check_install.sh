#!/usr/bin/env bash
# Installs the command under a prefix, moves that, and sees that it lives on its own files; then that the Debian package holds
# the same files.
set -euo pipefail
cd "$(dirname "$0")/.."

Scripts/package.sh --deb >/dev/null
work=build/install-check
rm -rf "$work"
cmake --install build/default --component Command --prefix "$work/before" >/dev/null
mv "$work/before" "$work/moved"
command=$work/moved/bin/corvane
shared=$work/moved/share

expect() {
	[ "$1" = "$2" ] || {
		printf 'expected: %s\nfound: %s\n' "$1" "$2" >&2
		exit 1
	}
}

# The manual: what the help names stands there, and it is set without a complaint.
expect "" "$(man --warnings --local-file "$shared/man/man1/corvane.1.gz" 2>&1 >"$work/manual.txt")"
for verb in "" $("$command" --help | sed -n '/^Subcommands:/,$s/^  \([a-z]*\) .*/\1/p'); do
	for word in $("$command" help $verb | grep -o -- '--[a-z-]*'); do
		grep -q -e "$word" "$work/manual.txt" || expect "$word in the manual" "nothing"
	done
done

# The completion finds the command on the path.
candidates=$(PATH="$PWD/$work/moved/bin:$PATH" bash -c '
	source "$1"
	COMP_LINE="corvane no" COMP_POINT=10 COMP_WORDS=(corvane no) && _corvane
	echo "${COMPREPLY[@]}"' bash "$shared/bash-completion/completions/corvane")
expect nodes "$candidates"

# Examples and style sheet of the prefix, not those of the sources.
"$command" nodes --html "$work/pages" >/dev/null
python3 Scripts/links.py "$work/pages"
find "$shared/corvane/examples" -maxdepth 1 -name "*.lua" -delete
echo 'print("mine is", arg[1] and "told the server")' >"$shared/corvane/examples/mine.lua"
expect $'mine is\ttold the server' "$("$command" demo | grep ^mine)"
rm -r "$shared/corvane"
if "$command" demo 2>"$work/error"; then
	expect "a failure without examples" "none"
fi
grep -q "moved/share/corvane/examples' is missing" "$work/error"

# The Debian package.
rm -rf "$work"
cmake --install build/default --component Command --prefix "$work/usr" >/dev/null
expect "$(cd "$work" && find usr ! -type d | sort)" \
	"$(dpkg-deb --fsys-tarfile build/package/corvane_*.deb | tar --list | sed -n 's,^\./\(.*[^/]\)$,\1,p' | sort)"
echo "The installed command works."
