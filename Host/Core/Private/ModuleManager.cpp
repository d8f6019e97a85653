#include "Modules/ModuleManager.h"

namespace
{
	FModuleRegistration* firstModule = nullptr;
}

FModuleRegistration::FModuleRegistration(FCreate InCreate)
	: Create(InCreate)
	, Next(firstModule)
{
	firstModule = this;
}

FModuleRegistration* FModuleRegistration::First()
{
	return firstModule;
}
