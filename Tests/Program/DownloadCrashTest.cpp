#include "Lab/Behaviours/Files.h"
#include "Lab/Origin.h"
#include "ProcessRun.h"
#include "RandomBytes.h"
#include "TempDir.h"
#include "Waiting.h"

#include <gtest/gtest.h>

namespace
{
	constexpr const char* script = R"lua(
		local call = CorvaneBPLibrary.CreateHttpRequestGETLowRamDownload{ url = arg[1], DirectoryType = EHTTPCorvFileUpload.E_ad,
			filePathWithFileName = arg[2], ActionIfFileExists = EHTTPCorvFileDownloadResumeType.E_RESUME, FileSizeStepsInBytes = 9999 }
		CorvaneBPLibrary.executeHttpRequests{ httpRequests = call.httpRequests }
	)lua";
} // namespace

TEST(DownloadCrash, AProgramKilledAtAnyMomentLeavesATruePrefixThatAResumeFinishes)
{
	const TempDir directory;
	const std::string run = directory.write("download.lua", script);
	const std::string content = randomBytes(1000000); // so many steps that none of these moments comes too late
	Lab::Origin server;
	server.at("/", Lab::file(content));
	for (unsigned steps = 1; steps <= 19; steps += 3)
	{
		const auto before = server.requests();
		const std::string file = "file-" + std::to_string(steps);
		RunningProcess program({CORVANE_PROGRAM, "run", run, server.url(), directory.path(file)});
		ASSERT_TRUE(waitFor([&] { return server.requests() > before + steps; }));
		EXPECT_EQ(program.end().status, 128 + 9);
		const std::string left = directory.exists(file) ? directory.read(file) : "";
		EXPECT_TRUE(content.starts_with(left)) << "killed after step " << steps;
		const ProcessRun rest = runProgram({"run", run, server.url(), directory.path(file)});
		EXPECT_EQ(rest.status, 0) << rest.err;
		EXPECT_TRUE(directory.read(file) == content) << "killed after step " << steps;
	}
}
