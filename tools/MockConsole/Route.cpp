#include "MockConsole/Route.h"

namespace mockconsole {

std::string_view getRouteName(Route route) {
  switch (route) {
  case Route::GroupSearch:
    return "groups";
  case Route::UploadBlob:
    return "blobs";
  case Route::CreateApplication:
    return "apps";
  case Route::Other:
    return "other";
  }
  return "other";
}

std::optional<Route> findRoute(std::string_view name) {
  for (Route route : {Route::GroupSearch, Route::UploadBlob,
                      Route::CreateApplication, Route::Other})
    if (getRouteName(route) == name)
      return route;
  return std::nullopt;
}

} // namespace mockconsole
