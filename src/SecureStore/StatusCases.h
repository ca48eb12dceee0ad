#ifndef KESTRUNECLI_SECURESTORE_STATUSCASES_H
#define KESTRUNECLI_SECURESTORE_STATUSCASES_H

// The keychain status catalogue, one row per case in declaration order:
// X(case name, raw value, message). 403 rows; raw values are unique, and
// every number outside this list is reported as unexpectedError.
// clang-format off
#define SECURESTORE_STATUS_CASES(X) \
  X(success, 0, "No error.") \
  X(unimplemented, -4, "Function or operation not implemented.") \
  X(diskFull, -34, "The disk is full.") \
  X(io, -36, "I/O error (bummers)") \
  X(opWr, -49, "file already open with with write permission") \
  X(param, -50, "One or more parameters passed to a function were not valid.") \
  X(wrPerm, -61, "write permissions error") \
  X(allocate, -108, "Failed to allocate memory.") \
  X(userCanceled, -128, "User canceled the operation.") \
  X(badReq, -909, "Bad parameter or invalid state for operation.") \
  X(internalComponent, -2070, "") \
  X(notAvailable, -25291, "No keychain is available. You may need to restart your computer.") \
  X(readOnly, -25292, "This keychain cannot be modified.") \
  X(authFailed, -25293, "The user name or passphrase you entered is not correct.") \
  X(noSuchKeychain, -25294, "The specified keychain could not be found.") \
  X(invalidKeychain, -25295, "The specified keychain is not a valid keychain file.") \
  X(duplicateKeychain, -25296, "A keychain with the same name already exists.") \
  X(duplicateCallback, -25297, "The specified callback function is already installed.") \
  X(invalidCallback, -25298, "The specified callback function is not valid.") \
  X(duplicateItem, -25299, "The specified item already exists in the keychain.") \
  X(itemNotFound, -25300, "The specified item could not be found in the keychain.") \
  X(bufferTooSmall, -25301, "There is not enough memory available to use the specified item.") \
  X(dataTooLarge, -25302, "This item contains information which is too large or in a format that cannot be displayed.") \
  X(noSuchAttr, -25303, "The specified attribute does not exist.") \
  X(invalidItemRef, -25304, "The specified item is no longer valid. It may have been deleted from the keychain.") \
  X(invalidSearchRef, -25305, "Unable to search the current keychain.") \
  X(noSuchClass, -25306, "The specified item does not appear to be a valid keychain item.") \
  X(noDefaultKeychain, -25307, "A default keychain could not be found.") \
  X(interactionNotAllowed, -25308, "User interaction is not allowed.") \
  X(readOnlyAttr, -25309, "The specified attribute could not be modified.") \
  X(wrongSecVersion, -25310, "This keychain was created by a different version of the system software and cannot be opened.") \
  X(keySizeNotAllowed, -25311, "This item specifies a key size which is too large.") \
  X(noStorageModule, -25312, "A required component (data storage module) could not be loaded. You may need to restart your computer.") \
  X(noCertificateModule, -25313, "A required component (certificate module) could not be loaded. You may need to restart your computer.") \
  X(noPolicyModule, -25314, "A required component (policy module) could not be loaded. You may need to restart your computer.") \
  X(interactionRequired, -25315, "User interaction is required, but is currently not allowed.") \
  X(dataNotAvailable, -25316, "The contents of this item cannot be retrieved.") \
  X(dataNotModifiable, -25317, "The contents of this item cannot be modified.") \
  X(createChainFailed, -25318, "One or more certificates required to validate this certificate cannot be found.") \
  X(invalidPrefsDomain, -25319, "The specified preferences domain is not valid.") \
  X(inDarkWake, -25320, "In dark wake, no UI possible") \
  X(aclNotSimple, -25240, "The specified access control list is not in standard (simple) form.") \
  X(policyNotFound, -25241, "The specified policy cannot be found.") \
  X(invalidTrustSetting, -25242, "The specified trust setting is invalid.") \
  X(noAccessForItem, -25243, "The specified item has no access control.") \
  X(invalidOwnerEdit, -25244, "Invalid attempt to change the owner of this item.") \
  X(trustNotAvailable, -25245, "No trust results are available.") \
  X(unsupportedFormat, -25256, "Import/Export format unsupported.") \
  X(unknownFormat, -25257, "Unknown format in import.") \
  X(keyIsSensitive, -25258, "Key material must be wrapped for export.") \
  X(multiplePrivKeys, -25259, "An attempt was made to import multiple private keys.") \
  X(passphraseRequired, -25260, "Passphrase is required for import/export.") \
  X(invalidPasswordRef, -25261, "The password reference was invalid.") \
  X(invalidTrustSettings, -25262, "The Trust Settings Record was corrupted.") \
  X(noTrustSettings, -25263, "No Trust Settings were found.") \
  X(pkcs12VerifyFailure, -25264, "MAC verification failed during PKCS12 import (wrong password?)") \
  X(invalidCertificate, -26265, "This certificate could not be decoded.") \
  X(notSigner, -26267, "A certificate was not signed by its proposed parent.") \
  X(policyDenied, -26270, "The certificate chain was not trusted due to a policy not accepting it.") \
  X(invalidKey, -26274, "The provided key material was not valid.") \
  X(decode, -26275, "Unable to decode the provided data.") \
  X(internal, -26276, "An internal error occurred in the Security framework.") \
  X(unsupportedAlgorithm, -26268, "An unsupported algorithm was encountered.") \
  X(unsupportedOperation, -26271, "The operation you requested is not supported by this key.") \
  X(unsupportedPadding, -26273, "The padding you requested is not supported.") \
  X(itemInvalidKey, -34000, "A string key in dictionary is not one of the supported keys.") \
  X(itemInvalidKeyType, -34001, "A key in a dictionary is neither a CFStringRef nor a CFNumberRef.") \
  X(itemInvalidValue, -34002, "A value in a dictionary is an invalid (or unsupported) CF type.") \
  X(itemClassMissing, -34003, "No kSecItemClass key was specified in a dictionary.") \
  X(itemMatchUnsupported, -34004, "The caller passed one or more kSecMatch keys to a function which does not support matches.") \
  X(useItemListUnsupported, -34005, "The caller passed in a kSecUseItemList key to a function which does not support it.") \
  X(useKeychainUnsupported, -34006, "The caller passed in a kSecUseKeychain key to a function which does not support it.") \
  X(useKeychainListUnsupported, -34007, "The caller passed in a kSecUseKeychainList key to a function which does not support it.") \
  X(returnDataUnsupported, -34008, "The caller passed in a kSecReturnData key to a function which does not support it.") \
  X(returnAttributesUnsupported, -34009, "The caller passed in a kSecReturnAttributes key to a function which does not support it.") \
  X(returnRefUnsupported, -34010, "The caller passed in a kSecReturnRef key to a function which does not support it.") \
  X(returnPersitentRefUnsupported, -34011, "The caller passed in a kSecReturnPersistentRef key to a function which does not support it.") \
  X(valueRefUnsupported, -34012, "The caller passed in a kSecValueRef key to a function which does not support it.") \
  X(valuePersistentRefUnsupported, -34013, "The caller passed in a kSecValuePersistentRef key to a function which does not support it.") \
  X(returnMissingPointer, -34014, "The caller passed asked for something to be returned but did not pass in a result pointer.") \
  X(matchLimitUnsupported, -34015, "The caller passed in a kSecMatchLimit key to a call which does not support limits.") \
  X(itemIllegalQuery, -34016, "The caller passed in a query which contained too many keys.") \
  X(waitForCallback, -34017, "This operation is incomplete, until the callback is invoked (not an error).") \
  X(missingEntitlement, -34018, "Internal error when a required entitlement isn't present, client has neither application-identifier nor access-group entitlements.") \
  X(upgradePending, -34019, "Error returned if keychain database needs a schema migration but the device is locked, clients should wait for a device unlock notification and retry the command.") \
  X(mpSignatureInvalid, -25327, "Signature invalid on MP message") \
  X(otrTooOld, -25328, "Message is too old to use") \
  X(otrIDTooNew, -25329, "Key ID is too new to use! Message from the future?") \
  X(serviceNotAvailable, -67585, "The required service is not available.") \
  X(insufficientClientID, -67586, "The client ID is not correct.") \
  X(deviceReset, -67587, "A device reset has occurred.") \
  X(deviceFailed, -67588, "A device failure has occurred.") \
  X(appleAddAppACLSubject, -67589, "Adding an application ACL subject failed.") \
  X(applePublicKeyIncomplete, -67590, "The public key is incomplete.") \
  X(appleSignatureMismatch, -67591, "A signature mismatch has occurred.") \
  X(appleInvalidKeyStartDate, -67592, "The specified key has an invalid start date.") \
  X(appleInvalidKeyEndDate, -67593, "The specified key has an invalid end date.") \
  X(conversionError, -67594, "A conversion error has occurred.") \
  X(appleSSLv2Rollback, -67595, "A SSLv2 rollback error has occurred.") \
  X(quotaExceeded, -67596, "The quota was exceeded.") \
  X(fileTooBig, -67597, "The file is too big.") \
  X(invalidDatabaseBlob, -67598, "The specified database has an invalid blob.") \
  X(invalidKeyBlob, -67599, "The specified database has an invalid key blob.") \
  X(incompatibleDatabaseBlob, -67600, "The specified database has an incompatible blob.") \
  X(incompatibleKeyBlob, -67601, "The specified database has an incompatible key blob.") \
  X(hostNameMismatch, -67602, "A host name mismatch has occurred.") \
  X(unknownCriticalExtensionFlag, -67603, "There is an unknown critical extension flag.") \
  X(noBasicConstraints, -67604, "No basic constraints were found.") \
  X(noBasicConstraintsCA, -67605, "No basic CA constraints were found.") \
  X(invalidAuthorityKeyID, -67606, "The authority key ID is not valid.") \
  X(invalidSubjectKeyID, -67607, "The subject key ID is not valid.") \
  X(invalidKeyUsageForPolicy, -67608, "The key usage is not valid for the specified policy.") \
  X(invalidExtendedKeyUsage, -67609, "The extended key usage is not valid.") \
  X(invalidIDLinkage, -67610, "The ID linkage is not valid.") \
  X(pathLengthConstraintExceeded, -67611, "The path length constraint was exceeded.") \
  X(invalidRoot, -67612, "The root or anchor certificate is not valid.") \
  X(crlExpired, -67613, "The CRL has expired.") \
  X(crlNotValidYet, -67614, "The CRL is not yet valid.") \
  X(crlNotFound, -67615, "The CRL was not found.") \
  X(crlServerDown, -67616, "The CRL server is down.") \
  X(crlBadURI, -67617, "The CRL has a bad Uniform Resource Identifier.") \
  X(unknownCertExtension, -67618, "An unknown certificate extension was encountered.") \
  X(unknownCRLExtension, -67619, "An unknown CRL extension was encountered.") \
  X(crlNotTrusted, -67620, "The CRL is not trusted.") \
  X(crlPolicyFailed, -67621, "The CRL policy failed.") \
  X(idpFailure, -67622, "The issuing distribution point was not valid.") \
  X(smimeEmailAddressesNotFound, -67623, "An email address mismatch was encountered.") \
  X(smimeBadExtendedKeyUsage, -67624, "The appropriate extended key usage for SMIME was not found.") \
  X(smimeBadKeyUsage, -67625, "The key usage is not compatible with SMIME.") \
  X(smimeKeyUsageNotCritical, -67626, "The key usage extension is not marked as critical.") \
  X(smimeNoEmailAddress, -67627, "No email address was found in the certificate.") \
  X(smimeSubjAltNameNotCritical, -67628, "The subject alternative name extension is not marked as critical.") \
  X(sslBadExtendedKeyUsage, -67629, "The appropriate extended key usage for SSL was not found.") \
  X(ocspBadResponse, -67630, "The OCSP response was incorrect or could not be parsed.") \
  X(ocspBadRequest, -67631, "The OCSP request was incorrect or could not be parsed.") \
  X(ocspUnavailable, -67632, "OCSP service is unavailable.") \
  X(ocspStatusUnrecognized, -67633, "The OCSP server did not recognize this certificate.") \
  X(endOfData, -67634, "An end-of-data was detected.") \
  X(incompleteCertRevocationCheck, -67635, "An incomplete certificate revocation check occurred.") \
  X(networkFailure, -67636, "A network failure occurred.") \
  X(ocspNotTrustedToAnchor, -67637, "The OCSP response was not trusted to a root or anchor certificate.") \
  X(recordModified, -67638, "The record was modified.") \
  X(ocspSignatureError, -67639, "The OCSP response had an invalid signature.") \
  X(ocspNoSigner, -67640, "The OCSP response had no signer.") \
  X(ocspResponderMalformedReq, -67641, "The OCSP responder was given a malformed request.") \
  X(ocspResponderInternalError, -67642, "The OCSP responder encountered an internal error.") \
  X(ocspResponderTryLater, -67643, "The OCSP responder is busy, try again later.") \
  X(ocspResponderSignatureRequired, -67644, "The OCSP responder requires a signature.") \
  X(ocspResponderUnauthorized, -67645, "The OCSP responder rejected this request as unauthorized.") \
  X(ocspResponseNonceMismatch, -67646, "The OCSP response nonce did not match the request.") \
  X(codeSigningBadCertChainLength, -67647, "Code signing encountered an incorrect certificate chain length.") \
  X(codeSigningNoBasicConstraints, -67648, "Code signing found no basic constraints.") \
  X(codeSigningBadPathLengthConstraint, -67649, "Code signing encountered an incorrect path length constraint.") \
  X(codeSigningNoExtendedKeyUsage, -67650, "Code signing found no extended key usage.") \
  X(codeSigningDevelopment, -67651, "Code signing indicated use of a development-only certificate.") \
  X(resourceSignBadCertChainLength, -67652, "Resource signing has encountered an incorrect certificate chain length.") \
  X(resourceSignBadExtKeyUsage, -67653, "Resource signing has encountered an error in the extended key usage.") \
  X(trustSettingDeny, -67654, "The trust setting for this policy was set to Deny.") \
  X(invalidSubjectName, -67655, "An invalid certificate subject name was encountered.") \
  X(unknownQualifiedCertStatement, -67656, "An unknown qualified certificate statement was encountered.") \
  X(niflopleRequestQueued, -67657, "The Niflople request will be sent during the next connection.") \
  X(niflopleRequestRedirected, -67658, "The Niflople request was redirected.") \
  X(niflopleServerError, -67659, "A Niflople server error occurred.") \
  X(niflopleServerNotAvailable, -67660, "The Niflople server is not available.") \
  X(niflopleServerAlreadyExists, -67661, "The Niflople server reported that the item already exists.") \
  X(niflopleServerServiceErr, -67662, "A Niflople service error has occurred.") \
  X(niflopleRequestAlreadyPending, -67663, "A Niflople request is already pending.") \
  X(niflopleNoRequestPending, -67664, "Niflople has no request pending.") \
  X(niflopleCSRVerifyFailure, -67665, "A Niflople CSR verification failure has occurred.") \
  X(niflopleFailedConsistencyCheck, -67666, "Niflople has found a failed consistency check.") \
  X(notInitialized, -67667, "A function was called without initializing CSSM.") \
  X(invalidHandleUsage, -67668, "The CSSM handle does not match with the service type.") \
  X(pvcReferentNotFound, -67669, "A reference to the calling module was not found in the list of authorized callers.") \
  X(functionIntegrityFail, -67670, "A function address was not within the verified module.") \
  X(internalError, -67671, "An internal error has occurred.") \
  X(memoryError, -67672, "A memory error has occurred.") \
  X(invalidData, -67673, "Invalid data was encountered.") \
  X(mdsError, -67674, "A Module Directory Service error has occurred.") \
  X(invalidPointer, -67675, "An invalid pointer was encountered.") \
  X(selfCheckFailed, -67676, "Self-check has failed.") \
  X(functionFailed, -67677, "A function has failed.") \
  X(moduleManifestVerifyFailed, -67678, "A module manifest verification failure has occurred.") \
  X(invalidGUID, -67679, "An invalid GUID was encountered.") \
  X(invalidHandle, -67680, "An invalid handle was encountered.") \
  X(invalidDBList, -67681, "An invalid DB list was encountered.") \
  X(invalidPassthroughID, -67682, "An invalid passthrough ID was encountered.") \
  X(invalidNetworkAddress, -67683, "An invalid network address was encountered.") \
  X(crlAlreadySigned, -67684, "The certificate revocation list is already signed.") \
  X(invalidNumberOfFields, -67685, "An invalid number of fields were encountered.") \
  X(verificationFailure, -67686, "A verification failure occurred.") \
  X(unknownTag, -67687, "An unknown tag was encountered.") \
  X(invalidSignature, -67688, "An invalid signature was encountered.") \
  X(invalidName, -67689, "An invalid name was encountered.") \
  X(invalidCertificateRef, -67690, "An invalid certificate reference was encountered.") \
  X(invalidCertificateGroup, -67691, "An invalid certificate group was encountered.") \
  X(tagNotFound, -67692, "The specified tag was not found.") \
  X(invalidQuery, -67693, "The specified query was not valid.") \
  X(invalidValue, -67694, "An invalid value was detected.") \
  X(callbackFailed, -67695, "A callback has failed.") \
  X(aclDeleteFailed, -67696, "An ACL delete operation has failed.") \
  X(aclReplaceFailed, -67697, "An ACL replace operation has failed.") \
  X(aclAddFailed, -67698, "An ACL add operation has failed.") \
  X(aclChangeFailed, -67699, "An ACL change operation has failed.") \
  X(invalidAccessCredentials, -67700, "Invalid access credentials were encountered.") \
  X(invalidRecord, -67701, "An invalid record was encountered.") \
  X(invalidACL, -67702, "An invalid ACL was encountered.") \
  X(invalidSampleValue, -67703, "An invalid sample value was encountered.") \
  X(incompatibleVersion, -67704, "An incompatible version was encountered.") \
  X(privilegeNotGranted, -67705, "The privilege was not granted.") \
  X(invalidScope, -67706, "An invalid scope was encountered.") \
  X(pvcAlreadyConfigured, -67707, "The PVC is already configured.") \
  X(invalidPVC, -67708, "An invalid PVC was encountered.") \
  X(emmLoadFailed, -67709, "The EMM load has failed.") \
  X(emmUnloadFailed, -67710, "The EMM unload has failed.") \
  X(addinLoadFailed, -67711, "The add-in load operation has failed.") \
  X(invalidKeyRef, -67712, "An invalid key was encountered.") \
  X(invalidKeyHierarchy, -67713, "An invalid key hierarchy was encountered.") \
  X(addinUnloadFailed, -67714, "The add-in unload operation has failed.") \
  X(libraryReferenceNotFound, -67715, "A library reference was not found.") \
  X(invalidAddinFunctionTable, -67716, "An invalid add-in function table was encountered.") \
  X(invalidServiceMask, -67717, "An invalid service mask was encountered.") \
  X(moduleNotLoaded, -67718, "A module was not loaded.") \
  X(invalidSubServiceID, -67719, "An invalid subservice ID was encountered.") \
  X(attributeNotInContext, -67720, "An attribute was not in the context.") \
  X(moduleManagerInitializeFailed, -67721, "A module failed to initialize.") \
  X(moduleManagerNotFound, -67722, "A module was not found.") \
  X(eventNotificationCallbackNotFound, -67723, "An event notification callback was not found.") \
  X(inputLengthError, -67724, "An input length error was encountered.") \
  X(outputLengthError, -67725, "An output length error was encountered.") \
  X(privilegeNotSupported, -67726, "The privilege is not supported.") \
  X(deviceError, -67727, "A device error was encountered.") \
  X(attachHandleBusy, -67728, "The CSP handle was busy.") \
  X(notLoggedIn, -67729, "You are not logged in.") \
  X(algorithmMismatch, -67730, "An algorithm mismatch was encountered.") \
  X(keyUsageIncorrect, -67731, "The key usage is incorrect.") \
  X(keyBlobTypeIncorrect, -67732, "The key blob type is incorrect.") \
  X(keyHeaderInconsistent, -67733, "The key header is inconsistent.") \
  X(unsupportedKeyFormat, -67734, "The key header format is not supported.") \
  X(unsupportedKeySize, -67735, "The key size is not supported.") \
  X(invalidKeyUsageMask, -67736, "The key usage mask is not valid.") \
  X(unsupportedKeyUsageMask, -67737, "The key usage mask is not supported.") \
  X(invalidKeyAttributeMask, -67738, "The key attribute mask is not valid.") \
  X(unsupportedKeyAttributeMask, -67739, "The key attribute mask is not supported.") \
  X(invalidKeyLabel, -67740, "The key label is not valid.") \
  X(unsupportedKeyLabel, -67741, "The key label is not supported.") \
  X(invalidKeyFormat, -67742, "The key format is not valid.") \
  X(unsupportedVectorOfBuffers, -67743, "The vector of buffers is not supported.") \
  X(invalidInputVector, -67744, "The input vector is not valid.") \
  X(invalidOutputVector, -67745, "The output vector is not valid.") \
  X(invalidContext, -67746, "An invalid context was encountered.") \
  X(invalidAlgorithm, -67747, "An invalid algorithm was encountered.") \
  X(invalidAttributeKey, -67748, "A key attribute was not valid.") \
  X(missingAttributeKey, -67749, "A key attribute was missing.") \
  X(invalidAttributeInitVector, -67750, "An init vector attribute was not valid.") \
  X(missingAttributeInitVector, -67751, "An init vector attribute was missing.") \
  X(invalidAttributeSalt, -67752, "A salt attribute was not valid.") \
  X(missingAttributeSalt, -67753, "A salt attribute was missing.") \
  X(invalidAttributePadding, -67754, "A padding attribute was not valid.") \
  X(missingAttributePadding, -67755, "A padding attribute was missing.") \
  X(invalidAttributeRandom, -67756, "A random number attribute was not valid.") \
  X(missingAttributeRandom, -67757, "A random number attribute was missing.") \
  X(invalidAttributeSeed, -67758, "A seed attribute was not valid.") \
  X(missingAttributeSeed, -67759, "A seed attribute was missing.") \
  X(invalidAttributePassphrase, -67760, "A passphrase attribute was not valid.") \
  X(missingAttributePassphrase, -67761, "A passphrase attribute was missing.") \
  X(invalidAttributeKeyLength, -67762, "A key length attribute was not valid.") \
  X(missingAttributeKeyLength, -67763, "A key length attribute was missing.") \
  X(invalidAttributeBlockSize, -67764, "A block size attribute was not valid.") \
  X(missingAttributeBlockSize, -67765, "A block size attribute was missing.") \
  X(invalidAttributeOutputSize, -67766, "An output size attribute was not valid.") \
  X(missingAttributeOutputSize, -67767, "An output size attribute was missing.") \
  X(invalidAttributeRounds, -67768, "The number of rounds attribute was not valid.") \
  X(missingAttributeRounds, -67769, "The number of rounds attribute was missing.") \
  X(invalidAlgorithmParms, -67770, "An algorithm parameters attribute was not valid.") \
  X(missingAlgorithmParms, -67771, "An algorithm parameters attribute was missing.") \
  X(invalidAttributeLabel, -67772, "A label attribute was not valid.") \
  X(missingAttributeLabel, -67773, "A label attribute was missing.") \
  X(invalidAttributeKeyType, -67774, "A key type attribute was not valid.") \
  X(missingAttributeKeyType, -67775, "A key type attribute was missing.") \
  X(invalidAttributeMode, -67776, "A mode attribute was not valid.") \
  X(missingAttributeMode, -67777, "A mode attribute was missing.") \
  X(invalidAttributeEffectiveBits, -67778, "An effective bits attribute was not valid.") \
  X(missingAttributeEffectiveBits, -67779, "An effective bits attribute was missing.") \
  X(invalidAttributeStartDate, -67780, "A start date attribute was not valid.") \
  X(missingAttributeStartDate, -67781, "A start date attribute was missing.") \
  X(invalidAttributeEndDate, -67782, "An end date attribute was not valid.") \
  X(missingAttributeEndDate, -67783, "An end date attribute was missing.") \
  X(invalidAttributeVersion, -67784, "A version attribute was not valid.") \
  X(missingAttributeVersion, -67785, "A version attribute was missing.") \
  X(invalidAttributePrime, -67786, "A prime attribute was not valid.") \
  X(missingAttributePrime, -67787, "A prime attribute was missing.") \
  X(invalidAttributeBase, -67788, "A base attribute was not valid.") \
  X(missingAttributeBase, -67789, "A base attribute was missing.") \
  X(invalidAttributeSubprime, -67790, "A subprime attribute was not valid.") \
  X(missingAttributeSubprime, -67791, "A subprime attribute was missing.") \
  X(invalidAttributeIterationCount, -67792, "An iteration count attribute was not valid.") \
  X(missingAttributeIterationCount, -67793, "An iteration count attribute was missing.") \
  X(invalidAttributeDLDBHandle, -67794, "A database handle attribute was not valid.") \
  X(missingAttributeDLDBHandle, -67795, "A database handle attribute was missing.") \
  X(invalidAttributeAccessCredentials, -67796, "An access credentials attribute was not valid.") \
  X(missingAttributeAccessCredentials, -67797, "An access credentials attribute was missing.") \
  X(invalidAttributePublicKeyFormat, -67798, "A public key format attribute was not valid.") \
  X(missingAttributePublicKeyFormat, -67799, "A public key format attribute was missing.") \
  X(invalidAttributePrivateKeyFormat, -67800, "A private key format attribute was not valid.") \
  X(missingAttributePrivateKeyFormat, -67801, "A private key format attribute was missing.") \
  X(invalidAttributeSymmetricKeyFormat, -67802, "A symmetric key format attribute was not valid.") \
  X(missingAttributeSymmetricKeyFormat, -67803, "A symmetric key format attribute was missing.") \
  X(invalidAttributeWrappedKeyFormat, -67804, "A wrapped key format attribute was not valid.") \
  X(missingAttributeWrappedKeyFormat, -67805, "A wrapped key format attribute was missing.") \
  X(stagedOperationInProgress, -67806, "A staged operation is in progress.") \
  X(stagedOperationNotStarted, -67807, "A staged operation was not started.") \
  X(verifyFailed, -67808, "A cryptographic verification failure has occurred.") \
  X(querySizeUnknown, -67809, "The query size is unknown.") \
  X(blockSizeMismatch, -67810, "A block size mismatch occurred.") \
  X(publicKeyInconsistent, -67811, "The public key was inconsistent.") \
  X(deviceVerifyFailed, -67812, "A device verification failure has occurred.") \
  X(invalidLoginName, -67813, "An invalid login name was detected.") \
  X(alreadyLoggedIn, -67814, "The user is already logged in.") \
  X(invalidDigestAlgorithm, -67815, "An invalid digest algorithm was detected.") \
  X(invalidCRLGroup, -67816, "An invalid CRL group was detected.") \
  X(certificateCannotOperate, -67817, "The certificate cannot operate.") \
  X(certificateExpired, -67818, "An expired certificate was detected.") \
  X(certificateNotValidYet, -67819, "The certificate is not yet valid.") \
  X(certificateRevoked, -67820, "The certificate was revoked.") \
  X(certificateSuspended, -67821, "The certificate was suspended.") \
  X(insufficientCredentials, -67822, "Insufficient credentials were detected.") \
  X(invalidAction, -67823, "The action was not valid.") \
  X(invalidAuthority, -67824, "The authority was not valid.") \
  X(verifyActionFailed, -67825, "A verify action has failed.") \
  X(invalidCertAuthority, -67826, "The certificate authority was not valid.") \
  X(invaldCRLAuthority, -67827, "The CRL authority was not valid.") \
  X(invalidCRLEncoding, -67828, "The CRL encoding was not valid.") \
  X(invalidCRLType, -67829, "The CRL type was not valid.") \
  X(invalidCRL, -67830, "The CRL was not valid.") \
  X(invalidFormType, -67831, "The form type was not valid.") \
  X(invalidID, -67832, "The ID was not valid.") \
  X(invalidIdentifier, -67833, "The identifier was not valid.") \
  X(invalidIndex, -67834, "The index was not valid.") \
  X(invalidPolicyIdentifiers, -67835, "The policy identifiers are not valid.") \
  X(invalidTimeString, -67836, "The time specified was not valid.") \
  X(invalidReason, -67837, "The trust policy reason was not valid.") \
  X(invalidRequestInputs, -67838, "The request inputs are not valid.") \
  X(invalidResponseVector, -67839, "The response vector was not valid.") \
  X(invalidStopOnPolicy, -67840, "The stop-on policy was not valid.") \
  X(invalidTuple, -67841, "The tuple was not valid.") \
  X(multipleValuesUnsupported, -67842, "Multiple values are not supported.") \
  X(notTrusted, -67843, "The trust policy was not trusted.") \
  X(noDefaultAuthority, -67844, "No default authority was detected.") \
  X(rejectedForm, -67845, "The trust policy had a rejected form.") \
  X(requestLost, -67846, "The request was lost.") \
  X(requestRejected, -67847, "The request was rejected.") \
  X(unsupportedAddressType, -67848, "The address type is not supported.") \
  X(unsupportedService, -67849, "The service is not supported.") \
  X(invalidTupleGroup, -67850, "The tuple group was not valid.") \
  X(invalidBaseACLs, -67851, "The base ACLs are not valid.") \
  X(invalidTupleCredendtials, -67852, "The tuple credentials are not valid.") \
  X(invalidEncoding, -67853, "The encoding was not valid.") \
  X(invalidValidityPeriod, -67854, "The validity period was not valid.") \
  X(invalidRequestor, -67855, "The requestor was not valid.") \
  X(requestDescriptor, -67856, "The request descriptor was not valid.") \
  X(invalidBundleInfo, -67857, "The bundle information was not valid.") \
  X(invalidCRLIndex, -67858, "The CRL index was not valid.") \
  X(noFieldValues, -67859, "No field values were detected.") \
  X(unsupportedFieldFormat, -67860, "The field format is not supported.") \
  X(unsupportedIndexInfo, -67861, "The index information is not supported.") \
  X(unsupportedLocality, -67862, "The locality is not supported.") \
  X(unsupportedNumAttributes, -67863, "The number of attributes is not supported.") \
  X(unsupportedNumIndexes, -67864, "The number of indexes is not supported.") \
  X(unsupportedNumRecordTypes, -67865, "The number of record types is not supported.") \
  X(fieldSpecifiedMultiple, -67866, "Too many fields were specified.") \
  X(incompatibleFieldFormat, -67867, "The field format was incompatible.") \
  X(invalidParsingModule, -67868, "The parsing module was not valid.") \
  X(databaseLocked, -67869, "The database is locked.") \
  X(datastoreIsOpen, -67870, "The data store is open.") \
  X(missingValue, -67871, "A missing value was detected.") \
  X(unsupportedQueryLimits, -67872, "The query limits are not supported.") \
  X(unsupportedNumSelectionPreds, -67873, "The number of selection predicates is not supported.") \
  X(unsupportedOperator, -67874, "The operator is not supported.") \
  X(invalidDBLocation, -67875, "The database location is not valid.") \
  X(invalidAccessRequest, -67876, "The access request is not valid.") \
  X(invalidIndexInfo, -67877, "The index information is not valid.") \
  X(invalidNewOwner, -67878, "The new owner is not valid.") \
  X(invalidModifyMode, -67879, "The modify mode is not valid.") \
  X(missingRequiredExtension, -67880, "A required certificate extension is missing.") \
  X(extendedKeyUsageNotCritical, -67881, "The extended key usage extension was not marked critical.") \
  X(timestampMissing, -67882, "A timestamp was expected but was not found.") \
  X(timestampInvalid, -67883, "The timestamp was not valid.") \
  X(timestampNotTrusted, -67884, "The timestamp was not trusted.") \
  X(timestampServiceNotAvailable, -67885, "The timestamp service is not available.") \
  X(timestampBadAlg, -67886, "An unrecognized or unsupported Algorithm Identifier in timestamp.") \
  X(timestampBadRequest, -67887, "The timestamp transaction is not permitted or supported.") \
  X(timestampBadDataFormat, -67888, "The timestamp data submitted has the wrong format.") \
  X(timestampTimeNotAvailable, -67889, "The time source for the Timestamp Authority is not available.") \
  X(timestampUnacceptedPolicy, -67890, "The requested policy is not supported by the Timestamp Authority.") \
  X(timestampUnacceptedExtension, -67891, "The requested extension is not supported by the Timestamp Authority.") \
  X(timestampAddInfoNotAvailable, -67892, "The additional information requested is not available.") \
  X(timestampSystemFailure, -67893, "The timestamp request cannot be handled due to system failure.") \
  X(signingTimeMissing, -67894, "A signing time was expected but was not found.") \
  X(timestampRejection, -67895, "A timestamp transaction was rejected.") \
  X(timestampWaiting, -67896, "A timestamp transaction is waiting.") \
  X(timestampRevocationWarning, -67897, "A timestamp authority revocation warning was issued.") \
  X(timestampRevocationNotification, -67898, "A timestamp authority revocation notification was issued.") \
  X(unexpectedError, -99999, "Unexpected error has occurred.")
// clang-format on

#endif
