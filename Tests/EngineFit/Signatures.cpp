// Holds the stand-in to the engine's signatures, as far as the module leans on them: what a call takes and gives, what
// an override must look like, which conversions do not exist. Nothing here runs; a fault is an error of the compiler.

#include "Async/Async.h"
#include "Containers/Queue.h"
#include "Containers/StringConv.h"
#include "CoreMinimal.h"
#include "GenericPlatform/GenericPlatformFile.h"
#include "GenericPlatform/GenericPlatformHttp.h"
#include "HAL/CriticalSection.h"
#include "HAL/Event.h"
#include "HAL/FileManager.h"
#include "HAL/PlatformFileManager.h"
#include "HAL/PlatformProcess.h"
#include "HAL/Runnable.h"
#include "HAL/RunnableThread.h"
#include "HAL/UnrealMemory.h"
#include "HttpModule.h"
#include "Interfaces/IHttpRequest.h"
#include "Interfaces/IHttpResponse.h"
#include "Kismet/BlueprintAsyncActionBase.h"
#include "Kismet/BlueprintFunctionLibrary.h"
#include "Misc/Base64.h"
#include "Misc/CString.h"
#include "Misc/CoreDelegates.h"
#include "Misc/DateTime.h"
#include "Misc/FileHelper.h"
#include "Misc/Guid.h"
#include "Misc/Paths.h"
#include "Misc/ScopeLock.h"
#include "Misc/SecureHash.h"
#include "Misc/Timespan.h"
#include "Modules/ModuleManager.h"
#include "Serialization/Archive.h"
#include "UObject/StrongObjectPtr.h"
#include "UObject/UObjectGlobals.h"
#include "UObject/WeakObjectPtr.h"

#include <type_traits>

/** The call in the second place has exactly the type in the first. */
#define GIVES(Type, ...) static_assert(std::is_same_v<decltype(__VA_ARGS__), Type>)
/** The member function has exactly this type, so that an override written for the engine overrides it. */
#define IS_DECLARED(Type, Member) static_assert(std::is_same_v<decltype(&Member), Type>)

namespace EngineSignatures
{
	using FBytes = TArray<uint8>;
	using FTexts = TArray<FString>;
	using FHeaders = TMap<FString, FString>;

	// Operands of the calls below; they exist in no program.
	extern const TCHAR* const Name;
	extern const FString Text;
	extern FString OutText;
	extern FBytes Bytes;
	extern const FBytes ConstBytes;
	extern FTexts Texts;
	extern FHeaders Headers;
	extern const FHeaders ConstHeaders;
	extern const FDateTime Time;

	// Base types.
	static_assert(sizeof(int32) == 4 && sizeof(int64) == 8 && sizeof(uint8) == 1 && sizeof(uint32) == 4 && sizeof(uint64) == 8);
	static_assert(std::is_signed_v<int32> && std::is_signed_v<int64> && std::is_unsigned_v<uint32> && std::is_unsigned_v<uint64>);
	static_assert(sizeof(TCHAR) == 2 && std::is_same_v<ANSICHAR, char>);
	static_assert(INDEX_NONE == -1);
	static_assert(MAX_int32 == 2147483647 && MAX_int64 == 9223372036854775807);
	static_assert(ETimespan::TicksPerSecond == 10000000);

