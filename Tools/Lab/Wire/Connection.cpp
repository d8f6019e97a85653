#include "Lab/Wire/Connection.h"

#include <array>
#include <sys/epoll.h>

namespace Lab
{
	namespace
	{
		constexpr std::size_t largestRead = 64 << 10;
		constexpr std::size_t slowRead = 4 << 10; // so that a slow reader is seen by the one who writes
		constexpr std::size_t largestDrop = 1 << 20;
		constexpr int mostTurns = 64; // before other connections have theirs
		constexpr std::chrono::seconds lingerTime{2};
	} // namespace

	Connection::Connection(Service& inService, std::uint64_t inKey, Socket inSocket)
		: service(inService)
		, key(inKey)
		, socket(std::move(inSocket))
		, watched(EPOLLIN | EPOLLRDHUP)
	{
		service.loop->watch(socket.number(), key, watched);
	}

	Connection::~Connection()
	{
		if (timer)
		{
			service.loop->cancel(*timer);
		}
		if (isBodyOpen)
		{
			tellBroken();
		}
		endExchange("client left");
	}

	/** The body of the request ends before its time. */
	void Connection::tellBroken()
	{
		isBodyOpen = false;
		reader.endBody();
		entry = service.log.begin(reader.shared(), 0);
		if (intake.onBroken)
		{
			intake.onBroken(reader.request());
		}
	}

	void Connection::wake(std::uint32_t events)
	{
		if (events == 0)
		{
			timer.reset();
		}
		hasPeerLeft = hasPeerLeft || (events & (EPOLLRDHUP | EPOLLHUP | EPOLLERR)) != 0;
		if (!mayGoOn())
		{
			return setInterest();
		}
		wait = Wait::None;
		wanted = 0;
		int turns = 0;
		while (state != State::Over && goOn())
		{
			if (++turns == mostTurns)
			{
				waitUntil(Clock::now());
				break;
			}
		}
		if (state != State::Over)
		{
			setInterest();
		}
	}

	/** What waits for no event of its socket is woken when its peer leaves, and by late timers. */
	bool Connection::mayGoOn()
	{
		const bool waits = wait == Wait::Gate || wait == Wait::Stall || (wait == Wait::Time && Clock::now() < waitEnd);
		if (waits && hasPeerLeft && (state == State::Answer || wait == Wait::Gate))
		{
			state = State::Over;
		}
		return !waits;
	}

	void Connection::release()
	{
		if (wait == Wait::Gate)
		{
			wait = Wait::None;
			wake(EPOLLOUT);
		}
	}

	bool Connection::goOn()
	{
		switch (state)
		{
		case State::Head:
			return readHead();
		case State::Body:
			return readBody();
		case State::Answer:
			return flush() && doStep();
		case State::Linger:
			return linger();
		case State::Over:
			break;
		}
		return false;
	}

	void Connection::setInterest()
	{
		const std::uint32_t interest = wanted | (hasPeerLeft ? 0U : EPOLLRDHUP);
		if (interest != watched && state != State::Over)
		{
			watched = interest;
			service.loop->change(socket.number(), key, interest);
		}
	}

	bool Connection::waitUntil(Clock::time_point time)
	{
		if (timer)
		{
			service.loop->cancel(*timer);
		}
		wait = Wait::Time;
		wanted = 0; // bytes that are there already are no reason to wake up
		waitEnd = time;
		timer = service.loop->setTimer(time, key);
		return false;
	}

	bool Connection::waitFor(Gate gate)
	{
		wait = Wait::Gate;
		gate.whenOpen(
			[loop = std::weak_ptr<Loop>(service.loop), mine = key]
			{
				if (const std::shared_ptr<Loop> alive = loop.lock())
				{
					alive->release(mine);
				}
			});
		return false;
	}

	bool Connection::fill(std::size_t most)
	{
		std::array<char, largestRead> room;
		const Socket::Result result = socket.read(room.data(), std::min(most, room.size()));
		reader.add({room.data(), result.bytes});
		wanted = EPOLLIN;
		if (result.outcome == Socket::Outcome::Over)
		{
			state = State::Over;
		}
		return result.outcome == Socket::Outcome::Good;
	}

	bool Connection::flush()
	{
		while (!unsent.empty())
		{
			const Socket::Result result = socket.write(unsent);
			if (result.outcome != Socket::Outcome::Good)
			{
				state = result.outcome == Socket::Outcome::Over ? State::Over : state;
				wanted = EPOLLOUT;
				return false;
			}
			unsent.remove_prefix(result.bytes);
			if (entry)
			{
				service.log.addSent(entry, result.bytes);
			}
		}
		return true;
	}

	bool Connection::readHead()
	{
		try
		{
			if (!reader.readHead())
			{
				return fill(largestRead);
			}
			beginRequest();
		}
		catch (const std::invalid_argument& fault)
		{
			refuse(fault.what());
		}
		return true;
	}

