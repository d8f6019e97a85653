#include "Calls.h"
#include "FileFunctionsCorv.h"
#include "Run.h"
#include "UAsyncNodeHttpGoogleFileInfoRequest.h"
#include "UObject/Class.h"

#include <fstream>

// The first module: every builder and every latent node.
namespace
{
	using Exists = EHTTPCorvFileDownloadResumeType;
	using Way = EHTTPCorvFileUploadType;
	using Adjust = std::function<void(Run&, Errand&, Pins&)>;

	/** Asks a place and gets the content. */
	Adjust ask(const char* place)
	{
		return [place](Run& run, Errand& errand, Pins& pins)
		{
			pins.url = text(run.origin.url(place, errand.wish));
			errand.expected = errand.content();
		};
	}

	void post(Run& run, Errand& errand, Pins& pins)
	{
		const std::string letters = errand.wish.letters();
		pins.url = text(run.origin.url("/echo/", errand.wish));
		pins.POSTData = {{"v", text(letters)}};
		errand.expected = "v=" + letters;
	}

	void individual(Run& run, Errand& errand, Pins& pins)
	{
		constexpr const char* verbs[] = {"POST", "put", "Patch", "DELETE"};
		errand.expected = errand.wish.letters();
		pins.url = text(run.origin.url("/echo/", errand.wish));
		pins.verb = verbs[errand.dice.below(std::size(verbs))];
		pins.header = {{"Content-Type", "text/x-own"}, {"X-Number", text(errand.wish.text())}};
		pins.content = text(errand.expected);
		pins.addContentLengthHeader = errand.dice.hasLuck(0.5);
		pins.bindUploadProgressEvent = errand.dice.hasLuck(0.5);
	}

	void individualFile(Run& run, Errand& errand, Pins& pins)
	{
		individual(run, errand, pins);
		run.makeSource(errand);
		pins.url = text(run.origin.url("/upload/", errand.wish));
		pins.contentType = EHTTPCorvIndividualType::STREAM;
		pins.content = text(errand.file);
		pins.addContentLengthHeader = false; // it would be that of the path
	}

	void drive(Run& run, Errand& errand, Pins& pins)
	{
		UCorvaneBPLibrary::setGoogleDriveBase(text(run.origin.base(errand.wish)));
		pins.downloadID = text(errand.wish.text());
		pins.optionalFileSizeInByte = 0;
		errand.expected = errand.content();
	}

	Adjust download(Exists exists)
	{
		return [exists](Run& run, Errand& errand, Pins& pins)
		{
			errand.file = run.target(errand);
			pins.url = text(run.origin.url("/file/", errand.wish));
			pins.filePathWithFileName = text(errand.file);
			pins.actionIfFileExists = errand.isAgain ? Exists::E_RESUME : exists;
			pins.fileSizeStepsInBytes = static_cast<int32>(1 + errand.wish.size / (2 + errand.dice.below(4)));
			if (errand.isAgain && errand.isInFile())
			{
				std::filesystem::remove(errand.file); // nothing would be left to ask for
			}
			if (!errand.isAgain && errand.dice.hasLuck(0.5))
			{
				errand.isRefused = exists == Exists::E_NOT_OVERWRITE;
				std::ofstream(errand.file, std::ios::binary) << errand.content().substr(0, 1 + errand.dice.below(errand.wish.size - 1));
			}
		};
	}

	Adjust upload(Way way = Way::PUT)
	{
		return [way](Run& run, Errand& errand, Pins& pins)
		{
			run.makeSource(errand);
			pins.url = text(run.origin.url("/upload/", errand.wish));
			pins.filePath = text(errand.file);
			pins.filePaths = {pins.filePath, pins.filePath};
			pins.fileIDs = {"one", "two"};
			pins.POSTData = {{"a", "1"}};
			pins.uploadType = way;
		};
	}

	void events(Run& run, Errand& errand, Pins& pins)
	{
		pins.url = text(run.origin.url("/events/", errand.wish));
		pins.bindServerSendEvent = true;
	}

	/** Of what an output of a node told. Null: it has no such pin. */
	template <class T>
	const T* pin(const UDelegateFunction& signature, void* const* arguments, std::string_view name)
	{
		const auto found = std::ranges::find(signature.Parameters, name, &FParameter::Name);
		return found == signature.Parameters.end() ? nullptr : static_cast<const T*>(arguments[found - signature.Parameters.begin()]);
	}

