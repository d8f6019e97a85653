#include "Commands.h"
#include "Containers/StringConv.h"
#include "CorvaneBPLibrary.h"

Program::ProgramLoop::ProgramLoop(const Settings& settings)
	: FGameLoop(settings.loop)
{
	if (!settings.driveBase.empty())
	{
		const FUTF8ToTCHAR base(settings.driveBase.data(), static_cast<int32>(settings.driveBase.size()));
		UCorvaneBPLibrary::setGoogleDriveBase(FString::ConstructFromPtrSize(base.Get(), base.Length()));
	}
}
