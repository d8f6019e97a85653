#include "Attempts/HttpDate.h"

#include "Attempts/Answer.h"
#include "Misc/Timespan.h"

namespace CorvaneHttpDateParts
{
	static const TCHAR* const MonthNames = TEXT("JanFebMarAprMayJunJulAugSepOctNovDec");
	static const TCHAR* const DayNames = TEXT("MonTueWedThuFriSatSun"); // the first day of the first year was a Monday

	static constexpr int64 SecondsPerDay = 24 * 60 * 60;

	static bool IsLeapYear(int64 Year)
	{
		return Year % 4 == 0 && (Year % 100 != 0 || Year % 400 == 0);
	}

	/** @param Month  from 0 to 12. @return days of the year before it. */
	static int64 DaysBeforeMonth(int64 Year, int64 Month)
	{
		constexpr int32 Days[] = {0, 31, 59, 90, 120, 151, 181, 212, 243, 273, 304, 334, 365};
		return Days[Month] + (Month > 1 && IsLeapYear(Year) ? 1 : 0);
	}

	/** @return days from the first day of the first year to that of this one. */
	static int64 DaysBeforeYear(int64 Year)
	{
		const int64 Before = Year - 1;
		return 365 * Before + Before / 4 - Before / 100 + Before / 400;
	}

	/** @return from 0 on; -1 for no month. */
	static int64 ReadMonth(const FString& Name)
	{
		const int32 At = Name.Len() == 3 ? FString(MonthNames).Find(Name, ESearchCase::CaseSensitive, ESearchDir::FromStart) : INDEX_NONE;
		return At >= 0 && At % 3 == 0 ? At / 3 : -1;
	}

	/** @return -1 for no year. */
	static int64 ReadYear(const FString& Text)
	{
		const int64 Year = CorvaneAnswer::ParseNumber(Text);
		if (Text.Len() == 2 && Year >= 0)
		{
			return Year + (Year < 70 ? 2000 : 1900);
		}
		return Text.Len() == 4 && Year > 0 ? Year : -1;
	}

	/** @return seconds since midnight, a leap second's being those of the one before it; -1 for no time of the day. */
	static int64 ReadTime(const FString& Text)
	{
		const int64 Hour = CorvaneAnswer::ParseNumber(Text.Left(2));
		const int64 Minute = CorvaneAnswer::ParseNumber(Text.Mid(3, 2));
		const int64 Second = CorvaneAnswer::ParseNumber(Text.Mid(6));
		const bool bInside = Hour >= 0 && Hour < 24 && Minute >= 0 && Minute < 60 && Second >= 0 && Second <= 60;
		return Text.Len() == 8 && Text[2] == TEXT(':') && Text[5] == TEXT(':') && bInside
				   ? (Hour * 60 + Minute) * 60 + FMath::Min<int64>(Second, 59)
				   : -1;
	}

	static FDateTime Make(int64 Year, int64 Month, int64 Day, int64 Time)
	{
		const bool bKnown = Year > 0 && Month >= 0 && Time >= 0;
		if (!bKnown || Day < 1 || Day > DaysBeforeMonth(Year, Month + 1) - DaysBeforeMonth(Year, Month))
		{
			return FDateTime::MinValue();
		}
		const int64 Days = DaysBeforeYear(Year) + DaysBeforeMonth(Year, Month) + Day - 1;
		return FDateTime((Days * SecondsPerDay + Time) * ETimespan::TicksPerSecond);
	}
} // namespace CorvaneHttpDateParts

FDateTime CorvaneHttpDate::Parse(const FString& Text)
{
	using namespace CorvaneHttpDateParts;
	TArray<FString> Words;
	Text.Replace(TEXT(","), TEXT(" "), ESearchCase::CaseSensitive)
		.Replace(TEXT("-"), TEXT(" "), ESearchCase::CaseSensitive)
		.ParseIntoArray(Words, TEXT(" "), true);
	if (Words.Num() == 6 && Words[5] == TEXT("GMT"))
	{
		return Make(ReadYear(Words[3]), ReadMonth(Words[2]), CorvaneAnswer::ParseNumber(Words[1]), ReadTime(Words[4]));
	}
	if (Words.Num() == 5)
	{
		return Make(ReadYear(Words[4]), ReadMonth(Words[1]), CorvaneAnswer::ParseNumber(Words[2]), ReadTime(Words[3]));
	}
	return FDateTime::MinValue();
}

FString CorvaneHttpDate::ToText(const FDateTime& Moment)
{
	using namespace CorvaneHttpDateParts;
	const int64 Seconds = Moment.GetTicks() / ETimespan::TicksPerSecond;
	const int64 Days = Seconds / SecondsPerDay;
	const int64 Time = Seconds % SecondsPerDay;
	int64 Year = Days / 366 + 1; // never too late
	while (DaysBeforeYear(Year + 1) <= Days)
	{
		++Year;
	}
	const int64 DayOfYear = Days - DaysBeforeYear(Year);
	int64 Month = 0;
	while (DaysBeforeMonth(Year, Month + 1) <= DayOfYear)
	{
		++Month;
	}
	const FString DayName = FString(DayNames).Mid(static_cast<int32>(Days % 7) * 3, 3);
	const FString MonthName = FString(MonthNames).Mid(static_cast<int32>(Month) * 3, 3);
	return FString::Printf(TEXT("%s, %02lld %s %04lld %02lld:%02lld:%02lld GMT"), *DayName, DayOfYear - DaysBeforeMonth(Year, Month) + 1,
		*MonthName, Year, Time / 3600, Time / 60 % 60, Time % 60);
}
