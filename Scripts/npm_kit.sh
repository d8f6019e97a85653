#!/usr/bin/env bash
# Installs the packages of a package-lock.json into a folder, unless they are there already.
# usage: Scripts/npm_kit.sh FOLDER_OF_THE_LOCK FOLDER
set -euo pipefail
cd "$(dirname "$0")/.."

cmp --quiet "$1/package-lock.json" "$2/package-lock.json" && exit 0
mkdir -p "$2"
cp "$1"/package*.json "$2"
if ! npm ci --prefix "$2" --omit=optional --ignore-scripts --no-audit --no-fund --loglevel=error >/dev/null; then
	rm "$2/package-lock.json" # it is what tells that they are there
	exit 1
fi
