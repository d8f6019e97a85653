#include "EndSignals.h"

#include "Async/Async.h"

#include <atomic>
#include <cerrno>
#include <chrono>
#include <csignal>
#include <fcntl.h>
#include <optional>
#include <poll.h>
#include <pthread.h>
#include <system_error>
#include <unistd.h>

namespace Program
{
	namespace
	{
		using Clock = std::chrono::steady_clock;

		constexpr int endings[] = {SIGINT, SIGTERM, SIGHUP};
		constexpr int nudge = SIGURG; // nobody else uses it, and children ignore it

		// Some send one wish twice, to a process and to its group. A person is slower.
		constexpr auto sameWish = std::chrono::milliseconds(200);
		constexpr int betweenNudges = 50; // milliseconds

		std::atomic<int> wish{0};
		static_assert(std::atomic<int>::is_always_lock_free, "a handler takes no lock");
		std::atomic<bool> isHeard{false};
		int notes[2]; // a pipe of signal numbers, one byte each; 0 ends the watcher

		/** A signal handler may do no more. */
		void note(int signal)
		{
			const int reason = errno;
			int none = 0;
			wish.compare_exchange_strong(none, signal); // here: whoever is interrupted finds it at once
			const auto number = static_cast<unsigned char>(signal);
			[[maybe_unused]] const ssize_t written = write(notes[1], &number, 1); // full: there is a wish already
			errno = reason;
		}

		void handle(int signal, void (*handler)(int))
		{
			struct sigaction action = {};
			action.sa_handler = handler; // without SA_RESTART: what waits shall look up
			sigaction(signal, &action, nullptr);
		}

		bool isIgnored(int signal)
		{
			struct sigaction action = {};
			sigaction(signal, nullptr, &action);
			return action.sa_handler == SIG_IGN;
		}

		void blockAllSignals()
		{
			sigset_t all;
			sigfillset(&all);
			pthread_sigmask(SIG_BLOCK, &all, nullptr);
		}

		/** @param milliseconds  -1 = without a limit. */
		bool isNoteThere(int milliseconds)
		{
			pollfd waiting{notes[0], POLLIN, 0};
			return poll(&waiting, 1, milliseconds) > 0;
		}

		int nextNote()
		{
			unsigned char number = 0;
			return read(notes[0], &number, 1) == 1 ? number : 0;
		}

		class Watcher
		{
		public:
			explicit Watcher(pthread_t watchedThread)
				: mainThread(watchedThread)
			{
			}

			void run()
			{
				for (;;)
				{
					if (!isNoteThere(first && !isHeard ? betweenNudges : -1))
					{
						wake(); // the main thread was about to wait, where the one before was lost
					}
					else if (const int signal = nextNote())
					{
						take(signal);
					}
					else
					{
						return;
					}
				}
			}

		private:
			void take(int signal)
			{
				if (!first)
				{
					first = Clock::now();
					wake();
				}
				else if (signal != SIGHUP && Clock::now() - *first > sameWish) // a terminal that closes is heard of twice, too
				{
					EndSignals::endAs(signal);
				}
			}

			void wake() const
			{
				AsyncTask(ENamedThreads::GameThread, [] {});
				pthread_kill(mainThread, nudge);
			}

			const pthread_t mainThread;
			std::optional<Clock::time_point> first; // when the wish came
		};

		void watch(pthread_t mainThread)
		{
			blockAllSignals(); // they are the main thread's
			Watcher(mainThread).run();
		}
	} // namespace

	EndSignals::EndSignals()
	{
		if (pipe2(notes, O_CLOEXEC) != 0)
		{
			throw std::system_error(errno, std::generic_category(), "cannot open a pipe");
		}
		fcntl(notes[1], F_SETFL, O_NONBLOCK);
		handle(nudge, [](int) {});
		for (const int signal : endings)
		{
			if (!isIgnored(signal))
			{
				handle(signal, note);
			}
		}
		watcher = std::thread(watch, pthread_self());
	}

	EndSignals::~EndSignals()
	{
		isHeard = true;
		note(0);
		watcher.join();
		for (const int signal : endings)
		{
			if (!isIgnored(signal))
			{
				handle(signal, SIG_DFL);
			}
		}
		close(notes[0]);
		close(notes[1]);
	}

	int EndSignals::asked()
	{
		const int signal = wish;
		if (signal != 0)
		{
			isHeard = true;
		}
		return signal;
	}

	const char* EndSignals::inWords(int signal)
	{
		return signal == SIGINT ? "interrupted" : signal == SIGTERM ? "terminated" : "hung up";
	}

	void EndSignals::endAs(int signal)
	{
		handle(signal, SIG_DFL);
		kill(getpid(), signal);
		_exit(128 + signal); // a first process of a container is not ended by signals
	}
} // namespace Program
