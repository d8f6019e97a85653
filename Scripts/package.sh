#!/usr/bin/env bash
# Makes build/package/Corvane-VERSION.zip, whose one folder goes into the Plugins folder of a game project.
# --deb makes build/package/corvane_VERSION_ARCHITECTURE.deb with the command instead.
# --check compares what would go into the zip with Scripts/package-files.txt; --accept writes that list anew.
set -euo pipefail
cd "$(dirname "$0")/.."

list=Scripts/package-files.txt
folder=build/package

# Only what is checked in goes out, so that nothing left lying about does. CMake is of no use in a game project.
files() {
	git ls-files -- Corvane.uplugin CHANGELOG.md 'LICENSE*' Resources ':!Resources/Icon.svg' Docs Examples Source \
		':!Source/*CMakeLists.txt' | LC_ALL=C sort
}

make_zip() {
	local version plugin=$folder/Corvane
	version=$(sed -n 's/.*"VersionName": "\(.*\)".*/\1/p' Corvane.uplugin)
	rm -rf "$plugin" "$plugin-$version.zip"
	mkdir -p "$plugin"
	files | tar --create --files-from=- | tar --extract --directory="$plugin"
	mv "$plugin/Resources/PluginReadme.md" "$plugin/README.md" # that of the repository speaks of more than is packed
	./corvane nodes --html "$plugin/Docs/reference" >/dev/null
	python3 Scripts/check_plugin.py "$plugin"
	python3 Scripts/links.py "$plugin"
	(cd "$folder" && cmake -E tar cf "Corvane-$version.zip" --format=zip Corvane)
	echo "$plugin-$version.zip"
}

make_deb() {
	Scripts/setup.sh --check
	rm -f "$folder"/*.deb
	cmake --preset default >/dev/null
	cmake --build build/default --target corvane CommandFiles >/dev/null
	cpack --config build/default/CPackConfig.cmake -B "$folder" >/dev/null
	ls "$folder"/*.deb
}

case "${1:-}" in
--check)
	diff --unified=0 "$list" <(files) || {
		echo "The package changes: Scripts/package.sh --accept takes the new list." >&2
		exit 1
	}
	;;
--accept) files >"$list" ;;
--deb) make_deb ;;
"") make_zip ;;
*)
	echo "usage: $0 [--deb | --check | --accept]" >&2
	exit 2
	;;
esac
