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

	/** A start under an ID that still runs is another request of the same ID. */
	void playRequest(World& world, const std::function<void(Records& records, FString& name)>& build, bool keepsBytes = false)
	{
		const auto records = std::make_shared<Records>();
		Listen(world.library().onhttpRequestCompleteDelegate,
			[&world, records, keepsBytes](
				const FString&, const TArray<FString>&, const TArray<FString>&, int32 code, const TArray<uint8>& bytes, const FString&)
			{
				world.end();
				const bool isWhole = bytesOf(bytes) == fileContent;
				world.expect(!keepsBytes || code != 200 || isWhole, "a success without the bytes");
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

	template <bool isStream>
	void playGet(World& world)
	{
		playRequest(
			world,
			[](Records& records, FString& name) {
				UCorvaneBPLibrary::CreateHttpRequestGET(
					{}, isStream ? "http://host/events" : "http://host/file", {}, id, isStream, records, name);
			},
			!isStream);
	}

	void playDrive(World& world)
	{
		UCorvaneBPLibrary::setGoogleDriveBase("http://host");
		playRequest(
			world, [](Records& records, FString& name) { UCorvaneBPLibrary::CreateHttpRequestGoogleDrive({}, "1", id, 0, records, name); },
			true);
	}

	template <bool isStepped>
	void playDownload(World& world)
	{
		constexpr auto resume = EHTTPCorvFileDownloadResumeType::E_RESUME;
		const FString path = text(world.folder.path("file"));
		playRequest(world,
			[&path](Records& records, FString& name)
			{
				isStepped ? UCorvaneBPLibrary::CreateHttpRequestGETLowRamDownload(
								{}, "http://host/file", {}, resume, absolute, path, id, records, name, 5)
						  : UCorvaneBPLibrary::CreateHttpRequestGETDownload(
								{}, "http://host/file", {}, resume, absolute, path, id, records, name);
			});
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
		playRequest(world,
			[&world](Records& records, FString& name)
			{
				const std::string path = world.folder.write(uploadName(world.starts), fileContent);
				UCorvaneBPLibrary::CreateHttpRequestFileUploadPUT(
					{}, "http://host/put", {}, absolute, text(path), "field", EHTTPCorvFileUploadType::PUT_STREAM_MP, id, records, name);
			});
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
		{"get", &playGet<false>, nullptr, true, OfLibrary},
		{"events", &playGet<true>, nullptr, true, OfLibrary},
		{"drive", &playDrive, nullptr, true, OfLibrary},
		{"download", &playDownload<false>, &lookAtDownload, true, OfLibrary},
		{"stepped", &playDownload<true>, &lookAtDownload, false, OfLibrary},
		{"upload", &playUpload, &lookAtUpload, false, OfLibrary},
	};
}
