#include "MockConsole/RequestLog.h"

#include "MockConsole/JsonText.h"

#include "Platform/AsciiText.h"

#include <stdexcept>

namespace mockconsole {

std::optional<std::string>
LoggedRequest::getHeader(std::string_view name) const {
  for (const auto &[fieldName, value] : headers)
    if (platform::equalsIgnoringCase(fieldName, name))
      return value;
  return std::nullopt;
}

RequestLog::RequestLog(std::optional<std::filesystem::path> path)
    : path(std::move(path)) {
  if (this->path)
    file.open(*this->path, std::ios::app);
}

void RequestLog::checkWritable() const {
  if (path && !file.is_open())
    throw std::runtime_error("cannot write the log file " + path->string());
}

void RequestLog::add(LoggedRequest request) {
  std::lock_guard lock(mutex);
  if (file.is_open()) {
    nlohmann::json headers = nlohmann::json::array();
    for (const auto &[name, value] : request.headers)
      headers.push_back({name, value});
    file << dumpJson(nlohmann::json{{"route", getRouteName(request.route)},
                                    {"method", request.method},
                                    {"target", request.target},
                                    {"headers", headers},
                                    {"bodyLength", request.bodyLength},
                                    {"bodySha256", request.bodySha256},
                                    {"status", request.status},
                                    {"connection", request.connection}})
         << '\n'
         << std::flush;
  }
  requests.push_back(std::move(request));
  changed.notify_all();
}

void RequestLog::countBodyBytes(std::uint64_t count) {
  std::lock_guard lock(mutex);
  bodyBytesRead += count;
  changed.notify_all();
}

std::vector<LoggedRequest> RequestLog::getRequests() const {
  std::lock_guard lock(mutex);
  return requests;
}

bool RequestLog::waitForRequests(std::size_t count,
                                 std::chrono::milliseconds timeout) const {
  std::unique_lock lock(mutex);
  return changed.wait_for(lock, timeout,
                          [&] { return requests.size() >= count; });
}

bool RequestLog::waitForBodyBytes(std::uint64_t count,
                                  std::chrono::milliseconds timeout) const {
  std::unique_lock lock(mutex);
  return changed.wait_for(lock, timeout,
                          [&] { return bodyBytesRead >= count; });
}

} // namespace mockconsole
