#include "Lab/Behaviours/Uploads.h"
#include "CorvaneUploadFile.h"
#include "CorvaneUploadForm.h"
#include "GameLoop.h"
#include "Host/Log.h"
#include "Kit/Command.h"
#include "Kit/CorvaneClient.h"
#include "Kit/Options.h"
#include "Kit/ProcessFigures.h"
#include "Kit/RandomFile.h"
#include "Kit/Self.h"
#include "Lab/Origin.h"
#include "Workload.h"

#include <CLI/CLI.hpp>
#include <fmt/format.h>
#include <stdexcept>
#include <strings.h>

namespace
{
	using Build = void (*)(const FString& url, const FString& file, TArray<FhttpRequest>& records, FString& id);
	constexpr auto absolute = EHTTPCorvFileUpload::E_ad;

	template <EHTTPCorvFileUploadType type>
	void buildPut(const FString& url, const FString& file, TArray<FhttpRequest>& records, FString& id)
	{
		UCorvaneBPLibrary::CreateHttpRequestFileUploadPUT({}, url, {}, absolute, file, "f", type, "", records, id);
	}

	void buildPost(const FString& url, const FString& file, TArray<FhttpRequest>& records, FString& id)
	{
		UCorvaneBPLibrary::CreateHttpRequestFileUploadPOST({}, url, {}, absolute, file, "f", {}, "", records, id);
	}

	void buildMultiPost(const FString& url, const FString& file, TArray<FhttpRequest>& records, FString& id)
	{
		UCorvaneBPLibrary::CreateHttpRequestFileMultiUploadPOST({}, url, {}, absolute, {file}, {"f"}, {}, "", records, id);
	}

	void buildMultiPut(const FString& url, const FString& file, TArray<FhttpRequest>& records, FString& id)
	{
		UCorvaneBPLibrary::CreateHttpRequestFileMultiUploadPUT({}, url, {}, absolute, {file}, {"f"}, "", records, id);
	}

	using Start = void (*)(const FString& url, const FString& file, UCorvaneUpload::FTell end);

	void startForm(const FString& url, const FString& file, UCorvaneUpload::FTell end)
	{
		UCorvaneUploadForm::Start(url, {{"f", file, {}, {}}}, {}, {}, std::move(end));
	}

	void startFile(const FString& url, const FString& file, UCorvaneUpload::FTell end)
	{
		UCorvaneUploadFile::Start(url, file, {}, std::move(end));
	}

	/** One way to upload a file, and the same by the curl program. */
	struct Kind
	{
		const char* name;
		bool isStreamed;
		Build build; // null = a node of the second module
		const char* curl; // its arguments, {} = the file
		Start start = nullptr; // of such a node
	};

	using UploadType = EHTTPCorvFileUploadType;
	const Kind kinds[] = {
		{"PUT_STREAM_BLANK", true, buildPut<UploadType::PUT_STREAM_BLANK>, "-T {}"},
		{"PUT_STREAM_MP", true, buildPut<UploadType::PUT_STREAM_MP>, "-T {}"},
		{"PUT_STREAM_COPY", true, buildPut<UploadType::PUT_STREAM_COPY>, "-T {}"},
		{"FORM", true, nullptr, "-F f=@{}", startForm},
		{"BARE", true, nullptr, "-T {}", startFile},
		{"POST", false, buildPost, "-F f=@{}"},
		{"PUT", false, buildPut<UploadType::PUT>, "-X PUT -F f=@{}"},
		{"MULTI_POST", false, buildMultiPost, "-F f=@{}"},
		{"MULTI_PUT", false, buildMultiPut, "-X PUT -F f=@{}"},
	};

	bool isCalled(const Kind& kind, const std::string& name)
	{
		return strcasecmp(kind.name, name.c_str()) == 0;
	}

	const Kind& kindNamed(const std::string& name)
	{
		for (const Kind& kind : kinds)
		{
			if (isCalled(kind, name))
			{
				return kind;
			}
		}
		throw std::runtime_error("there is no kind of upload called " + name);
	}

	/** Seconds of one call of a builder, whose record is thrown away. */
	double secondsOfBuilder(const Kind& kind, int calls)
	{
		const StopWatch watch;
		for (int number = 0; number < calls; ++number)
		{
			TArray<FhttpRequest> records;
			FString id;
			kind.build("http://127.0.0.1/", "/file", records, id);
		}
		return watch.seconds() / calls;
	}

	Figure memorySince(std::int64_t before)
	{
		return {"peak of memory beyond the idle program", "MiB", ProcessFigures::toMebibytes(ProcessFigures::peakResidentBytes() - before)};
	}

	/** The same by a node of the second module. */
	Figures measureTransfer(const Kind& kind, const std::string& url, const std::string& file)
	{
		constexpr double longEnough = 600;
		HostLog::SetSink([](const char*, ELogVerbosity::Type, const FString&) {});
		FGameLoop loop;
		UCorvaneBPLibrary::getCorvaneTarget();
		int ended = 0;
		bool isGood = false;
		ProcessFigures::forgetPeak();
		const std::int64_t before = ProcessFigures::residentBytes();
		const StopWatch whole;
		kind.start(FString(url.c_str()), FString(file.c_str()),
			[&](const FCorvaneTransferReport& report)
			{
				++ended;
				isGood = report.Outcome == ECorvaneTransferOutcome::Succeeded;
			});
		const double started = whole.seconds();
		loop.WaitFor([&ended] { return ended > 0; }, longEnough);
		const double seconds = whole.seconds();
		if (!isGood)
		{
			throw std::runtime_error("Corvane: the upload failed");
		}
		return {{"time", "s", seconds}, memorySince(before), {"game thread, start", "ms", started * 1e3}};
	}