	// Text.
	GIVES(int32, Text.Len());
	GIVES(bool, Text.IsEmpty());
	GIVES(const TCHAR*, *Text);
	GIVES(const TCHAR&, Text[0]);
	GIVES(FString, FString::ConstructFromPtrSize(Name, 1));
	GIVES(FString, FString::Printf(TEXT("%s %d %lld %.2f"), Name, int32(), int64(), 1.0));
	GIVES(bool, Text == Text);
	GIVES(bool, Text.Equals(Text, ESearchCase::CaseSensitive));
	GIVES(bool, Text.Contains(TEXT("a"), ESearchCase::IgnoreCase));
	GIVES(bool, Text.StartsWith(TEXT("a"), ESearchCase::IgnoreCase));
	GIVES(bool, Text.EndsWith(TEXT("a"), ESearchCase::IgnoreCase));
	GIVES(int32, Text.Find(TEXT("a"), ESearchCase::IgnoreCase, ESearchDir::FromEnd));
	GIVES(bool, Text.IsNumeric());
	GIVES(bool, Text.Split(TEXT("a"), &OutText, nullptr, ESearchCase::IgnoreCase, ESearchDir::FromStart));
	GIVES(int32, Text.ParseIntoArray(Texts, TEXT(","), true));
	GIVES(FString, Text.Replace(TEXT("a"), TEXT("b"), ESearchCase::CaseSensitive));
	GIVES(FString, Text.Left(1));
	GIVES(FString, Text.Right(1));
	GIVES(FString, Text.Mid(1, 1));
	GIVES(FString, Text.LeftChop(1));
	GIVES(FString, Text.RightChop(1));
	GIVES(FString, Text.TrimEnd());
	GIVES(FString, Text.ToUpper());
	GIVES(FString&, OutText += Text);
	GIVES(FString, Text + TEXT("a"));
	static_assert(!std::is_convertible_v<int32, FString> && !std::is_convertible_v<FString, const TCHAR*>);
	static_assert(std::is_convertible_v<FString, FStringView>);
	GIVES(const ANSICHAR*, FTCHARToUTF8(Name, 1).Get());
	GIVES(int32, FTCHARToUTF8(Name, 1).Length());
	GIVES(const TCHAR*, FUTF8ToTCHAR(static_cast<const ANSICHAR*>(""), 1).Get());
	GIVES(int32, FUTF8ToTCHAR(static_cast<const ANSICHAR*>(""), 1).Length());
	GIVES(int64, FCString::Atoi64(Name));
	GIVES(double, FCString::Atod(Name));

	// Containers.
	GIVES(int32, Bytes.Num());
	GIVES(bool, Bytes.IsEmpty());
	GIVES(bool, Bytes.IsValidIndex(0));
	GIVES(uint8*, Bytes.GetData());
	GIVES(const uint8*, ConstBytes.GetData());
	GIVES(uint8&, Bytes[0]);
	GIVES(const uint8&, ConstBytes[0]);
	GIVES(int32, Texts.Add(Text));
	GIVES(void, Texts.Append(Texts));
	GIVES(void, Bytes.Append(ConstBytes.GetData(), 1));
	GIVES(bool, Texts.Contains(Text));
	GIVES(int32, Texts.RemoveSingle(Text));
	GIVES(void, Texts.RemoveAt(0));
	GIVES(void, Texts.Empty());
	GIVES(void, Texts.Reserve(1));
	GIVES(void, Bytes.SetNumUninitialized(1));
	GIVES(FString&, Headers.Add(Text, Text));
	GIVES(FString*, Headers.Find(Text));
	GIVES(const FString*, ConstHeaders.Find(Text));
	GIVES(FString, ConstHeaders.FindRef(Text));
	GIVES(bool, ConstHeaders.Contains(Text));
	GIVES(bool, ConstHeaders.IsEmpty());
	GIVES(int32, Headers.Remove(Text));
	GIVES(FString, TPair<FString, int32>().Key);
	GIVES(int32, TPair<FString, int32>().Value);
	GIVES(int32, std::declval<TSet<FString>&>().Remove(Text));
	GIVES(bool, std::declval<const TSet<FString>&>().Contains(Text));
	static_assert(requires { std::declval<TSet<FString>&>().Add(Text); });
	using FQueue = TQueue<int32*, EQueueMode::Mpsc>;
	GIVES(bool, std::declval<FQueue&>().Enqueue(nullptr));
	GIVES(bool, std::declval<FQueue&>().Dequeue(std::declval<int32*&>()));
	GIVES(bool, std::declval<const FQueue&>().IsEmpty());
	static_assert(!std::is_copy_constructible_v<FQueue> && !std::is_move_constructible_v<FQueue>);

