#include "Scenarios.h"

#include "CorvaneDownloadFile.h"
#include "CorvaneFollowEvents.h"
#include "Host/Objects.h"
#include "HostThreads.h"
#include "Listen.h"
#include "Schedule.h"
#include "ScriptedHttp.h"
#include "UAsyncNodeHttpRequest.h"

#include <algorithm>
#include <memory>

namespace Orders
{
	namespace
	{
		constexpr const char* id = "one";
		constexpr auto absolute = EHTTPCorvFileUpload::E_ad;

		/** Ranges, a validator, pieces of four bytes; how it ends is open. */
		Answer serve(const std::string& path, const std::string& range, bool mayBeSilent)
		{
			Answer answer;
			if (path == "/events")
			{
				if (requestsTaken() > 2)
				{
					answer.code = 204;
					return answer;
				}
				answer.headers = {{"Content-Type", "text/event-stream"}};
				answer.blocks = {"id: 1\ndata: a\n\n", "data: b\n", "\n"};
			}
			else
			{
				const std::size_t from = range.empty() ? 0 : std::stoul(range.substr(6));
				const std::size_t dash = range.find('-');
				const bool hasEnd = !range.empty() && dash + 1 < range.size();
				const std::size_t until = hasEnd ? std::min(content.size(), std::stoul(range.substr(dash + 1)) + 1) : content.size();
				if (from >= content.size())
				{
					answer.code = 416;
					return answer;
				}
				answer.code = range.empty() ? 200 : 206;
				answer.headers = {{"ETag", "\"one\""}, {"Content-Length", std::to_string(until - from)}};
				if (!range.empty())
				{
					answer.headers.emplace_back("Content-Range",
						"bytes " + std::to_string(from) + '-' + std::to_string(until - 1) + '/' + std::to_string(content.size()));
				}
				for (std::size_t at = from; at < until; at += 4)
				{
					answer.blocks.push_back(content.substr(at, std::min<std::size_t>(4, until - at)));
				}
			}
			using End = Answer::End;
			answer.end = requestsTaken() > 2 ? End::Whole
											 : static_cast<End>(Schedule::the().choose("the server's answer ends", mayBeSilent ? 4 : 3));
			if (answer.end == End::Dropped)
			{
				answer.blocks.pop_back();
			}
			return answer;
		}

		void require(const World& world)
		{
			world.expect(world.outcomes <= world.starts, "more outcomes than starts");
		}

		/** Starts, disturbs, and waits for the outcomes. */
		void drive(World& world, const std::function<void()>& start, const std::function<void()>& cancel)
		{
			start();
			switch (world.disturbance)
			{
			case Disturbance::Cancel:
				world.letPass();
				cancel();
				break;
			case Disturbance::CancelAndAgain:
				world.letPass();
				cancel();
				world.letPass();
				start();
				break;
			case Disturbance::EndOfProgram:
				if (Schedule::the().choose("starts another one", 2) == 1)
				{
					world.letPass();
					start();
				}
				world.letPass();
				return;
			default:
				break;
			}
			world.until([&] { return world.outcomes >= world.starts; });
			world.until([] { return !UCorvaneBPLibrary::hasPendingWork() && !UCorvaneTransfer::HasPendingWork(); });
			require(world);
		}

		void execute(World& world, TArray<FhttpRequest> records)
		{
			UCorvaneBPLibrary* target = nullptr;
			++world.starts;
			UCorvaneBPLibrary::executeHttpRequests(std::move(records), target);
		}

		/** A request of the library; a start under an ID that still runs is another request of the same ID. */
		void playRequest(World& world, const std::function<TArray<FhttpRequest>()>& build)
		{
			const auto records = std::make_shared<TArray<FhttpRequest>>();
			Listen(world.library().onhttpRequestCompleteDelegate,
				[&world, records](
					const FString&, const TArray<FString>&, const TArray<FString>&, int32, const TArray<uint8>&, const FString&)
				{
					++world.outcomes;
					if (world.disturbance == Disturbance::AgainInHandler && world.outcomes == 1)
					{
						execute(world, std::exchange(*records, {})); // nothing but the request holds itself now
					}
				});
			drive(
				world,
				[&]
				{
					*records = build();
					execute(world, *records);
				},
				[] { UCorvaneBPLibrary::cancelRequest(id); });
			records->Empty();
		}

		void playGet(World& world, const char* path, bool isStream)
		{
			playRequest(world,
				[path, isStream]
				{
					TArray<FhttpRequest> records;
					FString name;
					UCorvaneBPLibrary::CreateHttpRequestGET({}, text(std::string("http://host") + path), {}, id, isStream, records, name);
					return records;
				});
		}

