#pragma once

#include "Workload.h"

#include <filesystem>
#include <string>

class RandomFile;

/**
 * A file function beside a program of the system that does the same to a file of random bytes. Every run of either side
 * is a process of its own: so memory can be compared, and both sides pay for their start.
 */
class FileWorkload : public Workload
{
public:
	CLI::App* addTo(CLI::App& program) final;
	std::vector<Comparison> run() final;

protected:
	struct Description
	{
		std::string name; // of the subcommand
		std::string summary;
		std::string peer;
		int mebibytes; // of the file, unless an option says otherwise
	};

	explicit FileWorkload(Description inDescription);

	/** Adds further options. Those that Corvane's process needs as well go into corvaneOptions. */
	virtual void addOptions(CLI::App&) {}
	virtual std::vector<std::string> corvaneOptions() const { return {}; }

	/** Corvane's work; throws when it fails. Runs in the fresh process, whose standard output is kept. */
	virtual void work(const std::string& file) const = 0;
	virtual std::vector<std::string> peerCommand(const std::filesystem::path& folder, const std::string& file) const = 0;
	/** Looks at what a run left behind, and clears it away. Throws when that is not as it should be. Not measured. */
	virtual void check(const std::filesystem::path& folder, const std::string& output) const = 0;

private:
	Comparison compare(const RandomFile& content) const;

	Description description;
	int pairs = 5;
	std::string root;
	std::string workOn; // for the fresh process alone
};
