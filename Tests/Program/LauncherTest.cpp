#include "ProcessRun.h"
#include "TempDir.h"

#include <gtest/gtest.h>

#include <filesystem>
#include <future>

namespace
{
	namespace fs = std::filesystem;
	using Clock = fs::file_time_type::clock;

	/** The launcher in a project whose set-up and build tools are stand-ins that write down that they were called. */
	class Launcher : public ::testing::Test
	{
	protected:
		Launcher()
		{
			for (const char* source : {"CMakeLists.txt", "CMakePresets.json", "Host/one.cpp", "Source/two.cpp", "Tools/three.cpp"})
			{
				project.write(source, "");
			}
			project.write("Scripts/setup.sh", "#!/bin/sh\necho set up; echo setup >> calls");
			project.write("tools/cmake", R"sh(#!/bin/sh
				echo building
				if [ "$1" = --preset ]; then echo configure >> calls; touch build/default/build.ninja; exit; fi
				echo "${1#--}" >> calls
				[ ! -e broken ] || exit 1
				mkdir -p build/default/Tools/Program
				printf '#!/bin/sh\necho "$# $1 in $PWD"\nexit 5\n' > build/default/Tools/Program/corvane
				chmod +x build/default/Tools/Program/corvane
			)sh");
			fs::copy_file(CORVANE_LAUNCHER, project.path("corvane"));
			fs::permissions(project.path("Scripts/setup.sh"), fs::perms::owner_all);
			fs::permissions(project.path("tools/cmake"), fs::perms::owner_all);
		}

		/** Runs it in another folder, as a caller would. */
		ProcessRun launch() const
		{
			return runProcess({"/bin/sh", "-c", R"(cd "$1" && PATH="$2:$PATH" exec "$3" "a b" "")", "sh", caller.path(),
				project.path("tools"), project.path("corvane")});
		}

		const TempDir project;
		const TempDir caller;
	};
} // namespace

TEST_F(Launcher, BuildsOnceAndBecomesTheProgramInTheCallersFolder)
{
	for (const char* const err : {"set up\nbuilding\nbuilding\n", ""})
	{
		const ProcessRun run = launch();
		EXPECT_EQ(run.status, 5);
		EXPECT_EQ(run.out, "2 a b in " + fs::canonical(caller.path()).string() + "\n");
		EXPECT_EQ(run.err, err);
	}
	EXPECT_EQ(project.read("calls"), "setup\nconfigure\nbuild\n");
}

TEST_F(Launcher, BuildsAgainWhenASourceOrAFolderChangedUntilItSucceeds)
{
	launch();
	for (const char* changed : {"Host", "Source/two.cpp", "Tools/three.cpp", "CMakeLists.txt"})
	{
		fs::last_write_time(project.path(changed), Clock::now() + std::chrono::hours(1));
		project.write("broken", "");
		for (int round = 0; round < 2; ++round)
		{
			const ProcessRun failed = launch();
			EXPECT_EQ(failed.status, 3) << changed;
			EXPECT_EQ(failed.out, "");
		}
		fs::remove(project.path("broken"));
		EXPECT_EQ(launch().status, 5);
		fs::last_write_time(project.path(changed), Clock::now() - std::chrono::hours(1));
	}
}

TEST_F(Launcher, CallersAtTheSameTimeBuildOnce)
{
	std::vector<std::future<ProcessRun>> runs(4);
	for (std::future<ProcessRun>& run : runs)
	{
		run = std::async(std::launch::async, [this] { return launch(); });
	}
	for (std::future<ProcessRun>& run : runs)
	{
		EXPECT_EQ(run.get().status, 5);
	}
	EXPECT_EQ(project.read("calls"), "setup\nconfigure\nbuild\n");
}
