#include "Corvane.h"

#include "CorvaneBPLibrary.h"
#include "Modules/ModuleManager.h"

void FCorvaneModule::StartupModule() {}

void FCorvaneModule::ShutdownModule()
{
	if (UCorvaneBPLibrary* Library = UCorvaneBPLibrary::getCorvaneTarget())
	{
		Library->shutDown();
	}
}

IMPLEMENT_MODULE(FCorvaneModule, Corvane)
