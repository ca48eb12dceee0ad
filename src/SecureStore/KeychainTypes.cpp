#include "SecureStore/KeychainTypes.h"

#include "Platform/UrlReference.h"
#include "SecureStore/SecConstants.h"

#include <array>
#include <charconv>

namespace securestore {

namespace {

template <typename E> struct Entry {
  E value;
  std::string_view raw;
  std::string_view description;
};

constexpr std::array<Entry<ItemClass>, 2> itemClasses = {{
    {ItemClass::genericPassword, kSecClassGenericPassword, "GenericPassword"},
    {ItemClass::internetPassword, kSecClassInternetPassword,
     "InternetPassword"},
}};

constexpr std::array<Entry<Accessibility>, 7> accessibilities = {{
    {Accessibility::whenUnlocked, kSecAttrAccessibleWhenUnlocked,
     "WhenUnlocked"},
    {Accessibility::afterFirstUnlock, kSecAttrAccessibleAfterFirstUnlock,
     "AfterFirstUnlock"},
    {Accessibility::always, kSecAttrAccessibleAlways, "Always"},
    {Accessibility::whenPasscodeSetThisDeviceOnly,
     kSecAttrAccessibleWhenPasscodeSetThisDeviceOnly,
     "WhenPasscodeSetThisDeviceOnly"},
    {Accessibility::whenUnlockedThisDeviceOnly,
     kSecAttrAccessibleWhenUnlockedThisDeviceOnly,
     "WhenUnlockedThisDeviceOnly"},
    {Accessibility::afterFirstUnlockThisDeviceOnly,
     kSecAttrAccessibleAfterFirstUnlockThisDeviceOnly,
     "AfterFirstUnlockThisDeviceOnly"},
    {Accessibility::alwaysThisDeviceOnly,
     kSecAttrAccessibleAlwaysThisDeviceOnly, "AlwaysThisDeviceOnly"},
}};

constexpr std::array<Entry<AuthenticationUI>, 3> authenticationUIs = {{
    {AuthenticationUI::allow, kSecUseAuthenticationUIAllow, "allow"},
    {AuthenticationUI::fail, kSecUseAuthenticationUIFail, "fail"},
    {AuthenticationUI::skip, kSecUseAuthenticationUISkip, "skip"},
}};

constexpr std::array<Entry<AuthenticationType>, 8> authenticationTypes = {{
    {AuthenticationType::ntlm, kSecAttrAuthenticationTypeNTLM, "NTLM"},
    {AuthenticationType::msn, kSecAttrAuthenticationTypeMSN, "MSN"},
    {AuthenticationType::dpa, kSecAttrAuthenticationTypeDPA, "DPA"},
    {AuthenticationType::rpa, kSecAttrAuthenticationTypeRPA, "RPA"},
    {AuthenticationType::httpBasic, kSecAttrAuthenticationTypeHTTPBasic,
     "HTTPBasic"},
    {AuthenticationType::httpDigest, kSecAttrAuthenticationTypeHTTPDigest,
     "HTTPDigest"},
    {AuthenticationType::htmlForm, kSecAttrAuthenticationTypeHTMLForm,
     "HTMLForm"},
    {AuthenticationType::defaultType, kSecAttrAuthenticationTypeDefault,
     "Default"},
}};

constexpr std::array<Entry<ProtocolType>, 31> protocolTypes = {{
    {ProtocolType::ftp, kSecAttrProtocolFTP, "FTP"},
    {ProtocolType::ftpAccount, kSecAttrProtocolFTPAccount, "FTPAccount"},
    {ProtocolType::http, kSecAttrProtocolHTTP, "HTTP"},
    {ProtocolType::irc, kSecAttrProtocolIRC, "IRC"},
    {ProtocolType::nntp, kSecAttrProtocolNNTP, "NNTP"},
    {ProtocolType::pop3, kSecAttrProtocolPOP3, "POP3"},
    {ProtocolType::smtp, kSecAttrProtocolSMTP, "SMTP"},
    {ProtocolType::socks, kSecAttrProtocolSOCKS, "SOCKS"},
    {ProtocolType::imap, kSecAttrProtocolIMAP, "IMAP"},
    {ProtocolType::ldap, kSecAttrProtocolLDAP, "LDAP"},
    {ProtocolType::appleTalk, kSecAttrProtocolAppleTalk, "AppleTalk"},
    {ProtocolType::afp, kSecAttrProtocolAFP, "AFP"},
    {ProtocolType::telnet, kSecAttrProtocolTelnet, "Telnet"},
    {ProtocolType::ssh, kSecAttrProtocolSSH, "SSH"},
    {ProtocolType::ftps, kSecAttrProtocolFTPS, "FTPS"},
    {ProtocolType::https, kSecAttrProtocolHTTPS, "HTTPS"},
    {ProtocolType::httpProxy, kSecAttrProtocolHTTPProxy, "HTTPProxy"},
    {ProtocolType::httpsProxy, kSecAttrProtocolHTTPSProxy, "HTTPSProxy"},
    {ProtocolType::ftpProxy, kSecAttrProtocolFTPProxy, "FTPProxy"},
    {ProtocolType::smb, kSecAttrProtocolSMB, "SMB"},
    {ProtocolType::rtsp, kSecAttrProtocolRTSP, "RTSP"},
    {ProtocolType::rtspProxy, kSecAttrProtocolRTSPProxy, "RTSPProxy"},
    {ProtocolType::daap, kSecAttrProtocolDAAP, "DAAP"},
    {ProtocolType::eppc, kSecAttrProtocolEPPC, "EPPC"},
    {ProtocolType::ipp, kSecAttrProtocolIPP, "IPP"},
    {ProtocolType::nntps, kSecAttrProtocolNNTPS, "NNTPS"},
    {ProtocolType::ldaps, kSecAttrProtocolLDAPS, "LDAPS"},
    {ProtocolType::telnetS, kSecAttrProtocolTelnetS, "TelnetS"},
    {ProtocolType::imaps, kSecAttrProtocolIMAPS, "IMAPS"},
    {ProtocolType::ircs, kSecAttrProtocolIRCS, "IRCS"},
    {ProtocolType::pop3S, kSecAttrProtocolPOP3S, "POP3S"},
}};

template <typename E, std::size_t N>
const Entry<E> &entryOf(const std::array<Entry<E>, N> &entries, E value) {
  return entries[static_cast<std::size_t>(value)];
}

template <typename E, std::size_t N>
std::optional<E> findRaw(const std::array<Entry<E>, N> &entries,
                         std::string_view raw) {
  for (const Entry<E> &entry : entries)
    if (entry.raw == raw)
      return entry.value;
  return std::nullopt;
}

template <typename T>
std::optional<T> lookUp(const Dictionary &map, std::string_view key) {
  auto found = map.find(key);
  if (found == map.end())
    return std::nullopt;
  if (const T *value = std::get_if<T>(&found->second))
    return *value;
  return std::nullopt;
}

} // namespace

std::string_view rawValue(ItemClass value) noexcept {
  return entryOf(itemClasses, value).raw;
}
std::string_view rawValue(Accessibility value) noexcept {
  return entryOf(accessibilities, value).raw;
}
std::string_view rawValue(AuthenticationUI value) noexcept {
  return entryOf(authenticationUIs, value).raw;
}
std::string_view rawValue(AuthenticationType value) noexcept {
  return entryOf(authenticationTypes, value).raw;
}
std::string_view rawValue(ProtocolType value) noexcept {
  return entryOf(protocolTypes, value).raw;
}

std::string_view description(ItemClass value) noexcept {
  return entryOf(itemClasses, value).description;
}
std::string_view description(Accessibility value) noexcept {
  return entryOf(accessibilities, value).description;
}
std::string_view description(AuthenticationUI value) noexcept {
  return entryOf(authenticationUIs, value).description;
}
std::string_view description(AuthenticationType value) noexcept {
  return entryOf(authenticationTypes, value).description;
}
std::string_view description(ProtocolType value) noexcept {
  return entryOf(protocolTypes, value).description;
}

template <> std::optional<ItemClass> fromRawValue(std::string_view raw) {
  return findRaw(itemClasses, raw);
}
template <> std::optional<Accessibility> fromRawValue(std::string_view raw) {
  return findRaw(accessibilities, raw);
}
template <> std::optional<AuthenticationUI> fromRawValue(std::string_view raw) {
  return findRaw(authenticationUIs, raw);
}
template <>
std::optional<AuthenticationType> fromRawValue(std::string_view raw) {
  return findRaw(authenticationTypes, raw);
}
template <> std::optional<ProtocolType> fromRawValue(std::string_view raw) {
  return findRaw(protocolTypes, raw);
}

std::optional<ServerUrl> ServerUrl::parse(std::string_view text) {
  ServerUrl url;
  url.text = std::string(text);
  // The empty text is a relative reference without any parts.
  if (text.empty())
    return url;
  std::optional<platform::UrlReference> reference =
      platform::UrlReference::parse(text);
  if (!reference)
    return std::nullopt;
  // An empty host counts only when user info or a port goes with it: "//"
  // alone has none, "//@" and "//:80" have an empty one.
  if (reference->host && (!reference->host->empty() || reference->userInfo ||
                          reference->port))
    url.host = reference->host;
  const std::string portText = reference->port.value_or("");
  std::int64_t port = 0;
  auto [end, error] =
      std::from_chars(portText.data(), portText.data() + portText.size(), port);
  if (!portText.empty() && error == std::errc() &&
      end == portText.data() + portText.size())
    url.port = port;
  return url;
}

const Value *Attributes::operator[](std::string_view key) const {
  auto found = attributes.find(key);
  return found == attributes.end() ? nullptr : &found->second;
}

std::optional<std::string> Attributes::secClass() const {
  return lookUp<std::string>(attributes, kSecClass);
}
std::optional<Bytes> Attributes::data() const {
  return lookUp<Bytes>(attributes, kSecValueData);
}
std::optional<Bytes> Attributes::ref() const {
  return lookUp<Bytes>(attributes, kSecValueRef);
}
std::optional<Bytes> Attributes::persistentRef() const {
  return lookUp<Bytes>(attributes, kSecValuePersistentRef);
}
std::optional<std::string> Attributes::accessible() const {
  return lookUp<std::string>(attributes, kSecAttrAccessible);
}
std::optional<AccessControl> Attributes::accessControl() const {
  return lookUp<AccessControl>(attributes, kSecAttrAccessControl);
}
std::optional<std::string> Attributes::accessGroup() const {
  return lookUp<std::string>(attributes, kSecAttrAccessGroup);
}
std::optional<bool> Attributes::synchronizable() const {
  return lookUp<bool>(attributes, kSecAttrSynchronizable);
}
std::optional<Date> Attributes::creationDate() const {
  return lookUp<Date>(attributes, kSecAttrCreationDate);
}
std::optional<Date> Attributes::modificationDate() const {
  return lookUp<Date>(attributes, kSecAttrModificationDate);
}
std::optional<std::string> Attributes::attributeDescription() const {
  return lookUp<std::string>(attributes, kSecAttrDescription);
}
std::optional<std::string> Attributes::comment() const {
  return lookUp<std::string>(attributes, kSecAttrComment);
}
std::optional<std::string> Attributes::creator() const {
  return lookUp<std::string>(attributes, kSecAttrCreator);
}
std::optional<std::string> Attributes::type() const {
  return lookUp<std::string>(attributes, kSecAttrType);
}
std::optional<std::string> Attributes::label() const {
  return lookUp<std::string>(attributes, kSecAttrLabel);
}
std::optional<bool> Attributes::isInvisible() const {
  return lookUp<bool>(attributes, kSecAttrIsInvisible);
}
std::optional<bool> Attributes::isNegative() const {
  return lookUp<bool>(attributes, kSecAttrIsNegative);
}
std::optional<std::string> Attributes::account() const {
  return lookUp<std::string>(attributes, kSecAttrAccount);
}
std::optional<std::string> Attributes::service() const {
  return lookUp<std::string>(attributes, kSecAttrService);
}
std::optional<Bytes> Attributes::generic() const {
  return lookUp<Bytes>(attributes, kSecAttrGeneric);
}
std::optional<std::string> Attributes::securityDomain() const {
  return lookUp<std::string>(attributes, kSecAttrSecurityDomain);
}
std::optional<std::string> Attributes::server() const {
  return lookUp<std::string>(attributes, kSecAttrServer);
}
std::optional<std::string> Attributes::protocol() const {
  return lookUp<std::string>(attributes, kSecAttrProtocol);
}
std::optional<std::string> Attributes::authenticationType() const {
  return lookUp<std::string>(attributes, kSecAttrAuthenticationType);
}
std::optional<std::int64_t> Attributes::port() const {
  return lookUp<std::int64_t>(attributes, kSecAttrPort);
}
std::optional<std::string> Attributes::path() const {
  return lookUp<std::string>(attributes, kSecAttrPath);
}

} // namespace securestore
