#ifndef KESTRUNECLI_SECURESTORE_KEYCHAINTYPES_H
#define KESTRUNECLI_SECURESTORE_KEYCHAINTYPES_H

#include "SecureStore/Dictionary.h"

#include <cstdint>
#include <optional>
#include <string>
#include <string_view>

namespace securestore {

/// The class of the items a keychain addresses.
enum class ItemClass { genericPassword, internetPassword };

/// When an item may be read, as kSecAttrAccessible values.
enum class Accessibility {
  whenUnlocked,
  afterFirstUnlock,
  always,
  whenPasscodeSetThisDeviceOnly,
  whenUnlockedThisDeviceOnly,
  afterFirstUnlockThisDeviceOnly,
  alwaysThisDeviceOnly
};

/// Whether a call may ask the user to authenticate.
enum class AuthenticationUI { allow, fail, skip };

/// Authentication scheme of an internet password. The last case is named
/// defaultType because `default` is a C++ keyword.
enum class AuthenticationType {
  ntlm,
  msn,
  dpa,
  rpa,
  httpBasic,
  httpDigest,
  htmlForm,
  defaultType
};

/// Protocol of an internet password.
enum class ProtocolType {
  ftp,
  ftpAccount,
  http,
  irc,
  nntp,
  pop3,
  smtp,
  socks,
  imap,
  ldap,
  appleTalk,
  afp,
  telnet,
  ssh,
  ftps,
  https,
  httpProxy,
  httpsProxy,
  ftpProxy,
  smb,
  rtsp,
  rtspProxy,
  daap,
  eppc,
  ipp,
  nntps,
  ldaps,
  telnetS,
  imaps,
  ircs,
  pop3S
};

/// The platform constant of each case, e.g. kSecClassGenericPassword.
std::string_view rawValue(ItemClass value) noexcept;
std::string_view rawValue(Accessibility value) noexcept;
std::string_view rawValue(AuthenticationUI value) noexcept;
std::string_view rawValue(AuthenticationType value) noexcept;
std::string_view rawValue(ProtocolType value) noexcept;

/// The printed form of each case, e.g. "GenericPassword", "AfterFirstUnlock".
std::string_view description(ItemClass value) noexcept;
std::string_view description(Accessibility value) noexcept;
std::string_view description(AuthenticationUI value) noexcept;
std::string_view description(AuthenticationType value) noexcept;
std::string_view description(ProtocolType value) noexcept;

/// The case of \p E whose raw value is \p rawValue, or std::nullopt. Defined
/// for the five enumerations above.
template <typename E>
[[nodiscard]] std::optional<E> fromRawValue(std::string_view rawValue);
template <>
std::optional<ItemClass> fromRawValue<ItemClass>(std::string_view rawValue);
template <>
std::optional<Accessibility>
fromRawValue<Accessibility>(std::string_view rawValue);
template <>
std::optional<AuthenticationUI>
fromRawValue<AuthenticationUI>(std::string_view rawValue);
template <>
std::optional<AuthenticationType>
fromRawValue<AuthenticationType>(std::string_view rawValue);
template <>
std::optional<ProtocolType>
fromRawValue<ProtocolType>(std::string_view rawValue);

/// A set of access-control flags over one unsigned machine word. The members
/// that other platforms call `or` and `and` are orPolicy and andPolicy here,
/// since those words are C++ operators.
struct AuthenticationPolicy {
  std::uint64_t rawValue = 0;

  constexpr AuthenticationPolicy() = default;
  constexpr explicit AuthenticationPolicy(std::uint64_t rawValue)
      : rawValue(rawValue) {}

  static const AuthenticationPolicy userPresence;
  static const AuthenticationPolicy biometryAny;
  static const AuthenticationPolicy touchIDAny;
  static const AuthenticationPolicy biometryCurrentSet;
  static const AuthenticationPolicy touchIDCurrentSet;
  static const AuthenticationPolicy devicePasscode;
  static const AuthenticationPolicy watch;
  static const AuthenticationPolicy orPolicy;
  static const AuthenticationPolicy andPolicy;
  static const AuthenticationPolicy privateKeyUsage;
  static const AuthenticationPolicy applicationPassword;

  constexpr bool isEmpty() const noexcept { return rawValue == 0; }
  constexpr bool contains(AuthenticationPolicy member) const noexcept {
    return (rawValue & member.rawValue) == member.rawValue;
  }
  constexpr void insert(AuthenticationPolicy member) noexcept {
    rawValue |= member.rawValue;
  }
  constexpr void remove(AuthenticationPolicy member) noexcept {
    rawValue &= ~member.rawValue;
  }

