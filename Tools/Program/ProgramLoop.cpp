#include "AddressFault.h"
#include "Commands.h"
#include "Console.h"
#include "CorvaneBPLibrary.h"
#include "CorvaneTransfer.h"
#include "EndSignals.h"
#include "ExchangeLines.h"
#include "InputError.h"
#include "UnfinishedFiles.h"
#include "ValueTransfer.h"

#include <fmt/format.h>

#include <utility>

namespace Program
{
	namespace
	{
		FGameLoopSettings loopSettings(const Settings& settings)
		{
			FGameLoopSettings own = settings.loop;
			if (settings.verbose)
			{
				own.http.onHead = tellHead;
			}
			return own;
		}
	} // namespace

	ProgramLoop::ProgramLoop(const Settings& settings)
		: FGameLoop(loopSettings(settings))
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

	void ProgramLoop::runToIdle(const std::function<bool()>& abort)
	{
		RunUntilIdle([] { return UCorvaneBPLibrary::hasPendingWork() || UCorvaneTransfer::HasPendingWork(); },
			[&] { return EndSignals::asked() != 0 || std::ferror(stdout) || (abort && abort()); });
	}

	void ProgramLoop::end()
	{
		if (std::exchange(hasEnded, true))
		{
			return;
		}
		const int signal = EndSignals::asked();
		const UnfinishedFiles unfinished;
		if (signal && !unfinished.paths().empty())
		{
			leaveOutOfLog(unfinished.paths());
		}
		Shutdown();
		if (signal)
		{
			complain(fmt::format("corvane: {}{}", EndSignals::inWords(signal), unfinished.inWords()));
		}
	}
} // namespace Program
