#ifndef KESTRUNECLI_TESTS_SUPPORT_DOUBLES_H
#define KESTRUNECLI_TESTS_SUPPORT_DOUBLES_H

#include "KestruneCLI/Helpers/DarwinProtocol.h"
#include "KestruneCLI/UrlSessionManager/URLSessionManagerProtocol.h"
#include "Platform/Terminal.h"
#include "Platform/TerminalSize.h"

#include <algorithm>
#include <condition_variable>
#include <cstdint>
#include <functional>
#include <map>
#include <mutex>
#include <optional>
#include <string>
#include <string_view>
#include <vector>

namespace testsupport {

/// A terminal that records what it is sent, with "^" where it was flushed, so
/// that a redraw split by a flush, or one never flushed, shows.
class RecordingTerminal final : public platform::Terminal {
public:
  bool isInteractive() const override { return false; }
  std::size_t getColumns() const override { return platform::fallbackColumns; }
  void write(std::string_view bytes) override {
    std::lock_guard lock(mutex);
    sent += bytes;
  }
  void flush() override {
    {
      std::lock_guard lock(mutex);
      sent += '^';
    }
    flushed.notify_all();
  }
  /// What was sent, once at least \p count flushes have come.
  std::string waitForFlushes(int count) {
    std::unique_lock lock(mutex);
    flushed.wait(lock, [&] { return std::ranges::count(sent, '^') >= count; });
    return sent;
  }

private:
  std::mutex mutex;
  std::condition_variable flushed;
  std::string sent;
};

/// A process exit that records the codes it is given and returns, so that a
/// test sees where the code goes on after a failure that ends the tool.
class RecordingExit final : public kestrune::DarwinProtocol {
public:
  void exitCode(std::int32_t code) const override { codes.push_back(code); }
  mutable std::vector<int> codes;
};

/// A console client that answers from a script, also with what the real one
/// never gives: neither a number nor an error. It records each call as
/// "lookup <group>", "blob <name>" or "app <metadata> <installer> <icon>",
/// joined by "; ".
class ScriptedConsole final : public kestrune::URLSessionManagerProtocol {
public:
  using Completion = kestrune::NumberCompletion;
  /// The group number found; none: the lookup gives nothing at all.
  std::optional<std::int64_t> groupIdNum;
  /// Blob numbers by file name; a name mapped to none is refused with the
  /// message "refused" (code 33); a name not listed gives nothing at all.
  std::map<std::string, std::optional<std::int64_t>> blobIds;
  /// The application's refusal message (code 52); none: it is created.
  std::optional<std::string> appRefusal;
  /// Runs while a lookup waits for its answer: another run at work.
  std::function<void()> duringLookup;
  mutable std::string calls;

  void record(const std::string &call) const {
    calls += (calls.empty() ? "" : "; ") + call;
  }
  void fetchGroupIdNum(const kestrune::ConfigModel &, const std::string &,
                       const std::string &groupId,
                       const kestrune::UrlSessionUtilProtocol &,
                       const Completion &completion) const override {
    record("lookup " + groupId);
    if (duringLookup)
      duringLookup();
    completion(groupIdNum, std::nullopt);
  }
  void doUploadBlob(const kestrune::ConfigModel &, const platform::HttpBody &,
                    const std::string &name,
                    const kestrune::UrlSessionUtilProtocol &,
                    kestrune::BlobType,
                    const Completion &completion) const override {
    record("blob " + name);
    auto found = blobIds.find(name);
    if (found == blobIds.end())
      completion(std::nullopt, std::nullopt);
    else if (!found->second)
      completion(std::nullopt,
                 kestrune::CliError::uploadApiResponseError("refused"));
    else
      completion(found->second, std::nullopt);
  }
  void
  doFinalUpload(const kestrune::ConfigModel &, std::int64_t metadata,
                std::int64_t installer, std::optional<std::int64_t> icon,
                const kestrune::UrlSessionUtilProtocol &,
                const kestrune::ErrorCompletion &completion) const override {
    record("app " + std::to_string(metadata) + " " + std::to_string(installer) +
           " " + (icon ? std::to_string(*icon) : "none"));
    if (appRefusal)
      completion(
          kestrune::CliError::errorCreatingApplicationWithMessage(*appRefusal));
    else
      completion(std::nullopt);
  }
};

/// Makes what a spinner wrote to an output that is no terminal readable:
/// "\x1b[?25l" becomes "<hide>", "\x1b[?25h" "<show>", a carriage return
/// followed by blanks only "<clear>", a lone one "<cr>"; a redraw (carriage
/// return, a frame of the line pattern, a blank, the text) is dropped, as
/// their number depends on timing. Every other byte stays as written. With
/// \p marks false the markers are left out too, leaving what a user reads.
std::string readSpinnerTranscript(std::string_view output, bool marks = true);

/// What a spinner leaves when it is cleared after its work went well.
inline constexpr std::string_view clearedSpinner =
    "<hide><clear><show><cr><show>";

} // namespace testsupport

#endif
