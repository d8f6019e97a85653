#include "Queue/QueueMachine.h"
#include "Pace/PaceLedger.h"
#include "TextSupport.h"

#include <gtest/gtest.h>
#include <map>
#include <sstream>

namespace
{
	struct QueueCase
	{
		const char* what;
		int atOnce, perHost;
		/**
		 * "a" or "a5" adds one for host a, of priority 5; what starts is told by its number, in brackets. "-1" ends number 1, "p1"
		 * parks it, "s1" says that it stands still and "w1" wakes it, "||" pauses all, ">" goes on, "=3" and "h3" change the two limits.
		 */
		const char* happens;
		const char* starts;
	};

	std::string play(const QueueCase& each)
	{
		FCorvaneQueueMachine machine;
		int atOnce = each.atOnce, perHost = each.perHost;
		machine.SetLimits(atOnce, perHost);
		std::istringstream words(each.happens);
		std::string word, told;
		int64 added = 0;
		while (words >> word)
		{
			const int number = word.size() > 1 && word != "||" ? std::stoi(word.substr(1)) : 0;
			switch (word[0])
			{
			case '-':
				machine.Remove(number);
				break;
			case 'p':
				machine.Park(number);
				break;
			case 's':
				machine.OnStopped(number);
				break;
			case 'w':
				machine.Wake(number);
				break;
			case '|':
				machine.Pause();
				break;
			case '>':
				machine.Continue();
				break;
			case '=':
				machine.SetLimits(atOnce = number, perHost);
				break;
			case 'h':
				machine.SetLimits(atOnce, perHost = number);
				break;
			default:
				machine.Add(++added, text(word.substr(0, 1)), number);
				continue; // several arrive together
			}
			for (int64 ticket = 0; machine.StartNext(ticket);)
			{
				told += std::to_string(ticket) + " ";
			}
			told += "/ ";
		}
		return told;
	}
} // namespace

TEST(QueueMachine, StartsWhoeverIsNext)
{
	const QueueCase cases[] = {
		{"as they came, and one for each that ends", 2, 6, "a a a a > -1 -2 -3", "1 2 / 3 / 4 / / "},
		{"no more to a host than may be", 8, 2, "a a a b > -1 -1", "1 4 2 / 3 / / "},
		{"higher priorities first", 1, 6, "a a5 b7 a5 a-1 > -3 -2 -4 -1", "3 / 2 / 4 / 1 / 5 / "},
		{"a full host does not hold others up", 8, 1, "a9 a9 b1 > -1", "1 3 / 2 / "},
		{"hosts take turns", 1, 6, "a a a b b c > -1 -4 -6 -2 -5", "1 / 4 / 6 / 2 / 5 / 3 / "},
		{"a host that comes and goes does not pass", 1, 6, "b a a > b -1 -2 -4", "1 / 2 / 4 / 3 / "},
		{"nor one with nothing but a parked one", 1, 6, "a > p1 s1 b b > a -2 -3 -4", "1 / / / 2 / 3 / 4 / / "},
		{"more of a host do not cost it its turn", 1, 6, "c > a b a -1 -2 -3", "1 / 2 / 3 / 4 / "},
		{"a pause starts nothing", 1, 6, "|| a a > || -1 >", "/ 1 / / / 2 / "},
		{"whoever is parked gives its place up and gets it back in its turn", 1, 6, "a a a > p1 s1 w1 -2 -1", "1 / / 2 / / 1 / 3 / "},
		{"whoever goes on before it stands still has kept its place", 1, 6, "a a > p1 w1 s1 p1 p1 -1", "1 / / / / / / 2 / "},
		{"whoever is parked before its turn is passed", 1, 6, "a a a > p2 -1 w2 -3", "1 / / 3 / / 2 / "},
		{"whoever goes before its turn leaves the others theirs", 1, 6, "a a5 a a > -1 -4 -2 -3", "2 / / / 3 / / "},
		{"one that is not known changes nothing", 1, 1, "-4 p4 w4 a > -2 w1 -1 -1", "/ / / 1 / / / / / "},
		{"limits that change", 1, 1, "a a b c > =3 h2 =0 -1 -3 -4", "1 / 3 4 / / / / / 2 / "},
	};
	for (const QueueCase& each : cases)
	{
		EXPECT_EQ(play(each), each.starts) << each.what;
	}
}

