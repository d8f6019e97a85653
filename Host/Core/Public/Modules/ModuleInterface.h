#pragma once

/** What a module does when it is loaded and unloaded. Thread: game thread. */
class IModuleInterface
{
public:
	virtual ~IModuleInterface() = default;
	/** Called after the class default objects were made. */
	virtual void StartupModule() {}
	/** Called before objects are purged at the end of the program. */
	virtual void ShutdownModule() {}
};
