#!/usr/bin/env bash
# Installs the Debian package on a bare Debian of this machine's version, and uses it there as people would. Needs root and
# the mirror that this machine has. All of it stays in build/deb-check.
set -euo pipefail
cd "$(dirname "$0")/.."
[ "$(id -u)" -eq 0 ] || exec sudo "$0" "$@"

# Mounts end with this namespace, whatever happens.
[ "${1:-}" = --inside ] || exec unshare --mount --propagation private "$0" --inside

work=$PWD/build/deb-check
bare=$work/debian

make_bare_debian() {
	local mirror codename
	codename=$(. /etc/os-release && echo "$VERSION_CODENAME")
	mirror=$(apt-get indextargets --format '$(CODENAME) $(REPO_URI)' 'Created-By: Packages' 'Origin: Debian' |
		sed -n "s/^$codename //p" | head -n 1)
	rm -rf --one-file-system "$work"
	mkdir -p "$work"
	debootstrap --variant=minbase "$codename" "$bare" "$mirror" >"$work/debootstrap.log"
	mount -t proc proc "$bare/proc"
	cp --dereference /etc/resolv.conf "$bare/etc/resolv.conf"
	apt-config dump Acquire >"$bare/etc/apt/apt.conf.d/90acquire" # how this machine gets through to its mirror
}

inside() {
	chroot "$bare" env -i PATH=/usr/sbin:/usr/bin:/sbin:/bin HOME=/root LC_ALL=C.UTF-8 DEBIAN_FRONTEND=noninteractive "$@"
}

serve() {
	mkdir "$work/site"
	echo "Hello from outside" >"$work/site/headers" # what the first example asks for
	python3 -u -m http.server 0 --bind 127.0.0.1 --directory "$work/site" >"$work/server.log" 2>&1 &
	server=$!
	trap 'kill "$server"' EXIT
	until port=$(sed -n 's/^Serving HTTP on .* port \([0-9]*\).*/\1/p' "$work/server.log") && [ -n "$port" ]; do
		kill -0 "$server" # ends this script when there is no server
		sleep 0.02
	done
	address=http://127.0.0.1:$port
}

# Fails unless the output of a command holds a text.
expect() {
	local text=$1
	shift
	"$@" >"$work/output" 2>&1 || {
		tail -n 20 "$work/output" >&2
		echo "failed: $*" >&2
		exit 1
	}
	grep -q --fixed-strings -e "$text" "$work/output" || {
		tail -n 20 "$work/output" >&2
		echo "'$text' is not in the output of: $*" >&2
		exit 1
	}
	echo "OK    ${*#inside}"
}

Scripts/package.sh --deb >/dev/null
make_bare_debian
serve
cp build/package/corvane_*.deb "$bare/root/corvane.deb"
expect "Setting up corvane" inside sh -c 'apt-get update -q && apt-get install -y -q --no-install-recommends /root/corvane.deb'
version=$(sed -n 's/.*"VersionName": "\(.*\)".*/\1/p' Corvane.uplugin)
expect "corvane $version" inside corvane --version
expect "Hello from outside" inside corvane call CreateHttpRequestGET "url=$address/headers"
expect "Hello from outside" inside corvane run /usr/share/corvane/examples/01-get.lua "$address"
expect "CorvaneBPLibrary.CreateHttpRequestGET  [" inside corvane nodes
expect " pages in /root/pages" inside corvane nodes --html /root/pages
expect "All examples ran." inside corvane demo
expect "Setting up man-db" inside apt-get install -y -q --no-install-recommends man-db
expect "EXIT STATUS" inside man corvane
expect "corvane (1)" inside apropos corvane
expect "Removing corvane" inside apt-get purge -y -q corvane
left=$(inside find / -xdev -path /proc -prune -o -path /var/cache -prune -o -name '*corvane*' -not -name corvane.deb -print)
[ -z "$left" ] || {
	printf 'left behind:\n%s\n' "$left" >&2
	exit 1
}
echo "The Debian package works."
