#include "CorvaneDownloadFile.h"
#include "CorvaneFollowEvents.h"
#include "CorvaneUploadFile.h"
#include "CorvaneUploadForm.h"
#include "GameLoop.h"
#include "Host/Log.h"
#include "Kit/CorvaneClient.h"
#include "Kit/Options.h"
#include "Kit/ProcessFigures.h"
#include "Kit/RandomFile.h"
#include "Kit/Stamps.h"
#include "Kit/Statistics.h"
#include "Lab/Behaviours/Uploads.h"
#include "Lab/Origin.h"
#include "Misc/CString.h"
#include "NginxServer.h"
#include "UAsyncNodeHttpRequest.h"
#include "Workload.h"

#include <CLI/CLI.hpp>
#include <chrono>
#include <fmt/format.h>
#include <fstream>
#include <stdexcept>
#include <thread>

namespace
{
	constexpr auto absolute = EHTTPCorvFileUpload::E_ad;
	constexpr auto overwrite = EHTTPCorvFileDownloadResumeType::E_OVERWRITE;
	constexpr double longestPatience = 60;
	constexpr int pageBytes = 64 << 10;

	/** Where the transfers go to and come from. Each lasts a second or so: a file of 1 MiB, or a page of 64 KiB. */
	class Origins
	{
	public:
		Origins()
		{
			uploads.at("/late", Lab::upload({.waits = std::chrono::milliseconds(1000)}));
			uploads.at("/events", stamps(20, 40));
			uploads.at("/page", Lab::upload({.bytesPerSecond = pageBytes}));
			std::ofstream(page()) << std::string(pageBytes, 'x');
			uploads.at("*", Lab::upload({.bytesPerSecond = 1 << 20}));
		}

		std::string page() const { return file.folder() + "/page"; }

		const RandomFile file{1};
		const NginxServer downloads{{.root = file.folder(), .serverConfig = "limit_rate 1m; location /page { limit_rate 64k; }"}};
		Lab::Origin uploads;
	};

	/** Keeps one transfer of some kind in each of many places: what ends makes room for the next of its kind. Thread: game thread. */
	class Crowd
	{
	public:
		explicit Crowd(const Origins& inOrigins)
			: origins(inOrigins)
			, completion(library->onhttpRequestCompleteDelegate,
				  [this](void* const* arguments)
				  {
					  const FString& id = *static_cast<const FString*>(arguments[5]);
					  takeEnd(static_cast<int>(FCString::Atoi64(*id)), *static_cast<const int32*>(arguments[3]));
				  })
			, downloadProgress(library->onhttpFileDownloadDelegate, [this](void* const*) { ++told; })
			, uploadProgress(library->onhttpFileUploadDelegate, [this](void* const*) { ++told; })
			, event(library->onhttpServerSendEventDelegate, [this](void* const*) { ++told; })
		{
		}

		void startOne() { startIn(running++); }
		/** What ends from here on is not replaced. */
		void finish() { isOpen = false; }

		bool isEmpty() const { return running == 0; }
		int numEnded() const { return ended; }
		int numTold() const { return told; }
		/** Why the figures mean nothing; empty = they do. */
		const std::string& whyWrong() const { return failure; }

	private:
		using Kind = void (Crowd::*)(int place);

		void startIn(int place)
		{
			constexpr Kind kinds[] = {&Crowd::get, &Crowd::node, &Crowd::post, &Crowd::events, &Crowd::download, &Crowd::stepped,
				&Crowd::putStream, &Crowd::postFile, &Crowd::transfer, &Crowd::uploadForm, &Crowd::uploadFile, &Crowd::follow};
			(this->*kinds[static_cast<std::size_t>(place) % std::size(kinds)])(place);
		}

		void takeEnd(int place, int code)
		{
			if (code / 100 != 2 && failure.empty())
			{
				failure = fmt::format("the transfer in place {} ended with {}", place, code);
			}
			++ended;
			--running;
			if (isOpen)
			{
				++running;
				startIn(place);
			}
		}

