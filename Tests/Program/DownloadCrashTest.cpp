#include "ProcessRun.h"
#include "RandomBytes.h"
#include "RawServer.h"
#include "TempDir.h"
#include "Waiting.h"

#include <atomic>
#include <gtest/gtest.h>

namespace
{
	constexpr const char* script = R"lua(
		local call = CorvaneBPLibrary.CreateHttpRequestGETLowRamDownload{ url = arg[1], DirectoryType = EHTTPCorvFileUpload.E_ad,
			filePathWithFileName = arg[2], ActionIfFileExists = EHTTPCorvFileDownloadResumeType.E_RESUME, FileSizeStepsInBytes = 9999 }
		CorvaneBPLibrary.executeHttpRequests{ httpRequests = call.httpRequests }
	)lua";

	/** Serves parts of a file, and counts them. */
	RawServer::Script servingParts(const std::string& content, std::atomic<int>& served)
	{
		return [&](Connection& connection)
		{
			for (;;)
			{
				const std::string head = connection.readHead();
				size_t first = 0;
				size_t last = content.size() - 1;
				std::sscanf(head.c_str() + head.find("Range:"), "Range: bytes=%zu-%zu", &first, &last);
				last = std::min(last, content.size() - 1);
				const std::string range = std::to_string(first) + "-" + std::to_string(last) + "/" + std::to_string(content.size());
				connection.send(answer(206, content.substr(first, last + 1 - first), "Content-Range: bytes " + range + "\r\n"));
				++served;
			}
		};
	}
} // namespace

TEST(DownloadCrash, AProgramKilledAtAnyMomentLeavesATruePrefixThatAResumeFinishes)
{
	const TempDir directory;
	const std::string run = directory.write("download.lua", script);
	const std::string content = randomBytes(1000000); // so many steps that none of these moments comes too late
	std::atomic<int> served = 0;
	RawServer server(servingParts(content, served));
	for (int steps = 1; steps <= 19; steps += 3)
	{
		served = 0;
		const std::string file = "file-" + std::to_string(steps);
		RunningProcess program({CORVANE_PROGRAM, "run", run, server.url(), directory.path(file)});
		ASSERT_TRUE(waitFor([&] { return served >= steps; }));
		EXPECT_EQ(program.end().status, 128 + 9);
		const std::string left = directory.exists(file) ? directory.read(file) : "";
		EXPECT_TRUE(content.starts_with(left)) << "killed after step " << steps;
		const ProcessRun rest = runProgram({"run", run, server.url(), directory.path(file)});
		EXPECT_EQ(rest.status, 0) << rest.err;
		EXPECT_TRUE(directory.read(file) == content) << "killed after step " << steps;
	}
}
