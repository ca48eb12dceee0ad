#ifndef KESTRUNECLI_PLATFORM_HTTPFAILURE_H
#define KESTRUNECLI_PLATFORM_HTTPFAILURE_H

// Private to PlatformHttp: the sentences of failed transfers.

#include "Platform/HttpMessage.h"

#include <curl/curl.h>

#include <string>

namespace platform {

/// Turns a failed transfer into our error: a stable sentence for the kind
/// of failure, and libcurl's own words about this one (\p errorBuffer, or
/// its words for \p code when that is empty or null) in parentheses.
HttpError describeFailure(CURLcode code, const char *errorBuffer);

/// The failure that ended the first attempt of a request, given as the
/// words libcurl wrote before it wanted to send the request again (see
/// HttpExchange.cpp), as libcurl reports it on a connection of its own.
HttpError describeFailureBeforeRetry(const std::string &failure);

} // namespace platform

#endif
