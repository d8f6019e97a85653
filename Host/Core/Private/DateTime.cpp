#include "Misc/DateTime.h"

#include "Containers/StringConv.h"
#include "Host/Clock.h"

#include <array>
#include <chrono>
#include <ctime>
#include <ratio>
#include <string_view>

namespace
{
	using namespace std::chrono;
	using FTick = duration<int64, std::ratio<1, ETimespan::TicksPerSecond>>;
	using FMoment = sys_time<FTick>;

	constexpr sys_days firstDay = year(1) / January / 1;
	constexpr sys_days dayAfterLast = year(10000) / January / 1;

	FDateTime fromMoment(FMoment Moment)
	{
		return FDateTime((Moment - firstDay).count());
	}

	/** Reads the digits that stand under a letter of the form. */
	int numberUnder(char Letter, std::string_view Form, std::string_view Text)
	{
		int Number = 0;
		for (size_t At = 0; At < Form.size(); ++At)
		{
			Number = Form[At] == Letter ? 10 * Number + (Text[At] - '0') : Number;
		}
		return Number;
	}

	/** @return whether digits stand under the small letters of the form, and the rest is the same. */
	bool hasForm(std::string_view Form, std::string_view Text)
	{
		const auto bFits = [](char Wanted, char Found)
		{ return Wanted >= 'a' && Wanted <= 'z' ? Found >= '0' && Found <= '9' : Found == Wanted; };
		return std::equal(Form.begin(), Form.end(), Text.begin(), Text.end(), bFits);
	}
} // namespace

FDateTime FDateTime::UtcNow()
{
	return fromMoment(time_point_cast<FTick>(HostClock::Today()));
}

FDateTime FDateTime::Now()
{
	const std::time_t Seconds = std::time(nullptr);
	std::tm Local{};
	localtime_r(&Seconds, &Local);
	return FDateTime(UtcNow().GetTicks() + Local.tm_gmtoff * ETimespan::TicksPerSecond);
}

FDateTime FDateTime::MaxValue()
{
	return fromMoment(FMoment(dayAfterLast) - FTick(1));
}

FDateTime FDateTime::FromUnixTimestamp(int64 Seconds)
{
	return fromMoment(FMoment(seconds(Seconds)));
}

FString FDateTime::ToIso8601() const
{
	const FMoment Moment = firstDay + FTick(Ticks);
	const sys_days Day = floor<days>(Moment);
	const year_month_day Date(Day);
	const hh_mm_ss Time(floor<milliseconds>(Moment - Day));
	return FString::Printf(TEXT("%04d-%02u-%02uT%02d:%02d:%02d.%03dZ"), static_cast<int>(Date.year()), static_cast<unsigned>(Date.month()),
		static_cast<unsigned>(Date.day()), Time.hours().count(), Time.minutes().count(), Time.seconds().count(), Time.subseconds().count());
}

bool FDateTime::ParseIso8601(const TCHAR* Text, FDateTime& OutDateTime)
{
	constexpr std::string_view form = "yyyy-nn-ddThh:mm:ss.fffZ";
	const FTCHARToUTF8 Narrow(Text);
	const std::string_view Bytes(Narrow.Get());
	if (!hasForm(form, Bytes))
	{
		return false;
	}
	const auto Number = [&](char Letter) { return numberUnder(Letter, form, Bytes); };
	const year_month_day Date = year(Number('y')) / Number('n') / Number('d');
	if (!Date.ok() || Date.year() < year(1) || Number('h') > 23 || Number('m') > 59 || Number('s') > 59)
	{
		return false;
	}
	OutDateTime = fromMoment(sys_days(Date) + hours(Number('h')) + minutes(Number('m')) + seconds(Number('s')) + milliseconds(Number('f')));
	return true;
}