  friend constexpr AuthenticationPolicy
  operator|(AuthenticationPolicy a, AuthenticationPolicy b) noexcept {
    return AuthenticationPolicy(a.rawValue | b.rawValue);
  }
  friend constexpr AuthenticationPolicy
  operator&(AuthenticationPolicy a, AuthenticationPolicy b) noexcept {
    return AuthenticationPolicy(a.rawValue & b.rawValue);
  }
  friend constexpr AuthenticationPolicy
  operator^(AuthenticationPolicy a, AuthenticationPolicy b) noexcept {
    return AuthenticationPolicy(a.rawValue ^ b.rawValue);
  }
  /// The members of \p a that are not in \p b.
  friend constexpr AuthenticationPolicy
  operator-(AuthenticationPolicy a, AuthenticationPolicy b) noexcept {
    return AuthenticationPolicy(a.rawValue & ~b.rawValue);
  }
  friend constexpr bool operator==(AuthenticationPolicy,
                                   AuthenticationPolicy) = default;
};

inline constexpr AuthenticationPolicy AuthenticationPolicy::userPresence{1};
inline constexpr AuthenticationPolicy AuthenticationPolicy::biometryAny{2};
inline constexpr AuthenticationPolicy AuthenticationPolicy::touchIDAny{2};
inline constexpr AuthenticationPolicy AuthenticationPolicy::biometryCurrentSet{
    8};
inline constexpr AuthenticationPolicy AuthenticationPolicy::touchIDCurrentSet{
    8};
inline constexpr AuthenticationPolicy AuthenticationPolicy::devicePasscode{16};
inline constexpr AuthenticationPolicy AuthenticationPolicy::watch{32};
inline constexpr AuthenticationPolicy AuthenticationPolicy::orPolicy{0x4000};
inline constexpr AuthenticationPolicy AuthenticationPolicy::andPolicy{0x8000};
inline constexpr AuthenticationPolicy AuthenticationPolicy::privateKeyUsage{
    0x40000000};
inline constexpr AuthenticationPolicy AuthenticationPolicy::applicationPassword{
    0x80000000};

/// A parsed URL of an internet-password server: its text, host and port.
class ServerUrl {
public:
  /// The URL of \p text, or std::nullopt when it is no URL reference.
  [[nodiscard]] static std::optional<ServerUrl> parse(std::string_view text);

  const std::string &getText() const noexcept { return text; }
  /// The host, absent for a URL without one.
  const std::optional<std::string> &getHost() const noexcept { return host; }
  /// The port, absent for a URL without one.
  std::optional<std::int64_t> getPort() const noexcept { return port; }

  friend bool operator==(const ServerUrl &a, const ServerUrl &b) {
    return a.text == b.text;
  }

private:
  ServerUrl() = default;
  std::string text;
  std::optional<std::string> host;
  std::optional<std::int64_t> port;
};

/// The whole state of a Keychain: which items it addresses and how they are
/// stored. A plain value; Keychain copies it on every change.
struct Options {
  ItemClass itemClass = ItemClass::genericPassword;
  std::string service;
  std::optional<std::string> accessGroup;
  /// Present exactly for internet passwords, with protocolType.
  std::optional<ServerUrl> server;
  std::optional<ProtocolType> protocolType;
  AuthenticationType authenticationType = AuthenticationType::defaultType;
  Accessibility accessibility = Accessibility::afterFirstUnlock;
  std::optional<AuthenticationPolicy> authenticationPolicy;
  bool synchronizable = false;
  std::optional<std::string> label;
  std::optional<std::string> comment;
  std::optional<std::string> authenticationPrompt;
  std::optional<AuthenticationUI> authenticationUI;
  /// Empty when absent.
  AuthenticationContextRef authenticationContext;
  /// Written over every attribute dictionary of add and update.
  Dictionary attributes;
};

/// The attributes of one item as the store returned them. Each named
/// accessor looks its key up and gives the value when it has the accessor's
/// type, otherwise std::nullopt. The accessor for kSecClass is secClass,
/// since `class` is a C++ keyword.
class Attributes {
public:
  explicit Attributes(Dictionary attributes)
      : attributes(std::move(attributes)) {}

  /// The raw map.
  Dictionary attributes;

  /// The raw value under \p key, or nullptr.
  const Value *operator[](std::string_view key) const;

  std::optional<std::string> secClass() const;
  std::optional<Bytes> data() const;
  std::optional<Bytes> ref() const;
  std::optional<Bytes> persistentRef() const;
  std::optional<std::string> accessible() const;
  std::optional<AccessControl> accessControl() const;
  std::optional<std::string> accessGroup() const;
  std::optional<bool> synchronizable() const;
  std::optional<Date> creationDate() const;
  std::optional<Date> modificationDate() const;
  std::optional<std::string> attributeDescription() const;
  std::optional<std::string> comment() const;
  std::optional<std::string> creator() const;
  std::optional<std::string> type() const;
  std::optional<std::string> label() const;
  std::optional<bool> isInvisible() const;
  std::optional<bool> isNegative() const;
  std::optional<std::string> account() const;
  std::optional<std::string> service() const;
  std::optional<Bytes> generic() const;
  std::optional<std::string> securityDomain() const;
  std::optional<std::string> server() const;
  std::optional<std::string> protocol() const;
  std::optional<std::string> authenticationType() const;
  std::optional<std::int64_t> port() const;
  std::optional<std::string> path() const;

  /// The map printed as ["key": value, ...].
  std::string description() const { return printDictionary(attributes); }
};

} // namespace securestore

#endif
