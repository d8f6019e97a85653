#include "CommandLineCompletion.h"
#include "ProcessRun.h"

#include <gmock/gmock.h>

using Program::completions;
using ::testing::AllOf;
using ::testing::Contains;
using ::testing::ElementsAre;
using ::testing::IsEmpty;
using ::testing::Not;

TEST(Completion, OffersWhatMayStandThere)
{
	EXPECT_THAT(completions("corvane "), AllOf(Contains("run"), Contains("call"), Contains("nodes"), Contains("demo")));
	EXPECT_THAT(completions("corvane ca"), ElementsAre("call"));
	EXPECT_THAT(completions("corvane call --p"), ElementsAre("--project"));
	EXPECT_THAT(completions("corvane nodes --"), AllOf(Contains("--html"), Not(Contains("--project"))));
	EXPECT_THAT(completions("corvane call getcl"), ElementsAre("getCleanDirectory"));
	EXPECT_THAT(completions("corvane call filefunctionscorv.getcl"), ElementsAre("FileFunctionsCorv.getCleanDirectory"));
	EXPECT_THAT(completions("corvane call filef"), ElementsAre("FileFunctionsCorv."));
	EXPECT_THAT(completions("corvane nodes urlEncodeP"), ElementsAre("urlEncodePure"));
	EXPECT_THAT(completions("corvane call --json getCleanDirectory "), ElementsAre("directoryType=", "filePath="));
	EXPECT_THAT(completions("corvane call getCleanDirectory FILEPATH='a b' "), ElementsAre("directoryType="));
	EXPECT_THAT(completions("corvane call getCleanDirectory filePath='a b"), IsEmpty());
	EXPECT_THAT(completions("corvane call getCleanDirectory directoryType="), ElementsAre("directoryType=E_gd", "directoryType=E_ad"));
	EXPECT_THAT(completions("corvane call getCleanDirectory directoryType=e_a"), ElementsAre("directoryType=E_ad"));
	EXPECT_THAT(completions("corvane call CreateHttpRequestGET bindServerSendEvent=t"), ElementsAre("bindServerSendEvent=true"));
	EXPECT_THAT(completions("corvane call CreateHttpRequestGET url=x bind"), ElementsAre("bindServerSendEvent="));
}

TEST(Completion, LeavesFilesAndUnknownWordsToTheShell)
{
	for (const char* line : {"corvane run ", "corvane run script.lua x", "corvane call --project ", "corvane nodes --html d",
			 "corvane call getCleanDirectory x=", "corvane call nope y", "corvane demo x", "corvane nodes fileSize f"})
	{
		EXPECT_THAT(completions(line), IsEmpty()) << line;
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
