#include "Run.h"

#include "CorvaneBPLibrary.h"
#include "Host/Objects.h"
#include "Listen.h"

#include <fmt/format.h>
#include <numeric>

namespace fs = std::filesystem;

namespace
{
	constexpr int rounds = 100; // parts of the run, between which nothing runs
	constexpr double patienceSeconds = 180; // for one part
	constexpr std::uint64_t nobody = std::numeric_limits<std::uint64_t>::max(); // the number of an ID that is no request's
	constexpr const char* partFiles[] = {".corvpart", ".corvjournal"};

	FGameLoopSettings loopSettings(const Settings& settings)
	{
		FGameLoopSettings wanted;
		wanted.http.connectionsPerHost = static_cast<int>(settings.inFlight);
		return wanted;
	}
} // namespace

Run::Run(const Settings& inSettings, const SoakOrigin& inOrigin)
	: origin(inOrigin)
	, settings(inSettings)
	, kinds(requestKinds())
	, freeSlots(inSettings.inFlight)
	, next(inSettings.first)
	, loop(loopSettings(inSettings))
{
	std::ranges::move(transferKinds(), std::back_inserter(kinds));
	for (const Kind& kind : kinds)
	{
		const bool isWanted = kind.name.starts_with(settings.kind);
		byWeight.insert(byWeight.end(), static_cast<std::size_t>(isWanted ? kind.weight : 0), &kind);
	}
	std::iota(freeSlots.rbegin(), freeSlots.rend(), 0);
	UCorvaneBPLibrary::getCorvaneTarget()->setUploadGracePeriod(0);
	listenToLibrary();
	objectsBefore = HostObjects::NumObjects();
}

void Run::listenToLibrary()
{
	const auto numberOf = [this](const FString& id)
	{
		const std::string text = utf8(id);
		const std::uint64_t number = text.empty() ? 0 : std::strtoull(text.c_str() + 1, nullptr, 10);
		return text.starts_with('r') ? number : text.starts_with('s') ? inSlot(number) : nobody;
	};
	UCorvaneBPLibrary& library = *UCorvaneBPLibrary::getCorvaneTarget();
	Listen(library.onhttpRequestCompleteDelegate,
		[this, numberOf](
			const FString& body, const TArray<FString>&, const TArray<FString>&, int32 code, const TArray<uint8>& bytes, const FString& id)
		{
			Errand* const errand = find(numberOf(id));
			const bool isText = errand && errand->kind->name.starts_with("post");
			const std::string got = bytesOf(bytes);
			const bool isRight = errand && errand->isRight(got) && (!isText || utf8(body) == got);
			end(numberOf(id), {code < 400, isRight, fmt::format("{} {}", code, utf8(body.Left(40)))});
		});
	Listen(library.onhttpRequestCompleteGoogleInfoDelegate,
		[this, numberOf](const FString& name, int64 size, int32 code, const FString&, const FString& id)
		{
			const Errand* const errand = find(numberOf(id));
			const bool isRight = errand && size == static_cast<int64>(errand->wish.size) && name == TEXT("level.pak");
			end(numberOf(id), {code < 400, isRight, fmt::format("{} {}", code, size)});
		});
	Listen(library.onhttpServerSendEventDelegate,
		[this, numberOf](const FString& piece, const FString& id)
		{
			if (Errand* const errand = find(numberOf(id)))
			{
				errand->heard += utf8(piece);
			}
		});
	Listen(UCorvaneTransferQueue::GetTransferQueue(text("soak"))->OnTransferEnd,
		[this](UCorvaneTransfer*, const FCorvaneTransferReport&) { ++queueEnds; });
}

std::uint64_t Run::inSlot(std::size_t slot) const
{
	const auto found = std::ranges::find_if(errands, [slot](const auto& each) { return each.second->slot == slot; });
	return found == errands.end() ? nobody : found->first;
}

Errand* Run::find(std::uint64_t number)
{
	const auto found = errands.find(number);
	return found == errands.end() ? nullptr : found->second.get();
}

void Run::expect(std::uint64_t number, bool holds, const std::string& what)
{
	constexpr int mostLines = 20;
	if (!holds && ++faultsFound <= mostLines)
	{
		const Errand* const errand = find(number);
		fmt::print("FAULT: request {} ({}, fault {}, disturbance {}): {}\n", number, errand ? errand->kind->name : "over",
			errand ? static_cast<int>(errand->wish.fault) : -1, errand ? static_cast<int>(errand->disturbance) : -1, what);
	}
}

void Run::later(const Errand& errand, double milliseconds, std::function<void(Errand&)> action)
{
	const std::chrono::duration<double, std::milli> wait(milliseconds);
	const auto time = std::chrono::steady_clock::now() + std::chrono::duration_cast<std::chrono::steady_clock::duration>(wait);
	appointments.push_back({time, errand.wish.number, std::move(action)});
}

