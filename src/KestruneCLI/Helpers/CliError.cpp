#include "KestruneCLI/Helpers/CliError.h"

#include <utility>

namespace kestrune {
namespace {

struct CaseInfo {
  const char *name;
  const char *prefix;
  const char *suffix;
  std::int32_t code;
  bool hasPayload;
};

constexpr CaseInfo caseTable[] = {
#define KESTRUNE_CASE_X(name, label, pre, post, code)                         \
  {#name, pre, post, code, true},
#define KESTRUNE_CASE_Y(name, text, code) {#name, text, "", code, false},
    KESTRUNE_CLI_ERROR_CASES(KESTRUNE_CASE_X, KESTRUNE_CASE_Y)
#undef KESTRUNE_CASE_X
#undef KESTRUNE_CASE_Y
};

const CaseInfo &infoFor(CliError::Case errorCase) {
  return caseTable[static_cast<std::size_t>(errorCase)];
}

} // namespace

CliError::CliError(Case errorCase, std::string payload) : errorCase(errorCase) {
  const CaseInfo &info = infoFor(errorCase);
  if (!info.hasPayload)
    payload.clear();
  const std::string_view prefix = info.prefix, suffix = info.suffix;
  auto made = std::make_shared<Texts>();
  // One allocation of the final size: a payload may be megabytes long.
  made->description.reserve(prefix.size() + payload.size() + suffix.size());
  made->description.append(prefix).append(payload).append(suffix);
  made->payloadStart = prefix.size();
  made->payloadLength = payload.size();
  texts = std::move(made);
}

std::int32_t CliError::code() const noexcept { return infoFor(errorCase).code; }

const char *CliError::caseName() const noexcept {
  return infoFor(errorCase).name;
}

} // namespace kestrune
