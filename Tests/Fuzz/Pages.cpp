// Pages that come where a file was asked for: whatever stands there, no address leads where it must not.

#include "Attempts/Address.h"
#include "Drive/DrivePage.h"
#include "Drive/HtmlReader.h"
#include "Fuzz.h"
#include "Rules/PageReading.h"

FUZZ(Input)
{
	const int32 Code = static_cast<int32>(Input.Number(200, 403));
	const FString From = Input.Text();
	const FString PageAddress = CorvaneAddress::IsUsable(From) ? From : FString(TEXT("https://user:pw@drive.test/uc?id=1"));
	const FString Page = text(Input.Rest());

	const FCorvaneDrivePage Read = CorvaneDrive::ReadPage(Page, PageAddress, Code);
	const FString& Found = Read.FileAddress;
	HOST_CHECK(Found.IsEmpty() != Read.Sentence.IsEmpty());
	HOST_CHECK(Found.IsEmpty() || (CorvaneAddress::IsUsable(Found) && Found.Len() <= 16 * 1024));
	HOST_CHECK(Found.IsEmpty() || !PageAddress.StartsWith(TEXT("https:")) || Found.StartsWith(TEXT("https:")));
	HOST_CHECK(IsSame(CorvaneAddress::WithoutUser(Found), Found));

	FCorvaneHtmlReader Reader(Page);
	FCorvaneHtmlTag Tag;
	for (int32 Tags = 0; Reader.Next(Tag); ++Tags)
	{
		HOST_CHECK(Tags < Page.Len() && !Tag.Name.IsEmpty() && Tag.Attributes.Num() <= 64);
	}
	HOST_CHECK(!Reader.GetText().Contains(TEXT("  ")) && Reader.GetText().Len() <= 64 * 1024);

	const FCorvFileInfo Info = CorvaneRules::readFileInfo(Page);
	HOST_CHECK((Info.bReadable || (Info.name.IsEmpty() && Info.size == 0)) &&
			   !Info.name.Contains(TEXT("\""))); // a size is told as it stands there
	HOST_CHECK(!CorvaneRules::confirmationToken(Page).Contains(TEXT("&")));
	HOST_CHECK(!CorvaneRules::downloadLink(Page).Contains(TEXT("\"")));
	HOST_CHECK(CorvaneRules::shownSize(Page) == 0 || Page.Contains(TEXT("uc-name-size"))); // it may be below 0: nobody believes it then
}
