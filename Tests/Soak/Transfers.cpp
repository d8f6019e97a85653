#include "CorvaneBPLibrary.h"
#include "CorvaneDownloadFile.h"
#include "CorvaneFollowEvents.h"
#include "CorvaneUploadFile.h"
#include "CorvaneUploadForm.h"
#include "CorvaneUploadResumable.h"
#include "Listen.h"
#include "Run.h"
#include "UObject/WeakObjectPtr.h"

#include <fmt/format.h>

// The second module: what tries again by itself, alone and in a queue.
namespace
{
	using Ended = ECorvaneTransferOutcome;

	template <class Options>
	Options options(Run& run, Errand& errand)
	{
		Options wanted;
		wanted.Attempts = errand.wish.fault == Fault::Refused ? 2 : 9;
		wanted.FirstWaitSeconds = 0.001;
		if (errand.dice.hasLuck(0.5))
		{
			wanted.Queue = text("soak");
			++run.queued;
		}
		return wanted;
	}

	std::string describe(const FCorvaneTransferReport& report)
	{
		return fmt::format("outcome {}, {}, {} tries", static_cast<int>(report.Outcome), utf8(report.Sentence), report.Attempts);
	}

	/** Cancel, Pause and Continue of what may be over. */
	template <class Node>
	void setHandles(Errand& errand, Node* node)
	{
		const auto handle = [weak = TWeakObjectPtr<Node>(node)](void (Node::*function)())
		{ return [weak, function] { weak.IsValid() ? (weak.Get()->*function)() : void(); }; };
		errand.cancel = handle(&Node::Cancel);
		errand.pause = handle(&Node::Pause);
		errand.goOn = handle(&Node::Continue);
	}

	using Tell = std::function<void(const FCorvaneTransferReport&)>;

	/** As a node of a graph or by native code. */
	template <class Make, class Begin, class... Arguments>
	void launch(Errand& errand, const Tell& tell, Run& run, Make make, Begin begin, const Arguments&... arguments)
	{
		if (errand.dice.hasLuck(0.5))
		{
			return setHandles<UCorvaneTransfer>(errand, begin(arguments..., tell, [](const FCorvaneTransferReport&) {}));
		}
		auto* const node = make(arguments...);
		const auto listen = [&](FCorvaneTransferEvent& output, bool isSuccess)
		{
			Listen(output,
				[&run, tell, isSuccess, number = errand.wish.number](const FCorvaneTransferReport& report)
				{
					const bool goesWithIt = isSuccess == (report.Outcome == Ended::Succeeded);
					run.expect(number, goesWithIt, "a node's output does not go with " + describe(report));
					tell(report);
				});
		};
		listen(node->OnSuccess, true);
		listen(node->OnFail, false);
		node->Activate();
		setHandles<UCorvaneTransfer>(errand, node);
	}

	/** @param isRight  of a success. */
	Tell tellEnd(
		Run& run, const Errand& errand, std::function<bool(const FCorvaneTransferReport&)> isRight = [](const auto&) { return true; })
	{
		return [&run, isRight, number = errand.wish.number](const FCorvaneTransferReport& report) {
			run.end(number, {report.Outcome == Ended::Succeeded, isRight(report), describe(report)});
		};
	}

	bool isWhole(const FCorvaneTransferReport& report)
	{
		return report.Answer == TEXT("whole");
	}

	FCorvaneDownloadOptions downloadOptions(Run& run, Errand& errand)
	{
		auto wanted = options<FCorvaneDownloadOptions>(run, errand);
		const bool isToldRight = errand.wish.fault != Fault::WrongLength; // else it would be the end
		wanted.ExpectedSize = isToldRight && errand.dice.hasLuck(0.5) ? static_cast<int64>(errand.wish.size) : -1;
		wanted.Hash = errand.dice.hasLuck(0.5) ? text("sha256") : FString();
		errand.file = run.target(errand);
		return wanted;
	}

	void downloadFile(Run& run, Errand& errand)
	{
		const FCorvaneDownloadOptions wanted = downloadOptions(run, errand);
		launch(errand, tellEnd(run, errand), run, &UCorvaneDownloadFile::DownloadFile, &UCorvaneDownloadFile::Start,
			text(run.origin.url("/file/", errand.wish)), text(errand.file), wanted);
	}

	void downloadDriveFile(Run& run, Errand& errand)
	{
		const FCorvaneDownloadOptions wanted = downloadOptions(run, errand);
		UCorvaneBPLibrary::setGoogleDriveBase(text(run.origin.base(errand.wish)));
		launch(errand, tellEnd(run, errand), run, &UCorvaneDownloadFile::DownloadDriveFile, &UCorvaneDownloadFile::StartDriveFile,
			text(errand.wish.text()), text(errand.file), wanted);
	}

	void uploadFile(Run& run, Errand& errand)
	{
		const auto wanted = options<FCorvaneUploadOptions>(run, errand);
		run.makeSource(errand);
		launch(errand, tellEnd(run, errand, isWhole), run, &UCorvaneUploadFile::UploadFile, &UCorvaneUploadFile::Start,
			text(run.origin.url("/upload/", errand.wish)), text(errand.file), wanted);
	}