void Run::keepAppointments()
{
	const auto now = std::chrono::steady_clock::now();
	for (Appointment& each : std::exchange(appointments, {}))
	{
		if (each.time > now)
		{
			appointments.push_back(std::move(each));
		}
		else if (Errand* const errand = find(each.number))
		{
			each.action(*errand);
		}
	}
}

void Run::draw(Errand& errand)
{
	constexpr Fault all[] = {Fault::Drop, Fault::DropInBody, Fault::Busy, Fault::WrongLength, Fault::Stall, Fault::Refused};
	Dice& dice = errand.dice;
	errand.kind = byWeight[dice.below(byWeight.size())];
	errand.topic = errand.kind->topic;
	errand.wish.size = 2 + dice.below(errand.kind->mostBytes);
	errand.wish.fault = dice.hasLuck(settings.faults / 100) ? all[dice.below(std::size(all))] : Fault::None;
	errand.wish.isOnce = errand.kind->isTransfer && errand.wish.fault != Fault::Refused;
	const double share = errand.kind->weight > 10 ? 0.04 : 0.3; // what is rare shall meet everything, too
	const std::vector<Disturbance>& disturbances = errand.kind->disturbances;
	errand.disturbance = dice.hasLuck(share) ? disturbances[dice.below(disturbances.size())] : Disturbance::None;
}

void Run::start(std::uint64_t number)
{
	Errand& errand = *(errands[number] = std::make_unique<Errand>());
	errand.wish.number = number;
	errand.slot = freeSlots.back();
	freeSlots.pop_back();
	errand.dice = Dice(settings.seed * 1'000'003 + number);
	draw(errand);
	errand.due = errand.disturbance == Disturbance::Twin ? 2 : 1;
	++counts[errand.kind->name].starts;
	errand.kind->start(*this, errand);
	if (Errand* const running = find(number)) // what is refused is over
	{
		disturb(*running);
	}
}

void Run::disturb(Errand& errand)
{
	const double soon = errand.dice.hasLuck(0.5) ? 0 : static_cast<double>(errand.dice.below(4000)) / 1000;
	const auto cancel = [](Errand& running)
	{
		running.isCancelled = true;
		running.cancel();
	};
	using enum Disturbance;
	const bool isCancelledTwin = errand.disturbance == Twin && !errand.dice.hasLuck(0.5);
	if (isCancelledTwin || errand.disturbance == Cancel || errand.disturbance == CancelAndAgain)
	{
		soon == 0 ? cancel(errand) : later(errand, soon, cancel);
	}
	else if (errand.disturbance == Pause)
	{
		later(errand, soon,
			[this](Errand& running)
			{
				running.pause();
				later(running, 3, [](Errand& paused) { paused.goOn(); });
			});
	}
}

void Run::end(std::uint64_t number, const Outcome& outcome)
{
	Errand* const errand = find(number);
	if (!errand)
	{
		return expect(number, false, "an outcome that is not due: " + outcome.what);
	}
	judge(*errand, outcome);
	if (--errand->due > 0)
	{
		return;
	}
	if (errand->isCancelled && !outcome.isSuccess && errand->disturbance == Disturbance::CancelAndAgain)
	{
		return startAgain(*errand);
	}
	leave(*errand, outcome.isSuccess);
}

void Run::judge(Errand& errand, const Outcome& outcome)
{
	const Wish& wish = errand.wish;
	const bool isHarmless = wish.fault == Fault::None || wish.fault == Fault::Stall || wish.isOnce;
	const bool mustFail = errand.isRefused || (!errand.isCancelled && !isHarmless);
	const bool mustSucceed = !errand.isCancelled && !mustFail;
	expect(wish.number, outcome.isSuccess ? !mustFail : !mustSucceed, "must not end so: " + outcome.what);
	expect(wish.number, !outcome.isSuccess || outcome.isRight, "not what was wanted: " + outcome.what);
	if (errand.topic != Topic::Download)
	{
		return;
	}
	const bool hasRightBytes = outcome.isSuccess ? errand.isInFile() : errand.content().starts_with(readFile(errand.file));
	expect(wish.number, hasRightBytes, "wrong bytes in the file: " + outcome.what);
	for (const char* ending : partFiles)
	{
		expect(wish.number, !outcome.isSuccess || !fs::exists(errand.file + ending), fmt::format("a success has left {}", ending));
	}
}

void Run::startAgain(Errand& errand)
{
	errand.isAgain = true;
	errand.isCancelled = false;
	errand.disturbance = Disturbance::None;
	errand.wish.fault = Fault::None;
	errand.due = 1;
	errand.heard.clear();
	errand.kind->start(*this, errand);
}