	/** Uploads once, in this process. */
	Figures measureCorvane(const Kind& kind, const std::string& url, const std::string& file)
	{
		constexpr double longEnough = 600;
		HostLog::SetSink([](const char*, ELogVerbosity::Type, const FString&) {}); // the repair tells what it has done
		FGameLoop loop;
		UCorvaneBPLibrary* library = UCorvaneBPLibrary::getCorvaneTarget();
		library->setUploadGracePeriod(0);
		int statusCode = 0;
		secondsOfBuilder(kind, 1); // the first one readies what makes IDs
		const double builderSeconds = secondsOfBuilder(kind, 1000);
		loop.CollectGarbage();
		const BoundHandler onComplete(library->onhttpRequestCompleteDelegate,
			[&statusCode](void* const* arguments) { statusCode = *static_cast<const int32*>(arguments[3]); });
		ProcessFigures::forgetPeak();
		const std::int64_t before = ProcessFigures::residentBytes();

		const StopWatch whole;
		TArray<FhttpRequest> records;
		FString id;
		kind.build(FString(url.c_str()), FString(file.c_str()), records, id);
		const double built = whole.seconds();
		UCorvaneBPLibrary::executeHttpRequests(records, library);
		const double started = whole.seconds();
		loop.WaitFor([&statusCode] { return statusCode != 0; }, longEnough);
		const double ended = whole.seconds();
		if (statusCode != 200)
		{
			throw std::runtime_error(fmt::format("Corvane: status {}", statusCode));
		}
		return {{"time", "s", ended}, memorySince(before), {"game thread, builder", "us", builderSeconds * 1e6},
			{"game thread, start", "ms", (started - built) * 1e3}};
	}

	Figures measureCurl(const Kind& kind, const std::string& url, const std::string& file)
	{
		const std::string arguments = fmt::format(fmt::runtime(kind.curl), file);
		const std::string output =
			outputOf(fmt::format("curl -q -s -S --noproxy '*' -o /dev/null -w '%{{time_total}} %{{http_code}}' {} {}", arguments, url));
		if (output.substr(output.find(' ') + 1) != "200")
		{
			throw std::runtime_error("curl: " + output);
		}
		return {{"time", "s", std::stod(output)}};
	}

	class Uploads final : public Workload
	{
	public:
		CLI::App* addTo(CLI::App& program) override
		{
			CLI::App* command = program.add_subcommand("uploads", "One large file to a server that drops it, in every way there is");
			command->add_option("--stream-mebibytes", streamMebibytes, "Size of files that are streamed")->capture_default_str();
			command->add_option("--memory-mebibytes", memoryMebibytes, "Size of files that are loaded")->capture_default_str();
			command->add_option(
				"--kind", wanted, "Only these kinds: PUT_STREAM_BLANK, PUT_STREAM_MP, PUT_STREAM_COPY, FORM, BARE, POST, ...");
			addPairs(*command, pairs, "Pairs of runs after one warm-up pair, each run in a fresh process");
			command->add_option("--url", url)->group(""); // for the fresh processes alone, like the next
			command->add_option("--file", file)->group("");
			return command;
		}

		std::vector<Comparison> run() override
		{
			if (!url.empty())
			{
				const Kind& kind = kindNamed(wanted.at(0));
				printForParent(kind.start ? measureTransfer(kind, url, file) : measureCorvane(kind, url, file));
				return {};
			}
			std::vector<Comparison> results;
			for (const bool isStreamed : {true, false})
			{
				compareKinds(isStreamed, isStreamed ? streamMebibytes : memoryMebibytes, results);
			}
			return results;
		}

	private:
		bool isWanted(const Kind& kind) const
		{
			return wanted.empty() ||
				   std::any_of(wanted.begin(), wanted.end(), [&](const std::string& name) { return isCalled(kind, name); });
		}

		void compareKinds(bool isStreamed, int mebibytes, std::vector<Comparison>& results) const
		{
			Lab::Origin server;
			server.at("*", Lab::upload({.throwsAway = true}));
			const RandomFile content(mebibytes);
			for (const Kind& kind : kinds)
			{
				if (kind.isStreamed == isStreamed && isWanted(kind))
				{
					Comparison empty(fmt::format("uploads: {} of {} MiB", kind.name, mebibytes), fmt::format("curl {}", kind.curl));
					results.push_back(alternate(
						std::move(empty), pairs, WarmUp::OnePair, [&] { return measureIn(kind, server.url(), content.path()); },
						[&] { return measureCurl(kind, server.url(), content.path()); }));
				}
			}
		}

		static Figures measureIn(const Kind& kind, const std::string& serverUrl, const std::string& path)
		{
			return runSelf(fmt::format("uploads --kind {} --url {} --file {}", kind.name, serverUrl, path));
		}

		int streamMebibytes = 1024;
		int memoryMebibytes = 256;
		int pairs = 5;
		std::vector<std::string> wanted;
		std::string url;
		std::string file;
	};
} // namespace

std::unique_ptr<Workload> makeUploads()
{
	return std::make_unique<Uploads>();
}
