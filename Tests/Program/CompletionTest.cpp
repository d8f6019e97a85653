#include "CommandLineCompletion.h"
#include "ProcessRun.h"

#include <gtest/gtest.h>

TEST(Completion, OffersWhatMayStandThere)
{
	using Words = std::vector<std::string>;
	const std::pair<const char*, Words> cases[] = {
		{"", {"run", "call", "get", "put", "follow", "nodes", "demo", "lab", "completion", "help", "--help", "--version"}},
		{"ca", {"call"}},
		{"nodes onhttpfileu", {"onhttpFileUploadDelegate"}},
		{"help c", {"call", "completion"}},
		{"call CreateHttpRequestGET req", {}},
		{"get --h", {"--header", "--hash", "--help"}},
		{"put --f", {"--form", "--field"}},
		{"call --p", {"--progress", "--project"}},
		{"nodes --h", {"--html", "--help"}},
		{"call getcl", {"getCleanDirectory"}},
		{"call filefunctionscorv.getcl", {"FileFunctionsCorv.getCleanDirectory"}},
		{"call filef", {"FileFunctionsCorv."}},
		{"nodes urlEncodeP", {"urlEncodePure"}},
		{"call --json getCleanDirectory ", {"directoryType=", "filePath="}},
		{"call getCleanDirectory FILEPATH='a b' ", {"directoryType="}},
		{"call getCleanDirectory directoryType=", {"directoryType=E_gd", "directoryType=E_ad"}},
		{"call getCleanDirectory directoryType=e_a", {"directoryType=E_ad"}},
		{"call CreateHttpRequestGET bindServerSendEvent=t", {"bindServerSendEvent=true"}},
		{"call CreateHttpRequestGET url=x bind", {"bindServerSendEvent="}},
	};
	for (const auto& [line, offered] : cases)
	{
		EXPECT_EQ(Program::completions(std::string("corvane ") + line), offered) << line;
	}
	for (const char* line : {"run ", "run script.lua x", "call --project ", "nodes --html d", "call getCleanDirectory x=", "call nope y",
			 "demo x", "nodes fileSize f", "call getCleanDirectory filePath='a b"})
	{
		EXPECT_EQ(Program::completions(std::string("corvane ") + line), Words()) << "files and unknown words are the shell's: " << line;
	}
}

TEST(Completion, WorksInTheShell)
{
	const std::string script = R"sh(
		source <("$0" completion)
		complete -p corvane
		COMP_LINE='corvane call getCleanDirectory directoryType=E_ beyond' COMP_POINT=46
		COMP_WORDS=("$0" call getCleanDirectory directoryType = E_ beyond) COMP_CWORD=5
		_corvane
		printf '%s ' "${COMPREPLY[@]}"
	)sh";
	const ProcessRun run = runProcess({"/bin/bash", "-c", script, CORVANE_PROGRAM});
	EXPECT_EQ(run.out, "complete -o default -F _corvane corvane\nE_gd E_ad ");
}