void Run::leave(Errand& errand, bool isSuccess)
{
	Count& count = counts[errand.kind->name];
	++(isSuccess ? count.successes : errand.isCancelled ? count.cancelled : count.failures);
	if (errand.topic == Topic::Download)
	{
		fs::remove(errand.file);
		for (const char* ending : partFiles)
		{
			fs::remove(errand.file + ending);
		}
	}
	freeSlots.push_back(errand.slot);
	errands.erase(errand.wish.number);
}

void Run::makeSource(Errand& errand)
{
	if (!errand.isAgain)
	{
		errand.file = sources.write(std::to_string(errand.wish.number) + ".bin", errand.content());
		sourceFiles.emplace_back(errand.file, errand.wish);
	}
}

bool Run::goOnUntil(std::uint64_t goal)
{
	const auto isDone = [this, goal]
	{
		keepAppointments();
		while (next < goal && errands.size() < settings.inFlight)
		{
			start(next++);
		}
		return next == goal && errands.empty();
	};
	const bool isOver = loop.WaitFor(isDone, patienceSeconds);
	for (const auto& [number, errand] : errands)
	{
		expect(number, false, fmt::format("{} outcomes never came", errand->due));
	}
	return isOver;
}

/** Nothing runs, and what is not held is gone. */
void Run::comeToRest()
{
	loop.RunUntilIdle([] { return UCorvaneBPLibrary::hasPendingWork() || UCorvaneTransfer::HasPendingWork(); });
	const auto isCollected = [this]
	{
		loop.CollectGarbage();
		return HostObjects::NumObjects() <= objectsBefore;
	};
	const bool isClean = loop.WaitFor(isCollected, 10);
	expect(next - 1, isClean,
		fmt::format(
			"{} objects are held, {} more than at the start", HostObjects::NumObjects(), HostObjects::NumObjects() - objectsBefore));
}

void Run::checkFolders()
{
	for (const auto& [file, wish] : std::exchange(sourceFiles, {}))
	{
		expect(wish.number, readFile(file) == wish.content(), "the file that was sent is another one");
		fs::remove(file);
	}
	for (const TempDir* folder : {&targets, &sources})
	{
		for (const auto& entry : fs::directory_iterator(folder->path()))
		{
			expect(next - 1, false, "left behind by one of late: " + entry.path().filename().string());
			fs::remove(entry);
		}
	}
	for (const auto& entry : fs::directory_iterator(journals.path())) // of uploads that were cancelled or failed
	{
		fs::remove(entry);
	}
}

void Run::checkQueue()
{
	const FCorvaneQueueReport report = UCorvaneTransferQueue::GetTransferQueue(text("soak"))->GetReport();
	const bool isRight =
		report.Done + report.Failed == queued && queueEnds == queued && report.Waiting + report.Running + report.Paused == 0;
	expect(next - 1, isRight,
		fmt::format("{} transfers went into the queue, {} ended in it, {} were told", queued, report.Done + report.Failed, queueEnds));
}

bool Run::play()
{
	const auto begin = std::chrono::steady_clock::now();
	for (std::uint64_t round = 1; round <= rounds; ++round)
	{
		if (!goOnUntil(settings.first + settings.requests * round / rounds))
		{
			break;
		}
		comeToRest();
		checkFolders();
		checkQueue();
		samples.push_back(Sample::take(next - settings.first, HostObjects::NumObjects()));
	}
	const std::chrono::duration<double> seconds = std::chrono::steady_clock::now() - begin;
	fmt::print("{} requests in {:.1f} s, seed {}\n", next - settings.first, seconds.count(), settings.seed);
	return printVerdict();
}

bool Run::printVerdict()
{
	constexpr std::uint64_t enoughForAll = 5000;
	for (const Kind& kind : kinds)
	{
		const Count& count = counts[kind.name];
		fmt::print("{:24} {:7} starts, {:7} successes, {:6} failures, {:6} cancelled\n", kind.name, count.starts, count.successes,
			count.failures, count.cancelled);
		const bool mustSucceed = settings.kind.empty() && settings.requests >= enoughForAll;
		expect(settings.first, !mustSucceed || count.successes > 0, "nothing of this kind has succeeded: " + kind.name);
	}
	constexpr double bytesOfRow = 250; // that the library keeps of each ID whose result went to a node: this kind draws a new one each time
	const double rows = bytesOfRow * static_cast<double>(counts["node drive information"].starts);
	for (const std::string& growth : findGrowth(samples, static_cast<int>(settings.inFlight), SoakOrigin::number, rows))
	{
		expect(next - 1, false, growth);
	}
	fmt::print("{}\n", faultsFound == 0 ? "SOUND" : fmt::format("{} FAULTS", faultsFound));
	return faultsFound == 0;
}
