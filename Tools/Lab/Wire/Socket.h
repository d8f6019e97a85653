#pragma once

#include "Lab/Plans/Descriptor.h"

#include <memory>
#include <string_view>

struct ssl_st;

namespace Lab
{
	class TlsIdentity;

	/** A socket that listens. @param port  0 = the system chooses one. Throws std::system_error. */
	Descriptor listenOn(const std::string& address, int port);
	int portOf(const Descriptor& listener);
	/** For the calling thread and those that it starts: a peer that has left is an error of the write, not the end of the program. */
	void surviveBrokenPipes();

	/** An accepted connection that never waits, with or without TLS. Thread: one at a time. */
	class Socket
	{
	public:
		enum class Outcome
		{
			Good,
			Later, // when the system says that it is ready
			Over
		};
		struct Result
		{
			Outcome outcome = Outcome::Over;
			std::size_t bytes = 0;
		};

		/** @param identity  speaks TLS with it; null = plain. */
		Socket(Descriptor accepted, const TlsIdentity* identity);

		Result read(char* room, std::size_t most);
		Result write(std::string_view bytes);
		/** Lets the system drop bytes unseen, at most so many; plain connections only. */
		Result drop(std::size_t most);
		bool isPlain() const { return !tls; }
		/** Tells the peer that no more comes. */
		void endWriting();
		/** From here on the end is an error for the peer. */
		void resetAtClose();
		int number() const { return descriptor.get(); }

	private:
		Result tlsResult(int returned);

		Descriptor descriptor;
		std::shared_ptr<ssl_st> tls;
	};
} // namespace Lab
