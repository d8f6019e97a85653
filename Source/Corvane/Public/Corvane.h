#pragma once

#include "CoreMinimal.h"
#include "Modules/ModuleInterface.h"

#include "Corvane.generated.h"

// Which lock guards a member, and which one a function wants held: for Clang, where the checks of the project ask for it,
// and nothing anywhere else.
#ifdef CORVANE_CHECK_LOCKS
	#define CORVANE_GUARDED_BY(lock) __attribute__((guarded_by(lock)))
	#define CORVANE_REQUIRES(lock) __attribute__((requires_capability(lock)))
#else
	#define CORVANE_GUARDED_BY(lock)
	#define CORVANE_REQUIRES(lock)
#endif

/** What the path of an upload, a download or a MIME lookup is relative to. Scripts save the numbers. */
UENUM(BlueprintType)
enum class EHTTPCorvFileUpload : uint8
{
	/** The path goes after the directory of the project. */
	E_gd = 0 UMETA(DisplayName = "Game directory"),
	/** The path as given; a relative one starts at the base directory of the engine. */
	E_ad = 1 UMETA(DisplayName = "Absolute directory")
};

/** The module: it ends running requests in order when the program ends or the module is unloaded. */
class FCorvaneModule : public IModuleInterface
{
public:
	virtual void StartupModule() override;
	/** Does what the end of the program does, if objects still exist. Thread: game thread. */
	virtual void ShutdownModule() override;

private:
	/** Refuses new requests, cancels the running ones and waits up to 5 seconds until each has dealt with its bytes. */
	void endRequests();
};
