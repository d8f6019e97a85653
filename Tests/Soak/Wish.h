#pragma once

#include <cstdint>
#include <string>
#include <string_view>

/** What goes wrong on the way. */
enum class Fault
{
	None,
	Drop, // before the answer
	DropInBody, // of the answer, or of an upload
	Busy, // 503
	WrongLength, // the answer promises more than comes
	Stall, // shorter than any time limit
	Refused // nobody listens
};

/** What is asked for: the origin learns it from the address, so both sides know the bytes. */
struct Wish
{
	std::uint64_t number = 0;
	std::uint64_t size = 0;
	Fault fault = Fault::None;
	bool isOnce = false; // the first request of an address has the fault, later ones have not

	/** As a part of a path. */
	std::string text() const;
	/** @param text  may go on after the part. */
	static Wish parse(std::string_view text);
	/** Bytes that no other number has. */
	std::string content() const;
	/** The same as digits and letters. */
	std::string letters() const;
	/** Server-sent events behind one of them; none has a number of 0. */
	std::string events(int after = 0) const;
	int numEvents() const { return 3 + static_cast<int>(number % 5); }
	std::string event(int index) const { return std::to_string(number) + "." + std::to_string(index); }
};
