#include "Uploads/UploadBody.h"

#include "CorvaneRequestCompleteObject.h"
#include "HAL/FileManager.h"
#include "HAL/UnrealMemory.h"
#include "Misc/Paths.h"
#include "Serialization/Archive.h"
#include "Templates/SharedPointer.h"
#include "Templates/UniquePtr.h"

namespace CorvaneUploadBody
{
	/** Bytes in memory as a file. */
	class FBytes : public FArchive
	{
	public:
		explicit FBytes(TArray<uint8> InBytes)
			: bytes(MoveTemp(InBytes))
		{
			SetIsLoading(true);
		}

		virtual int64 TotalSize() override { return bytes.Num(); }
		virtual int64 Tell() override { return position; }
		virtual void Seek(int64 InPosition) override { position = InPosition; }
		virtual void Serialize(void* Out, int64 Number) override
		{
			if (Number < 0 || Number > bytes.Num() - position)
			{
				SetError();
				return;
			}
			FMemory::Memcpy(Out, bytes.GetData() + position, static_cast<SIZE_T>(Number));
			position += Number;
		}

	private:
		const TArray<uint8> bytes;
		int64 position = 0;
	};

	/** Tells how far another archive has been read. Thread: HTTP thread. */
	class FCounted : public FArchive
	{
	public:
		FCounted(TUniquePtr<FArchive> InSource, UCorvaneRequestCompleteObject* Object)
			: source(MoveTemp(InSource))
		{
			SetIsLoading(true);
			handedOut.BindUObject(Object, &UCorvaneRequestCompleteObject::requestBodyHandedOut);
		}

		virtual int64 TotalSize() override { return source->TotalSize(); }
		virtual int64 Tell() override { return source->Tell(); }
		virtual void Seek(int64 InPosition) override { source->Seek(InPosition); }
		virtual void Serialize(void* Out, int64 Number) override
		{
			source->Serialize(Out, Number);
			if (source->IsError())
			{
				SetError();
			}
			else if (Number > 0)
			{
				handedOut.ExecuteIfBound(nullptr, static_cast<uint64>(source->Tell()), 0);
			}
		}

	private:
		const TUniquePtr<FArchive> source;
		FHttpRequestProgressDelegate64 handedOut; // holds the object weakly, like every callback
	};

	static bool reportsUpload(const FhttpRequest& Record)
	{
		const bool bIndividual = Record.requestType >= EHTTPCorvRequestType::INDIVIDUAL;
		return !Record.bindServerSendEvent && (!bIndividual || Record.bindUploadProgressEvent);
	}

	static void send(const FhttpRequest& Record, TUniquePtr<FArchive> Source, IHttpRequest& HttpRequest)
	{
		UCorvaneRequestCompleteObject* Object = Record.requestCompleteObject();
		Object->setUploadSize(static_cast<uint64>(Source->TotalSize()));
		FArchive* Body = reportsUpload(Record) ? new FCounted(MoveTemp(Source), Object) : Source.Release();
		HttpRequest.SetContentFromStream(TSharedPtr<FArchive, ESPMode::ThreadSafe>(Body).ToSharedRef());
	}
} // namespace CorvaneUploadBody

void CorvaneUpload::sendBytes(const FhttpRequest& Record, TArray<uint8> Bytes, IHttpRequest& HttpRequest)
{
	CorvaneUploadBody::send(Record, TUniquePtr<FArchive>(new CorvaneUploadBody::FBytes(MoveTemp(Bytes))), HttpRequest);
}

bool CorvaneUpload::sendFile(const FhttpRequest& Record, const FString& Path, IHttpRequest& HttpRequest)
{
	// A directory can be opened, too, on some systems.
	TUniquePtr<FArchive> Reader(FPaths::FileExists(Path) ? IFileManager::Get().CreateFileReader(*Path) : nullptr);
	if (!Reader.IsValid())
	{
		UE_LOG(LogTemp, Error, TEXT("UCorvaneBPLibrary: Can't read File: %s"), *Path);
		return false;
	}
	CorvaneUploadBody::send(Record, MoveTemp(Reader), HttpRequest);
	return true;
}
