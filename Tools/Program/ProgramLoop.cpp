#include "Commands.h"
#include "CorvaneBPLibrary.h"
#include "InputError.h"
#include "RequestChecks.h"
#include "ValueTransfer.h"

Program::ProgramLoop::ProgramLoop(const Settings& settings)
	: FGameLoop(settings.loop)
{
	if (!settings.driveBase.empty())
	{
		if (const std::string fault = addressFault(settings.driveBase); !fault.empty())
		{
			throw Reflect::InputError("--drive-base: " + fault);
		}
		UCorvaneBPLibrary::setGoogleDriveBase(Reflect::toFString(settings.driveBase));
	}
}
