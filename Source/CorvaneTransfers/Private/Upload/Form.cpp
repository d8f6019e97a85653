#include "Upload/Form.h"

#include "Attempts/Headers.h"

FString CorvaneForm::FindFault(const TArray<FCorvaneFormFile>& Files, const TArray<FCorvaneFormField>& Fields)
{
	if (Files.IsEmpty() && Fields.IsEmpty())
	{
		return TEXT("The form has neither files nor fields.");
	}
	for (const FCorvaneFormFile& File : Files)
	{
		if (File.FieldName.IsEmpty() || File.FileName.IsEmpty())
		{
			return TEXT("A file of the form has no name: ") + File.FilePath;
		}
		if (File.FilePath.IsEmpty())
		{
			return TEXT("A file of the form has no path: ") + File.FieldName;
		}
		if (CorvaneHeaders::HasControl(File.ContentType))
		{
			return TEXT("The content type of a file cannot be sent: ") + File.FilePath;
		}
	}
	for (const FCorvaneFormField& Field : Fields)
	{
		if (Field.Name.IsEmpty())
		{
			return TEXT("A field of the form has no name.");
		}
	}
	return FString();
}

FString CorvaneForm::ChooseBoundary(
	const TArray<FCorvaneFormFile>& Files, const TArray<FCorvaneFormField>& Fields, const TFunction<FString()>& MakeText)
{
	TArray<FString> Texts;
	for (const FCorvaneFormFile& File : Files)
	{
		Texts.Append({File.FieldName, File.FileName, File.ContentType});
	}
	for (const FCorvaneFormField& Field : Fields)
	{
		Texts.Append({Field.Name, Field.Value});
	}
	for (;;)
	{
		const FString Boundary = MakeText();
		bool bOccurs = false;
		for (const FString& Text : Texts)
		{
			bOccurs = bOccurs || Text.Contains(*Boundary, ESearchCase::CaseSensitive);
		}
		if (!bOccurs)
		{
			return Boundary;
		}
	}
}

FString CorvaneForm::Quote(const FString& Name)
{
	return Name.Replace(TEXT("\""), TEXT("%22"), ESearchCase::CaseSensitive)
		.Replace(TEXT("\r"), TEXT("%0D"), ESearchCase::CaseSensitive)
		.Replace(TEXT("\n"), TEXT("%0A"), ESearchCase::CaseSensitive);
}

/** Of a field, whose line ends become CR LF first; those of a file's name stay as they are. */
static FString QuoteField(const FString& Name)
{
	return CorvaneForm::Quote(Name.Replace(TEXT("\r\n"), TEXT("\n"), ESearchCase::CaseSensitive)
								  .Replace(TEXT("\r"), TEXT("\n"), ESearchCase::CaseSensitive)
								  .Replace(TEXT("\n"), TEXT("\r\n"), ESearchCase::CaseSensitive));
}

TArray<FCorvaneBodySegment> CorvaneForm::Compose(
	const TArray<FCorvaneFormFile>& Files, const TArray<FCorvaneFormField>& Fields, const FString& Boundary)
{
	const FString Begin = TEXT("--") + Boundary + TEXT("\r\nContent-Disposition: form-data; name=\"");
	TArray<FCorvaneBodySegment> Segments;
	FString Text; // what has come since the last file
	for (const FCorvaneFormField& Field : Fields)
	{
		Text += Begin + QuoteField(Field.Name) + TEXT("\"\r\n\r\n") + Field.Value + TEXT("\r\n");
	}
	for (const FCorvaneFormFile& File : Files)
	{
		Text += Begin + QuoteField(File.FieldName) + TEXT("\"; filename=\"") + Quote(File.FileName) + TEXT("\"\r\nContent-Type: ") +
				File.ContentType + TEXT("\r\n\r\n");
		Segments.Add(FCorvaneBodySegment::OfText(Text));
		FCorvaneSentFile Sent;
		Sent.Path = File.FilePath;
		Segments.Add(FCorvaneBodySegment::OfFile(Sent));
		Text = TEXT("\r\n");
	}
	Segments.Add(FCorvaneBodySegment::OfText(Text + TEXT("--") + Boundary + TEXT("--\r\n")));
	return Segments;
}
