#ifndef KESTRUNECLI_TOOLS_MOCKCONSOLE_ROUTE_H
#define KESTRUNECLI_TOOLS_MOCKCONSOLE_ROUTE_H

#include <optional>
#include <string_view>

namespace mockconsole {

/// The console's routes, and everything else.
enum class Route {
  /// GET /api/system/groups/search?groupID={groupId}
  GroupSearch,
  /// POST
  /// /api/mam/blobs/uploadblob?filename=..&organizationgroupid=..&moduleType=..
  UploadBlob,
  /// POST /api/mam/groups/{number}/macos/apps
  CreateApplication,
  /// Any other method or path: 404 with a JSON message.
  Other,
};

/// "groups", "blobs", "apps" or "other": the route's name in the request log
/// and on the command line.
std::string_view getRouteName(Route route);
/// The route named \p name; absent for an unknown name.
std::optional<Route> findRoute(std::string_view name);

} // namespace mockconsole

#endif
