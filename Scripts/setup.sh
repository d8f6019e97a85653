#!/usr/bin/env bash
# Installs the Debian packages that the build needs and that are not there yet.
# --test adds the servers of other makers that the tests speak to (those for Node go to build/servers), --check the packages of
# the checks, --bench those of the peers in the benchmarks.
set -euo pipefail

packages=(
	g++ cmake ninja-build pkg-config git python3
	libcurl4-openssl-dev libssl-dev libfmt-dev libcli11-dev nlohmann-json3-dev liblua5.4-dev libcpp-httplib-dev libmd4c-html0-dev libmd4c-dev
	libhttp-parser-dev libmimalloc-dev zlib1g-dev
	libgtest-dev libgmock-dev ca-certificates
)
servers=
for option in "$@"; do
	case "$option" in
	--test)
		servers=build/servers
		packages+=(nginx-light python3-werkzeug python3-aiohttp php-cli)
		;;
	--check)
		packages+=(clang libclang-rt-dev llvm clang-format python3-clang g++-mingw-w64-x86-64-posix dpkg-dev file man-db groff-base debootstrap chromium)
		;;
	--bench) packages+=(nginx-light curl wget aria2) ;;
	*)
		echo "usage: $0 [--test] [--check] [--bench]" >&2
		exit 2
		;;
	esac
	[ "$option" = --bench ] || command -v npm >/dev/null || packages+=(nodejs npm) # another source of them may be in use
done

missing=()
for package in "${packages[@]}"; do
	status=$(dpkg-query -W -f='${Status}' "$package" 2>/dev/null || true)
	[ "$status" = "install ok installed" ] || missing+=("$package")
done
if [ ${#missing[@]} -gt 0 ]; then
	as_root=()
	[ "$(id -u)" -eq 0 ] || as_root=(sudo)
	echo "Installing: ${missing[*]}" >&2
	export DEBIAN_FRONTEND=noninteractive
	"${as_root[@]}" apt-get update -qq >&2
	"${as_root[@]}" apt-get install -y -qq --no-install-recommends "${missing[@]}" >&2
fi
[ -z "$servers" ] || "$(dirname "$0")/npm_kit.sh" Tests/Servers "$servers"
