#include "Files/EarlyFlush.h"

#include "Async/Async.h"
#include "GenericPlatform/GenericPlatformFile.h"
#include "HAL/PlatformFileManager.h"
#include "Threads/PooledWait.h"

#include <atomic>

namespace CorvaneEarlyFlush
{
	static constexpr int64 BytesPerFlush = 16 << 20;
} // namespace CorvaneEarlyFlush

/** What the two threads share. A flush that is only queued can be taken back: all threads may be busy with those who wait for it. */
class FCorvaneEarlyFlush::FWork
{
public:
	bool Ask()
	{
		EPhase Expected = EPhase::Idle;
		return Phase.compare_exchange_strong(Expected, EPhase::Asked);
	}

	void Do(const FString& File)
	{
		EPhase Expected = EPhase::Asked;
		if (!Phase.compare_exchange_strong(Expected, EPhase::Running))
		{
			return;
		}
		{
			constexpr bool bWhileItIsWritten = true;
			const TUniquePtr<IFileHandle> Handle(FPlatformFileManager::Get().GetPlatformFile().OpenRead(*File, bWhileItIsWritten));
			if (Handle.IsValid())
			{
				Handle->Flush(true); // what fails here, the flush of whoever writes tells as well
			}
		}
		Phase = EPhase::Idle;
		Done->Trigger();
	}

	void Stop()
	{
		EPhase Expected = EPhase::Asked;
		Phase.compare_exchange_strong(Expected, EPhase::Idle);
		while (Phase == EPhase::Running)
		{
			Done->Wait();
		}
	}

private:
	enum class EPhase : uint8
	{
		Idle,
		Asked,
		Running
	};

	std::atomic<EPhase> Phase{EPhase::Idle};
	FCorvanePooledWait Done;
};

FCorvaneEarlyFlush::FCorvaneEarlyFlush()
	: Work(MakeShared<FWork>())
{
}

FCorvaneEarlyFlush::~FCorvaneEarlyFlush()
{
	Stop();
}

void FCorvaneEarlyFlush::Note(const FString& File, int64 Bytes)
{
	Unflushed += Bytes;
	if (CORVANE_FLUSHES_READ_FILES != 0 && Unflushed >= CorvaneEarlyFlush::BytesPerFlush && Work->Ask())
	{
		Unflushed = 0;
		AsyncTask(ENamedThreads::AnyBackgroundThreadNormalTask, [Shared = Work, File] { Shared->Do(File); });
	}
}

void FCorvaneEarlyFlush::Stop()
{
	Work->Stop();
}
