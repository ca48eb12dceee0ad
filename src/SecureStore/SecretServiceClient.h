#ifndef KESTRUNECLI_SECURESTORE_SECRETSERVICECLIENT_H
#define KESTRUNECLI_SECURESTORE_SECRETSERVICECLIENT_H

// Private to SecureStore: the calls of the Secret Service that the item
// store needs, as the module kestrune-secret-service.so gives them. The
// module alone links libsecret and GLib; the program loads it on first use,
// so runs that never reach the Secret Service load neither.
//
// The program carries its own copy of the C++ runtime and the module uses the
// system's, so no C++ type crosses between them: the module's entry gives a
// table of C functions over plain texts, and each side turns those into the
// C++ types below.

#include <cstddef>
#include <cstdint>
#include <map>
#include <memory>
#include <string>
#include <vector>

extern "C" {

/// Bytes with their length, owned by the side that passes them.
struct KestruneSecretText {
  const char *bytes;
  std::size_t size;
};

/// One item: its D-Bus object path, label, secret, and plain attributes as
/// name, value, name, value...
struct KestruneSecretItem {
  KestruneSecretText path;
  KestruneSecretText label;
  KestruneSecretText secret;
  const KestruneSecretText *attributes;
  std::size_t attributeTexts;
};

struct KestruneSecretClient;
/// Receives a text (a reason, a path) that lives for the call only.
typedef void KestruneSecretTextSink(void *context, KestruneSecretText text);
/// Receives an item found that lives for the call only.
typedef void KestruneSecretItemSink(void *context,
                                    const KestruneSecretItem *item);

/// The module's calls; each gives an Outcome as an int and never throws.
struct KestruneSecretService {
  /// A client, or nullptr with the reason passed to \p reason.
  KestruneSecretClient *(*open)(void *context, KestruneSecretTextSink *reason);
  void (*close)(KestruneSecretClient *client);
  int (*openDefaultCollection)(KestruneSecretClient *client, void *context,
                               KestruneSecretTextSink *path);
  int (*search)(KestruneSecretClient *client,
                const KestruneSecretText *attributes,
                std::size_t attributeTexts, void *context,
                KestruneSecretItemSink *found);
  int (*create)(KestruneSecretClient *client, KestruneSecretText collection,
                const KestruneSecretItem *item);
  int (*replace)(KestruneSecretClient *client, const KestruneSecretItem *item);
  int (*remove)(KestruneSecretClient *client, KestruneSecretText path);
};

/// The module's one entry point, found by this name: gives its table.
typedef const KestruneSecretService *KestruneSecretServiceEntry(void);
}

namespace securestore::secretservice {

inline constexpr char entrySymbol[] = "kestruneSecretService";

/// The plain attributes of an item, as the service shows them.
using Attributes = std::map<std::string, std::string>;

/// How a call ended.
enum class Outcome {
  ok,
  /// The collection or an item is locked; unlocking would need a prompt.
  locked,
  /// The item or collection is gone.
  noSuchObject,
  alreadyExists,
  /// The service has no default collection.
  noDefaultCollection,
  /// The service does not answer, or answers with something else.
  unavailable
};

/// One item of the service: its D-Bus object path, plain attributes, label
/// and secret.
struct RemoteItem {
  std::string path;
  Attributes attributes;
  std::string label;
  std::vector<std::uint8_t> secret;
};

inline std::string textOf(KestruneSecretText text) {
  return text.size == 0 ? std::string() : std::string(text.bytes, text.size);
}

inline KestruneSecretText viewOf(const std::string &text) {
  return {text.data(), text.size()};
}

/// \p attributes as name, value, name, value... viewing their texts.
inline std::vector<KestruneSecretText> viewOf(const Attributes &attributes) {
  std::vector<KestruneSecretText> texts;
  texts.reserve(attributes.size() * 2);
  for (const auto &[name, value] : attributes) {
    texts.push_back(viewOf(name));
    texts.push_back(viewOf(value));
  }
  return texts;
}

inline Attributes attributesOf(const KestruneSecretText *texts,
                               std::size_t count) {
  Attributes attributes;
  for (std::size_t i = 0; i + 1 < count; i += 2)
    attributes.insert_or_assign(textOf(texts[i]), textOf(texts[i + 1]));
  return attributes;
}

/// An item as the boundary passes it, viewing the texts of a RemoteItem that
/// outlives it.
class ItemView {
public:
  explicit ItemView(const RemoteItem &item)
      : attributeTexts(viewOf(item.attributes)),
        view{viewOf(item.path), viewOf(item.label),
             {reinterpret_cast<const char *>(item.secret.data()),
              item.secret.size()},
             attributeTexts.data(),
             attributeTexts.size()} {}
  ItemView(const ItemView &) = delete;
  ItemView &operator=(const ItemView &) = delete;

  const KestruneSecretItem *get() const noexcept { return &view; }

private:
  std::vector<KestruneSecretText> attributeTexts;
  KestruneSecretItem view;
};

inline RemoteItem remoteItemOf(const KestruneSecretItem &item) {
  const auto *secret = reinterpret_cast<const std::uint8_t *>(item.secret.bytes);
  return {textOf(item.path),
          attributesOf(item.attributes, item.attributeTexts),
          textOf(item.label),
          item.secret.size == 0
              ? std::vector<std::uint8_t>()
              : std::vector<std::uint8_t>(secret, secret + item.secret.size)};
}

} // namespace securestore::secretservice

#endif
