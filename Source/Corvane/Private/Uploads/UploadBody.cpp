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

	/**
	 * Tells how far another archive has been read, and when it can be read no further: the HTTP layer takes what it finds in its
	 * buffer, and does not ask whether that was read. Thread: HTTP thread.
	 */
	class FWatched : public FArchive
	{
	public:
		/** @param path  of what is read; empty = it lies in memory. */
		FWatched(TUniquePtr<FArchive> InSource, const FString& InPath, UCorvaneRequestCompleteObject* Object, bool bReports)
			: source(MoveTemp(InSource))
			, path(InPath)
		{
			SetIsLoading(true);
			broken.BindUObject(Object, &UCorvaneRequestCompleteObject::requestBodyBroken);
			if (bReports)
			{
				handedOut.BindUObject(Object, &UCorvaneRequestCompleteObject::requestBodyHandedOut);
			}
		}

		virtual int64 TotalSize() override { return source.IsValid() ? source->TotalSize() : 0; }
		virtual int64 Tell() override { return position; }
		virtual void Seek(int64 InPosition) override
		{
			if (source.IsValid())
			{
				source->Seek(InPosition);
			}
			position = InPosition;
		}
		virtual void Serialize(void* Out, int64 Number) override
		{
			if (!IsError() && source.IsValid())
			{
				source->Serialize(Out, Number);
			}
			position += Number;
			if (!source.IsValid() || source->IsError())
			{
				fail(Out, Number);
			}
			else if (Number > 0)
			{
				handedOut.ExecuteIfBound(nullptr, static_cast<uint64>(position), 0);
			}
		}

		/** Behind the end of the request there is nothing more to read. */
		virtual bool Close() override
		{
			source.Reset();
			return !IsError();
		}

	private:
		void fail(void* Out, int64 Number)
		{
			if (Number > 0)
			{
				FMemory::Memzero(Out, static_cast<SIZE_T>(Number)); // what was there is nobody else's business
			}
			if (!IsError())
			{
				SetError();
				UE_LOG(LogTemp, Error, TEXT("UCorvaneBPLibrary: Can't read File: %s"), *path);
				broken.ExecuteIfBound();
			}
		}

		TUniquePtr<FArchive> source; // none = it is closed
		const FString path;
		int64 position = 0;
		FHttpRequestProgressDelegate64 handedOut; // holds the object weakly, like every callback
		TDelegate<void()> broken;
	};

	static bool reportsUpload(const FhttpRequest& Record)
	{
		const bool bIndividual = Record.requestType >= EHTTPCorvRequestType::INDIVIDUAL;
		return !Record.bindServerSendEvent && (!bIndividual || Record.bindUploadProgressEvent);
	}

	static void send(const FhttpRequest& Record, TUniquePtr<FArchive> Source, const FString& Path, IHttpRequest& HttpRequest)
	{
		UCorvaneRequestCompleteObject* Object = Record.requestCompleteObject();
		Object->setUploadSize(static_cast<uint64>(Source->TotalSize()));
		const TSharedPtr<FArchive, ESPMode::ThreadSafe> Body(new FWatched(MoveTemp(Source), Path, Object, reportsUpload(Record)));
		Object->setUploadBody(Body);
		HttpRequest.SetContentFromStream(Body.ToSharedRef());
	}
} // namespace CorvaneUploadBody

void CorvaneUpload::sendBytes(const FhttpRequest& Record, TArray<uint8> Bytes, IHttpRequest& HttpRequest)
{
	CorvaneUploadBody::send(Record, TUniquePtr<FArchive>(new CorvaneUploadBody::FBytes(MoveTemp(Bytes))), FString(), HttpRequest);
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
	CorvaneUploadBody::send(Record, MoveTemp(Reader), Path, HttpRequest);
	return true;
}