TEST(QueueMachine, CountsAndForgetsWhatLeaves)
{
	FCorvaneQueueMachine machine;
	machine.SetLimits(2, 2);
	for (int64 ticket = 1; ticket <= 6; ++ticket)
	{
		machine.Add(ticket, text(ticket % 2 ? "odd" : "even"), 0);
	}
	int64 started = 0;
	while (machine.StartNext(started))
	{
	}
	machine.Park(1);
	EXPECT_TRUE(machine.IsStopping(1) && machine.NumRunning() == 2 && machine.NumParked() == 0);
	machine.OnStopped(1);
	machine.Park(6);
	EXPECT_EQ(machine.NumWaiting(), 3);
	EXPECT_EQ(machine.NumRunning(), 1);
	EXPECT_EQ(machine.NumParked(), 2);
	EXPECT_TRUE(machine.IsParked(6) && machine.IsRunning(2) && !machine.IsRunning(3));
	for (int64 ticket = 6; ticket > 0; --ticket)
	{
		machine.Remove(ticket);
	}
	EXPECT_EQ(machine.NumWaiting() + machine.NumRunning() + machine.NumParked(), 0);
	EXPECT_FALSE(machine.StartNext(started));
}

namespace
{
	struct PaceCase
	{
		const char* what;
		int64 limit;
		int64 fileBytes; // each file is asked for in parts
		double secondsOfPart; // from its request to its end
		int atOnce;
		double leastShare; // of the limit that has to be reached
	};

	/** Transfers that go on as soon as they may, as a clock of a frame's length sees them. @return bytes by millisecond. */
	std::map<int, int64> move(const PaceCase& each, double seconds)
	{
		struct Transfer
		{
			int64 left = 0, booked = 0, part = 0;
			double endsAt = 0;
			bool runs = false;
		};
		FCorvanePaceLedger ledger;
		ledger.SetLimit(0, each.limit);
		std::vector<Transfer> transfers(static_cast<size_t>(each.atOnce));
		std::map<int, int64> moved;
		size_t next = 0;
		for (double now = 0; now < seconds; now += 1.0 / 60)
		{
			for (Transfer& transfer : transfers)
			{
				if (transfer.runs && transfer.endsAt <= now)
				{
					moved[static_cast<int>(transfer.endsAt * 1000)] += transfer.part;
					ledger.Correct(transfer.part - transfer.booked);
					ledger.NotePart(transfer.part);
					transfer.runs = false;
				}
			}
			for (size_t tried = 0; tried < transfers.size() && ledger.SecondsUntilFree(now) <= 0; ++tried)
			{
				Transfer& transfer = transfers[next++ % transfers.size()];
				if (transfer.runs)
				{
					continue;
				}
				transfer.left = transfer.left > 0 ? transfer.left : each.fileBytes;
				const int64 most = ledger.PartBytes(each.secondsOfPart);
				transfer.booked = ledger.Book(now, most);
				transfer.part = std::min(most, transfer.left);
				transfer.left -= transfer.part;
				transfer.endsAt = now + each.secondsOfPart;
				transfer.runs = true;
			}
		}
		return moved;
	}
} // namespace

TEST(PaceLedger, HoldsOverEverySecond)
{
	constexpr int64 megabyte = 1'000'000;
	const PaceCase cases[] = {
		{"large files near by", 10 * megabyte, 1000 * megabyte, 0.001, 8, 0.9},
		{"one large file far away", 10 * megabyte, 1000 * megabyte, 0.2, 1, 0.8},
		{"small files", 10 * megabyte, 40'000, 0.001, 8, 0.1}, // as many as a frame lets go; never too many
		{"small files far away", megabyte, 40'000, 0.1, 8, 0.5},
		{"a slow limit", 20'000, megabyte, 0.001, 8, 0.9},
	};
	for (const PaceCase& each : cases)
	{
		SCOPED_TRACE(each.what);
		const auto moved = move(each, 10);
		int64 sum = 0;
		for (const auto& [from, bytes] : moved)
		{
			sum += bytes;
			int64 ofSecond = 0;
			for (auto at = moved.lower_bound(from); at != moved.end() && at->first < from + 1000; ++at)
			{
				ofSecond += at->second;
			}
			if (each.secondsOfPart < 0.05)
			{
				EXPECT_LE(static_cast<double>(ofSecond), 1.1 * static_cast<double>(each.limit)) << from;
			}
		}
		EXPECT_GE(static_cast<double>(sum) / 10, each.leastShare * static_cast<double>(each.limit));
		EXPECT_LE(static_cast<double>(sum) / 10, 1.02 * static_cast<double>(each.limit));
	}
}

TEST(PaceLedger, KeepsWhatIsBookedWhenItsLimitChanges)
{
	FCorvanePaceLedger ledger;
	ledger.SetLimit(5, 1000);
	const auto booked = static_cast<double>(ledger.Book(5, 4000));
	for (const int64 limit : {1000, 2000, 1, 500})
	{
		ledger.SetLimit(5, limit);
		EXPECT_DOUBLE_EQ(ledger.SecondsUntilFree(5), booked / static_cast<double>(limit));
	}
	ledger.SetLimit(5, 0);
	EXPECT_EQ(ledger.SecondsUntilFree(5), 0);
}
