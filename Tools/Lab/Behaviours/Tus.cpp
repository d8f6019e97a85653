#include "Lab/Behaviours/Tus.h"

#include <map>
#include <mutex>

namespace Lab
{
	namespace
	{
		struct Upload
		{
			std::string length; // as it was announced
			std::string bytes;
		};

		/** The uploads of one server. Thread: any. */
		class Uploads
		{
		public:
			void answer(const Request& request, Plan& plan)
			{
				const std::scoped_lock lock(mutex);
				plan.setHeader("Tus-Resumable", "1.0.0");
				if (request.method == "OPTIONS")
				{
					plan.status = 204;
					plan.setHeader("Tus-Version", "1.0.0");
					plan.setHeader("Tus-Extension", "creation");
					return;
				}
				if (request.method == "POST")
				{
					return create(request, plan);
				}
				const auto found = uploads.find(std::string(request.path()));
				if (found == uploads.end())
				{
					plan.status = 404;
					return;
				}
				request.method == "PATCH" ? goOn(request, plan, found->second) : tell(request, plan, found->second);
			}

			/** Keeps what came of a request that has no answer. */
			void keep(const Request& request)
			{
				const std::scoped_lock lock(mutex);
				const auto found = uploads.find(std::string(request.path()));
				if (request.method == "PATCH" && found != uploads.end())
				{
					append(request, found->second);
				}
			}

		private:
			void create(const Request& request, Plan& plan)
			{
				const std::string path = std::string(request.path()) + '/' + std::to_string(uploads.size() + 1);
				uploads[path].length = request.header("Upload-Length");
				plan.status = 201;
				plan.setHeader("Location", path);
			}

			static bool append(const Request& request, Upload& upload)
			{
				if (request.header("Upload-Offset") != std::to_string(upload.bytes.size()))
				{
					return false;
				}
				upload.bytes += request.body;
				return true;
			}

			static void goOn(const Request& request, Plan& plan, Upload& upload)
			{
				plan.status = append(request, upload) ? 204 : 409;
				plan.setHeader("Upload-Offset", std::to_string(upload.bytes.size()));
			}

			static void tell(const Request& request, Plan& plan, const Upload& upload)
			{
				if (request.method == "GET")
				{
					return plan.setText(upload.bytes, "application/octet-stream");
				}
				plan.setHeader("Upload-Offset", std::to_string(upload.bytes.size()));
				plan.setHeader("Upload-Length", upload.length);
				plan.setHeader("Cache-Control", "no-store");
			}

			std::mutex mutex; // guards what follows
			std::map<std::string, Upload> uploads; // by path
		};
	} // namespace

	Behaviour tus()
	{
		const auto uploads = std::make_shared<Uploads>();
		return Behaviour([uploads](const Request& request, Plan& plan) { uploads->answer(request, plan); },
			[uploads](const Request&, Intake& intake) { intake.onBroken = [uploads](const Request& request) { uploads->keep(request); }; });
	}
} // namespace Lab
