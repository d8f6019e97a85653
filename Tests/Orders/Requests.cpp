// Requests of the library, from their builders to the event.

#include "Listen.h"
#include "Scenarios.h"

#include <memory>

namespace
{
	constexpr const char* id = "one";
	constexpr auto absolute = EHTTPCorvFileUpload::E_ad;
	using Records = TArray<FhttpRequest>;

	void execute(World& world, Records records)
	{
		UCorvaneBPLibrary* target = nullptr;
		world.begin();
		UCorvaneBPLibrary::executeHttpRequests(std::move(records), target);
	}

	/** Whether a success has done what it tells of. */
	using Proof = std::function<bool(const std::string& bytes)>;

	bool isWhole(const std::string& bytes)
	{
		return bytes == fileContent;
	}

	/** A start under an ID that still runs is another request of the same ID. */
	void playRequest(World& world, const std::function<void(Records& records, FString& name)>& build, const Proof& isDone)
	{
		const auto records = std::make_shared<Records>();
		Listen(world.library().onhttpRequestCompleteDelegate,
			[&world, records, isDone](
				const FString&, const TArray<FString>&, const TArray<FString>&, int32 code, const TArray<uint8>& bytes, const FString&)
			{
				world.end();
				world.expect(code >= 400 || isDone(bytesOf(bytes)),
					"a success, " + std::to_string(code) + ", of something that is not done: " + bytesOf(bytes));
				if (world.disturbance == Disturbance::AgainInHandler && world.outcomes == 1)
				{
					execute(world, std::exchange(*records, {})); // nothing but the request holds itself now
				}
			});
		world.play({.start =
						[&]
					{
						FString name;
						build(*records, name);
						execute(world, *records);
					},
			.cancel = [] { UCorvaneBPLibrary::cancelRequest(id); }});
		records->Empty();
	}

	void playPlain(World& world)
	{
		playRequest(
			world,
			[](Records& records, FString& name)
			{ UCorvaneBPLibrary::CreateHttpRequestGET({}, "http://host/file", {}, id, false, records, name); },
			isWhole);
	}

	/** Two streams of one ID cannot be told apart. Behind a cancel no event is told, although the answer may have come whole. */
	void playEvents(World& world)
	{
		const std::set cancelling{Disturbance::Cancel, Disturbance::CancelAndAgain, Disturbance::Unload, Disturbance::EndOfProgram};
		const bool isCancelled = cancelling.contains(world.disturbance);
		const auto told = std::make_shared<std::string>();
		Listen(world.library().onhttpServerSendEventDelegate,
			[&world, told](const FString& text, const FString&)
			{
				*told += utf8(text);
				world.expect(world.outcomes == 0 || world.starts > 1, "an event behind the outcome");
			});
		playRequest(
			world,
			[](Records& records, FString& name)
			{ UCorvaneBPLibrary::CreateHttpRequestGET({}, "http://host/events", {}, id, true, records, name); },
			[&world, told, isCancelled](const std::string&) { return world.starts > 1 || isCancelled || *told == eventContent; });
	}

	void playDrive(World& world)
	{
		UCorvaneBPLibrary::setGoogleDriveBase("http://host");
		playRequest(
			world, [](Records& records, FString& name) { UCorvaneBPLibrary::CreateHttpRequestGoogleDrive({}, "1", id, 0, records, name); },
			isWhole);
	}

	template <bool isStepped>
	void playDownload(World& world)
	{
		constexpr auto resume = EHTTPCorvFileDownloadResumeType::E_RESUME;
		const FString path = text(world.folder.path("file"));
		playRequest(
			world,
			[&path](Records& records, FString& name)
			{
				isStepped ? UCorvaneBPLibrary::CreateHttpRequestGETLowRamDownload(
								{}, "http://host/file", {}, resume, absolute, path, id, records, name, 5)
						  : UCorvaneBPLibrary::CreateHttpRequestGETDownload(
								{}, "http://host/file", {}, resume, absolute, path, id, records, name);
			},
			[&world](const std::string&) { return world.starts > 1 || world.read("file") == fileContent; });
	}

	void lookAtDownload(const World& world)
	{
		world.expectPrefix("file");
	}

	std::string uploadName(int number)
	{
		return "upload" + std::to_string(number);
	}

	/** Each start with a file of its own: while one is on its way, and until it is repaired, it is blocked. */
	void playUpload(World& world)
	{
		playRequest(
			world,
			[&world](Records& records, FString& name)
			{
				const std::string path = world.folder.write(uploadName(world.starts), fileContent);
				UCorvaneBPLibrary::CreateHttpRequestFileUploadPUT(
					{}, "http://host/put", {}, absolute, text(path), "field", EHTTPCorvFileUploadType::PUT_STREAM_MP, id, records, name);
			},
			[&world](const std::string&) { return world.origin.has(fileContent); });
		for (int number = 0; !world.isEnding() && number < world.starts; ++number)
		{
			world.expect(!world.library().isFileBlocked(text(world.folder.path(uploadName(number)))), "a file stays blocked");
		}
	}

	void lookAtUpload(const World& world)
	{
		for (int number = 0; world.folder.exists(uploadName(number)); ++number)
		{
			const std::string bytes = world.read(uploadName(number));
			world.expect(bytes == fileContent, "the file is not what it was: " + bytes);
		}
	}
} // namespace

std::vector<Kind> requestKinds()
{
	return {
		{"get", &playPlain, nullptr, true, OfLibrary},
		{"events", &playEvents, nullptr, true, OfLibrary},
		{"drive", &playDrive, nullptr, true, OfLibrary},
		{"download", &playDownload<false>, &lookAtDownload, true, OfLibrary},
		{"stepped", &playDownload<true>, &lookAtDownload, false, OfLibrary},
		{"upload", &playUpload, &lookAtUpload, false, OfLibrary},
	};
}
