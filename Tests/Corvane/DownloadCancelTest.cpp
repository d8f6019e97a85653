#include "DownloadFixture.h"
#include "LogCapture.h"

namespace
{
	const std::string content = patternedBytes(60000);

	bool isPrefix(const std::string& part)
	{
		return content.compare(0, part.size(), part) == 0;
	}

	class DownloadCancel : public DownloadFixture
	{
	protected:
		/** Serves the file in twelve pieces; each waits until the test allows it. */
		struct Pieces
		{
			std::vector<Gate> gates = std::vector<Gate>(12);
			RangeOrigin origin{[this](Connection& connection, const RangeRequest& request)
				{
					const std::string whole = rangedAnswer(content, request);
					const size_t head = whole.size() - (content.size() - static_cast<size_t>(request.first));
					size_t sent = 0;
					for (size_t piece = 0; piece < gates.size(); ++piece)
					{
						const size_t end = head + (whole.size() - head) * (piece + 1) / gates.size();
						connection.waitFor(gates[piece]);
						connection.send(whole.substr(sent, end - sent));
						sent = end;
					}
				}};

			void openAll()
			{
				for (Gate& gate : gates)
				{
					gate.open();
				}
			}
		};

		size_t received() const
		{
			return downloads.empty() ? 0 : static_cast<size_t>(downloads.back().megaBytesReceived * (1 << 20) + 0.5f);
		}

		void expectOneFailure(size_t before)
		{
			ASSERT_EQ(completions.size(), before + 1);
			EXPECT_EQ(completions.back().statusCode, 500);
			EXPECT_EQ(completions.back().dataString, "No Response");
		}

		LogCapture log;
	};
} // namespace

TEST_F(DownloadCancel, KeepsWhatArrivedAtAnyMomentAndAResumeFinishes)
{
	for (size_t pieces = 0; pieces < 12; ++pieces)
	{
		setTarget(std::nullopt);
		downloads.clear();
		const size_t before = completions.size();
		{
			Pieces server;
			execute(build({server.origin.url(), DownloadKind::Whole, Action::E_RESUME, "", "id"}));
			for (size_t piece = 0; piece < pieces; ++piece)
			{
				server.gates[piece].open();
			}
			const size_t expected = content.size() * pieces / 12;
			ASSERT_TRUE(loop.WaitFor([&] { return received() >= expected; }, patienceSeconds)) << pieces;
			UCorvaneBPLibrary::cancelRequest("id");
			drain();
			expectOneFailure(before);
			const std::string kept = target().value_or("");
			EXPECT_GE(kept.size(), expected) << "pieces: " << pieces;
			EXPECT_TRUE(isPrefix(kept)) << "pieces: " << pieces;
		}
		Pieces server;
		server.openAll();
		EXPECT_EQ(fetch({server.origin.url()}).statusCode, pieces == 0 ? 200 : 206);
		EXPECT_TRUE(target() == content) << "pieces: " << pieces;
	}
}

TEST_F(DownloadCancel, ReachesARequestWhoseEntryAnotherHasTaken)
{
	Pieces server;
	execute(build({server.origin.url(), DownloadKind::Whole, Action::E_RESUME, "", "id"}));
	execute(get("abc", {}, "id"));
	ASSERT_TRUE(waitForCompletions(1));
	server.gates[0].open();
	ASSERT_TRUE(loop.WaitFor([&] { return received() >= 5000; }, patienceSeconds));
	UCorvaneBPLibrary::cancelRequest("id");
	drain();
	expectOneFailure(1);
	EXPECT_GE(target().value_or("").size(), 5000u);
	EXPECT_TRUE(isPrefix(target().value_or("")));
	EXPECT_EQ(log.count("LogTemp", ELogVerbosity::Warning, "Request has been canceled. id"), 1);
}

TEST_F(DownloadCancel, MayBeFollowedByANewStartInItsOwnEvent)
{
	Pieces server;
	Pieces second;
	second.openAll();
	UCorvaneBPLibrary* library = UCorvaneBPLibrary::getCorvaneTarget();
	bool bRestarted = false;
	library->onhttpRequestCompleteDelegate.AddHandler(
		[&](void* const*)
		{
			if (!std::exchange(bRestarted, true))
			{
				execute(build({second.origin.url()})); // the bytes are on disk by now
			}
		});
	execute(build({server.origin.url(), DownloadKind::Whole, Action::E_RESUME, "", "id"}));
	server.gates[0].open();
	ASSERT_TRUE(loop.WaitFor([&] { return received() >= 5000; }, patienceSeconds));
	UCorvaneBPLibrary::cancelRequest("id");
	drain();
	ASSERT_EQ(completions.size(), 2u);
	EXPECT_EQ(completions[1].statusCode, 206);
	EXPECT_EQ(second.origin.ranges(), std::vector<std::string>{"bytes=5000-"});
	EXPECT_TRUE(target() == content);
}

