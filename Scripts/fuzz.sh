#!/usr/bin/env bash
# Builds the fuzz targets and runs them, as many at once as there are cores: first the inputs of Tests/Fuzz/Corpus, then new ones.
# usage: Scripts/fuzz.sh [--runs N] [--seconds N] [--seed N] [TARGET...]   (default: all of them, 5 seconds each)
# With --seed and --runs a round tries the same inputs each time, as long as build/fuzz/Found is empty.
# Inputs that reach something new are kept in build/fuzz/Found, one that fails, and what it showed, in build/fuzz/Findings.
set -euo pipefail
cd "$(dirname "$0")/.."

limit=-max_total_time=5
seed=-seed=0 # 0 = one of its own
targets=()
while [ $# -gt 0 ]; do
	case "$1" in
	--runs) limit=-runs=$2 && shift ;;
	--seconds) limit=-max_total_time=$2 && shift ;;
	--seed) seed=-seed=$2 && shift ;;
	-*) echo "usage: $0 [--runs N] [--seconds N] [--seed N] [TARGET...]" >&2 && exit 2 ;;
	*) targets+=("$1") ;;
	esac
	shift
done
if [ ${#targets[@]} -eq 0 ]; then
	mapfile -t targets < <(basename -s .cpp Tests/Fuzz/*.cpp)
fi

Scripts/setup.sh --check
[ -f build/fuzz/build.ninja ] || cmake --preset fuzz >/dev/null
cmake --build --preset fuzz --target "${targets[@]/#/Fuzz}"

# One target, and one line of what came of it.
fuzz() {
	local target=$1 found=build/fuzz/Found/$1 findings=build/fuzz/Findings/$1 failed=
	local longest=200 # bytes of an input: more of them take their time, and seldom show what fewer do not
	case $target in
	Headers | HeaderText | Json) longest=520 ;; # 32 cookies, a small class, 500 lists in each other
	Addresses | Pages | Requests) longest=300 ;;
	Journals) longest=100 ;; # thirty records, each with its checksum
	esac
	local options=("$2" "$3" "-max_len=$longest" -timeout=60 -rss_limit_mb=2048 -print_final_stats=1 "-artifact_prefix=$findings/")
	[ ! -f "Tests/Fuzz/$target.dict" ] || options+=("-dict=Tests/Fuzz/$target.dict")
	mkdir -p "$found" "$findings"
	# The stack of each allocation would take a fifth of the time: an input that fails shows it when it is run by itself.
	ASAN_OPTIONS=malloc_context_size=1:quarantine_size_mb=2${ASAN_OPTIONS:+:$ASAN_OPTIONS} \
		"build/fuzz/Tests/Fuzz/$target" "${options[@]}" "$found" "Tests/Fuzz/Corpus/$target" >"$findings/log" 2>&1 || failed=1
	awk -v target="$target" -v failed="$failed" -v log_file="$findings/log" '
		$2 == "INITED" || $2 == "DONE" { for (i = 1; i < NF; ++i) if ($i == "cov:") cov[$2] = $(i + 1) }
		/^stat::number_of_executed_units/ { runs = $2 }
		/^stat::average_exec_per_sec/ { speed = $2 }
		/^stat::new_units_added/ { new = $2 }
		/assertion failed|runtime error:|ERROR: (Address|Leak)Sanitizer|ERROR: libFuzzer: (timeout|out)/ { why = why == "" ? $0 : why }
		END {
			printf "%-12s %9d runs %7d/s  coverage %5d, was %5d  %4d new inputs  ", target, runs, speed, cov["DONE"], cov["INITED"], new
			print failed ? "FAILED, see " log_file ": " why : "nothing found"
		}' "$findings/log"
	[ -z "$failed" ]
}
export -f fuzz
printf '%s\0' "${targets[@]}" | xargs -0 -P "$(nproc)" -I{} bash -c 'fuzz "$1" "$2" "$3"' _ {} "$limit" "$seed"
