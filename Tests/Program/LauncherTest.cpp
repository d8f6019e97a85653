#include "ProcessRun.h"
#include "TempDir.h"

#include <gtest/gtest.h>

#include <filesystem>
#include <future>

namespace
{
	namespace fs = std::filesystem;

	/** The launcher in a project whose set-up and build tools are stand-ins that write down that they were called. */
	class Launcher : public ::testing::Test
	{
	protected:
		Launcher()
		{
			project.write("CMakeLists.txt", "");
			project.write("CMakePresets.json", "");
			project.write("Host/one.cpp", "");
			project.write("Source/two.cpp", "");
			writeProgram("Scripts/setup.sh", "echo set up; echo setup >> calls");
			writeProgram("tools/cmake", R"sh(
				echo building
				if [ "$1" = --preset ]; then echo configure >> calls; touch build/default/build.ninja; exit; fi
				echo "${1#--}" >> calls
				[ ! -e broken ] || exit 1
				mkdir -p build/default/Tools/Program
				printf '#!/bin/sh\necho "$# $1 in $PWD"\nexit 5\n' > build/default/Tools/Program/corvane
				chmod +x build/default/Tools/Program/corvane
			)sh");
			fs::copy_file(CORVANE_LAUNCHER, project.path("corvane"));
		}

		void writeProgram(const std::string& name, const std::string& body)
		{
			fs::permissions(project.write(name, "#!/bin/sh\n" + body), fs::perms::owner_all);
		}

		/** Runs it in another folder, as a caller would. */
		ProcessRun launch() const
		{
			return runProcess({"/bin/sh", "-c", R"(cd "$1" && PATH="$2:$PATH" exec "$3" "a b" "")", "sh", caller.path(),
				project.path("tools"), project.path("corvane")});
		}

		/** @return "setup", "configure" and "build" for each time that they ran so far. */
		std::string calls() const { return project.read("calls"); }

		/** Makes a file, or the folder it is in, newer than the last build. */
		void touch(const std::string& name) const
		{
			fs::last_write_time(project.path(name), fs::file_time_type::clock::now() + std::chrono::hours(1));
		}

		const TempDir project;
		const TempDir caller;
	};
} // namespace

TEST_F(Launcher, BuildsOnceAndBecomesTheProgramInTheCallersFolder)
{
	const std::string expected = "2 a b in " + fs::canonical(caller.path()).string() + "\n";
	const ProcessRun first = launch();
	EXPECT_EQ(first.status, 5);
	EXPECT_EQ(first.out, expected);
	EXPECT_EQ(first.err, "set up\nbuilding\nbuilding\n");
	const ProcessRun second = launch();
	EXPECT_EQ(second.out, expected);
	EXPECT_EQ(second.err, "");
	EXPECT_EQ(calls(), "setup\nconfigure\nbuild\n");
}

TEST_F(Launcher, BuildsAgainWhenASourceOrAFolderChanged)
{
	launch();
	for (const char* changed : {"Host/one.cpp", "Source", "CMakeLists.txt"})
	{
		const std::string before = calls();
		touch(changed);
		launch();
		EXPECT_EQ(calls(), before + "setup\nbuild\n") << changed;
		fs::last_write_time(project.path(changed), fs::file_time_type::clock::now() - std::chrono::hours(1));
	}
}

TEST_F(Launcher, FailedBuildEndsWithThreeUntilItSucceeds)
{
	launch();
	project.write("broken", "");
	touch("Host/one.cpp");
	for (int round = 0; round < 2; ++round)
	{
		const ProcessRun failed = launch();
		EXPECT_EQ(failed.status, 3);
		EXPECT_EQ(failed.out, "");
	}
	fs::remove(project.path("broken"));
	EXPECT_EQ(launch().status, 5);
}

TEST_F(Launcher, CallersAtTheSameTimeBuildOnce)
{
	std::vector<std::future<ProcessRun>> runs;
	for (int number = 0; number < 4; ++number)
	{
		runs.push_back(std::async(std::launch::async, [this] { return launch(); }));
	}
	for (std::future<ProcessRun>& run : runs)
	{
		EXPECT_EQ(run.get().status, 5);
	}
	EXPECT_EQ(calls(), "setup\nconfigure\nbuild\n");
}
