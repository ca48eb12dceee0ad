#ifndef KESTRUNECLI_URLSESSIONMANAGER_BLOBTYPE_H
#define KESTRUNECLI_URLSESSIONMANAGER_BLOBTYPE_H

namespace kestrune {

/// Which file of an upload a blob holds.
enum class BlobType { installer, metadata, icon };

} // namespace kestrune

#endif