	// Pointers, functions and small templates.
	GIVES(TSharedRef<int32>, MakeShared<int32>(1));
	GIVES(bool, std::declval<const TSharedPtr<int32>&>().IsValid());
	GIVES(int32*, std::declval<const TSharedPtr<int32>&>().Get());
	GIVES(void, std::declval<TSharedPtr<int32>&>().Reset());
	static_assert(
		std::is_convertible_v<TSharedRef<int32>, TSharedPtr<int32>> && !std::is_convertible_v<TSharedPtr<int32>, TSharedRef<int32>>);
	static_assert(!std::is_default_constructible_v<TSharedRef<int32>> && !std::is_convertible_v<TSharedPtr<int32>, bool>);
	static_assert(std::is_same_v<TSharedPtr<int32>, TSharedPtr<int32, ESPMode::ThreadSafe>>);
	GIVES(TUniquePtr<int32>, MakeUnique<int32>(1));
	GIVES(bool, std::declval<const TUniquePtr<int32>&>().IsValid());
	static_assert(!std::is_copy_constructible_v<TUniquePtr<int32>> && !std::is_convertible_v<int32*, TUniquePtr<int32>>);
	static_assert(std::is_move_assignable_v<TUniqueFunction<void()>> && !std::is_copy_constructible_v<TUniqueFunction<void()>>);
	GIVES(FString&&, MoveTemp(OutText));
	GIVES(int64, FMath::Max<int64>(1, int32(2)));
	GIVES(int64, FMath::Min<int64>(1, int32(2)));
	GIVES(int32, FMath::Clamp<int32>(1, 2, 3));

	// Time, identifiers, encodings.
	GIVES(FDateTime, FDateTime::Now());
	GIVES(FDateTime, FDateTime::UtcNow());
	GIVES(FDateTime, FDateTime::MinValue());
	GIVES(int64, Time.GetTicks());
	static_assert(std::is_constructible_v<FDateTime, int64> && !std::is_convertible_v<int64, FDateTime>);
	GIVES(FGuid, FGuid::NewGuid());
	GIVES(FString, std::declval<const FGuid&>().ToString());
	GIVES(FString, FBase64::Encode(ConstBytes));
	GIVES(FString, FBase64::Encode(ConstBytes.GetData(), uint32()));
	GIVES(bool, FBase64::Decode(Text, Bytes));
	IS_DECLARED(void (FMD5::*)(const uint8*, uint64), FMD5::Update);
	IS_DECLARED(void (FMD5::*)(uint8*), FMD5::Final);

