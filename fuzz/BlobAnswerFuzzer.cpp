// The answer to a blob's upload: the blob's Value or the error of the
// route's table, for any status, header fields, body and transport error.
// A blob identifier is never empty: an answer gives a number or an error.

#include "NumberAnswer.h"

extern "C" int LLVMFuzzerTestOneInput(const std::uint8_t *data,
                                      std::size_t size) {
  fuzzsupport::checkNumberRoute(
      data, size, kestrune::readBlobAnswer, {47, 32, 33, 34, 35},
      [](const std::string &number) {
        return "{\"Value\": " + number + ", \"Name\": \"a.pkg\"}";
      });
  return 0;
}
