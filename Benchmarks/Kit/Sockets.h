#pragma once

#include <cstdint>
#include <string>

/** A file descriptor that closes itself. */
class Descriptor
{
public:
	/** @param returned  by a system call. Throws std::system_error when it is no descriptor. */
	explicit Descriptor(int returned);
	~Descriptor();
	Descriptor(Descriptor&& other) noexcept;
	Descriptor& operator=(Descriptor&& other) noexcept;

	int get() const { return number; }

private:
	int number;
};

/** A socket that listens on a free port of the loopback interface. */
class Listener
{
public:
	Listener();

	int get() const { return socket.get(); }
	std::string url() const;
	/** Lets a thread that waits in accept() go on with an error. */
	void stop() const;

private:
	Descriptor socket;
	std::uint16_t port;
};
