#include "ReflectedSample.h"

#include "Async/Async.h"
#include "UObject/UObjectGlobals.h"
#include "UObject/WeakObjectPtr.h"

int32 USampleLibrary::handlerCalls = 0;
int32 USampleNode::alive = 0;

USampleLibrary* USampleLibrary::getTarget()
{
	return GetMutableDefault<USampleLibrary>();
}

void USampleLibrary::echoPlain(bool inFlag, uint8 inSmall, int32 inNumber, int64 inBig, float inRatio, FString inText,
	ESampleColour inColour, USampleLibrary* inObject, bool& flag, uint8& small, int32& number, int64& big, float& ratio, FString& text,
	ESampleColour& colour, USampleLibrary*& object)
{
	flag = inFlag;
	small = inSmall;
	number = inNumber;
	big = inBig;
	ratio = inRatio;
	text = inText;
	colour = inColour;
	object = inObject;
}

void USampleLibrary::echoContainers(const TArray<FString>& inTexts, TArray<int32> inNumbers, TArray<uint8> inBytes,
	const TMap<FString, FString>& inMap, TMap<FString, int32> inCounts, TArray<FString>& texts, TArray<int32>& numbers,
	TArray<uint8>& bytes, TMap<FString, FString>& map, TMap<FString, int32>& counts)
{
	texts = inTexts;
	numbers = inNumbers;
	bytes = inBytes;
	map = inMap;
	counts = inCounts;
}

FDateTime USampleLibrary::echoTime(FDateTime moment, TArray<FDateTime>& list)
{
	TArray<FDateTime> grown{moment};
	grown.Append(list);
	list = grown;
	return moment;
}

FString USampleLibrary::describeDefaults(bool flag, uint8 small, int32 number, int64 big, float ratio, FString text, ESampleColour colour)
{
	return FString::Printf(TEXT("%d|%d|%d|%lld|%.1f|%s|%d"), static_cast<int32>(flag), static_cast<int32>(small), number, big, ratio, *text,
		static_cast<int32>(colour));
}

FString USampleLibrary::describeMap(TMap<FString, FString> map)
{
	FString text;
	for (const TPair<FString, FString>& pair : map)
	{
		text += pair.Key + TEXT("=") + pair.Value + TEXT(";");
	}
	return text;
}

void USampleLibrary::appendText(FString text, TArray<FString>& list, int32& count)
{
	list.Add(text);
	++count;
}

void USampleLibrary::addRecord(TArray<FSampleRecord> otherRecords, FString text, TArray<FSampleRecord>& records)
{
	records = otherRecords;
	records.Add({text});
}

TArray<FString> USampleLibrary::recordTexts(TArray<FSampleRecord> records)
{
	TArray<FString> texts;
	for (const FSampleRecord& record : records)
	{
		texts.Add(record.text);
	}
	return texts;
}

void USampleLibrary::makeForeignRecord(TArray<FForeignRecord>& records)
{
	records.Add({});
}

void USampleLibrary::raise(FString text, bool later)
{
	const auto broadcast = [text] { getTarget()->onSample.Broadcast(text, {TEXT("a"), TEXT("b")}, -3, {0, 255}, int64(1) << 40, 0.5f); };
	if (later)
	{
		AsyncTask(ENamedThreads::GameThread, broadcast);
	}
	else
	{
		broadcast();
	}
}

USampleLibrary* USampleLibrary::makeObject()
{
	return NewObject<USampleLibrary>();
}

void USampleLibrary::notForScripts() {}

void USampleLibrary::countCall(const FString, const TArray<FString>&, int32, const TArray<uint8>&, int64, float)
{
	++handlerCalls;
}

USampleNode::USampleNode()
{
	alive += HasAnyFlags(RF_ClassDefaultObject) ? 0 : 1;
}

USampleNode::~USampleNode()
{
	alive -= HasAnyFlags(RF_ClassDefaultObject) ? 0 : 1;
}

USampleNode* USampleNode::startNode(int32 statusCode, FString requestID, bool immediately)
{
	USampleNode* const node = NewObject<USampleNode>();
	node->status = statusCode;
	node->id = requestID;
	node->isImmediate = immediately;
	return node;
}

namespace
{
	TWeakObjectPtr<USampleNode>& lastingNode()
	{
		static TWeakObjectPtr<USampleNode> node;
		return node;
	}
} // namespace

USampleNode* USampleNode::startLastingNode()
{
	USampleNode* const node = startNode(200, "", true);
	node->isLasting = true;
	lastingNode() = node;
	return node;
}

void USampleNode::endLasting()
{
	lastingNode().Get()->SetReadyToDestroy();
}

USampleNode* USampleNode::startEndedNode()
{
	USampleNode* const node = startNode(400, "", true);
	node->finish();
	return node;
}

void USampleNode::Activate()
{
	if (isImmediate)
	{
		finish();
		return;
	}
	AsyncTask(ENamedThreads::GameThread,
		[weak = TWeakObjectPtr<USampleNode>(this)]
		{
			if (USampleNode* const node = weak.Get())
			{
				node->finish();
			}
		});
}

void USampleNode::finish()
{
	(status < 400 ? OnSuccess : OnFail).Broadcast(status, id);
	if (isLasting)
	{
		return;
	}
	SetReadyToDestroy();
	if (status >= 500)
	{
		ConditionalBeginDestroy();
	}
}
