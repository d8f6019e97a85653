#pragma once

#include <cerrno>
#include <string>
#include <system_error>
#include <unistd.h>
#include <utility>

namespace Lab
{
	/** Throws std::system_error when a system call returned an error. @param what  it was about. */
	inline void check(int returned, const std::string& what)
	{
		if (returned < 0)
		{
			throw std::system_error(errno, std::generic_category(), what);
		}
	}

	/** A file descriptor that closes itself. */
	class Descriptor
	{
	public:
		/** @param returned  by a system call. Throws std::system_error when it is no descriptor. */
		Descriptor(int returned, const std::string& what)
			: number(returned)
		{
			check(returned, what);
		}
		~Descriptor()
		{
			if (number >= 0)
			{
				::close(number);
			}
		}
		Descriptor(Descriptor&& other) noexcept
			: number(std::exchange(other.number, -1))
		{
		}
		Descriptor& operator=(Descriptor&& other) noexcept
		{
			std::swap(number, other.number);
			return *this;
		}

		int get() const { return number; }

	private:
		int number;
	};
} // namespace Lab
