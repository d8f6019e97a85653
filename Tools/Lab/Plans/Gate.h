#pragma once

#include <condition_variable>
#include <functional>
#include <memory>
#include <mutex>
#include <utility>
#include <vector>

namespace Lab
{
	/** Closed until somebody opens it; answers wait for it. Copies are the same gate. Thread: any. */
	class Gate
	{
	public:
		void open()
		{
			std::vector<std::function<void()>> waiting;
			{
				const std::scoped_lock lock(state->mutex);
				state->isOpen = true;
				waiting.swap(state->waiting);
			}
			state->opened.notify_all();
			for (const std::function<void()>& goOn : waiting)
			{
				goOn();
			}
		}
		/** Calls a function when it opens, on the thread that opens it; at once when it is open. */
		void whenOpen(std::function<void()> goOn)
		{
			{
				const std::scoped_lock lock(state->mutex);
				if (!state->isOpen)
				{
					state->waiting.push_back(std::move(goOn));
					return;
				}
			}
			goOn();
		}

		/** Blocks the calling thread until it is open. */
		void wait() const
		{
			std::unique_lock lock(state->mutex);
			state->opened.wait(lock, [this] { return state->isOpen; });
		}
		bool isOpen() const
		{
			const std::scoped_lock lock(state->mutex);
			return state->isOpen;
		}

	private:
		struct State
		{
			std::condition_variable opened;
			std::mutex mutex; // guards what follows
			bool isOpen = false;
			std::vector<std::function<void()>> waiting;
		};
		std::shared_ptr<State> state = std::make_shared<State>();
	};
} // namespace Lab
