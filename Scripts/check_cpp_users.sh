#!/usr/bin/env bash
# Builds and runs Examples/CppProject as other people's projects do: with the repository as a part of it, and against an
# installed package that has been moved and knows nothing of where it was built. All of it stays in build/users.
set -euo pipefail
cd "$(dirname "$0")/.."
Scripts/setup.sh --check

root=$PWD
users=$root/build/users
rm -rf "$users/project" "$users/prefix" "$users/moved" "$users/site"
mkdir -p "$users/site"
cp -r Examples/CppProject "$users/project"

serve() {
	head -c 100000 /dev/urandom >"$users/site/random.bin"
	: >"$users/server.log"
	python3 -u -m http.server 0 --bind 127.0.0.1 --directory "$users/site" >"$users/server.log" 2>&1 &
	server=$!
	trap 'kill "$server"' EXIT
	until port=$(sed -n 's/^Serving HTTP on .* port \([0-9]*\).*/\1/p' "$users/server.log") && [ -n "$port" ]; do
		kill -0 "$server" # ends this script when there is no server
		sleep 0.02
	done
	address=http://127.0.0.1:$port
}

expect_answers() {
	"$1" "$address/random.bin" 2>"$users/headers" | cmp - "$users/site/random.bin"
	grep -q '^200$' "$users/headers"
	if "$1" "$address/missing" >/dev/null 2>&1; then
		echo "$1 takes 404 for a success" >&2
		return 1
	fi
}

expect_file() {
	rm -f "$users/fetched.bin"
	"$1" "$address/random.bin" "$users/fetched.bin" | grep -q "$(sha256sum <"$users/site/random.bin" | cut -d ' ' -f 1)"
	cmp "$users/fetched.bin" "$users/site/random.bin"
}

build() {
	cmake -S "$users/project" -B "$users/$1" -G Ninja -D CMAKE_BUILD_TYPE=Debug "${@:2}"
	cmake --build "$users/$1"
	expect_answers "$users/$1/get"
	expect_file "$users/$1/fetch"
}

serve
build subdirectory -D CORVANE_SOURCE="$root" -D CORVANE_INSTALL=ON
cmake --install "$users/subdirectory" --prefix "$users/prefix" >/dev/null
mv "$users/prefix" "$users/moved"
if grep -rIl --fixed-strings "$root" "$users/moved"; then
	echo "The files above know where they were built." >&2
	exit 1
fi
rm -rf "$users/package"
build package -D CMAKE_PREFIX_PATH="$users/moved"
echo "Both ways to use Corvane from C++ work."