		FString fileUrl() const { return FString(origins.downloads.url(std::string("/") + RandomFile::name).c_str()); }
		FString pageUrl() const { return FString(origins.downloads.url("/page").c_str()); }
		FString uploadUrl(const char* path = "") const { return FString((origins.uploads.url() + path).c_str()); }
		FString source() const { return FString(origins.file.path().c_str()); }
		FString target(int place) const { return FString(fmt::format("{}/{}", origins.file.folder(), place).c_str()); }
		static FString idOf(int place) { return FString::Printf(TEXT("%d"), place); }

		/** @param build  calls a builder with where its record and ID go. */
		template <class Build>
		void execute(Build build)
		{
			TArray<FhttpRequest> records;
			FString id;
			build(records, id);
			UCorvaneBPLibrary::executeHttpRequests(records, library);
		}

		void get(int place)
		{
			execute([&](TArray<FhttpRequest>& records, FString& id)
				{ UCorvaneBPLibrary::CreateHttpRequestGET({}, pageUrl(), {}, idOf(place), false, records, id); });
		}
		void node(int place)
		{
			UAsyncNodeHttpRequest* made = UAsyncNodeHttpRequest::AsyncExecuteHTTP_GET_REQUEST(pageUrl(), {}, FString(), false);
			for (FMulticastScriptDelegate* output : {&made->OnSuccess, &made->OnFail})
			{
				output->AddHandler([this, place](void* const* arguments) { takeEnd(place, *static_cast<const int32*>(arguments[3])); });
			}
			made->Activate();
		}
		void post(int place)
		{
			execute(
				[&](TArray<FhttpRequest>& records, FString& id) {
					UCorvaneBPLibrary::CreateHttpRequestPOST(
						{}, uploadUrl("late"), {}, {{"name", "value"}}, idOf(place), false, records, id);
				});
		}
		void events(int place)
		{
			execute([&](TArray<FhttpRequest>& records, FString& id)
				{ UCorvaneBPLibrary::CreateHttpRequestGET({}, uploadUrl("events"), {}, idOf(place), true, records, id); });
		}
		void download(int place)
		{
			execute(
				[&](TArray<FhttpRequest>& records, FString& id) {
					UCorvaneBPLibrary::CreateHttpRequestGETDownload(
						{}, fileUrl(), {}, overwrite, absolute, target(place), idOf(place), records, id);
				});
		}
		void stepped(int place)
		{
			constexpr int32 stepBytes = 128 << 10;
			execute(
				[&](TArray<FhttpRequest>& records, FString& id)
				{
					UCorvaneBPLibrary::CreateHttpRequestGETLowRamDownload(
						{}, fileUrl(), {}, overwrite, absolute, target(place), idOf(place), records, id, stepBytes);
				});
		}
		void putStream(int place)
		{
			execute(
				[&](TArray<FhttpRequest>& records, FString& id)
				{
					UCorvaneBPLibrary::CreateHttpRequestFileUploadPUT(
						{}, uploadUrl(), {}, absolute, source(), "f", EHTTPCorvFileUploadType::PUT_STREAM_BLANK, idOf(place), records, id);
				});
		}
		void postFile(int place)
		{
			execute(
				[&](TArray<FhttpRequest>& records, FString& id)
				{
					UCorvaneBPLibrary::CreateHttpRequestFileUploadPOST(
						{}, uploadUrl("page"), {}, absolute, FString(origins.page().c_str()), "f", {}, idOf(place), records, id);
				});
		}

		UCorvaneTransfer::FTell endOf(int place)
		{
			return [this, place](const FCorvaneTransferReport& report) { takeEnd(place, report.Code); };
		}
		UCorvaneTransfer::FTell progress()
		{
			return [this](const FCorvaneTransferReport&) { ++told; };
		}
		void transfer(int place) { UCorvaneDownloadFile::Start(fileUrl(), target(place), {}, endOf(place), progress()); }
		void uploadForm(int place) { UCorvaneUploadForm::Start(uploadUrl(), {{"f", source(), {}, {}}}, {}, {}, endOf(place), progress()); }
		void uploadFile(int place) { UCorvaneUploadFile::Start(uploadUrl(), source(), {}, endOf(place), progress()); }
		void follow(int place)
		{
			FCorvaneFollowOptions once;
			once.bReconnect = false;
			UCorvaneFollowEvents::FHandlers handlers;
			handlers.OnEvent = [this](const FString&, const FString&, const FString&) { ++told; };
			handlers.OnClose = endOf(place);
			UCorvaneFollowEvents::Start(uploadUrl("events"), once, handlers);
		}

