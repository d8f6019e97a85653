#pragma once

#include <cstdlib>
#include <fcntl.h>
#include <sys/mman.h>
#include <unistd.h>

/** True where the planted fault of this number is to show. Notes that the place was passed, if somebody asks. Thread: any. */
inline bool Mutant(int number)
{
	constexpr std::size_t places = 1 << 16;
	static const int chosen = std::getenv("CORVANE_MUTANT") ? std::atoi(std::getenv("CORVANE_MUTANT")) : 0;
	static unsigned char* const passed = []() -> unsigned char*
	{
		const char* path = std::getenv("CORVANE_MUTANTS_PASSED");
		const int file = path ? ::open(path, O_RDWR | O_CLOEXEC) : -1; // as long as there are places; children share it
		return file < 0 ? nullptr : static_cast<unsigned char*>(::mmap(nullptr, places, PROT_READ | PROT_WRITE, MAP_SHARED, file, 0));
	}();
	if (passed)
	{
		passed[number] = 1;
	}
	return number == chosen;
}
