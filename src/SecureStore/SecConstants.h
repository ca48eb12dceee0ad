#ifndef KESTRUNECLI_SECURESTORE_SECCONSTANTS_H
#define KESTRUNECLI_SECURESTORE_SECCONSTANTS_H

// The kSec... names of query and attribute dictionaries and of their text
// values. Each constant's text is its own name, so dictionaries read plainly
// wherever they are printed or stored.

namespace securestore {

// Item classes.
inline constexpr char kSecClass[] = "kSecClass";
inline constexpr char kSecClassGenericPassword[] = "kSecClassGenericPassword";
inline constexpr char kSecClassInternetPassword[] = "kSecClassInternetPassword";

// Attribute keys, and the value that matches either synchronizable state.
inline constexpr char kSecAttrAccessGroup[] = "kSecAttrAccessGroup";
inline constexpr char kSecAttrSynchronizable[] = "kSecAttrSynchronizable";
inline constexpr char kSecAttrSynchronizableAny[] = "kSecAttrSynchronizableAny";
inline constexpr char kSecAttrService[] = "kSecAttrService";
inline constexpr char kSecAttrServer[] = "kSecAttrServer";
inline constexpr char kSecAttrPort[] = "kSecAttrPort";
inline constexpr char kSecAttrProtocol[] = "kSecAttrProtocol";
inline constexpr char kSecAttrAuthenticationType[] =
    "kSecAttrAuthenticationType";
inline constexpr char kSecAttrAccount[] = "kSecAttrAccount";
inline constexpr char kSecAttrLabel[] = "kSecAttrLabel";
inline constexpr char kSecAttrComment[] = "kSecAttrComment";
inline constexpr char kSecAttrAccessible[] = "kSecAttrAccessible";
inline constexpr char kSecAttrAccessControl[] = "kSecAttrAccessControl";
inline constexpr char kSecAttrCreationDate[] = "kSecAttrCreationDate";
inline constexpr char kSecAttrModificationDate[] = "kSecAttrModificationDate";
inline constexpr char kSecAttrDescription[] = "kSecAttrDescription";
inline constexpr char kSecAttrCreator[] = "kSecAttrCreator";
inline constexpr char kSecAttrType[] = "kSecAttrType";
inline constexpr char kSecAttrIsInvisible[] = "kSecAttrIsInvisible";
inline constexpr char kSecAttrIsNegative[] = "kSecAttrIsNegative";
inline constexpr char kSecAttrGeneric[] = "kSecAttrGeneric";
inline constexpr char kSecAttrSecurityDomain[] = "kSecAttrSecurityDomain";
inline constexpr char kSecAttrPath[] = "kSecAttrPath";

// Value keys.
inline constexpr char kSecValueData[] = "kSecValueData";
inline constexpr char kSecValueRef[] = "kSecValueRef";
inline constexpr char kSecValuePersistentRef[] = "kSecValuePersistentRef";

// Search keys and their values.
inline constexpr char kSecMatchLimit[] = "kSecMatchLimit";
inline constexpr char kSecMatchLimitOne[] = "kSecMatchLimitOne";
inline constexpr char kSecMatchLimitAll[] = "kSecMatchLimitAll";

// Return keys.
inline constexpr char kSecReturnData[] = "kSecReturnData";
inline constexpr char kSecReturnAttributes[] = "kSecReturnAttributes";
inline constexpr char kSecReturnRef[] = "kSecReturnRef";
inline constexpr char kSecReturnPersistentRef[] = "kSecReturnPersistentRef";

// Use keys and the authentication UI values.
inline constexpr char kSecUseOperationPrompt[] = "kSecUseOperationPrompt";
inline constexpr char kSecUseAuthenticationContext[] =
    "kSecUseAuthenticationContext";
inline constexpr char kSecUseAuthenticationUI[] = "kSecUseAuthenticationUI";
inline constexpr char kSecUseAuthenticationUIAllow[] =
    "kSecUseAuthenticationUIAllow";
inline constexpr char kSecUseAuthenticationUIFail[] =
    "kSecUseAuthenticationUIFail";
inline constexpr char kSecUseAuthenticationUISkip[] =
    "kSecUseAuthenticationUISkip";

// Accessibility values.
inline constexpr char kSecAttrAccessibleWhenUnlocked[] =
    "kSecAttrAccessibleWhenUnlocked";
inline constexpr char kSecAttrAccessibleAfterFirstUnlock[] =
    "kSecAttrAccessibleAfterFirstUnlock";
inline constexpr char kSecAttrAccessibleAlways[] = "kSecAttrAccessibleAlways";
inline constexpr char kSecAttrAccessibleWhenPasscodeSetThisDeviceOnly[] =
    "kSecAttrAccessibleWhenPasscodeSetThisDeviceOnly";
inline constexpr char kSecAttrAccessibleWhenUnlockedThisDeviceOnly[] =
    "kSecAttrAccessibleWhenUnlockedThisDeviceOnly";
inline constexpr char kSecAttrAccessibleAfterFirstUnlockThisDeviceOnly[] =
    "kSecAttrAccessibleAfterFirstUnlockThisDeviceOnly";
inline constexpr char kSecAttrAccessibleAlwaysThisDeviceOnly[] =
    "kSecAttrAccessibleAlwaysThisDeviceOnly";

// Authentication type values.
inline constexpr char kSecAttrAuthenticationTypeNTLM[] =
    "kSecAttrAuthenticationTypeNTLM";
inline constexpr char kSecAttrAuthenticationTypeMSN[] =
    "kSecAttrAuthenticationTypeMSN";
inline constexpr char kSecAttrAuthenticationTypeDPA[] =
    "kSecAttrAuthenticationTypeDPA";
inline constexpr char kSecAttrAuthenticationTypeRPA[] =
    "kSecAttrAuthenticationTypeRPA";
inline constexpr char kSecAttrAuthenticationTypeHTTPBasic[] =
    "kSecAttrAuthenticationTypeHTTPBasic";
inline constexpr char kSecAttrAuthenticationTypeHTTPDigest[] =
    "kSecAttrAuthenticationTypeHTTPDigest";
inline constexpr char kSecAttrAuthenticationTypeHTMLForm[] =
    "kSecAttrAuthenticationTypeHTMLForm";
inline constexpr char kSecAttrAuthenticationTypeDefault[] =
    "kSecAttrAuthenticationTypeDefault";

// Protocol values.
inline constexpr char kSecAttrProtocolFTP[] = "kSecAttrProtocolFTP";
inline constexpr char kSecAttrProtocolFTPAccount[] =
    "kSecAttrProtocolFTPAccount";
inline constexpr char kSecAttrProtocolHTTP[] = "kSecAttrProtocolHTTP";
inline constexpr char kSecAttrProtocolIRC[] = "kSecAttrProtocolIRC";
inline constexpr char kSecAttrProtocolNNTP[] = "kSecAttrProtocolNNTP";
inline constexpr char kSecAttrProtocolPOP3[] = "kSecAttrProtocolPOP3";
inline constexpr char kSecAttrProtocolSMTP[] = "kSecAttrProtocolSMTP";
inline constexpr char kSecAttrProtocolSOCKS[] = "kSecAttrProtocolSOCKS";
inline constexpr char kSecAttrProtocolIMAP[] = "kSecAttrProtocolIMAP";
inline constexpr char kSecAttrProtocolLDAP[] = "kSecAttrProtocolLDAP";
inline constexpr char kSecAttrProtocolAppleTalk[] = "kSecAttrProtocolAppleTalk";
inline constexpr char kSecAttrProtocolAFP[] = "kSecAttrProtocolAFP";
inline constexpr char kSecAttrProtocolTelnet[] = "kSecAttrProtocolTelnet";
inline constexpr char kSecAttrProtocolSSH[] = "kSecAttrProtocolSSH";
inline constexpr char kSecAttrProtocolFTPS[] = "kSecAttrProtocolFTPS";
inline constexpr char kSecAttrProtocolHTTPS[] = "kSecAttrProtocolHTTPS";
inline constexpr char kSecAttrProtocolHTTPProxy[] = "kSecAttrProtocolHTTPProxy";
inline constexpr char kSecAttrProtocolHTTPSProxy[] =
    "kSecAttrProtocolHTTPSProxy";
inline constexpr char kSecAttrProtocolFTPProxy[] = "kSecAttrProtocolFTPProxy";
inline constexpr char kSecAttrProtocolSMB[] = "kSecAttrProtocolSMB";
inline constexpr char kSecAttrProtocolRTSP[] = "kSecAttrProtocolRTSP";
inline constexpr char kSecAttrProtocolRTSPProxy[] = "kSecAttrProtocolRTSPProxy";
inline constexpr char kSecAttrProtocolDAAP[] = "kSecAttrProtocolDAAP";
inline constexpr char kSecAttrProtocolEPPC[] = "kSecAttrProtocolEPPC";
inline constexpr char kSecAttrProtocolIPP[] = "kSecAttrProtocolIPP";
inline constexpr char kSecAttrProtocolNNTPS[] = "kSecAttrProtocolNNTPS";
inline constexpr char kSecAttrProtocolLDAPS[] = "kSecAttrProtocolLDAPS";
inline constexpr char kSecAttrProtocolTelnetS[] = "kSecAttrProtocolTelnetS";
inline constexpr char kSecAttrProtocolIMAPS[] = "kSecAttrProtocolIMAPS";
inline constexpr char kSecAttrProtocolIRCS[] = "kSecAttrProtocolIRCS";
inline constexpr char kSecAttrProtocolPOP3S[] = "kSecAttrProtocolPOP3S";

} // namespace securestore

#endif