	// Paths and files.
	GIVES(FString, FPaths::ProjectDir());
	GIVES(FString, FPaths::ConvertRelativePathToFull(Text));
	GIVES(bool, FPaths::FileExists(Text));
	GIVES(bool, FPaths::DirectoryExists(Text));
	GIVES(FString, FPaths::GetExtension(Text, true));
	GIVES(FString, FPaths::GetCleanFilename(Text));
	GIVES(FString, FPaths::GetBaseFilename(Text, false));
	GIVES(FString, FPaths::GetPath(Text));
	GIVES(bool, FPaths::IsSamePath(Text, Text));
	GIVES(bool, FFileHelper::LoadFileToArray(Bytes, Name));
	GIVES(bool, FFileHelper::LoadFileToString(OutText, Name));
	GIVES(bool, FFileHelper::SaveArrayToFile(ConstBytes, Name));
	GIVES(bool, FFileHelper::SaveStringToFile(Text, Name));
	GIVES(IFileManager&, IFileManager::Get());
	GIVES(FArchive*, IFileManager::Get().CreateFileReader(Name));
	GIVES(FArchive*, IFileManager::Get().CreateFileWriter(Name, FILEWRITE_Append));
	GIVES(int64, IFileManager::Get().FileSize(Name));
	GIVES(void, IFileManager::Get().FindFiles(std::declval<TArray<FString>&>(), Name, nullptr));
	GIVES(bool, IFileManager::Get().Delete(Name, false, true, true));
	static_assert(
		FILEWRITE_None == 0 && FILEWRITE_Append == 0x08 && FILEWRITE_AllowRead == 0x10 && std::is_convertible_v<EFileWrite, uint32>);
	IS_DECLARED(void (FArchive::*)(void*, int64), FArchive::Serialize);
	IS_DECLARED(int64 (FArchive::*)(), FArchive::TotalSize);
	IS_DECLARED(void (FArchive::*)(int64), FArchive::Seek);
	IS_DECLARED(int64 (FArchive::*)(), FArchive::Tell);
	IS_DECLARED(bool (FArchive::*)(), FArchive::Close);
	IS_DECLARED(bool (FArchive::*)() const, FArchive::IsError);
	IS_DECLARED(void (FArchive::*)(), FArchive::SetError);
	struct FReader : FArchive
	{
		using FArchive::SetIsLoading;
	};
	GIVES(void, std::declval<FReader&>().SetIsLoading(true));
	GIVES(FArchive*, std::declval<TUniquePtr<FArchive>&>().Release());
	GIVES(IPlatformFile&, FPlatformFileManager::Get().GetPlatformFile());
	extern IPlatformFile& Disk;
	GIVES(bool, Disk.FileExists(Name));
	GIVES(bool, Disk.DirectoryExists(Name));
	GIVES(int64, Disk.FileSize(Name));
	GIVES(bool, Disk.DeleteFile(Name));
	GIVES(bool, Disk.MoveFile(Name, Name));
	GIVES(bool, Disk.CopyFile(Name, Name));
	GIVES(bool, Disk.CreateDirectory(Name));
	GIVES(bool, Disk.DeleteDirectory(Name));
	GIVES(bool, Disk.IsReadOnly(Name));
	GIVES(bool, Disk.SetReadOnly(Name, true));
	GIVES(FDateTime, Disk.GetTimeStamp(Name));
	GIVES(FDateTime, Disk.GetAccessTimeStamp(Name));
	GIVES(void, Disk.SetTimeStamp(Name, Time));
	GIVES(FString, Disk.GetFilenameOnDisk(Name));
	GIVES(IFileHandle*, Disk.OpenRead(Name, false));
	GIVES(IFileHandle*, Disk.OpenWrite(Name, true, true));
	IS_DECLARED(int64 (IFileHandle::*)(), IFileHandle::Tell);
	IS_DECLARED(bool (IFileHandle::*)(int64), IFileHandle::Seek);
	IS_DECLARED(bool (IFileHandle::*)(int64), IFileHandle::SeekFromEnd);
	IS_DECLARED(bool (IFileHandle::*)(uint8*, int64), IFileHandle::Read);
	IS_DECLARED(bool (IFileHandle::*)(const uint8*, int64), IFileHandle::Write);
	IS_DECLARED(bool (IFileHandle::*)(bool), IFileHandle::Flush);
	IS_DECLARED(bool (IFileHandle::*)(int64), IFileHandle::Truncate);
	IS_DECLARED(int64 (IFileHandle::*)(), IFileHandle::Size);
	static_assert(std::has_virtual_destructor_v<FArchive> && std::has_virtual_destructor_v<IFileHandle>);

	// Threads.
	IS_DECLARED(uint32 (FRunnable::*)(), FRunnable::Run);
	IS_DECLARED(void (FRunnable::*)(), FRunnable::Stop);
	static_assert(std::has_virtual_destructor_v<FRunnable> && std::has_virtual_destructor_v<FRunnableThread>);
	GIVES(FRunnableThread*, FRunnableThread::Create(std::declval<FRunnable*>(), Name));
	IS_DECLARED(bool (FRunnableThread::*)(bool), FRunnableThread::Kill);
	IS_DECLARED(void (FRunnableThread::*)(), FRunnableThread::WaitForCompletion);
	GIVES(FEvent*, FPlatformProcess::GetSynchEventFromPool());
	GIVES(void, FPlatformProcess::ReturnSynchEventToPool(std::declval<FEvent*>()));
	GIVES(void, std::declval<FEvent&>().Trigger());
	GIVES(bool, std::declval<FEvent&>().Wait(uint32()));
	GIVES(void, std::declval<FEvent&>().Wait());
	GIVES(void, AsyncTask(ENamedThreads::GameThread, []() {}));
	static_assert(std::is_constructible_v<FScopeLock, FCriticalSection*> && !std::is_copy_constructible_v<FScopeLock>);
	static_assert(!std::is_copy_constructible_v<FCriticalSection>);
	IS_DECLARED(void (IModuleInterface::*)(), IModuleInterface::StartupModule);
	IS_DECLARED(void (IModuleInterface::*)(), IModuleInterface::ShutdownModule);

