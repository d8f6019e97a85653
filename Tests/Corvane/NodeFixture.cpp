#include "NodeFixture.h"

#include "Delegates/ScriptDelegates.h"
#include "Host/AsyncActionHold.h"
#include "UObject/Class.h"

namespace
{
	std::string pinText(const FPropertyType& type, const void* value)
	{
		if (&type == &PropertyTypeOf<FString>())
		{
			return utf8(*static_cast<const FString*>(value));
		}
		if (&type == &PropertyTypeOf<int32>())
		{
			return std::to_string(*static_cast<const int32*>(value));
		}
		if (&type == &PropertyTypeOf<int64>())
		{
			return std::to_string(*static_cast<const int64*>(value));
		}
		std::string all;
		if (&type == &PropertyTypeOf<TArray<uint8>>())
		{
			const auto& bytes = *static_cast<const TArray<uint8>*>(value);
			return std::string(bytes.begin(), bytes.end());
		}
		EXPECT_EQ(&type, &PropertyTypeOf<TArray<FString>>());
		for (const FString& entry : *static_cast<const TArray<FString>*>(value))
		{
			all += utf8(entry) + "\n";
		}
		return all;
	}

	size_t contentLength(const std::string& head)
	{
		const size_t place = head.find("\r\nContent-Length: ");
		return place == head.npos ? 0 : std::stoul(head.substr(place + 18));
	}

	std::string driveView()
	{
		std::string fields = R"(["id","level.pak")";
		for (int field = 2; field < 27; ++field)
		{
			fields += ",null";
		}
		return "viewer({itemJson:" + fields + ",\"1572864\"]});";
	}

	std::string answerFor(const RangeRequest& request)
	{
		const std::string target = targetOf(request.head);
		if (target.starts_with("/file/d/"))
		{
			return answer(200, driveView());
		}
		if (target.starts_with("/uc") && target.find("confirm") == target.npos)
		{
			return answer(200, "<a href=\"/uc;confirm=t0k3n&x\">");
		}
		return rangedAnswer(NodeOrigin::content, request);
	}

	/** Replaces the number behind each occurrence of a mark. @return whether there was any. */
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

NodeOrigin::NodeOrigin(Gate* inGate)
	: gate(inGate)
	, origin([this](Connection& connection, const RangeRequest& request) { serve(connection, request); })
{
}

void NodeOrigin::serve(Connection& connection, const RangeRequest& request)
{
	std::string whole = request.head + connection.read(contentLength(request.head));
	// The token of a form that is put together in memory is made of the time, and the length tells its digits.
	if (replaceNumbers(whole, "UE4CorvanePlugin_"))
	{
		replaceNumbers(whole, "Content-Length: ");
	}
	if (gate)
	{
		connection.waitFor(*gate);
	}
	{
		const std::scoped_lock lock(mutex);
		received.push_back(whole);
	}
	connection.send(answerFor(request));
}

std::vector<std::string> NodeOrigin::requests() const
{
	const std::scoped_lock lock(mutex);
	return received;
}

void NodeOrigin::forget()
{
	const std::scoped_lock lock(mutex);
	received.clear();
}

NodeFixture::NodeFixture()
{
	library().onhttpRequestCompleteGoogleInfoDelegate.AddHandler(
		[this](void* const* a) { fileInfos.push_back(utf8(*static_cast<const FString*>(a[4]))); });
	library().setUploadGracePeriod(0);
}

NodeSite NodeFixture::site(const NodeOrigin& origin) const
{
	UCorvaneBPLibrary::setGoogleDriveBase(origin.base());
	return {text(origin.url()), text(dir.write("upload.txt", "to be sent")), text(dir.path("download.bin")), "level"};
}

void NodeFixture::listen(UAsyncNodeCorv& node)
{
	for (const FMulticastDelegateProperty& event : node.GetClass()->Definition.Delegates)
	{
		event.Get(&node).AddHandler(
			[this, &event, weak = TWeakObjectPtr<UAsyncNodeCorv>(&node)](void* const* arguments)
			{
				Outcome outcome{event.Name, {}};
				for (size_t index = 0; index < event.Signature->Parameters.size(); ++index)
				{
					const FParameter& parameter = event.Signature->Parameters[index];
					outcome.pins[parameter.Name] = pinText(parameter.Type(), arguments[index]);
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
