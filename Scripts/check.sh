#!/usr/bin/env bash
# Checks what the compiler does not: the format of the sources, which room includes which, unneeded host headers.
set -uo pipefail
cd "$(dirname "$0")/.."
Scripts/setup.sh --check || exit 1

failed=0
check() {
	local name=$1
	shift
	if output=$("$@" 2>&1); then
		echo "OK    $name"
	else
		printf '%s\n' "$output" | head -n 40
		echo "FAIL  $name"
		failed=1
	fi
}

format() {
	git ls-files -z -- '*.h' '*.cpp' ':!Tests/HeaderTool/Golden' | xargs -0 clang-format --dry-run -Werror
}

check "format" format
check "layout" python3 Scripts/check_layout.py
exit $failed
