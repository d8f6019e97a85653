// Journals: what is written is read back, wherever the file was torn, and nothing that stands in one is believed half.

#include "Files/Journal.h"
#include "Files/JournalLines.h"
#include "Fuzz.h"
#include "Tus/TusJournal.h"

#include <functional>

namespace
{
	void CheckSame(const FCorvaneJournal& A, const FCorvaneJournal& B)
	{
		HOST_CHECK(A.ValidBytes == B.ValidBytes && A.bHasSource == B.bHasSource && A.bWhole == B.bWhole && A.bToldApart == B.bToldApart);
		HOST_CHECK(IsSame(A.Source.Address, B.Source.Address) && IsSame(A.Source.ETag, B.Source.ETag) && A.Source.Total == B.Source.Total);
		HOST_CHECK(IsSame(A.Source.LastModified, B.Source.LastModified) && A.Kept.Length == B.Kept.Length &&
				   IsSame(A.Kept.TailHash, B.Kept.TailHash));
	}
	void CheckSame(const FCorvaneTusJournal& A, const FCorvaneTusJournal& B)
	{
		HOST_CHECK(A.ValidBytes == B.ValidBytes && IsSame(A.Upload.Address, B.Upload.Address) && IsSame(A.Endpoint, B.Endpoint));
		HOST_CHECK(
			A.Upload.Expires.GetTicks() == B.Upload.Expires.GetTicks() && IsSame(A.File.Path, B.File.Path) && A.File.Size == B.File.Size);
		HOST_CHECK(A.File.ChangedAt.GetTicks() == B.File.ChangedAt.GetTicks() && A.Kept.Length == B.Kept.Length &&
				   IsSame(A.Kept.TailHash, B.Kept.TailHash));
	}

	/** The bytes up to the last good line tell what all of them tell, and a line behind them is good, too. */
	template <class TJournal>
	TJournal ReadTwice(const std::string& Bytes)
	{
		const TJournal Told = TJournal::Read(ToArray(Bytes));
		HOST_CHECK(Told.ValidBytes >= 0 && Told.ValidBytes <= static_cast<int64>(Bytes.size()) && Told.Kept.Length >= 0);
		CheckSame(TJournal::Read(ToArray(Bytes.substr(0, static_cast<size_t>(Told.ValidBytes)))), Told);
		return Told;
	}

	/** What control characters and lone halves of pairs become is nobody's business here. */
	FString Plain(FFuzzInput& Input)
	{
		FString Kept;
		const FString Text = Input.Text('|');
		for (int32 Index = 0; Index < Text.Len(); ++Index)
		{
			Kept.AppendChar(Text[Index] < 0x20 ? TCHAR(0xFFFD) : Text[Index]);
		}
		return Kept;
	}

	/**
	 * Writes records one after the other, as the input names them.
	 * @param WriteRecord  adds one to the bytes, and tells a journal that knows it from then on.
	 */
	template <class TJournal>
	void WriteAndTear(FFuzzInput& Input, const std::function<TArray<uint8>(char, TJournal&)>& WriteRecord)
	{
		const size_t Cut = static_cast<size_t>(Input.Number(0, MAX_int32, '|'));
		std::string Bytes;
		TJournal Expected, BeforeCut;
		while (!Input.IsOver())
		{
			const std::string_view Kind = Input.Field('|');
			Bytes += ViewOf(WriteRecord(Kind.empty() ? ' ' : Kind[0], Expected));
			Expected.ValidBytes = static_cast<int64>(Bytes.size());
			BeforeCut = Bytes.size() <= Cut ? Expected : BeforeCut;
		}
		CheckSame(ReadTwice<TJournal>(Bytes), Expected);
		CheckSame(ReadTwice<TJournal>(Bytes.substr(0, Cut)), BeforeCut);
	}

	TArray<uint8> WriteDownload(FFuzzInput& Input, char Kind, FCorvaneJournal& Told)
	{
		if (Kind == 's' || !Told.bHasSource)
		{
			Told = FCorvaneJournal();
			Told.bHasSource = true;
			Told.Source = {Plain(Input), Plain(Input), Plain(Input), Input.Number(-1, MAX_int64, '|')};
			return FCorvaneJournal::SourceLine(Told.Source);
		}
		Told.Kept = {Input.Number(0, MAX_int64, '|'), Plain(Input)};
		Told.bWhole = Kind != 'k';
		Told.bToldApart = Kind == 'd';
		return Told.bWhole ? FCorvaneJournal::WholeLine(Told.Kept, Told.bToldApart) : FCorvaneJournal::KeptLine(Told.Kept);
	}

	TArray<uint8> WriteUpload(FFuzzInput& Input, char Kind, FCorvaneTusJournal& Told)
	{
		if (Kind == 'u' || Told.Upload.Address.IsEmpty())
		{
			Told = FCorvaneTusJournal();
			Told.Endpoint = Plain(Input);
			Told.File = {Plain(Input), Input.Number(0, MAX_int64, '|'), FDateTime(Input.Number(0, MAX_int64, '|'))};
			Told.Upload.Address = TEXT("x") + Plain(Input);
			return FCorvaneTusJournal::UploadLine(Told.Endpoint, Told.File, Told.Upload);
		}
		Told.Kept = {Input.Number(0, MAX_int64, '|'), Plain(Input)};
		Told.Upload.Expires = FDateTime(Input.Number(0, MAX_int64, '|'));
		return FCorvaneTusJournal::KeptLine(Told.Kept, Told.Upload);
	}

	/** Lines whose checksum is right, whatever is in them. */
	std::string MakeLines(FFuzzInput& Input)
	{
		std::string Bytes;
		while (!Input.IsOver())
		{
			TArray<FString> Fields;
			FFuzzInput Line(Input.Field());
			while (!Line.IsOver())
			{
				Fields.Add(Line.Text('|'));
			}
			Bytes += ViewOf(CorvaneJournalLines::Make(Fields));
		}
		return Bytes;
	}
} // namespace

FUZZ(Input)
{
	const std::string_view What = Input.Field();
	if (What == "download")
	{
		WriteAndTear<FCorvaneJournal>(Input, [&Input](char Kind, FCorvaneJournal& Told) { return WriteDownload(Input, Kind, Told); });
	}
	else if (What == "upload")
	{
		WriteAndTear<FCorvaneTusJournal>(Input, [&Input](char Kind, FCorvaneTusJournal& Told) { return WriteUpload(Input, Kind, Told); });
	}
	else
	{
		const std::string Bytes = What == "lines" ? MakeLines(Input) : std::string(Input.Rest());
		ReadTwice<FCorvaneJournal>(Bytes);
		ReadTwice<FCorvaneTusJournal>(Bytes);
	}
}
