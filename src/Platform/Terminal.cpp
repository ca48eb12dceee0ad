#include "Platform/Terminal.h"

namespace platform {

Terminal::~Terminal() = default;

} // namespace platform
