#pragma once

#include <condition_variable>
#include <functional>
#include <mutex>
#include <string>
#include <string_view>
#include <thread>

/** The least that a program can do to have bytes looked at by another thread. The destructor waits until all were. */
class ThreadHandOver
{
public:
	/** @param inTake  is called on the other thread. */
	explicit ThreadHandOver(std::function<void(std::string_view)> inTake);
	~ThreadHandOver();
	ThreadHandOver(const ThreadHandOver&) = delete;
	ThreadHandOver& operator=(const ThreadHandOver&) = delete;

	/** Waits while a mebibyte waits to be taken. */
	void put(std::string_view bytes);

private:
	void takeAll();

	const std::function<void(std::string_view)> take;
	std::mutex mutex; // guards what follows
	std::condition_variable changed;
	std::string waiting;
	bool isOver = false;
	std::thread thread;
};
