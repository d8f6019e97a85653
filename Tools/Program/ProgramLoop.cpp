#include "Commands.h"
#include "CorvaneBPLibrary.h"
#include "ValueTransfer.h"

Program::ProgramLoop::ProgramLoop(const Settings& settings)
	: FGameLoop(settings.loop)
{
	if (!settings.driveBase.empty())
	{
		UCorvaneBPLibrary::setGoogleDriveBase(Reflect::toFString(settings.driveBase));
	}
}