		const Origins& origins;
		UCorvaneBPLibrary* library = UCorvaneBPLibrary::getCorvaneTarget();
		const BoundHandler completion;
		const BoundHandler downloadProgress;
		const BoundHandler uploadProgress;
		const BoundHandler event;
		bool isOpen = true;
		int running = 0;
		int ended = 0;
		int told = 0;
		std::string failure;
	};

	/** A game that has nothing else to do. @return CPU seconds of the game thread in each frame. */
	std::vector<double> playFrames(FGameLoop& loop, double seconds)
	{
		using Clock = std::chrono::steady_clock;
		constexpr std::chrono::microseconds frame(16'667);
		std::vector<double> spent;
		Clock::time_point next = Clock::now();
		for (int left = static_cast<int>(seconds * 60); left > 0; --left)
		{
			const StopWatch watch;
			loop.Tick();
			spent.push_back(watch.threadCpuSeconds());
			next += frame;
			std::this_thread::sleep_until(next);
		}
		return spent;
	}

	Figures figures(const std::vector<double>& frames)
	{
		const auto at = [&frames](double share) { return Statistics::quantile(frames, share) * 1e3; };
		return {{"game thread CPU in a frame, p50", "ms", at(0.5)}, {"game thread CPU in a frame, p99", "ms", at(0.99)},
			{"game thread CPU in a frame, p99.9", "ms", at(0.999)}, {"game thread CPU in a frame, max", "ms", at(1)}};
	}

	class Frames final : public Workload
	{
	public:
		CLI::App* addTo(CLI::App& program) override
		{
			CLI::App* command = program.add_subcommand("frames", "A game's frames while transfers of all kinds run");
			command->add_option("--at-once", atOnce, "Transfers at a time")->capture_default_str()->check(CLI::PositiveNumber);
			command->add_option("--seconds", seconds, "Length of one run, at 60 frames a second")
				->capture_default_str()
				->check(CLI::PositiveNumber);
			addPairs(*command, pairs, "Pairs of runs");
			return command;
		}

		std::vector<Comparison> run() override
		{
			HostLog::SetSink([](const char*, ELogVerbosity::Type, const FString&) {});
			const Origins origins;
			FGameLoop loop(unlimitedConnections());
			Comparison empty(fmt::format("frames: {} transfers of twelve kinds at once, {} s", atOnce, seconds), "nothing runs");
			return {alternate(
				std::move(empty), pairs, WarmUp::None, [&] { return measureCrowd(loop, origins); },
				[&] { return figures(playFrames(loop, seconds)); })};
		}

	private:
		Figures measureCrowd(FGameLoop& loop, const Origins& origins) const
		{
			constexpr double secondsBetweenStarts = 0.05; // or they would end in the same frames, too
			Crowd crowd(origins);
			for (int number = 0; number < atOnce; ++number)
			{
				crowd.startOne();
				playFrames(loop, secondsBetweenStarts);
			}
			const int endedBefore = crowd.numEnded();
			const int toldBefore = crowd.numTold();
			Figures taken = figures(playFrames(loop, seconds));
			taken.push_back({"transfers ended", "a second", (crowd.numEnded() - endedBefore) / seconds});
			taken.push_back({"progress and events told", "a second", (crowd.numTold() - toldBefore) / seconds});
			crowd.finish();
			const bool isOver = loop.WaitFor([&crowd] { return crowd.isEmpty(); }, longestPatience);
			if (!isOver || !crowd.whyWrong().empty())
			{
				throw std::runtime_error(isOver ? crowd.whyWrong() : "transfers do not end");
			}
			return taken;
		}

		int atOnce = 100;
		double seconds = 20;
		int pairs = 3;
	};
} // namespace

std::unique_ptr<Workload> makeFrames()
{
	return std::make_unique<Frames>();
}
