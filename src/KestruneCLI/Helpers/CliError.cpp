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

CliError::CliError(Case errorCase, std::string payload)
    : errorCase(errorCase), payload(std::move(payload)) {
  const CaseInfo &info = infoFor(errorCase);
  if (!info.hasPayload)
    this->payload.clear();
  description = info.prefix;
  if (info.hasPayload)
    description += this->payload + info.suffix;
}

std::int32_t CliError::code() const noexcept { return infoFor(errorCase).code; }

const char *CliError::caseName() const noexcept {
  return infoFor(errorCase).name;
}

} // namespace kestrune
