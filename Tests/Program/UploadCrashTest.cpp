#include "ProcessRun.h"
#include "RawServer.h"
#include "TempDir.h"
#include "Waiting.h"

#include <filesystem>
#include <gtest/gtest.h>

namespace
{
	/** A program that ends while it uploads a file which it has made longer. */
	class UploadCrash : public ::testing::Test
	{
	protected:
		/** @return a script that starts the upload and then does something else. */
		std::string uploading(const std::string& rest) const
		{
			return directory.write("upload.lua", R"lua(
				local call = CorvaneBPLibrary.CreateHttpRequestFileUploadPUT{ url = arg[1], directoryType = EHTTPCorvFileUpload.E_ad,
					filePath = arg[2], fileID = "f", uploadType = EHTTPCorvFileUploadType.PUT_STREAM_MP }
				CorvaneBPLibrary.executeHttpRequests{ httpRequests = call.httpRequests }
			)lua" + rest);
		}

		const TempDir directory;
		const std::string content = std::string(100000, 'x');
		const std::string file = directory.write("save.dat", content);
		Gate never;
		RawServer silent{[this](Connection& connection)
			{
				connection.readHead();
				connection.waitFor(never);
			}};
	};
} // namespace

TEST_F(UploadCrash, AKilledProgramLeavesATailThatTheNextStartCutsOff)
{
	{
		RunningProgram program({"run", uploading(""), silent.url(), file});
		ASSERT_TRUE(waitFor([this] { return silent.requests().size() == 1; }));
		program.kill();
	}
	EXPECT_EQ(directory.read("save.dat"), content + "\r\n------UE4CorvanePlugin_100000--\r\n");

	const std::string repair = directory.write("repair.lua", R"lua(
		local file = { directoryType = EHTTPCorvFileUpload.E_ad, filePath = arg[1] }
		local search = CorvaneBPLibrary.searchUploadLeftovers(file)
		print(search.found, search.originalFileSize)
		print(CorvaneBPLibrary.repairFileAfterUpload(file).ReturnValue)
		print(CorvaneBPLibrary.searchUploadLeftovers(file).found)
	)lua");
	const ProcessRun next = runProgram({"run", repair, file});
	EXPECT_EQ(next.status, 0) << next.err;
	EXPECT_EQ(next.out, "true\t100000\nfalse\nfalse\n");
	EXPECT_EQ(next.err, "LogTemp: Display: UCorvaneBPLibrary: truncate okay: " + file + "\n");
	EXPECT_EQ(directory.read("save.dat"), content);
}

TEST_F(UploadCrash, AProgramThatEndsInOrderRepairsItsFileFirst)
{
	const ProcessRun run = runProgram({"run", uploading("os.exit(7)"), silent.url(), file});
	EXPECT_EQ(run.status, 7) << run.err;
	EXPECT_EQ(directory.read("save.dat"), content);
}
