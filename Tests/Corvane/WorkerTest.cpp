#include "CorvaneRequestCompleteObject.h"
#include "Host/Log.h"
#include "Lab/Plans/Gate.h"
#include "ModuleFixture.h"
#include "Runs/CorvThread.h"
#include "Runs/Run.h"
#include "UObject/UObjectGlobals.h"

#include <gmock/gmock.h>

using Worker = ModuleFixture;

TEST_F(Worker, ProgressThatFindsOtherWaitingTakesItsPlace)
{
	// Without a library each job is a line in the log, where the worker can be held.
	UCorvaneRequestCompleteObject* object = NewObject<UCorvaneRequestCompleteObject>();
	object->AddToRoot();
	Lab::Gate reached, goOn;
	std::vector<std::string> lines; // of the worker, read after its end
	HostLog::SetSink(
		[&](const char*, ELogVerbosity::Type, const FString& line)
		{
			lines.push_back(utf8(line));
			reached.open();
			goOn.wait();
			if (lines.size() == 3)
			{
				object->setRequestID("id", FhttpRequest(), UCorvaneBPLibrary::getCorvaneTarget()); // which hears of the end
			}
		});
	{
		FCorvThread worker(object, 0);
		worker.addJob(MakeUnique<FCorvTheadJob>(FCorvTheadJob{ECorvJobType::ProgressDownload, nullptr, nullptr, false, 0, 1}));
		EXPECT_TRUE(waitFor([&] { return reached.isOpen(); }));
		worker.addJob(MakeUnique<FCorvTheadJob>(FCorvTheadJob{ECorvJobType::Complete, nullptr, nullptr, false, 0, 0}));
		for (uint64 bytes = 2; bytes < 1000; ++bytes)
		{
			worker.addJob(MakeUnique<FCorvTheadJob>(FCorvTheadJob{ECorvJobType::ProgressDownload, nullptr, nullptr, false, 0, bytes}));
		}
		goOn.open();
		EXPECT_TRUE(waitFor([&] { return worker.hasEnded(); }));
	}
	HostLog::SetSink({});
	const auto missing = [](const char* place) { return testing::EndsWith(std::string("Missing Object instance (") + place + ")."); };
	EXPECT_THAT(lines, testing::ElementsAre(missing("83"), missing("12"), missing("83"))) << "one under way, the completion, one behind it";
	object->RemoveFromRoot();
}

TEST_F(Worker, ThatWaitsForJobsDoesNotKeepItsObjectFromBeingDestroyed)
{
	TArray<FhttpRequest> requests = get("http://127.0.0.1:1/");
	UCorvaneRequestCompleteObject& object = *requests[0].requestCompleteObject();
	ASSERT_TRUE(object.initCorv());
	object.run().collectEvents();
	char bytes[] = "data: 1";
	int64 number = 7;
	object.takeEventBytes(bytes, number);
	loop.WaitFor([&] { return serverSendEvents.size() == 1; }, 30); // so the worker has nothing left to do
	object.ConditionalBeginDestroy();
	EXPECT_FALSE(UCorvaneBPLibrary::hasPendingWork());
}
