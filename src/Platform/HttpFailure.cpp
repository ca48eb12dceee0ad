#include "Platform/HttpFailure.h"

namespace platform {
namespace {

const char *sentenceFor(CURLcode code) {
  switch (code) {
  case CURLE_COULDNT_RESOLVE_HOST:
    return "A server with the specified hostname could not be found";
  case CURLE_COULDNT_RESOLVE_PROXY:
    return "The proxy server could not be found";
  case CURLE_COULDNT_CONNECT:
    return "Could not connect to the server";
  case CURLE_OPERATION_TIMEDOUT:
    return "The request timed out";
  case CURLE_SEND_ERROR:
  case CURLE_RECV_ERROR:
  case CURLE_GOT_NOTHING:
  case CURLE_PARTIAL_FILE:
  case CURLE_HTTP2:
  case CURLE_HTTP2_STREAM:
    return "The network connection was lost";
  case CURLE_SSL_CONNECT_ERROR:
  case CURLE_PEER_FAILED_VERIFICATION:
  case CURLE_SSL_CERTPROBLEM:
  case CURLE_SSL_CIPHER:
  case CURLE_SSL_CACERT_BADFILE:
  case CURLE_SSL_ISSUER_ERROR:
  case CURLE_SSL_PINNEDPUBKEYNOTMATCH:
  case CURLE_SSL_INVALIDCERTSTATUS:
  case CURLE_SSL_CRL_BADFILE:
  case CURLE_USE_SSL_FAILED:
    return "A secure connection to the server could not be made";
  case CURLE_UNSUPPORTED_PROTOCOL:
  case CURLE_URL_MALFORMAT:
    return "The URL is not supported";
  case CURLE_TOO_MANY_REDIRECTS:
    return "There were too many redirects";
  case CURLE_WEIRD_SERVER_REPLY:
  case CURLE_BAD_CONTENT_ENCODING:
    return "The server's answer could not be read";
  case CURLE_OUT_OF_MEMORY:
    return "There was not enough memory for the request";
  default:
    return "The request failed";
  }
}

} // namespace

HttpError describeFailure(CURLcode code, const char *errorBuffer) {
  std::string detail = (errorBuffer && *errorBuffer)
                           ? std::string(errorBuffer)
                           : std::string(curl_easy_strerror(code));
  return HttpError{std::string(sentenceFor(code)) + " (" + detail + ")"};
}

// Nothing written to the error buffer means the server closed the
// connection without a word.
HttpError describeFailureBeforeRetry(const std::string &failure) {
  if (failure.empty())
    return describeFailure(CURLE_GOT_NOTHING, "Empty reply from server");
  return describeFailure(failure.starts_with("Send failure") ? CURLE_SEND_ERROR
                                                             : CURLE_RECV_ERROR,
                         failure.c_str());
}

} // namespace platform