		void playPlain(World& world)
		{
			playGet(world, "/file", false);
		}

		void playEvents(World& world)
		{
			playGet(world, "/events", true);
		}

		void expectPrefix(const World& world, const char* name)
		{
			const std::string bytes = world.read(name);
			world.expect(content.substr(0, bytes.size()) == bytes, std::string("the file is no beginning of what was sent: ") + bytes);
		}

		template <bool isStepped>
		void playDownload(World& world)
		{
			constexpr auto resume = EHTTPCorvFileDownloadResumeType::E_RESUME;
			const FString path = text(world.folder.path("file"));
			playRequest(world,
				[&path]
				{
					TArray<FhttpRequest> records;
					FString name;
					isStepped ? UCorvaneBPLibrary::CreateHttpRequestGETLowRamDownload(
									{}, "http://host/file", {}, resume, absolute, path, id, records, name, 5)
							  : UCorvaneBPLibrary::CreateHttpRequestGETDownload(
									{}, "http://host/file", {}, resume, absolute, path, id, records, name);
					return records;
				});
		}

		void lookAtDownload(const World& world)
		{
			expectPrefix(world, "file");
		}

		std::string uploadName(int number)
		{
			return "upload" + std::to_string(number);
		}

		/** Each start with a file of its own: while one is on its way, and until it is repaired, it is blocked. */
		void playUpload(World& world)
		{
			playRequest(world,
				[&world]
				{
					const std::string path = world.folder.write(uploadName(world.starts), content);
					TArray<FhttpRequest> records;
					FString name;
					UCorvaneBPLibrary::CreateHttpRequestFileUploadPUT({}, "http://host/put", {}, absolute, text(path), "field",
						EHTTPCorvFileUploadType::PUT_STREAM_MP, id, records, name);
					return records;
				});
		}

		void playUploads(World& world)
		{
			playUpload(world);
			for (int number = 0; world.disturbance != Disturbance::EndOfProgram && number < world.starts; ++number)
			{
				world.expect(!world.library().isFileBlocked(text(world.folder.path(uploadName(number)))), "a file stays blocked");
			}
		}

		void lookAtUpload(const World& world)
		{
			for (int number = 0; world.folder.exists(uploadName(number)); ++number)
			{
				const std::string bytes = world.read(uploadName(number).c_str());
				world.expect(bytes == content, "the file is not what it was: " + bytes);
			}
		}

		void playNode(World& world)
		{
			TStrongObjectPtr<UAsyncNodeHttpRequest> graph;
			drive(
				world,
				[&]
				{
					++world.starts;
					UAsyncNodeHttpRequest* const node =
						UAsyncNodeHttpRequest::AsyncExecuteHTTP_GET_REQUEST("http://host/file", {}, id, false);
					for (FMulticastScriptDelegate* output : {&node->OnSuccess, &node->OnFail})
					{
						output->AddHandler([&world](void* const*) { ++world.outcomes; });
					}
					graph = TStrongObjectPtr<UAsyncNodeHttpRequest>(world.disturbance == Disturbance::GraphGone ? nullptr : node);
					node->Activate();
					if (world.disturbance == Disturbance::GraphGone)
					{
						world.loop.CollectGarbage();
					}
				},
				[] { UCorvaneBPLibrary::cancelRequest(id); });
		}

		void pauseAndContinue(World& world, auto* transfer)
		{
			if (world.disturbance == Disturbance::Pause)
			{
				world.letPass();
				transfer->Pause();
				world.isPaused = true;
				world.letPass();
				world.isPaused = false;
				transfer->Continue();
			}
		}

		void playTransfer(World& world)
		{
			UCorvaneDownloadFile* last = nullptr;
			drive(
				world,
				[&]
				{
					++world.starts;
					last = UCorvaneDownloadFile::Start("http://host/file", text(world.folder.path("file")), {},
						[&world](const FCorvaneTransferReport& report)
						{
							++world.outcomes;
							const bool isThere = report.Outcome != ECorvaneTransferOutcome::Succeeded || world.read("file") == content;
							world.expect(isThere, "a success without the file");
							const bool isSecond = world.starts > 1; // while the first may still have the target
							world.expect(isSecond || report.Outcome != ECorvaneTransferOutcome::Refused, "a good request is refused");
						});
					pauseAndContinue(world, last);
				},
				[&last] { last->Cancel(); });
		}

		void lookAtTransfer(const World& world)
		{
			world.expect(world.read("file").empty() || world.read("file") == content, "the target is neither old nor new");
			expectPrefix(world, "file.corvpart");
		}

