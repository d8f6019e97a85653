#!/usr/bin/env bash
# Makes build/package/Corvane-VERSION.zip, whose one folder goes into the Plugins folder of a game project.
# --check instead compares what would go into it with Scripts/package-files.txt; --accept writes that list anew.
set -euo pipefail
cd "$(dirname "$0")/.."

list=Scripts/package-files.txt

# Only what is checked in goes out, so that nothing left lying about does. CMake is of no use in a game project.
files() {
	git ls-files -- Corvane.uplugin README.md CHANGELOG.md 'LICENSE*' Source ':!*/CMakeLists.txt' | LC_ALL=C sort
}

case "${1:-}" in
--check)
	diff --unified=0 "$list" <(files) || {
		echo "The package changes: Scripts/package.sh --accept takes the new list." >&2
		exit 1
	}
	;;
--accept) files >"$list" ;;
"")
	version=$(sed -n 's/.*"VersionName": "\(.*\)".*/\1/p' Corvane.uplugin)
	folder=build/package
	rm -rf "$folder/Corvane" "$folder/Corvane-$version.zip"
	mkdir -p "$folder/Corvane"
	files | tar --create --files-from=- | tar --extract --directory="$folder/Corvane"
	python3 Scripts/check_plugin.py "$folder/Corvane"
	(cd "$folder" && cmake -E tar cf "Corvane-$version.zip" --format=zip Corvane)
	echo "$folder/Corvane-$version.zip"
	;;
*)
	echo "usage: $0 [--check | --accept]" >&2
	exit 2
	;;
esac
