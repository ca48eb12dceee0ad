#include "SecureStore/Error.h"

namespace securestore {

namespace {

std::string describe(const std::string &domain, std::int64_t code,
                     const UserInfo &userInfo) {
  auto found = userInfo.find(std::string(NSLocalizedDescriptionKey));
  if (found != userInfo.end())
    return found->second;
  return "The operation couldn’t be completed. (" + domain + " error " +
         std::to_string(code) + ".)";
}

} // namespace

std::string Error::localizedDescription() const {
  return describe(domain(), code(), userInfo());
}

PlatformError::PlatformError(std::string domain, std::int64_t code,
                             UserInfo userInfo)
    : errorDomain(std::move(domain)), errorCode(code),
      errorUserInfo(std::move(userInfo)),
      message(describe(errorDomain, errorCode, errorUserInfo)) {}

} // namespace securestore
