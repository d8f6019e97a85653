#include "CorvaneTransfers.h"

#include "HttpModule.h"
#include "Misc/CoreDelegates.h"
#include "Modules/ModuleManager.h"
#include "Queue/Queues.h"
#include "RunningTransfers.h"
#include "UObject/UObjectBase.h"

void FCorvaneTransfersModule::StartupModule()
{
	FHttpModule::Get(); // downloads ask for it on other threads, which must not be the first
	// At the end of a program the modules go after the objects: too late for transfers that still have bytes to write.
	FCoreDelegates::OnPreExit.AddRaw(this, &FCorvaneTransfersModule::EndTransfers);
}

void FCorvaneTransfersModule::ShutdownModule()
{
	FCoreDelegates::OnPreExit.RemoveAll(this);
	if (UObjectInitialized())
	{
		EndTransfers();
	}
}

void FCorvaneTransfersModule::EndTransfers()
{
	CorvaneQueues::LetGoOfAll();
	CorvaneRunningTransfers::EndAll();
	CorvaneQueues::Clear();
}

IMPLEMENT_MODULE(FCorvaneTransfersModule, CorvaneTransfers)
