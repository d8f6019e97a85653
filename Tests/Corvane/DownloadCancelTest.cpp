#include "DownloadFixture.h"
#include "HttpModule.h"

namespace
{
	const std::string wholeFile = randomBytes(60000);

	class DownloadCancel : public DownloadFixture
	{
	protected:
		DownloadCancel() { origin.at("/file", Lab::file(wholeFile)); }

		/** Serves the file in twelve pieces; each waits until the test allows it. */
		struct Pieces
		{
			explicit Pieces(size_t open = 0)
			{
				std::vector<Lab::Behaviour> serve{Lab::file(wholeFile), Lab::hold(gates[0])};
				for (size_t piece = 1; piece < gates.size(); ++piece)
				{
					serve.push_back(Lab::hold(gates[piece], {.byte = 5000 * piece}));
				}
				origin.setPlace("/file", serve);
				allow(open);
			}

			std::vector<Lab::Gate> gates = std::vector<Lab::Gate>(12);
			Lab::Origin origin;

			void allow(size_t pieces)
			{
				for (size_t piece = 0; piece < pieces; ++piece)
				{
					gates[piece].open();
				}
			}
		};

		/** Starts over: nothing on disk, nothing recorded. */
		void reset()
		{
			setTarget(std::nullopt);
			downloads.clear();
			completions.clear();
		}

		/** Starts a download of the pieces and waits until as many as are allowed have arrived. */
		void start(const Pieces& server, size_t pieces, Action action = Action::E_RESUME)
		{
			execute(build({server.origin.url("/file"), DownloadKind::Whole, action, "", "id"}));
			awaitBytes(5000 * pieces);
		}

		void awaitBytes(size_t number)
		{
			const auto received = [this]
			{ return downloads.empty() ? 0 : static_cast<size_t>(downloads.back().megaBytesReceived * (1 << 20) + 0.5f); };
			ASSERT_TRUE(until([&] { return received() >= number; })) << number;
		}

		void cancel()
		{
			UCorvaneBPLibrary::cancelRequest("id");
			drain();
		}

		void expectOneFailure(size_t before = 0)
		{
			ASSERT_EQ(completions.size(), before + 1);
			EXPECT_EQ(completions.back().statusCode, 500);
			EXPECT_EQ(completions.back().dataString, "No Response");
		}

		void expectStartOfFile(size_t atLeast)
		{
			const std::string kept = target().value_or("");
			EXPECT_GE(kept.size(), atLeast);
			EXPECT_TRUE(wholeFile.starts_with(kept)) << atLeast;
		}

		LogCapture log;
	};
} // namespace

TEST_F(DownloadCancel, KeepsWhatArrivedAtAnyMomentAndAResumeFinishes)
{
	for (size_t pieces = 0; pieces < 12; ++pieces)
	{
		reset();
		Pieces server(pieces);
		start(server, pieces);
		cancel();
		expectOneFailure();
		expectStartOfFile(5000 * pieces);
		EXPECT_EQ(fetch({origin.url("/file")}).statusCode, pieces == 0 ? 200 : 206);
		EXPECT_TRUE(target() == wholeFile) << "pieces: " << pieces;
	}
}

TEST_F(DownloadCancel, ReachesARequestWhoseEntryAnotherHasTaken)
{
	Pieces server;
	start(server, 0);
	execute(get("abc", {}, "id"));
	ASSERT_TRUE(waitForCompletions(1));
	server.allow(1);
	awaitBytes(5000);
	cancel();
	expectOneFailure(1);
	expectStartOfFile(5000);
	EXPECT_EQ(log.count("LogTemp", ELogVerbosity::Warning, "Request has been canceled. id"), 1);
}

TEST_F(DownloadCancel, MayBeFollowedByANewStartInItsOwnEvent)
{
	Pieces server(1);
	bool bRestarted = false;
	UCorvaneBPLibrary::getCorvaneTarget()->onhttpRequestCompleteDelegate.AddHandler(
		[&](void* const*)
		{
			if (!std::exchange(bRestarted, true))
			{
				execute(build({origin.url("/file")})); // the bytes are on disk by now
			}
		});
	start(server, 1);
	cancel();
	ASSERT_EQ(completions.size(), 2u);
	EXPECT_EQ(completions[1].statusCode, 206);
	EXPECT_EQ(ranges(origin), std::vector<std::string>{"bytes=5000-"});
	EXPECT_TRUE(target() == wholeFile);
}

