// Forms: an independent reader finds in the body what was put into it, whatever names and texts are made of.

#include "Upload/Form.h"

#include "Fuzz.h"
#include "Rules/Multipart.h"

#include <regex>
#include <vector>

namespace
{
	struct FPart
	{
		std::string Name, File, Type, Content;
		bool operator==(const FPart&) const = default;
	};

	/** Takes what stands up to a mark, which has to be there, and the mark. */
	std::string Take(std::string_view& Bytes, std::string_view Mark)
	{
		const size_t End = Bytes.find(Mark);
		HOST_CHECK(End != Bytes.npos);
		const std::string Taken(Bytes.substr(0, End));
		Bytes.remove_prefix(End + Mark.size());
		return Taken;
	}

	/** Reads a body the way servers do: by its boundary alone. */
	std::vector<FPart> ReadBody(const std::string& Whole, const std::string& Boundary)
	{
		const std::string Delimiter = "\r\n--" + Boundary;
		const std::string Begun = "\r\n" + Whole; // the first one may stand at the very beginning
		std::string_view Bytes = Whole.starts_with("\r\n") ? Whole : Begun;
		std::vector<FPart> Parts;
		HOST_CHECK(Take(Bytes, Delimiter).empty());
		while (!Bytes.starts_with("--"))
		{
			FPart& Part = Parts.emplace_back();
			HOST_CHECK(Take(Bytes, "\r\nContent-Disposition: form-data; name=\"").empty());
			Part.Name = Take(Bytes, "\"");
			if (Bytes.starts_with("; filename=\""))
			{
				Take(Bytes, "=\"");
				Part.File = Take(Bytes, "\"\r\nContent-Type: ");
				Part.Type = Take(Bytes, "\r\n");
			}
			HOST_CHECK(Take(Bytes, "\r\n").empty() || !Part.File.empty());
			Bytes.remove_prefix(Part.File.empty() ? 2 : 0);
			Part.Content = Take(Bytes, Delimiter);
		}
		HOST_CHECK(Bytes == "--\r\n");
		return Parts;
	}

	/** As browsers write names. */
	std::string Quoted(std::string_view Name)
	{
		std::string Written;
		for (const char Byte : Name)
		{
			Written += Byte == '"' ? "%22" : Byte == '\r' ? "%0D" : Byte == '\n' ? "%0A" : std::string(1, Byte);
		}
		return Written;
	}
	std::string Quoted(const FString& Name)
	{
		return Quoted(utf8(Name));
	}
	/** As they write those of fields: each end of a line is CR LF first. */
	std::string QuotedField(const FString& Name)
	{
		static const std::regex lineEnd("\\r\\n|\\r|\\n");
		return Quoted(std::regex_replace(utf8(Name), lineEnd, "\r\n"));
	}

	/** The second module chooses a boundary that stands nowhere; its files are put in by the path, which is their content here. */
	void ComposeAndRead(const TArray<FCorvaneFormFile>& Files, const TArray<FCorvaneFormField>& Fields)
	{
		int32 Tries = 0;
		const auto MakeText = [&Tries] { return FString::Printf(TEXT("b%d"), Tries++); };
		const FString Boundary = CorvaneForm::ChooseBoundary(Files, Fields, MakeText);
		std::string Body;
		for (const FCorvaneBodySegment& Segment : CorvaneForm::Compose(Files, Fields, Boundary))
		{
			Body += Segment.IsFile() ? utf8(Segment.File.Path) : std::string(ViewOf(Segment.Bytes));
		}
		std::vector<FPart> Expected;
		for (const FCorvaneFormField& Field : Fields)
		{
			Expected.push_back({QuotedField(Field.Name), "", "", utf8(Field.Value)});
		}
		for (const FCorvaneFormFile& File : Files)
		{
			Expected.push_back({QuotedField(File.FieldName), Quoted(File.FileName), utf8(File.ContentType), utf8(File.FilePath)});
		}
		HOST_CHECK(ReadBody(Body, utf8(Boundary)) == Expected);
	}

	/** The first module has one boundary, which texts must not hold. */
	void JoinAndRead(const TArray<FCorvaneFormFile>& Files, const TArray<FCorvaneFormField>& Fields, int64 Number)
	{
		const FString Token = CorvaneRules::boundaryToken(Number);
		std::string Body;
		std::vector<FPart> Expected;
		for (const FCorvaneFormFile& File : Files)
		{
			Body += utf8(CorvaneRules::filePartHead(Token, File.FieldName, File.FileName, File.ContentType)) + utf8(File.FilePath);
			Expected.push_back({Quoted(File.FieldName), Quoted(File.FileName), utf8(File.ContentType), utf8(File.FilePath)});
		}
		for (const FCorvaneFormField& Field : Fields)
		{
			Body += utf8(CorvaneRules::textPart(Token, Field.Name, Field.Value));
			Expected.push_back({Quoted(Field.Name), "", "", utf8(Field.Value)});
		}
		HOST_CHECK(ReadBody(Body + utf8(CorvaneRules::closingDelimiter(Token)), "----" + utf8(Token)) == Expected);
	}
} // namespace

FUZZ(Input)
{
	const int64 Number = Input.Number(INT64_MIN, MAX_int64);
	TArray<FCorvaneFormFile> Files;
	TArray<FCorvaneFormField> Fields;
	bool bHoldsBoundary = false;
	while (!Input.IsOver())
	{
		FFuzzInput Entry(Input.Field('|'));
		const bool bFile = Entry.Flag();
		const FString Name = Entry.Text(';');
		FCorvaneFormFile File;
		File.FieldName = Name;
		File.FileName = bFile ? Entry.Text(';') : FString();
		File.ContentType = bFile ? Entry.Text(';') : FString();
		File.FilePath = text(Entry.Rest());
		bHoldsBoundary |= File.FilePath.Contains(TEXT("UE4CorvanePlugin_"));
		bFile ? void(Files.Add(File)) : void(Fields.Add({Name, File.FilePath}));
	}
	if (CorvaneForm::FindFault(Files, Fields).IsEmpty() && !bHoldsBoundary)
	{
		bool bContentHoldsIt = false; // random boundaries of files are not in them; these count up from b0
		for (const FCorvaneFormFile& File : Files)
		{
			bContentHoldsIt |= File.FilePath.Contains(TEXT("--b"));
		}
		JoinAndRead(Files, Fields, Number);
		bContentHoldsIt ? void() : ComposeAndRead(Files, Fields);
	}
}
