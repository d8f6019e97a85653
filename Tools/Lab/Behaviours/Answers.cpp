#include "Lab/Behaviours/Answers.h"

#include <algorithm>
#include <charconv>
#include <stdexcept>

namespace Lab
{
	namespace
	{
		int numberOr(std::string_view text, int otherwise)
		{
			int number = otherwise;
			std::from_chars(text.data(), text.data() + text.size(), number);
			return number;
		}

		/** The query without one of its pairs, ready for another one behind it. */
		std::string queryWithout(std::string_view query, std::string_view name)
		{
			std::string rest = "?";
			while (!query.empty())
			{
				const std::string_view pair = query.substr(0, query.find('&'));
				query.remove_prefix(std::min(query.size(), pair.size() + 1));
				rest += pair.substr(0, pair.find('=')) == name ? std::string() : std::string(pair) + '&';
			}
			return rest;
		}

		std::string withPort(const std::string& host, std::string_view ownAuthority)
		{
			const std::size_t colon = ownAuthority.rfind(':');
			const bool needsPort = host.find(':') == host.npos && colon != ownAuthority.npos;
			return host + (needsPort ? std::string(ownAuthority.substr(colon)) : "");
		}

		std::string locationFor(const Request& request, const RedirectOptions& options)
		{
			if (options.loops)
			{
				return request.target;
			}
			const int hops = numberOr(request.parameter("hops"), options.hops);
			if (hops > 1)
			{
				return std::string(request.path()) + queryWithout(request.query(), "hops") + "hops=" + std::to_string(hops - 1);
			}
			return options.host.empty() ? options.to : "//" + withPort(options.host, request.header("Host")) + options.to;
		}

		/** The events of one answer. */
		class EventSource
		{
		public:
			EventSource(const EventsOptions& inOptions, const Request& request)
				: options(inOptions)
				, next(options.hasIds ? numberOr(request.header("Last-Event-ID"), 0) : 0)
				, end(options.list.empty() ? options.number : static_cast<int>(options.list.size()))
			{
				end = options.cutsAfter && (end == 0 || next + options.cutsAfter < end) ? next + options.cutsAfter : end;
			}

			std::optional<std::string> operator()()
			{
				const bool isEndless = options.list.empty() && end == 0;
				return !isEndless && next >= end ? std::nullopt : std::optional(made(next++));
			}

		private:
			std::string made(int index)
			{
				const ServerEvent event = options.list.empty() ? ServerEvent{"message " + std::to_string(index + 1)}
															   : options.list[static_cast<std::size_t>(index)];
				std::string text = options.retryMilliseconds && !std::exchange(isRetryTold, true)
									   ? "retry: " + std::to_string(*options.retryMilliseconds) + '\n'
									   : "";
				text += options.hasIds ? "id: " + std::to_string(index + 1) + '\n' : "";
				text += event.event.empty() ? "" : "event: " + event.event + '\n';
				for (std::size_t line = 0; line <= event.data.size();)
				{
					const std::size_t lineEnd = std::min(event.data.find('\n', line), event.data.size());
					text += "data: " + event.data.substr(line, lineEnd - line) + '\n';
					line = lineEnd + 1;
				}
				return text + '\n';
			}

			EventsOptions options;
			int next;
			int end;
			bool isRetryTold = false;
		};
	} // namespace

	Behaviour text(std::string text, const std::string& type)
	{
		return Behaviour(
			[text = bytesContent(std::move(text)), type](const Request&, Plan& plan)
			{
				plan.content = text;
				plan.setHeader("Content-Type", type);
			});
	}

	Behaviour status(StatusOptions options)
	{
		return Behaviour(
			[options = std::move(options)](const Request&, Plan& plan)
			{
				plan.status = options.code;
				plan.reason = options.reason;
				if (options.text)
				{
					plan.headers.clear(); // those of the body that this one replaces
					plan.setText(*options.text);
				}
				if (!options.retryAfter.empty())
				{
					plan.setHeader("Retry-After", options.retryAfter);
				}
			});
	}

	Behaviour redirect(RedirectOptions options)
	{
		return Behaviour(
			[options = std::move(options)](const Request& request, Plan& plan)
			{
				plan.status = options.code;
				plan.setHeader("Location", locationFor(request, options));
			});
	}

	Behaviour echo(Echo what)
	{
		return Behaviour(
			[what](const Request& request, Plan& plan)
			{
				const std::string_view type = request.header("Content-Type");
				const bool keepsType = what == Echo::Body && !type.empty();
				plan.setText(what == Echo::Body ? request.body : request.head, keepsType ? std::string(type) : "text/plain; charset=utf-8");
			});
	}

	Behaviour events(EventsOptions options)
	{
		const Milliseconds pause = options.pause;
		return stream(
			[options = std::move(options)](const Request& request) { return EventSource(options, request); }, pause, "text/event-stream");
	}

	Behaviour stream(std::function<PieceSource(const Request&)> makeSource, Milliseconds pause, const std::string& type)
	{
		return Behaviour(
			[makeSource = std::move(makeSource), pause, type](const Request& request, Plan& plan)
			{
				plan.pieces = makeSource(request);
				plan.pacing.pause = pause;
				plan.setHeader("Content-Type", type);
				plan.setHeader("Cache-Control", "no-store");
			});
	}

	Behaviour raw(RawAnswer answer)
	{
		return Behaviour([answer = std::move(answer)](const Request&, Plan& plan) { plan.raw = answer; });
	}
} // namespace Lab
