#include "Corvane.h"

#include "CorvaneBPLibrary.h"
#include "Misc/CoreDelegates.h"
#include "Modules/ModuleManager.h"
#include "UObject/UObjectBase.h"

void FCorvaneModule::StartupModule()
{
	// At the end of a program the modules go after the objects: too late for requests that still have bytes to write.
	FCoreDelegates::OnPreExit.AddRaw(this, &FCorvaneModule::endRequests);
}

void FCorvaneModule::ShutdownModule()
{
	FCoreDelegates::OnPreExit.RemoveAll(this);
	if (UObjectInitialized())
	{
		endRequests();
	}
}

void FCorvaneModule::endRequests()
{
	for (UCorvaneBPLibrary* Library : UCorvaneBPLibrary::libraries())
	{
		Library->shutDown();
	}
}

IMPLEMENT_MODULE(FCorvaneModule, Corvane)
