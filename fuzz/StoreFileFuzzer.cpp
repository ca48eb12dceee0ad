// The file store's content as read from disk: any text decodes to items, or
// is refused as an invalid store or one of a later format. Items that
// decode encode to a text that decodes to the same items and encodes to the
// same text again, so that a store read and written back loses nothing. The
// attributes' own JSON form (the Secret Service store's) round-trips alike.

#include "FuzzSupport.h"
#include "SecureStore/ItemCodec.h"
#include "SecureStore/Status.h"

#include <cstdint>
#include <string_view>
#include <vector>

using fuzzsupport::require;
using namespace securestore;

extern "C" int LLVMFuzzerTestOneInput(const std::uint8_t *data,
                                      std::size_t size) {
  const std::string_view text(reinterpret_cast<const char *>(data), size);

  std::vector<StoredItem> items;
  const OSStatus status = decodeStore(text, items);
  require(status == 0 ||
              status == Status(Status::Case::invalidKeychain).rawValue() ||
              status == Status(Status::Case::wrongSecVersion).rawValue(),
          "a store decodes, or is invalid, or is of a later format");
  if (status == 0) {
    const std::string encoded = encodeStore(items);
    std::vector<StoredItem> again;
    require(decodeStore(encoded, again) == 0 && again == items,
            "a decoded store re-encodes to the same items");
    require(encodeStore(again) == encoded, "encoding is stable");
  }

  if (std::optional<Dictionary> attributes = decodeAttributes(text)) {
    const std::string encoded = encodeAttributes(*attributes);
    require(decodeAttributes(encoded) == attributes,
            "decoded attributes re-encode to the same attributes");
  }
  return 0;
}
