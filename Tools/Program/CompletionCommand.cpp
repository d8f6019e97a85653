#include "CommandLineCompletion.h"
#include "Commands.h"

#include <fmt/core.h>

namespace Program
{
	namespace
	{
		/** bash takes words apart at "=" and replaces the last piece only, so what stands before it comes off again. */
		constexpr const char* bashScript = R"bash(_corvane() {
	local line=${COMP_LINE:0:COMP_POINT} words candidate
	mapfile -t words < <("${COMP_WORDS[0]}" completion --line "$line" 2>/dev/null)
	COMPREPLY=()
	for candidate in "${words[@]}"; do
		[[ $candidate == *[=.] ]] && compopt -o nospace
		[[ $candidate == *=* && $candidate != *= && $COMP_WORDBREAKS == *=* ]] && candidate=${candidate#*=}
		COMPREPLY+=("$candidate")
	done
}
complete -o default -F _corvane corvane ./corvane
)bash";
	} // namespace

	int printCompletion()
	{
		fmt::print("{}", bashScript);
		return exitGood;
	}

	int printCandidates(const std::string& line)
	{
		for (const std::string& candidate : completions(line))
		{
			fmt::print("{}\n", candidate);
		}
		return exitGood;
	}
} // namespace Program
