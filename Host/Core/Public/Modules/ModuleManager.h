#pragma once

#include "Modules/ModuleInterface.h"

#include <memory>

/** A link in the list of modules that the program was built with; Launch starts and ends them. */
struct FModuleRegistration
{
	using FCreate = std::unique_ptr<IModuleInterface> (*)();

	explicit FModuleRegistration(FCreate InCreate);
	/** The first of the list, null when there is none. */
	static FModuleRegistration* First();

	FCreate Create;
	FModuleRegistration* Next;
};

/** Stands once in a module. */
#define IMPLEMENT_MODULE(ModuleClass, ModuleName) \
	static const FModuleRegistration ModuleName##Registration( \
		[]() -> std::unique_ptr<IModuleInterface> { return std::make_unique<ModuleClass>(); });
