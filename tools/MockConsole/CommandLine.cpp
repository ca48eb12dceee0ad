#include "MockConsole/CommandLine.h"

#include <charconv>
#include <stdexcept>

namespace mockconsole {
namespace {

constexpr std::string_view helpText =
    R"(Usage: kestrune-mock-console [options]

Simulates the device-management console for tests and demonstrations: group
lookup, blob upload and application creation, with credential checks. It
prints the URL it listens on as the first line of standard output and runs
until SIGINT or SIGTERM.

Options:
  --bind ADDRESS        address to listen on (default 127.0.0.1)
  --port N              port to listen on; 0 picks a free one (default 0)
  --account USER:PASSWORD:APIKEY
                        accept these credentials (repeatable); the user name
                        and the API key hold no colon, the password may
  --group ID=NUMBER     know the group ID, with this number (repeatable)
  --first-blob-id N     identifier of the first stored blob (default 1)
  --first-app-id N      identifier of the first application (default 1)
  --answer ROUTE[#CALL]=STATUS[:BODY]
                        answer calls of ROUTE (groups, blobs, apps or other)
                        with STATUS and the JSON BODY instead of the console's
                        own answer; with #CALL only the CALL-th call, counted
                        from 1 (repeatable)
  --drop ROUTE[#CALL]   close the connection of those calls without answering
                        (repeatable)
  --log FILE            append one JSON line per request to FILE: route,
                        method, raw target, headers as received (credentials
                        included), body length and SHA-256, status, and the
                        connection it came on, numbered from 1 in the order
                        the console accepted them
  --no-hash             count body bytes without hashing them (benchmarks)
  --body-rate N         read request bodies at no more than N bytes a second
  --requests-per-connection N
                        close a connection after its N-th answer (default
                        1000); 1 closes each after one answer
  --tls-cert FILE --tls-key FILE
                        serve HTTPS with this certificate and private key
                        (PEM)
  --tls-self-signed FILE
                        serve HTTPS with a new self-signed certificate for
                        127.0.0.1, ::1 and localhost, written to FILE (PEM)
                        for clients to trust
  -h, --help            show this help and exit
)";

std::int64_t parseNumber(std::string_view text, const std::string &option) {
  std::int64_t value = 0;
  auto [end, error] =
      std::from_chars(text.data(), text.data() + text.size(), value);
  if (text.empty() || error != std::errc() || end != text.data() + text.size())
    throw std::invalid_argument(option + ": '" + std::string(text) +
                                "' is not a whole number");
  return value;
}

/// ROUTE or ROUTE#CALL.
CommandLine::ScriptedCall parseTarget(std::string_view text,
                                      const std::string &option) {
  CommandLine::ScriptedCall scripted;
  std::string_view routeName = text.substr(0, text.find('#'));
  auto route = findRoute(routeName);
  if (!route)
    throw std::invalid_argument(option + ": unknown route '" +
                                std::string(routeName) +
                                "' (groups, blobs, apps or other)");
  scripted.route = *route;
  if (routeName.size() < text.size()) {
    std::int64_t call = parseNumber(text.substr(routeName.size() + 1), option);
    if (call < 1 || call > 1'000'000)
      throw std::invalid_argument(option + ": the call is counted from 1");
    scripted.call = static_cast<int>(call);
  }
  return scripted;
}

} // namespace

std::string_view getHelpText() { return helpText; }

CommandLine parseCommandLine(const std::vector<std::string> &arguments) {
  CommandLine commandLine;
  for (std::size_t i = 0; i < arguments.size(); ++i) {
    const std::string &option = arguments[i];
    if (option == "-h" || option == "--help") {
      commandLine.showHelp = true;
      continue;
    }
    if (option == "--no-hash") {
      commandLine.options.hashBodies = false;
      continue;
    }
    if (i + 1 == arguments.size())
      throw std::invalid_argument(option.starts_with("--")
                                      ? option + ": a value is missing"
                                      : "unexpected argument '" + option + "'");
    std::string_view value = arguments[++i];
    if (option == "--bind") {
      commandLine.options.bindAddress = value;
    } else if (option == "--port") {
      std::int64_t port = parseNumber(value, option);
      if (port < 0 || port > 65535)
        throw std::invalid_argument("--port: out of range 0 to 65535");
      commandLine.options.port = static_cast<int>(port);
    } else if (option == "--account") {
      std::size_t first = value.find(':');
      std::size_t last = value.rfind(':');
      if (first == std::string_view::npos || first == last)
        throw std::invalid_argument("--account: expected USER:PASSWORD:APIKEY");
      commandLine.accounts.push_back(
          {std::string(value.substr(0, first)),
           std::string(value.substr(first + 1, last - first - 1)),
           std::string(value.substr(last + 1))});
    } else if (option == "--group") {
      std::size_t equals = value.rfind('=');
      if (equals == std::string_view::npos || equals == 0)
        throw std::invalid_argument("--group: expected ID=NUMBER");
      commandLine.groups.emplace_back(
          std::string(value.substr(0, equals)),
          parseNumber(value.substr(equals + 1), option));
    } else if (option == "--first-blob-id") {
      commandLine.options.firstBlobId = parseNumber(value, option);
    } else if (option == "--first-app-id") {
      commandLine.options.firstApplicationId = parseNumber(value, option);
    } else if (option == "--answer") {
      std::size_t equals = value.find('=');
      if (equals == std::string_view::npos)
        throw std::invalid_argument(
            "--answer: expected ROUTE[#CALL]=STATUS[:BODY]");
      auto scripted = parseTarget(value.substr(0, equals), option);
      std::string_view answer = value.substr(equals + 1);
      std::string_view status = answer.substr(0, answer.find(':'));
      scripted.answer.status = static_cast<int>(parseNumber(status, option));
      if (scripted.answer.status < 100 || scripted.answer.status > 599)
        throw std::invalid_argument("--answer: status out of range 100 to 599");
      if (status.size() < answer.size())
        scripted.answer.body = answer.substr(status.size() + 1);
      commandLine.scriptedCalls.push_back(std::move(scripted));
    } else if (option == "--drop") {
      auto scripted = parseTarget(value, option);
      scripted.answer.dropAfterBodyBytes = 0;
      commandLine.scriptedCalls.push_back(std::move(scripted));
    } else if (option == "--body-rate") {
      std::int64_t rate = parseNumber(value, option);
      if (rate < 1)
        throw std::invalid_argument("--body-rate: at least 1 byte a second");
      commandLine.options.bodyBytesPerSecond = static_cast<std::uint64_t>(rate);
    } else if (option == "--requests-per-connection") {
      std::int64_t count = parseNumber(value, option);
      if (count < 1)
        throw std::invalid_argument(option + ": at least 1");
      commandLine.options.requestsPerConnection =
          static_cast<std::size_t>(count);
    } else if (option == "--tls-cert") {
      commandLine.options.tlsCertificate = std::string(value);
    } else if (option == "--tls-key") {
      commandLine.options.tlsKey = std::string(value);
    } else if (option == "--tls-self-signed") {
      commandLine.options.tlsSelfSigned = std::string(value);
    } else if (option == "--log") {
      commandLine.options.logPath = std::string(value);
    } else {
      throw std::invalid_argument("unknown option '" + option + "'");
    }
  }
  return commandLine;
}

void CommandLine::applyTo(MockConsole &console) const {
  for (const Account &account : accounts)
    console.addAccount(account);
  for (const auto &[groupId, number] : groups)
    console.mapGroup(groupId, number);
  for (const ScriptedCall &scripted : scriptedCalls) {
    if (scripted.call)
      console.scriptAnswer(scripted.route, *scripted.call, scripted.answer);
    else
      console.scriptAnswer(scripted.route, scripted.answer);
  }
}

} // namespace mockconsole