	// Objects.
	using FLibrary = UBlueprintFunctionLibrary;
	using FNode = UBlueprintAsyncActionBase;
	IS_DECLARED(void (UObject::*)(), UObject::BeginDestroy);
	GIVES(void, std::declval<UObject&>().AddToRoot());
	GIVES(void, std::declval<UObject&>().RemoveFromRoot());
	GIVES(bool, std::declval<const UObject&>().IsRooted());
	GIVES(bool, std::declval<UObject&>().ConditionalBeginDestroy());
	IS_DECLARED(void (FNode::*)(), FNode::Activate);
	IS_DECLARED(void (FNode::*)(), FNode::SetReadyToDestroy);
	static_assert(std::is_base_of_v<UObject, FLibrary> && std::is_base_of_v<UObject, FNode> && !std::is_copy_constructible_v<UObject>);
	static_assert(std::is_constructible_v<FLibrary, const FObjectInitializer&>);
	GIVES(const FObjectInitializer&, FObjectInitializer::Get());
	GIVES(FNode*, NewObject<FNode>());
	GIVES(FNode*, Cast<FNode>(std::declval<UObject*>()));
	GIVES(FLibrary*, GetMutableDefault<FLibrary>());
	GIVES(bool, IsValid(std::declval<const UObject*>()));
	GIVES(FNode*, std::declval<const TWeakObjectPtr<FNode>&>().Get());
	GIVES(bool, std::declval<const TWeakObjectPtr<FNode>&>().IsValid());
	GIVES(void, std::declval<TWeakObjectPtr<FNode>&>().Reset());
	GIVES(FNode*, std::declval<const TStrongObjectPtr<FNode>&>().Get());
	static_assert(std::is_convertible_v<FNode*, TWeakObjectPtr<FNode>> && !std::is_convertible_v<FNode*, TStrongObjectPtr<FNode>>);

	// HTTP.
	static_assert(std::is_same_v<FHttpRequestPtr, TSharedPtr<IHttpRequest, ESPMode::ThreadSafe>>);
	static_assert(std::is_same_v<FHttpResponsePtr, TSharedPtr<IHttpResponse, ESPMode::ThreadSafe>>);
	static_assert(std::is_base_of_v<IHttpBase, IHttpRequest> && std::is_base_of_v<IHttpBase, IHttpResponse>);
	GIVES(FHttpRequestRef, FHttpModule::Get().CreateRequest());
	GIVES(FString, FGenericPlatformHttp::UrlEncode(Text));
	IS_DECLARED(FString (IHttpBase::*)(const FString&) const, IHttpBase::GetHeader);
	IS_DECLARED(FTexts (IHttpBase::*)() const, IHttpBase::GetAllHeaders);
	IS_DECLARED(uint64 (IHttpBase::*)() const, IHttpBase::GetContentLength);
	IS_DECLARED(const FBytes& (IHttpBase::*)() const, IHttpBase::GetContent);
	IS_DECLARED(int32 (IHttpResponse::*)() const, IHttpResponse::GetResponseCode);
	IS_DECLARED(FString (IHttpResponse::*)() const, IHttpResponse::GetContentAsString);
	IS_DECLARED(void (IHttpRequest::*)(const FString&), IHttpRequest::SetVerb);
	IS_DECLARED(void (IHttpRequest::*)(const FString&), IHttpRequest::SetURL);
	IS_DECLARED(void (IHttpRequest::*)(const FString&, const FString&), IHttpRequest::SetHeader);
	IS_DECLARED(void (IHttpRequest::*)(const FString&), IHttpRequest::SetContentAsString);
	IS_DECLARED(bool (IHttpRequest::*)(const FString&), IHttpRequest::SetContentAsStreamedFile);
	IS_DECLARED(bool (IHttpRequest::*)(TSharedRef<FArchive, ESPMode::ThreadSafe>), IHttpRequest::SetContentFromStream);
	IS_DECLARED(bool (IHttpRequest::*)(TSharedRef<FArchive>), IHttpRequest::SetResponseBodyReceiveStream);
	IS_DECLARED(bool (IHttpRequest::*)(FHttpRequestStreamDelegateV2), IHttpRequest::SetResponseBodyReceiveStreamDelegateV2);
	IS_DECLARED(void (IHttpRequest::*)(float), IHttpRequest::SetTimeout);
	IS_DECLARED(void (IHttpRequest::*)(float), IHttpRequest::SetActivityTimeout);
	IS_DECLARED(void (IHttpRequest::*)(EHttpRequestDelegateThreadPolicy), IHttpRequest::SetDelegateThreadPolicy);
	IS_DECLARED(bool (IHttpRequest::*)(), IHttpRequest::ProcessRequest);
	IS_DECLARED(void (IHttpRequest::*)(), IHttpRequest::CancelRequest);
	IS_DECLARED(const FHttpResponsePtr (IHttpRequest::*)() const, IHttpRequest::GetResponse);
	IS_DECLARED(FHttpRequestCompleteDelegate& (IHttpRequest::*)(), IHttpRequest::OnProcessRequestComplete);
	IS_DECLARED(FHttpRequestProgressDelegate64& (IHttpRequest::*)(), IHttpRequest::OnRequestProgress64);
	IS_DECLARED(FHttpRequestStatusCodeReceivedDelegate& (IHttpRequest::*)(), IHttpRequest::OnStatusCodeReceived);
	IS_DECLARED(FHttpRequestHeaderReceivedDelegate& (IHttpRequest::*)(), IHttpRequest::OnHeaderReceived);
	GIVES(void*, FMemory::Memcpy(std::declval<void*>(), std::declval<const void*>(), std::declval<SIZE_T>()));
	GIVES(void, std::declval<IHttpRequest&>().SetContent(MoveTemp(Bytes)));
	static_assert(static_cast<int32>(EHttpRequestDelegateThreadPolicy::CompleteOnGameThread) == 0);
	static_assert(static_cast<int32>(EHttpRequestDelegateThreadPolicy::CompleteOnHttpThread) == 1);

