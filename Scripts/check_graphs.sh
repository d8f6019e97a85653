#!/usr/bin/env bash
# Checks the graphs of the reference and of the guides: the pictures in Docs/guides/graphs are those of their descriptions,
# and another reader of Blueprint text understands what the pages show. --accept writes the pictures anew instead.
set -euo pipefail
cd "$(dirname "$0")/.."

pages=build/reference
tools=build/graphs

cmake --preset default >/dev/null
cmake --build --preset default --target corvane >/dev/null
rm -rf "$pages"
build/default/Tools/Program/corvane nodes --html "$pages" >/dev/null

case "${1:-}" in
--accept)
	cp "$pages"/graphs/*.svg Docs/guides/graphs/
	exit
	;;
"") ;;
*)
	echo "usage: $0 [--accept]" >&2
	exit 2
	;;
esac

diff --recursive --brief --exclude='*.graph' "$pages/graphs" Docs/guides/graphs || {
	echo "Pictures in the guides are not those of their graphs: Scripts/check_graphs.sh --accept writes them anew." >&2
	exit 1
}
Scripts/npm_kit.sh Scripts/graphs "$tools"
node Scripts/graphs/check_pages.mjs "$pages" "$PWD/$tools"