	void hear(Run& run, std::uint64_t number, const FMulticastDelegateProperty& output, void* const* arguments)
	{
		const UDelegateFunction& signature = *output.Signature;
		const int32 code = *pin<int32>(signature, arguments, "statusCode");
		const auto* const bytes = pin<TArray<uint8>>(signature, arguments, "byteData");
		const auto* const body = pin<FString>(signature, arguments, "dataString");
		const auto* const size = pin<int64>(signature, arguments, "fileSizeInBytes");
		const std::string answer = bytes ? bytesOf(*bytes) : body ? utf8(*body) : "";
		const Errand* const errand = run.find(number);
		const bool isDownload = errand && errand->topic == Topic::Download; // its node tells the text as well
		const bool isRight = errand && (size ? *size == static_cast<int64>(errand->wish.size) : isDownload || errand->isRight(answer));
		const bool isSuccess = std::string_view(output.Name) == "OnSuccess";
		run.expect(number, isSuccess == (code < 400), "a node's output does not go with status " + std::to_string(code));
		run.end(number, {isSuccess, isRight, output.Name + (' ' + std::to_string(code))});
	}

	/** @return the ID of its request. */
	FString startNode(Run& run, Errand& errand, UAsyncNodeCorv& node, const FString& wantedID)
	{
		for (const FMulticastDelegateProperty& output : node.GetClass()->Definition.Delegates)
		{
			output.Get(&node).AddHandler(
				[&run, number = errand.wish.number, &output](void* const* arguments) { hear(run, number, output, arguments); });
		}
		errand.held = TStrongObjectPtr<UObject>(&node);
		node.Activate();
		const auto* const info = Cast<UAsyncNodeHttpGoogleFileInfoRequest>(&node);
		return info ? info->requestID : wantedID;
	}

	void startRequest(Run& run, Errand& errand, const char* function, const Adjust& adjust)
	{
		const bool isNode = std::string_view(function).starts_with("Async");
		Pins pins;
		const bool staysListed = isNode || errand.topic == Topic::Info; // the library's list keeps a row for each ID of those
		pins.optionalRequestID =
			text(staysListed ? (isNode ? "n" : "s") + std::to_string(errand.slot) : "r" + std::to_string(errand.wish.number));
		adjust(run, errand, pins);
		const std::uint64_t number = errand.wish.number;
		const int times = errand.due;
		for (int time = 0; time < times; ++time)
		{
			Pins used = pins; // a call takes values out of them
			call(function, used);
			if (!run.find(number))
			{
				return; // refused, and told inside the call
			}
			FString id = pins.optionalRequestID;
			if (isNode)
			{
				id = startNode(run, errand, *Cast<UAsyncNodeCorv>(used.node), id);
			}
			errand.cancel = [id] { UCorvaneBPLibrary::cancelRequest(id); };
			UCorvaneBPLibrary* target = nullptr;
			UCorvaneBPLibrary::executeHttpRequests(used.httpRequests, target);
		}
	}

	/** Bytes to a file in the background, and back through Base64. It has no outcome of its own. */
	void writeAndRead(Run& run, Errand& errand)
	{
		errand.file = run.target(errand);
		errand.isRefused = false;
		errand.wish.fault = Fault::None;
		const std::string& content = errand.content();
		TArray<uint8> bytes;
		bytes.Append(reinterpret_cast<const uint8*>(content.data()), static_cast<int32>(content.size()));
		UCorvaneBPLibrary::byteDataToFile(
			EHTTPCorvFileBytesToFileActionType::E_OVERWRITE, bytes, EHTTPCorvFileUpload::E_ad, text(errand.file));
		struct Reader
		{
			Run& run;
			void operator()(Errand& errand) const
			{
				if (!errand.isInFile())
				{
					return run.later(errand, 1, *this);
				}
				bool success = false;
				FString base64, name;
				UFileFunctionsCorv::fileToBase64String(EFileFunctionsCorvDirectoryType::E_ad, text(errand.file), success, base64, name);
				const TArray<uint8> read = UFileFunctionsCorv::base64StringToBytes(EFileFunctionsCorvDirectoryType::E_ad, base64, success);
				run.end(errand.wish.number, {success, bytesOf(read) == errand.content(), "Base64"});
			}
		};
		run.later(errand, 0, Reader{run});
	}
} // namespace

