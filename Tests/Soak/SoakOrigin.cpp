#include "SoakOrigin.h"

#include "Lab/Behaviours/Answers.h"
#include "Lab/Behaviours/Faults.h"
#include "Lab/Behaviours/Files.h"
#include "Lab/Behaviours/Tus.h"
#include "Lab/Origin.h"

#include <csignal>
#include <fmt/format.h>
#include <list>
#include <optional>
#include <stdexcept>
#include <sys/prctl.h>
#include <sys/wait.h>
#include <unistd.h>

namespace
{
	using Lab::Behaviour;
	using Lab::Plan;
	using Lab::Request;

	/** "/place/WISH/more", or the file of a Drive address. */
	Wish wishOf(const Request& request)
	{
		const std::string id = request.parameter("id");
		const std::string_view path = request.path();
		return Wish::parse(!id.empty() ? id : path.starts_with("/file/d/") ? path.substr(8) : path.substr(path.find('/', 1) + 1));
	}

	Fault faultOf(const Request& request)
	{
		const Wish wish = wishOf(request);
		return wish.isOnce && request.visit > 1 ? Fault::None : wish.fault;
	}

	Behaviour mishap(Fault fault)
	{
		const auto promiseMore = [](const Request&, Plan& plan)
		{ plan.announced = plan.content ? std::optional(plan.content->size() + 7) : plan.announced; };
		return fault == Fault::Drop          ? Lab::drop()
			   : fault == Fault::DropInBody  ? Lab::drop({.at = {.share = 0.5}})
			   : fault == Fault::Busy        ? Lab::status({.code = 503, .retryAfter = "0", .text = "busy"})
			   : fault == Fault::WrongLength ? Behaviour(promiseMore)
			   : fault == Fault::Stall       ? Lab::stall({.at = {.share = 0.5}, .time = Lab::Milliseconds(20)})
											 : Lab::headers({});
	}

	const Behaviour fault([](const Request& request, Plan& plan) { mishap(faultOf(request)).answer(request, plan); },
		[](const Request& request, Lab::Intake& intake)
		{
			const bool hasBody = request.announced.value_or(0) > 1;
			if (hasBody && faultOf(request) == Fault::DropInBody)
			{
				intake.hangsUpAfter = *request.announced / 2;
			}
		});

	/** Of a file that arrives in whatever form. */
	Behaviour answerUpload(const Request& request)
	{
		const Wish wish = wishOf(request);
		return request.body.find(wish.content()) != std::string::npos ? "whole" : fmt::format("wrong: {} bytes", request.body.size());
	}

	Behaviour answerEvents(const Request& request)
	{
		const Wish wish = wishOf(request);
		const int last = std::atoi(std::string(request.header("Last-Event-ID")).c_str());
		return last == wish.numEvents() ? Lab::status({.code = 204}) : Lab::text(wish.events(last), "text/event-stream");
	}

	Behaviour answerDrive(const Request& request)
	{
		const Wish wish = wishOf(request);
		constexpr const char* page =
			"<a href=\"/uc?id={0}&amp;export=download;confirm=t0k3n&amp;x=1\">Download anyway</a>"
			"<form action=\"/uc\" method=\"get\"><input type=\"hidden\" name=\"id\" value=\"{0}\"><input type=\"hidden\" "
			"name=\"confirm\" value=\"t0k3n\"></form>";
		return request.target.find("confirm") != std::string::npos ? Lab::file(wish.content())
																   : Lab::text(fmt::format(page, wish.text()), "text/html");
	}

	Behaviour view(const Request& request)
	{
		std::string nulls;
		for (int number = 0; number < 25; ++number)
		{
			nulls += ",null";
		}
		const Wish wish = wishOf(request);
		return Lab::text(
			fmt::format("<script>viewer({{itemJson:[\"id\",\"level.pak\"{},\"{}\"]}});</script>", nulls, wish.size), "text/html");
	}

	Behaviour page(const Request& request)
	{
		const Wish wish = wishOf(request);
		return Lab::text(fmt::format("<html><a id=\"download-url\" class=\"button\" href=\"http://{}/get/{}\"><img> Download</a></html>",
							 request.header("Host"), wish.text()),
			"text/html");
	}

	void furnish(Lab::Origin& origin)
	{
		origin.at(
			"/get/*", [](const Request& request) { return Lab::text(wishOf(request).content(), "text/plain"); }, fault);
		origin.at(
			"/file/*", [](const Request& request) { return Lab::file(wishOf(request).content()); }, fault);
		origin.at("/file/d/*", view, fault);
		origin.at("/echo/*", Lab::echo(), fault);
		origin.at("/upload/*", answerUpload, fault);
		origin.at("/events/*", answerEvents, fault);
		origin.at("/uc*", answerDrive, fault);
		origin.at("/page/*", page, fault);
		const Behaviour tus = Lab::tus();
		origin.at("/tus/*", tus, fault);
		origin.at("GET /tus/*", tus); // what came, for comparison
	}

	/** Never returns. @param told  gets the ports. */
	void serve(int told)
	{
		prctl(PR_SET_PDEATHSIG, SIGKILL);
		std::list<Lab::Origin> origins;
		std::array<int, SoakOrigin::number> ports{};
		for (int& port : ports)
		{
			furnish(origins.emplace_back(Lab::OriginOptions{.keepsLog = false}));
			port = origins.back().port();
		}
		const bool isTold = ::write(told, ports.data(), sizeof ports) == sizeof ports;
		while (isTold)
		{
			pause();
		}
		_exit(1);
	}
} // namespace

SoakOrigin::SoakOrigin()
{
	std::array<int, 2> channel{};
	if (pipe(channel.data()) != 0 || (process = fork()) < 0)
	{
		throw std::runtime_error("the origin cannot be started");
	}
	if (process == 0)
	{
		serve(channel[1]);
	}
	::close(channel[1]);
	const bool isThere = ::read(channel[0], ports.data(), sizeof ports) == sizeof ports;
	::close(channel[0]);
	if (!isThere)
	{
		throw std::runtime_error("the origin does not come up");
	}
}

SoakOrigin::~SoakOrigin()
{
	::kill(process, SIGKILL);
	::waitpid(process, nullptr, 0);
}

std::string SoakOrigin::base(const Wish& wish) const
{
	return fmt::format("http://127.0.0.1:{}", wish.fault == Fault::Refused ? closed.port : ports[wish.number % number]);
}