TEST_F(DownloadCancel, OfASteppedOneOutlivesASecondStartOfItsRecord)
{
	Lab::Gate held, goOn;
	const FHttpRequestPtr other = FHttpModule::Get().CreateRequest(); // holds the HTTP thread, so that the cancel takes its time
	other->SetURL(text(origin.url("/file")));
	FHttpRequestStreamDelegateV2 bytes;
	bytes.BindLambda(
		[&](void*, int64&)
		{
			held.open();
			goOn.wait();
		});
	other->SetResponseBodyReceiveStreamDelegateV2(MoveTemp(bytes));
	other->ProcessRequest();
	waitFor([&] { return held.isOpen(); });
	const TArray<FhttpRequest> requests = build({origin.url("/file"), DownloadKind::Stepped, Action::E_RESUME, "", "id", {}, 20000});
	execute(requests);
	UCorvaneBPLibrary::cancelRequest("id");
	execute(requests); // refused, and no reason to go on
	goOn.open();
	drain();
	expectOneFailure();
	EXPECT_EQ(target(), std::nullopt);
	EXPECT_EQ(run(requests).statusCode, 206) << "the cancel was not meant for this one";
	EXPECT_TRUE(target() == wholeFile);
}

TEST_F(DownloadCancel, FollowedByAnOverwriteAtOnceNeverMixesTheTwo)
{
	for (const DownloadKind kind : bothDownloadKinds)
	{
		reset();
		Pieces first(1);
		start(first, 1, Action::E_OVERWRITE);
		UCorvaneBPLibrary::cancelRequest("id");
		execute(build({origin.url("/file"), kind, Action::E_OVERWRITE, "", "second", {}, 20000}));
		drain();
		ASSERT_EQ(completions.size(), 2u);
		const Completion& second = completions[completions[0].requestID == "second" ? 0 : 1];
		// The kept bytes of the first may have come in between the second's overwrite and its start, or its builder's look.
		const std::string expected = second.statusCode >= 400 ? wholeFile.substr(0, 5000) : wholeFile;
		EXPECT_EQ(describe(target()), describe(expected)) << second.statusCode;
	}
}

TEST_F(DownloadCancel, TwoDownloadsOfOneTargetNeverMix)
{
	for (const Action action : {Action::E_OVERWRITE, Action::E_RESUME})
	{
		reset();
		Pieces first, second;
		execute(build(
			{second.origin.url("/file"), DownloadKind::Whole, action}, build({first.origin.url("/file"), DownloadKind::Whole, action})));
		first.allow(12);
		ASSERT_TRUE(waitForCompletions(1));
		EXPECT_EQ(completions[0].statusCode, 500) << "the later one has taken the file over";
		EXPECT_FALSE(target().has_value());
		second.allow(12);
		drain();
		ASSERT_EQ(completions.size(), 2u);
		EXPECT_EQ(completions[1].statusCode, 200);
		EXPECT_TRUE(target() == wholeFile);
	}
}

TEST_F(DownloadCancel, OfASteppedDownloadKeepsWholeSteps)
{
	constexpr int32 step = 9999;
	for (size_t number = 0; number < 7; ++number)
	{
		reset();
		const size_t sent = number == 0 ? 0 : step; // the probe asks for one byte
		std::vector<Lab::Behaviour> serve(number + 1, Lab::file(wholeFile));
		serve.back() = {{Lab::file(wholeFile), Lab::stall({.at = {.byte = sent}})}};
		Lab::Origin server;
		server.at("/file", Lab::inTurn(serve));
		execute(build({server.url("/file"), DownloadKind::Stepped, Action::E_RESUME, "", "id", {}, step}));
		const auto hasStopped = [&] { return server.log().size() > number && server.log().back().sentBytes > sent; };
		ASSERT_TRUE(until(hasStopped)) << "step " << number;
		cancel();
		expectOneFailure();
		const size_t steps = std::max<size_t>(number, 1) - 1;
		EXPECT_TRUE(target().value_or("") == wholeFile.substr(0, steps * (step + 1))) << "step " << number;
		fetch({origin.url("/file"), DownloadKind::Stepped, Action::E_RESUME, "", "id", {}, step});
		EXPECT_TRUE(target() == wholeFile) << "step " << number;
	}
}

TEST_F(DownloadCancel, TheEndOfTheProgramKeepsWhatArrived)
{
	Pieces server(2);
	start(server, 2);
	loop.Shutdown();
	EXPECT_EQ(describe(target()), describe(wholeFile.substr(0, 10000)));
}
