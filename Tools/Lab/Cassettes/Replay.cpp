#include "Lab/Cassettes/Cassette.h"

#include <algorithm>
#include <map>

namespace Lab
{
	namespace
	{
		using Answers = std::map<std::string, std::vector<RawAnswer>>; // by "METHOD target"

		/** What a request is called on a cassette, where its secrets may be missing. */
		std::vector<std::string> namesOf(const Request& request)
		{
			RecordedExchange bare{request.head, {}};
			removeSecrets(bare);
			return {requestLineOf(request.head), requestLineOf(bare.request)};
		}

		void answerFrom(const Answers& answers, const Request& request, Plan& plan)
		{
			for (const std::string& name : namesOf(request))
			{
				const auto found = answers.find(name);
				if (found != answers.end())
				{
					plan.raw = found->second.at(std::min(static_cast<std::size_t>(request.visit), found->second.size()) - 1);
					return;
				}
			}
			plan.status = 404;
			plan.setText("There is no " + request.method + ' ' + request.target + " on the cassette.\n");
		}
	} // namespace

	Behaviour replay(Cassette cassette, double speed)
	{
		Answers answers;
		for (RecordedExchange& exchange : cassette)
		{
			for (RawPiece& piece : exchange.answer.pieces)
			{
				piece.pause = speed > 0 ? piece.pause / speed : Milliseconds();
			}
			answers[requestLineOf(exchange.request)].push_back(std::move(exchange.answer));
		}
		return Behaviour([answers = std::move(answers)](const Request& request, Plan& plan) { answerFrom(answers, request, plan); });
	}
} // namespace Lab