	void Connection::beginRequest()
	{
		Request& request = reader.request();
		request.connection = key;
		behaviour = service.admit(request);
		intake = {};
		behaviour->take(request, intake);
		state = State::Body;
		isBodyOpen = request.number != 0;
		bodyStart = Clock::now();
		const bool isAwaited = equalsIgnoringCase(request.header("Expect"), "100-continue");
		if (isAwaited && intake.stopsAfter() > 0)
		{
			unsent = "HTTP/1.1 100 Continue\r\n\r\n";
		}
	}

	bool Connection::readBody()
	{
		if (const std::optional<Gate> gate = std::exchange(intake.gate, std::nullopt))
		{
			return waitFor(*gate);
		}
		if (const std::optional<Milliseconds> pause = std::exchange(intake.pause, std::nullopt))
		{
			bodyStart = later(Clock::now(), *pause);
			return waitUntil(bodyStart);
		}
		try
		{
			return flush() && (takeBody() || receiveBody());
		}
		catch (const std::invalid_argument& fault)
		{
			refuse(fault.what());
			return true;
		}
	}

	/** How many bytes of the body may have been read by now. */
	std::uint64_t Connection::bodyBytesDue() const
	{
		const std::chrono::duration<double> passed = Clock::now() - bodyStart;
		return intake.bytesPerSecond > 0 ? static_cast<std::uint64_t>(passed.count() * intake.bytesPerSecond) : endless;
	}

	/** @return whether the body has come to its end, one or the other. */
	bool Connection::takeBody()
	{
		const bool isComplete = reader.readBody(intake, std::min(intake.stopsAfter(), bodyBytesDue()));
		const std::uint64_t bytes = reader.request().bodyBytes;
		if (isComplete || bytes >= intake.answersAfter.value_or(endless))
		{
			beginAnswer(isComplete);
			return true;
		}
		if (bytes >= intake.hangsUpAfter.value_or(endless))
		{
			tellBroken();
			resetNow("hung up");
			return true;
		}
		return false;
	}

	bool Connection::receiveBody()
	{
		if (intake.bytesPerSecond > 0 && (reader.hasBytes() || reader.request().bodyBytes >= bodyBytesDue()))
		{
			constexpr std::chrono::milliseconds turn{10};
			return waitUntil(Clock::now() + turn);
		}
		if (intake.throwsAway && reader.missing() > 0 && socket.isPlain())
		{
			const Socket::Result result = socket.drop(static_cast<std::size_t>(std::min<std::uint64_t>(reader.missing(), largestDrop)));
			reader.skip(result.bytes);
			wanted = EPOLLIN;
			state = result.outcome == Socket::Outcome::Over ? State::Over : state;
			return result.outcome == Socket::Outcome::Good;
		}
		return fill(intake.bytesPerSecond > 0 ? slowRead : largestRead);
	}

	void Connection::beginAnswer(bool isComplete)
	{
		isBodyOpen = false;
		reader.endBody();
		Plan plan = service.plan(*behaviour, reader.request());
		plan.keepsConnection = plan.keepsConnection && isComplete;
		answer.emplace(std::move(plan), reader.request());
		entry = reader.request().number ? service.log.begin(reader.shared(), answer->status()) : nullptr;
		state = State::Answer;
	}

	void Connection::refuse(const char* why)
	{
		Plan plan;
		plan.status = 400;
		plan.keepsConnection = false;
		plan.setText(std::string("This is no request: ") + why + '\n');
		answer.emplace(std::move(plan), Request());
		state = State::Answer;
	}

	bool Connection::doStep()
	{
		const Step step = answer->next();
		switch (step.kind)
		{
		case Step::Kind::Send:
			unsent = step.bytes;
			return true;
		case Step::Kind::WaitUntil:
			return waitUntil(step.time);
		case Step::Kind::WaitForGate:
			return waitFor(*step.gate);
		case Step::Kind::Stall:
			wait = Wait::Stall;
			return false;
		case Step::Kind::Close:
			closeOrderly("complete");
			return true;
		case Step::Kind::Drop:
			closeOrderly("dropped");
			return true;
		case Step::Kind::Reset:
			resetNow("reset");
			return true;
		case Step::Kind::Done:
			break;
		}
		endExchange("complete");
		answer.reset();
		state = State::Head;
		return true;
	}

	void Connection::endExchange(const char* how)
	{
		if (entry)
		{
			service.log.end(std::exchange(entry, nullptr), how);
		}
	}

	/** A close with unread bytes would be an error for the peer, and might cost it what it has not read yet. */
	void Connection::closeOrderly(const char* how)
	{
		endExchange(how);
		socket.endWriting();
		state = State::Linger;
		waitUntil(Clock::now() + lingerTime);
		wait = Wait::None; // it goes on reading
	}

	bool Connection::linger()
	{
		std::array<char, largestRead> unused;
		wanted = EPOLLIN;
		const Socket::Outcome outcome = Clock::now() < waitEnd ? socket.read(unused.data(), unused.size()).outcome : Socket::Outcome::Over;
		state = outcome == Socket::Outcome::Over ? State::Over : state;
		return outcome == Socket::Outcome::Good;
	}

	void Connection::resetNow(const char* how)
	{
		endExchange(how);
		socket.resetAtClose();
		state = State::Over;
	}
} // namespace Lab