		void playFollow(World& world)
		{
			UCorvaneFollowEvents* last = nullptr;
			const auto lastEnded = std::make_shared<int>(0); // outlives this function where the program ends
			drive(
				world,
				[&]
				{
					++world.starts;
					UCorvaneFollowEvents::FHandlers handlers;
					const int own = world.starts;
					handlers.OnClose = [&world, lastEnded, own](const FCorvaneTransferReport&)
					{
						++world.outcomes;
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
					pauseAndContinue(world, last);
				},
				[&last] { last->Cancel(); });
		}

		struct Kind
		{
			const char* name;
			void (*play)(World& world);
			void (*look)(const World& world);
			bool isSmall;
			bool isNode;
			bool isTransfer;
		};

		constexpr Kind kinds[] = {
			{"get", &playPlain, nullptr, true, false, false},
			{"events", &playEvents, nullptr, true, false, false},
			{"download", &playDownload<false>, &lookAtDownload, true, false, false},
			{"stepped", &playDownload<true>, &lookAtDownload, false, false, false},
			{"upload", &playUploads, &lookAtUpload, true, false, false},
			{"node", &playNode, nullptr, true, true, false},
			{"transfer", &playTransfer, &lookAtTransfer, false, false, true},
			{"follow", &playFollow, nullptr, false, false, true},
		};

		constexpr std::pair<Disturbance, const char*> disturbances[] = {
			{Disturbance::None, "alone"},
			{Disturbance::Cancel, "cancel"},
			{Disturbance::CancelAndAgain, "cancel-and-again"},
			{Disturbance::Collection, "collection"},
			{Disturbance::GraphGone, "graph-gone"},
			{Disturbance::NoThread, "no-thread"},
			{Disturbance::Pause, "pause"},
			{Disturbance::EndOfProgram, "end-of-program"},
			{Disturbance::AgainInHandler, "again-in-handler"},
		};

		bool fits(const Kind& kind, Disturbance disturbance)
		{
			return (disturbance != Disturbance::GraphGone || kind.isNode) && (disturbance != Disturbance::Pause || kind.isTransfer) &&
				   (disturbance != Disturbance::NoThread || !kind.isTransfer) &&
				   (disturbance != Disturbance::AgainInHandler || (!kind.isTransfer && !kind.isNode));
		}

		const TempDir& folder()
		{
			static const TempDir& folder = *new TempDir(std::filesystem::exists("/dev/shm") ? "/dev/shm" : "/tmp");
			return folder;
		}

		/** Of a program that has work left no object is; of one that has ended nothing is. */
		void expectNoObjectLeft(World& world, std::size_t objectsBefore)
		{
			if (world.disturbance != Disturbance::EndOfProgram)
			{
				world.until(
					[&]
					{
						world.loop.CollectGarbage(); // a callback that is just leaving may hold one for a moment
						return HostObjects::NumObjects() <= objectsBefore;
					});
			}
		}
	} // namespace

	const std::vector<Scenario>& scenarios()
	{
		static const std::vector<Scenario> all = []
		{
			std::vector<Scenario> made;
			for (const Kind& kind : kinds)
			{
				for (const auto& [disturbance, name] : disturbances)
				{
					if (fits(kind, disturbance))
					{
						made.push_back({std::string(kind.name) + '/' + name, disturbance, kind.play, kind.look, kind.isSmall});
					}
				}
			}
			return made;
		}();
		return all;
	}

	std::size_t playOnce(const Scenario& scenario, Chooser& chooser)
	{
		Schedule& schedule = Schedule::the();
		for (const auto& entry : std::filesystem::directory_iterator(folder().path()))
		{
			std::filesystem::remove_all(entry.path());
		}
		schedule.title = scenario.name;
		schedule.begin(chooser);
		const bool isCancelled = scenario.disturbance == Disturbance::Cancel;
		serveWith([isCancelled](const std::string&, const std::string& path, const std::string& range)
			{ return serve(path, range, isCancelled); });
		HostThreads::MayRefuse(scenario.disturbance == Disturbance::NoThread);
		{
			World world(folder(), scenario.disturbance);
			world.loop.CollectGarbage();
			const std::size_t objects = HostObjects::NumObjects();
			scenario.play(world);
			expectNoObjectLeft(world, objects);
			world.loop.Shutdown();
			require(world);
			world.expect(HostEvents::NumTaken() == 0, "events of the pool are not given back");
			if (scenario.look)
			{
				scenario.look(world);
			}
		}
		return schedule.end();
	}
} // namespace Orders
