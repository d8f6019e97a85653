#pragma once

#include "CorvaneBPLibrary.h"
#include "GameLoop.h"
#include "TempDir.h"

#include <functional>
#include <string>

namespace Orders
{
	/** What happens to a request beside its answer. */
	enum class Disturbance
	{
		None,
		Cancel,
		CancelAndAgain,
		Collection,
		GraphGone,
		NoThread,
		Pause,
		EndOfProgram,
		/** Started again by the handler of its outcome, in a game that collects all the time. */
		AgainInHandler
	};

	/** A program in one run: its loop, its folder, and what it is told. */
	class World
	{
	public:
		World(const TempDir& inFolder, Disturbance inDisturbance);

		/** The game goes on until a condition holds. */
		void until(const std::function<bool()>& condition);
		/** The game goes on for none, one or two frames in which something happens. */
		void letPass();
		/** Ends the run when something is not as it must be. */
		void expect(bool holds, const std::string& what) const;

		UCorvaneBPLibrary& library() const { return *UCorvaneBPLibrary::getCorvaneTarget(); }
		std::string read(const char* name) const { return folder.exists(name) ? folder.read(name) : std::string(); }

		FGameLoop loop;
		const TempDir& folder;
		const Disturbance disturbance;
		int starts = 0;
		int outcomes = 0;
		bool isPaused = false;

	private:
		/** @return whether anything happened in it. */
		bool frame(double mostSeconds);
	};

	/** The bytes that servers have. */
	extern const std::string content;
	FString text(const std::string& utf8);
} // namespace Orders
