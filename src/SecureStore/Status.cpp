#include "SecureStore/Status.h"

#include <array>

namespace securestore {

namespace {

constexpr std::array<Status::Case, Status::caseCount> everyCase = {
#define SECURESTORE_STATUS_CASE(name, raw, message) Status::Case::name,
    SECURESTORE_STATUS_CASES(SECURESTORE_STATUS_CASE)
#undef SECURESTORE_STATUS_CASE
};

// The message as a C string, so that what() can hand it out as it is.
const char *messageOf(Status::Case errorCase) noexcept {
  switch (errorCase) {
#define SECURESTORE_STATUS_CASE(name, raw, message)                            \
  case Status::Case::name:                                                     \
    return message;
    SECURESTORE_STATUS_CASES(SECURESTORE_STATUS_CASE)
#undef SECURESTORE_STATUS_CASE
  }
  return "";
}

#define SECURESTORE_STATUS_COUNT(name, raw, message) +1
static_assert(0 SECURESTORE_STATUS_CASES(SECURESTORE_STATUS_COUNT) ==
                  Status::caseCount,
              "the catalogue has one row per case");
#undef SECURESTORE_STATUS_COUNT

} // namespace

Status::Status(OSStatus status) noexcept
    : errorCase(
          fromRawValue(status).value_or(Case::unexpectedError).errorCase) {}

std::optional<Status> Status::fromRawValue(OSStatus rawValue) {
  switch (rawValue) {
#define SECURESTORE_STATUS_CASE(name, raw, message)                            \
  case raw:                                                                    \
    return Status(Case::name);
    SECURESTORE_STATUS_CASES(SECURESTORE_STATUS_CASE)
#undef SECURESTORE_STATUS_CASE
  default:
    return std::nullopt;
  }
}

std::span<const Status::Case> Status::allCases() noexcept { return everyCase; }

std::string_view Status::description() const noexcept {
  return messageOf(errorCase);
}

std::string_view Status::caseName() const noexcept {
  switch (errorCase) {
#define SECURESTORE_STATUS_CASE(name, raw, message)                            \
  case Case::name:                                                             \
    return #name;
    SECURESTORE_STATUS_CASES(SECURESTORE_STATUS_CASE)
#undef SECURESTORE_STATUS_CASE
  }
  return "";
}

UserInfo Status::errorUserInfo() const {
  return {{std::string(NSLocalizedDescriptionKey), std::string(description())}};
}

const char *Status::what() const noexcept { return messageOf(errorCase); }

} // namespace securestore
