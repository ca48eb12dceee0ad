#ifndef KESTRUNECLI_TOOLS_MOCKCONSOLE_JSONTEXT_H
#define KESTRUNECLI_TOOLS_MOCKCONSOLE_JSONTEXT_H

#include <nlohmann/json.hpp>

#include <string>

namespace mockconsole {

/// \p json on one line. Text that came from a client need not be UTF-8;
/// the log and the answers must still be valid JSON, so bad bytes are
/// replaced.
inline std::string dumpJson(const nlohmann::json &json) {
  return json.dump(-1, ' ', false, nlohmann::json::error_handler_t::replace);
}

} // namespace mockconsole

#endif