std::vector<Kind> requestKinds()
{
	using enum Disturbance;
	const std::vector<Disturbance> alone{Cancel}, again{Cancel, CancelAndAgain}, all{Cancel, CancelAndAgain, Twin};
	std::vector<Kind> kinds;
	const auto add = [&kinds](std::string name, int weight, std::uint64_t bytes, Topic topic, const std::vector<Disturbance>& disturbances,
						 const char* function, const Adjust& adjust)
	{
		kinds.push_back({std::move(name), weight, bytes, topic, disturbances, false,
			[function, adjust](Run& run, Errand& errand) { startRequest(run, errand, function, adjust); }});
	};
	constexpr std::uint64_t small = 4000, file = 40'000;
	add("get", 460, small, Topic::Body, all, "CreateHttpRequestGET", ask("/get/"));
	add("post", 300, small, Topic::Body, all, "CreateHttpRequestPOST", post);
	add("individual", 50, small, Topic::Body, all, "CreateHttpRequestIndividual", individual);
	add("node get", 40, small, Topic::Body, again, "AsyncExecuteHTTP_GET_REQUEST", ask("/get/"));
	add("node post", 20, small, Topic::Body, again, "AsyncExecuteHTTP_POST_REQUEST", post);
	add("node individual", 12, small, Topic::Body, again, "AsyncExecuteHTTP_Individual_REQUEST", individual);
	add("drive", 4, file, Topic::Body, again, "CreateHttpRequestGoogleDrive", drive);
	add("node drive", 4, file, Topic::Body, again, "AsyncExecuteHTTP_GoogleDrive_REQUEST", drive);
	add("drive information", 4, file, Topic::Info, again, "CreateHttpRequestGoogleDriveFileInfo", drive);
	add("node drive information", 4, file, Topic::Info, again, "AsyncExecuteHTTP_GoogleFileInfo_REQUEST", drive);
	add("page", 4, file, Topic::Body, again, "CreateHttpRequestAnonfiles", ask("/page/"));
	add("events", 4, small, Topic::Events, alone, "CreateHttpRequestGET", events);
	add("download overwrite", 4, file, Topic::Download, again, "CreateHttpRequestGETDownload", download(Exists::E_OVERWRITE));
	add("download refuse", 4, file, Topic::Download, again, "CreateHttpRequestGETDownload", download(Exists::E_NOT_OVERWRITE));
	add("download resume", 4, file, Topic::Download, again, "CreateHttpRequestGETDownload", download(Exists::E_RESUME));
	add("download in steps", 4, file, Topic::Download, again, "CreateHttpRequestGETLowRamDownload", download(Exists::E_RESUME));
	add("node download", 4, file, Topic::Download, again, "AsyncExecuteHTTP_Download_REQUEST", download(Exists::E_OVERWRITE));
	add("node download in steps", 4, file, Topic::Download, again, "AsyncExecuteHTTP_Low_RAM_Download_REQUEST", download(Exists::E_RESUME));
	add("upload post", 4, file, Topic::Upload, alone, "CreateHttpRequestFileUploadPOST", upload());
	add("upload several post", 4, file, Topic::Upload, alone, "CreateHttpRequestFileMultiUploadPOST", upload());
	add("upload several put", 4, file, Topic::Upload, alone, "CreateHttpRequestFileMultiUploadPUT", upload());
	add("upload put", 4, file, Topic::Upload, alone, "CreateHttpRequestFileUploadPUT", upload());
	add("upload blank", 4, file, Topic::Upload, alone, "CreateHttpRequestFileUploadPUT", upload(Way::PUT_STREAM_BLANK));
	add("upload stream", 4, file, Topic::Upload, alone, "CreateHttpRequestFileUploadPUT", upload(Way::PUT_STREAM_MP));
	add("upload copy", 4, file, Topic::Upload, alone, "CreateHttpRequestFileUploadPUT", upload(Way::PUT_STREAM_COPY));
	add("upload body", 4, file, Topic::Upload, alone, "CreateHttpRequestIndividual", individualFile);
	add("node upload post", 4, file, Topic::Upload, alone, "AsyncExecuteHTTP_Upload_POST_REQUEST", upload());
	add("node upload stream", 4, file, Topic::Upload, alone, "AsyncExecuteHTTP_Upload_PUT_REQUEST", upload(Way::PUT_STREAM_MP));
	add("node upload several post", 4, file, Topic::Upload, alone, "AsyncExecuteHTTP_Multi_Upload_POST_REQUEST", upload());
	add("node upload several put", 4, file, Topic::Upload, alone, "AsyncExecuteHTTP_Multi_Upload_PUT_REQUEST", upload());
	kinds.push_back({"bytes to file", 4, file, Topic::Download, {None}, false, writeAndRead});
	return kinds;
}
