// The answer to the group lookup: the first group's Id or the error of the
// route's table, for any status, header fields, body and transport error.

#include "NumberAnswer.h"

extern "C" int LLVMFuzzerTestOneInput(const std::uint8_t *data,
                                      std::size_t size) {
  fuzzsupport::checkNumberRoute(
      data, size, kestrune::readGroupAnswer, {47, 12, 13, 14, 15, 16},
      [](const std::string &number) {
        return "{\"OrganizationGroups\": [{\"Id\": " + number +
               ", \"Name\": \"Org\"}, {\"Id\": 1}]}";
      });
  return 0;
}
