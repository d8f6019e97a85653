#include "NodeFixture.h"

#include "Host/AsyncActionHold.h"
#include "Lab/Behaviours/Files.h"
#include "Listen.h"
#include "UObject/Class.h"

namespace
{
	std::string pinText(const FPropertyType& type, void* value)
	{
		switch (type.Kind)
		{
		case EPropertyKind::String:
			return utf8(*static_cast<const FString*>(value));
		case EPropertyKind::Byte:
			return std::string(1, *static_cast<const char*>(value));
		case EPropertyKind::Int:
			return std::to_string(*static_cast<const int32*>(value));
		case EPropertyKind::Int64:
			return std::to_string(*static_cast<const int64*>(value));
		default:
			break;
		}
		std::string all;
		for (int32 index = 0; index < type.ArrayNum(value); ++index)
		{
			all += pinText(*type.Inner(), type.ArrayAt(value, index)) + (type.Inner()->Kind == EPropertyKind::String ? "\n" : "");
		}
		return all;
	}

	/** A Drive file of 1.5 MB. */
	constexpr const char* driveView =
		"viewer({itemJson:[\"id\",\"level.pak\",null,null,null,null,null,null,null,null,null,null,null,null,null,null,null,null,null,null,"
		"null,null,null,null,null,null,null,\"1572864\"]});";

	Lab::Behaviour driveFile(const Lab::Request& request)
	{
		const bool bConfirmed = request.target.find("confirm") != std::string::npos;
		return bConfirmed ? Lab::file("0123456789") : Lab::Behaviour("<a href=\"/uc;confirm=t0k3n&x\">");
	}

	/** Replaces the number after each occurrence of a mark. @return whether there was any. */
	bool replaceNumbers(std::string& text, std::string_view mark)
	{
		bool isFound = false;
		for (size_t at = text.find(mark); at != text.npos; at = text.find(mark, at + mark.size()))
		{
			const size_t begin = at + mark.size();
			const size_t digits = begin + (text[begin] == '-' ? 1 : 0);
			text.replace(begin, text.find_first_not_of("0123456789", digits) - begin, "NUMBER");
			isFound = true;
		}
		return isFound;
	}
} // namespace

NodeOrigin::NodeOrigin(const Lab::Behaviour& also)
{
	at("/file/d/*", Lab::Behaviour(driveView), also).at("/uc*", Lab::Behaviour(driveFile), also).at("*", Lab::file("0123456789"), also);
}

std::vector<std::string> NodeOrigin::takeRequests()
{
	std::vector<std::string> all;
	for (const std::vector<Lab::Exchange> exchanges = log(); taken < exchanges.size(); ++taken)
	{
		std::string& whole = all.emplace_back(exchanges[taken].request->head + exchanges[taken].request->body);
		// The token of a form that is put together in memory is made of the time, and the length tells its digits.
		if (replaceNumbers(whole, "UE4CorvanePlugin_"))
		{
			replaceNumbers(whole, "Content-Length: ");
		}
	}
	return all;
}

NodeFixture::NodeFixture()
{
	Listen(library().onhttpRequestCompleteGoogleInfoDelegate,
		[this](const FString&, int64, int32, const FString&, const FString& id) { fileInfos.push_back(utf8(id)); });
	library().setUploadGracePeriod(0);
}

Pins NodeFixture::pins(const NodeOrigin& origin) const
{
	UCorvaneBPLibrary::setGoogleDriveBase(text(origin.url("")));
	const FString file = text(dir.write("upload.txt", "to be sent"));
	// Two entries each, so that their order shows. The path is the content of an individual text as well.
	return {.url = text(origin.url("/file")),
		.downloadID = "level",
		.header = {{"Content-Type", "text/x-own"}, {"X-Two", "2"}},
		.content = file,
		.filePathWithFileName = text(dir.path("download.bin")),
		.filePath = file,
		.filePaths = {file, file},
		.fileIDs = {"one", "two"},
		.POSTData = {{"b", "1"}, {"a", "2"}}};
}

void NodeFixture::listen(UAsyncNodeCorv& node)
{
	for (const FMulticastDelegateProperty& event : node.GetClass()->Definition.Delegates)
	{
		event.Get(&node).AddHandler(
			[this, &event, weak = TWeakObjectPtr<UAsyncNodeCorv>(&node)](void* const* arguments)
			{
				Outcome outcome{event.Name, {}};
				for (const FParameter& parameter : event.Signature->Parameters)
				{
					outcome.pins[parameter.Name] = pinText(parameter.Type(), *arguments++);
				}
				outcomes.push_back(outcome);
				if (duringOutcome)
				{
					duringOutcome(*weak.Get());
				}
			});
	}
}

UAsyncNodeCorv& NodeFixture::start(UAsyncNodeCorv* node)
{
	listen(*node);
	node->Activate();
	return *node;
}

UAsyncNodeCorv& NodeFixture::startHeld(UAsyncNodeCorv* node)
{
	held.emplace_back(node);
	return start(node);
}

bool NodeFixture::hasEnded(UAsyncNodeCorv& node)
{
	return !FAsyncActionHold::Begin(node, [] {});
}
