#pragma once

#include "Lab/Plans/Behaviour.h"
#include "Lab/Wire/Log.h"
#include "Lab/Wire/Loop.h"
#include "Lab/Wire/RequestReader.h"
#include "Lab/Wire/Socket.h"

#include <memory>
#include <optional>

namespace Lab
{
	/** What connections need of their origin. Thread: the loop's. */
	class Service
	{
	public:
		/** @param keepsLog  what became of requests is told later. */
		explicit Service(bool keepsLog)
			: log(keepsLog)
		{
		}
		virtual ~Service() = default;
		/** Numbers a request that has come with its head. @return what answers it. */
		virtual Behaviour admit(Request& request) = 0;
		/** @return the plan for a request that has come; never throws. */
		virtual Plan plan(const Behaviour& behaviour, const Request& request) = 0;

		const std::shared_ptr<Loop> loop = std::make_shared<Loop>();
		Log log;
	};

	/** One connection: reads requests, and does the steps of their answers. Thread: the loop's. */
	class Connection
	{
	public:
		/** @param key  under which the loop watches it. */
		Connection(Service& service, std::uint64_t key, Socket socket);
		~Connection();

		/** Goes on as far as it can. @param events  of epoll, 0 = its time has come. */
		void wake(std::uint32_t events);
		/** The gate that its answer waits for is open. */
		void release();
		bool isOver() const { return state == State::Over; }

	private:
		enum class State
		{
			Head,
			Body,
			Answer,
			Linger, // the peer reads what is on its way
			Over
		};
		enum class Wait
		{
			None,
			Time,
			Gate,
			Stall
		};

		bool mayGoOn();
		bool goOn();
		bool readHead();
		bool readBody();
		bool takeBody();
		bool receiveBody();
		std::uint64_t bodyBytesDue() const;
		bool doStep();
		bool linger();
		bool fill(std::size_t most);
		bool flush();
		bool waitUntil(Clock::time_point time);
		bool waitFor(Gate gate);
		void beginRequest();
		void beginAnswer(bool isComplete);
		void refuse(const char* why);
		void endExchange(const char* how);
		void tellBroken();
		void closeOrderly(const char* how);
		void resetNow(const char* how);
		void setInterest();

		Service& service;
		const std::uint64_t key;
		Socket socket;
		RequestReader reader;
		State state = State::Head;
		Wait wait = Wait::None;
		std::uint32_t wanted = 0; // events that it has to see to go on
		std::uint32_t watched = 0;
		bool hasPeerLeft = false;
		bool isBodyOpen = false; // a head has come, and no answer has begun
		std::optional<Loop::Timer> timer;
		Clock::time_point waitEnd;
		std::optional<Behaviour> behaviour;
		Intake intake;
		Clock::time_point bodyStart;
		std::optional<Answer> answer;
		std::string_view unsent;
		Log::Entry entry; // null = none, or one that is not told
	};
} // namespace Lab