TEST_F(DownloadCancel, OfASteppedOneOutlivesASecondStartOfItsRecord)
{
	Gate gate;
	RangeOrigin origin(
		[&gate](Connection& connection, const RangeRequest& request)
		{
			connection.waitFor(gate);
			connection.send(rangedAnswer(content, request));
		});
	const TArray<FhttpRequest> requests = build({origin.url(), DownloadKind::Stepped, Action::E_RESUME, "", "id", {}, 20000});
	execute(requests);
	UCorvaneBPLibrary::cancelRequest("id");
	execute(requests); // refused, and no reason to go on
	gate.open();
	drain();
	expectOneFailure(0);
	EXPECT_EQ(target(), std::nullopt);
	execute(requests); // the cancel was not meant for this one
	drain();
	EXPECT_EQ(completions.back().statusCode, 206);
	EXPECT_TRUE(target() == content);
}

TEST_F(DownloadCancel, FollowedByAnOverwriteAtOnceNeverMixesTheTwo)
{
	RangeOrigin honest([](Connection& connection, const RangeRequest& request) { connection.send(rangedAnswer(content, request)); });
	for (const DownloadKind kind : {DownloadKind::Whole, DownloadKind::Stepped})
	{
		completions.clear();
		setTarget(std::nullopt);
		downloads.clear();
		Pieces first;
		execute(build({first.origin.url(), DownloadKind::Whole, Action::E_OVERWRITE, "", "first"}));
		first.gates[0].open();
		ASSERT_TRUE(loop.WaitFor([&] { return received() >= 5000; }, patienceSeconds));
		UCorvaneBPLibrary::cancelRequest("first");
		execute(build({honest.url(), kind, Action::E_OVERWRITE, "", "second", {}, 20000}));
		drain();
		ASSERT_EQ(completions.size(), 2u);
		const Completion& second = completions[0].requestID == "second" ? completions[0] : completions[1];
		// The kept bytes of the first may have come in between the second's overwrite and its start, or its builder's look.
		const std::string expected = second.statusCode >= 400 ? content.substr(0, 5000) : content;
		EXPECT_TRUE(target() == expected) << second.statusCode << ", " << describe(target());
	}
}

TEST_F(DownloadCancel, TwoDownloadsOfOneTargetNeverMix)
{
	for (const Action action : {Action::E_OVERWRITE, Action::E_RESUME})
	{
		completions.clear();
		setTarget(std::nullopt);
		Pieces first;
		Pieces second;
		TArray<FhttpRequest> requests = build({first.origin.url(), DownloadKind::Whole, action, "", "first"});
		requests.Append(build({second.origin.url(), DownloadKind::Whole, action, "", "second"}));
		execute(requests);
		first.openAll();
		ASSERT_TRUE(waitForCompletions(1));
		EXPECT_EQ(completions[0].statusCode, 500) << "the later one has taken the file over";
		EXPECT_FALSE(target().has_value());
		second.openAll();
		drain();
		ASSERT_EQ(completions.size(), 2u);
		EXPECT_EQ(completions[1].statusCode, 200);
		EXPECT_TRUE(target() == content);
	}
}

TEST_F(DownloadCancel, OfASteppedDownloadKeepsWholeSteps)
{
	constexpr int32 step = 9999;
	for (size_t number = 0; number < 7; ++number)
	{
		setTarget(std::nullopt);
		downloads.clear();
		const size_t before = completions.size();
		Gate reached, goOn;
		{
			RangeOrigin origin(
				[&](Connection& connection, const RangeRequest& request)
				{
					const std::string whole = rangedAnswer(content, request);
					if (request.number == static_cast<int>(number))
					{
						connection.send(whole.substr(0, whole.size() - 1));
						reached.open();
						connection.waitFor(goOn);
					}
					connection.send(request.number == static_cast<int>(number) ? whole.substr(whole.size() - 1) : whole);
				});
			execute(build({origin.url(), DownloadKind::Stepped, Action::E_RESUME, "", "id", {}, step}));
			ASSERT_TRUE(loop.WaitFor([&] { return reached.isOpen(); }, patienceSeconds)) << "step " << number;
			UCorvaneBPLibrary::cancelRequest("id");
			drain();
			expectOneFailure(before);
			const size_t whole = number == 0 ? 0 : (number - 1) * (step + 1);
			EXPECT_EQ(target().value_or("").size(), whole) << "step " << number;
			EXPECT_TRUE(isPrefix(target().value_or("")));
		}
		RangeOrigin honest([](Connection& connection, const RangeRequest& request) { connection.send(rangedAnswer(content, request)); });
		fetch({honest.url(), DownloadKind::Stepped, Action::E_RESUME, "", "id", {}, step});
		EXPECT_TRUE(target() == content) << "step " << number;
	}
}

TEST_F(DownloadCancel, TheEndOfTheProgramKeepsWhatArrived)
{
	Pieces server;
	execute(build({server.origin.url()}));
	server.gates[0].open();
	server.gates[1].open();
	ASSERT_TRUE(loop.WaitFor([&] { return received() >= 10000; }, patienceSeconds));
	loop.Shutdown();
	EXPECT_TRUE(target() == content.substr(0, 10000)) << describe(target());
}