	/** A receiver of the callbacks, written as the module writes them. */
	class FReceiver : public UObject
	{
	public:
		void complete(FHttpRequestPtr, FHttpResponsePtr, bool);
		void progress(FHttpRequestPtr, uint64, uint64);
		void status(FHttpRequestPtr, int32);
		void stream(void*, int64&);
		void text(const FString, const FTexts&);
		void exit();
	};
	// What these two return is of no use to the module.
	static_assert(requires(FReceiver * Receiver) { FCoreDelegates::OnPreExit.AddRaw(Receiver, &FReceiver::exit); });
	static_assert(requires(FReceiver * Receiver) { FCoreDelegates::OnPreExit.RemoveAll(Receiver); });
	GIVES(void, std::declval<FHttpRequestCompleteDelegate&>().BindUObject(std::declval<FReceiver*>(), &FReceiver::complete));
	GIVES(void, std::declval<FHttpRequestProgressDelegate64&>().BindUObject(std::declval<FReceiver*>(), &FReceiver::progress));
	GIVES(void, std::declval<FHttpRequestStatusCodeReceivedDelegate&>().BindUObject(std::declval<FReceiver*>(), &FReceiver::status));
	GIVES(bool, std::declval<const FHttpRequestProgressDelegate64&>().ExecuteIfBound(nullptr, uint64(), uint64()));
	GIVES(FHttpRequestRef, std::declval<const FHttpRequestPtr&>().ToSharedRef());
	GIVES(void, std::declval<FHttpRequestStreamDelegateV2&>().BindUObject(std::declval<FReceiver*>(), &FReceiver::stream));
	DECLARE_DYNAMIC_MULTICAST_DELEGATE_TwoParams(FEngineSignatureEvent, const FString, text, const FTexts&, texts);
	GIVES(void, std::declval<const FEngineSignatureEvent&>().Broadcast(Text, Texts));
	GIVES(void, std::declval<FEngineSignatureEvent&>().AddUniqueDynamic(std::declval<FReceiver*>(), &FReceiver::text));
} // namespace EngineSignatures
