#include "Schedule.h"

#include <algorithm>
#include <cstdio>
#include <cstdlib>
#include <unistd.h>
#include <utility>

namespace
{
	constexpr std::size_t longestRun = 200'000; // points; a run that is longer goes in circles
} // namespace

Schedule& Schedule::the()
{
	static Schedule& schedule = *new Schedule(); // its spare threads wait until the program ends
	return schedule;
}

void Schedule::begin(Chooser& inChooser)
{
	chooser = &inChooser;
	time = hurriedTime = 0;
	trace.clear();
	names = {{0, "game"}};
	first.name = "game";
	threads = {&first};
	current = &first;
}

std::size_t Schedule::end()
{
	expect(threads.size() == 1, "a thread has not come to its end: " + threads.back()->name);
	current = nullptr;
	return trace.size();
}

void Schedule::point(const char* what, const void* object)
{
	if (!isRunning())
	{
		return;
	}
	note(what, object);
	pass(pick(true));
}

bool Schedule::waitUntil(const char* what, const void* object, const std::function<bool()>& isReady, double seconds)
{
	note(what, object);
	Thread& own = *current;
	own.isReady = &isReady;
	own.wakeAt = time + seconds;
	pass(pick(canGoOn(own)));
	own.isReady = nullptr;
	own.wakeAt = forever;
	return isReady();
}

void Schedule::spawn(const std::string& name, std::function<void()> body)
{
	if (spare.empty())
	{
		all.push_back(std::make_unique<Thread>());
		Thread& made = *all.back();
		made.system = std::thread([this, &made] { live(made); });
		made.system.detach();
		spare.push_back(&made);
	}
	Thread& thread = *spare.back();
	spare.pop_back();
	thread.name = name;
	thread.number = static_cast<int>(names.size());
	thread.body = std::move(body);
	names[thread.number] = name;
	threads.push_back(&thread);
	point("starts a thread");
}

/** Of one system thread: body after body, each when it has its first turn. */
void Schedule::live(Thread& thread)
{
	for (;;)
	{
		thread.turn.await();
		current = &thread;
		thread.body();
		thread.body = nullptr;
		note("ends", nullptr);
		std::erase(threads, &thread);
		spare.push_back(&thread);
		pick(false).turn.give();
	}
}

int Schedule::choose(const char* what, int options)
{
	const int taken = options > 1 ? chooser->choose(Choice::Free, options) : 0;
	note(what, reinterpret_cast<const void*>(static_cast<std::intptr_t>(taken)));
	return taken;
}

Schedule::Thread& Schedule::pick(bool selfCanGoOn)
{
	expect(trace.size() <= longestRun, "it goes on and on");
	for (;;)
	{
		std::vector<Thread*> ready(selfCanGoOn ? 1 : 0, current);
		bool somebodyWaitsForTime = false;
		for (Thread* thread : threads)
		{
			const bool can = canGoOn(*thread);
			somebodyWaitsForTime |= !can && thread->wakeAt < forever;
			if (can && (thread != current || !selfCanGoOn)) // its own time may have come meanwhile
			{
				ready.push_back(thread);
			}
		}
		if (ready.empty())
		{
			letTimePass();
			continue;
		}
		if (somebodyWaitsForTime && chooser->choose(Choice::Hurry, 2) == 1)
		{
			hurriedTime += letTimePass();
			continue;
		}
		const int number = static_cast<int>(ready.size());
		const int taken = number > 1 ? chooser->choose(selfCanGoOn ? Choice::Preempt : Choice::Free, number) : 0;
		return *ready[static_cast<std::size_t>(taken)];
	}
}

/** @return the seconds that pass. */
double Schedule::letTimePass()
{
	double next = forever;
	for (const Thread* thread : threads)
	{
		next = !canGoOn(*thread) ? std::min(next, thread->wakeAt) : next;
	}
	expect(next < forever, "everybody waits for ever");
	return next - std::exchange(time, next);
}

void Schedule::pass(Thread& next)
{
	Thread& own = *current;
	if (&next != &own)
	{
		next.turn.give();
		own.turn.await();
	}
}

void Schedule::fail(std::string_view what)
{
	std::fprintf(stderr, "%s: %s\nRun it again with: --scenario %s %s --trace\n", title.c_str(), std::string(what).c_str(), title.c_str(),
		chooser->inWords().c_str());
	printTrace();
	for (const Thread* thread : threads)
	{
		std::fprintf(stderr, "%s %s\n", thread->name.c_str(), thread->isReady ? "waits" : "could go on");
	}
	std::fflush(stderr);
	_exit(1);
}

void Schedule::printTrace() const
{
	std::map<const void*, int> objects;
	std::vector<std::string> lines;
	int last = -1;
	std::string lastText;
	for (std::size_t index = 0; index < trace.size(); ++index)
	{
		const Step& step = trace[index];
		const auto small = reinterpret_cast<std::uintptr_t>(step.object);
		const int object = objects.try_emplace(step.object, static_cast<int>(objects.size())).first->second;
		const std::string named = small < 64 ? ' ' + std::to_string(small) : " #" + std::to_string(object);
		const std::string text = step.what + (step.object ? named : std::string());
		if (step.thread == last && text == lastText)
		{
			lines.back() += lines.back().ends_with('+') ? "" : " +"; // again and again
			continue;
		}
		const std::string name = step.thread == last ? std::string() : names.at(step.thread);
		lines.push_back(std::to_string(index) + '\t' + name + std::string(13 - std::min<std::size_t>(name.size(), 12), ' ') + text);
		last = step.thread;
		lastText = text;
	}
	for (std::size_t index = lines.size() - std::min<std::size_t>(lines.size(), 400); index < lines.size(); ++index)
	{
		std::fprintf(stderr, "%s\n", lines[index].c_str());
	}
}
