#include "Lab/Behaviours/Faults.h"
#include "Lab/Origin.h"
#include "ProcessRun.h"
#include "TempDir.h"
#include "Waiting.h"

#include <gtest/gtest.h>

namespace
{
	const std::string uploadScript = R"lua(
		local call = CorvaneBPLibrary.CreateHttpRequestFileUploadPUT{ url = arg[1], directoryType = EHTTPCorvFileUpload.E_ad,
			filePath = arg[2], fileID = "f", uploadType = EHTTPCorvFileUploadType.PUT_STREAM_MP }
		CorvaneBPLibrary.executeHttpRequests{ httpRequests = call.httpRequests }
	)lua";

	const char* const repair = R"lua(
		local file = { directoryType = EHTTPCorvFileUpload.E_ad, filePath = arg[1] }
		local search = CorvaneBPLibrary.searchUploadLeftovers(file)
		print(search.found, search.originalFileSize)
		print(CorvaneBPLibrary.repairFileAfterUpload(file).ReturnValue)
		print(CorvaneBPLibrary.searchUploadLeftovers(file).found)
	)lua";
} // namespace

/** A program that ends while it uploads a file which it has made longer. */
TEST(UploadCrash, LeavesATailThatTheNextStartCutsOffUnlessTheProgramEndsInOrder)
{
	const TempDir directory;
	const std::string content(100000, 'x');
	const std::string file = directory.write("save.dat", content);
	Lab::Origin silent;
	silent.at("/", Lab::stall());

	RunningProcess program({CORVANE_PROGRAM, "run", directory.write("upload.lua", uploadScript), silent.url(), file});
	ASSERT_TRUE(waitFor([&] { return silent.requests() == 1; }));
	EXPECT_EQ(program.end().status, 128 + 9);
	EXPECT_EQ(directory.read("save.dat"), content + "\r\n------UE4CorvanePlugin_100000--\r\n");

	const ProcessRun next = runProgram({"run", directory.write("repair.lua", repair), file});
	EXPECT_EQ(next.status, 0) << next.err;
	EXPECT_EQ(next.out, "true\t100000\nfalse\nfalse\n");
	EXPECT_EQ(next.err, "LogTemp: Display: UCorvaneBPLibrary: truncate okay: " + file + "\n");
	EXPECT_EQ(directory.read("save.dat"), content);

	const ProcessRun orderly = runProgram({"run", directory.write("exit.lua", uploadScript + "os.exit(7)"), silent.url(), file});
	EXPECT_EQ(orderly.status, 7) << orderly.err;
	EXPECT_EQ(directory.read("save.dat"), content);
}
