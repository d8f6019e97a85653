// Downloads of the second module, alone and in a queue, and streams that are followed.

#include "Transfers.h"

#include "CorvaneDownloadFile.h"
#include "CorvaneFollowEvents.h"
#include "CorvaneTransferQueue.h"
#include "Listen.h"
#include "Scenarios.h"

#include <algorithm>
#include <memory>

void playTransfer(World& world, const MakeTransfer& make, const std::function<void(const Report& report)>& look)
{
	UCorvaneTransfer* last = nullptr;
	world.play({.start =
					[&]
				{
					const int own = world.begin();
					last = make(
						[&world, look, own](const Report& report)
						{
							world.end(own);
							look(report);
							const bool isAlone = world.starts == 1; // else the other one may have what it needs
							world.expect(!isAlone || report.Outcome != ECorvaneTransferOutcome::Refused, "a good request is refused");
						});
				},
		.cancel = [&last] { last->Cancel(); },
		.pause = [&last](bool isOn) { isOn ? last->Pause() : last->Continue(); }});
}

namespace
{
	UCorvaneTransfer* startDownload(
		const World& world, const std::string& name, const FString& queue, int32 priority, UCorvaneTransfer::FTell tell)
	{
		FCorvaneDownloadOptions options;
		options.Queue = queue;
		options.Priority = priority;
		return UCorvaneDownloadFile::Start(text("http://host/" + name), text(world.folder.path(name)), options, std::move(tell));
	}

	/** @param isAlone  whether nobody else fetches a file of this name. */
	void lookAtOutcome(const World& world, const std::string& name, const Report& report, bool isAlone)
	{
		const bool isThere = report.Outcome != ECorvaneTransferOutcome::Succeeded || world.read(name) == fileContent;
		world.expect(isThere, "a success without the file");
		if (isAlone)
		{
			world.expectClosed(name);
		}
	}

	void lookAtFile(const World& world, const std::string& name)
	{
		world.expect(world.read(name).empty() || world.read(name) == fileContent, "the target is neither old nor new");
		world.expectPrefix(name + ".corvpart");
	}

	void playTransfer(World& world)
	{
		playTransfer(
			world, [&world](UCorvaneTransfer::FTell tell) { return startDownload(world, "file", {}, 0, std::move(tell)); },
			[&world](const Report& report) { lookAtOutcome(world, "file", report, world.starts == 1); });
	}

	void playFollow(World& world)
	{
		UCorvaneFollowEvents* last = nullptr;
		const auto lastEnded = std::make_shared<int>(-1); // outlives this function where the program ends
		world.play({.start =
						[&]
					{
						UCorvaneFollowEvents::FHandlers handlers;
						const int own = world.begin();
						handlers.OnClose = [&world, lastEnded, own](const Report&)
						{
							world.end(own);
							*lastEnded = own;
						};
						handlers.OnEvent = [&world, lastEnded, own](const FString&, const FString&, const FString&)
						{
							world.expect(*lastEnded != own, "an event behind the end");
							world.expect(!world.isPaused, "an event in a pause");
						};
						FCorvaneFollowOptions options;
						options.Attempts = 2;
						last = UCorvaneFollowEvents::Start("http://host/events", options, handlers);
					},
			.cancel = [&last] { last->Cancel(); },
			.pause = [&last](bool isOn) { isOn ? last->Pause() : last->Continue(); }});
	}

	constexpr int perStart = 3;

	std::string queuedName(int number)
	{
		return "queued" + std::to_string(number % perStart);
	}

	/** Several downloads of one queue with one place; the last one is the most urgent. */
	class QueuedDownloads
	{
	public:
		explicit QueuedDownloads(World& inWorld)
			: world(inWorld)
			, queue(UCorvaneTransferQueue::GetTransferQueue("one"))
		{
			queue->SetLimits(1, 1, 0);
			Listen(queue->OnTransferEnd, [told = told](UCorvaneTransfer*, const Report&) { ++*told; });
			world.lasting = 1;
		}

		void start()
		{
			for (int place = 0; place < perStart; ++place)
			{
				const int own = world.begin();
				const auto tell = [&each = world, own](const Report& report)
				{
					each.end(own);
					const bool isAlone = each.starts == perStart;
					lookAtOutcome(each, queuedName(own), report, isAlone);
					each.expect(!isAlone || report.Outcome != ECorvaneTransferOutcome::Refused, "a good request is refused");
				};
				all.push_back(startDownload(world, queuedName(own), "one", place == perStart - 1 ? 5 : 0, tell));
			}
		}

		void cancel()
		{
			const auto taken = static_cast<std::size_t>(Schedule::the().choose("cancels one, or all", perStart + 1));
			taken == perStart ? queue->CancelAll() : all[taken]->Cancel();
		}

		/** All, or the one that runs; that one may also be cancelled meanwhile. */
		void pause(bool isOn)
		{
			isOn ? void(paused = Schedule::the().choose("pauses all, or one", 2)) : void();
			if (paused == 0)
			{
				return isOn ? queue->Pause() : queue->Continue();
			}
			const bool isCancelled = !isOn && Schedule::the().choose("cancels what is paused", 2) == 1;
			isOn ? all[0]->Pause() : isCancelled ? all[0]->Cancel() : all[0]->Continue();
		}

		void expectOrder() const
		{
			const auto firstOf = [&](int number) { return std::ranges::find(world.origin.paths, '/' + queuedName(number)); };
			world.expect(firstOf(0) < firstOf(2) && firstOf(2) < firstOf(1), "the more urgent one did not come first");
		}

		int numTold() const { return *told; }

	private:
		World& world;
		UCorvaneTransferQueue* const queue;
		std::vector<UCorvaneTransfer*> all;
		const std::shared_ptr<int> told = std::make_shared<int>(0);
		int paused = 0;
	};

	void playQueue(World& world)
	{
		const auto queue = std::make_shared<QueuedDownloads>(world);
		const bool letsGo = world.isEnding() || world.disturbance == Disturbance::Unload; // of all at once
		world.origin.mostAtOnce = letsGo ? perStart : 1;
		world.play({.start = [&queue] { queue->start(); },
			.cancel = [&queue] { queue->cancel(); },
			.pause = [&queue](bool isOn) { queue->pause(isOn); },
			.othersGoOn = true});
		if (world.disturbance == Disturbance::None || world.disturbance == Disturbance::NoThread)
		{
			queue->expectOrder();
		}
		world.expect(world.isEnding() || world.mayGiveUp() || queue->numTold() == world.starts, "the queue did not tell of each end");
	}

	void lookAtQueue(const World& world)
	{
		for (int number = 0; number < perStart; ++number)
		{
			lookAtFile(world, queuedName(number));
		}
	}
} // namespace

std::vector<Kind> transferKinds()
{
	return {
		{"transfer", &playTransfer, [](const World& world) { lookAtFile(world, "file"); }, false, OfTransfer},
		{"follow", &playFollow, nullptr, false, OfTransfer},
		{"queue", &playQueue, &lookAtQueue, false, OfTransfer},
	};
}