	void uploadForm(Run& run, Errand& errand)
	{
		auto wanted = options<FCorvaneUploadOptions>(run, errand);
		wanted.bMayBeRepeated = true;
		run.makeSource(errand);
		FCorvaneFormFile file;
		file.FieldName = text("file");
		file.FilePath = text(errand.file);
		FCorvaneFormField field;
		field.Name = text("number");
		field.Value = text(errand.wish.text());
		launch(errand, tellEnd(run, errand, isWhole), run, &UCorvaneUploadForm::UploadForm, &UCorvaneUploadForm::Start,
			text(run.origin.url("/upload/", errand.wish)), TArray<FCorvaneFormFile>{file}, TArray<FCorvaneFormField>{field}, wanted);
	}

	/** What the server has is fetched, and compared by whoever hears of a GET. */
	void compareUpload(Errand& errand, const FString& address)
	{
		errand.topic = Topic::Body;
		errand.expected = errand.content();
		TArray<FhttpRequest> requests;
		FString id;
		UCorvaneBPLibrary* library = nullptr;
		UCorvaneBPLibrary::CreateHttpRequestGET({}, address, {}, text("r" + std::to_string(errand.wish.number)), false, requests, id);
		UCorvaneBPLibrary::executeHttpRequests(requests, library);
		errand.disturbance = Disturbance::None;
		errand.cancel = errand.pause = errand.goOn = [] {};
	}

	void uploadResumable(Run& run, Errand& errand)
	{
		auto wanted = options<FCorvaneResumableOptions>(run, errand);
		wanted.JournalFolder = text(run.journals.path());
		wanted.PieceBytes = static_cast<int64>(1024 + errand.wish.size / (1 + errand.dice.below(4)));
		wanted.bFirstPieceAtOnce = errand.dice.hasLuck(0.3);
		wanted.bTerminateOnCancel = errand.dice.hasLuck(0.3);
		wanted.PieceChecksum = errand.dice.hasLuck(0.3) ? text("sha1") : FString();
		run.makeSource(errand);
		const Tell tell = [&run, number = errand.wish.number, end = tellEnd(run, errand)](const FCorvaneTransferReport& report)
		{
			Errand* const running = run.find(number);
			if (!running || running->topic == Topic::Body || report.Outcome != Ended::Succeeded)
			{
				return end(report);
			}
			compareUpload(*running, report.ReachedAddress);
		};
		launch(errand, tell, run, &UCorvaneUploadResumable::UploadResumable, &UCorvaneUploadResumable::Start,
			text(run.origin.url("/tus/", errand.wish)), text(errand.file), wanted);
	}

	std::string namesOfEvents(const Wish& wish, int number)
	{
		std::string names;
		for (int index = 1; index <= number; ++index)
		{
			names += wish.event(index) + ' ';
		}
		return names;
	}

	void follow(Run& run, Errand& errand)
	{
		FCorvaneFollowOptions wanted;
		wanted.Attempts = errand.wish.fault == Fault::Refused ? 2 : 9;
		wanted.ReconnectSeconds = 0.001;
		wanted.LongestWaitSeconds = 0.01;
		const std::uint64_t number = errand.wish.number;
		UCorvaneFollowEvents::FHandlers handlers;
		handlers.OnEvent = [&run, number](const FString& id, const FString&, const FString& data)
		{
			Errand* const running = run.find(number);
			const bool isRight = running && running->wish.event(std::atoi(utf8(id).c_str())) == utf8(data);
			run.expect(number, isRight, "a wrong event: " + utf8(data));
			isRight ? void(running->heard += utf8(data) + ' ') : void();
		};
		handlers.OnClose = [&run, number](const FCorvaneTransferReport& report)
		{
			const Errand* const running = run.find(number);
			const std::string all = running ? namesOfEvents(running->wish, running->wish.numEvents()) : "";
			const std::string heard = running ? running->heard : "";
			run.expect(number, all.starts_with(heard), "events out of order: " + heard);
			run.end(number, {report.Outcome == Ended::Ended, running && heard == all, describe(report)});
		};
		UCorvaneFollowEvents* const node = UCorvaneFollowEvents::Start(text(run.origin.url("/events/", errand.wish)), wanted, handlers);
		setHandles<UCorvaneFollowEvents>(errand, node);
	}
} // namespace

std::vector<Kind> transferKinds()
{
	using enum Disturbance;
	const std::vector<Disturbance> all{Cancel, CancelAndAgain, Pause};
	constexpr std::uint64_t file = 40'000;
	return {{"whole file", 4, file, Topic::Download, all, true, downloadFile},
		{"whole drive file", 4, file, Topic::Download, all, true, downloadDriveFile},
		{"bare upload", 4, file, Topic::Upload, all, true, uploadFile}, {"form", 4, file, Topic::Upload, all, true, uploadForm},
		{"resumable upload", 4, file, Topic::Upload, all, true, uploadResumable},
		{"followed events", 4, file, Topic::Events, all, true, follow}};
}
