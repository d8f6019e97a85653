#!/usr/bin/env bash
# Checks what the build and the tests do not: the format of the sources, which room includes which, and, as far as that
# can be seen without the engine, that the engine's build takes the module as it stands.
set -uo pipefail
cd "$(dirname "$0")/.."
Scripts/setup.sh --test --check || exit 1

failed=0
check() {
	local name=$1
	shift
	if output=$("$@" 2>&1); then
		echo "OK    $name"
	else
		printf '%s\n' "$output" | tail -n 40
		echo "FAIL  $name"
		failed=1
	fi
}

format() {
	git ls-files -z -- '*.h' '*.cpp' ':!Tests/HeaderTool/Golden' | xargs -0 clang-format --dry-run -Werror
}

check "format" format
# Always configures: the compilers may have been installed since the last time.
engine_fit() {
	cmake --preset default && cmake --build build/default --target EngineFit
}

package() {
	Scripts/package.sh --check && Scripts/package.sh
}

# What the ordinary run of the tests has no time for.
large_files() {
	cmake --preset default && cmake --build --preset default --target ServersTests && ctest --test-dir build/default -L '^large$' --output-on-failure
}

# The other builds glue sources together, where one may use what another one includes.
each_source() {
	cmake --preset debug && cmake --build --preset debug
}

check "layout" python3 Scripts/check_layout.py
check "guides" python3 Scripts/check_guides.py
check "graphs and pages" Scripts/check_graphs.sh
check "plug-in files" python3 Scripts/check_plugin.py
check "package" package
check "installed command" Scripts/check_install.sh
check "each source by itself" each_source
check "engine fit" engine_fit
check "large files" large_files
check "picture of the dependencies" python3 Scripts/dependencies.py --check
# These two need the module that Debian's own Python finds.
for module in Source/*/; do
	module=$(basename "$module")
	check "engine symbols of $module" /usr/bin/python3 Scripts/engine/check_symbols.py build/default "$module"
done
check "faults in the use of the engine are found" /usr/bin/python3 Tests/EngineFit/faults_test.py build/default
exit $failed
