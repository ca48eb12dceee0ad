#include "ArgumentParser/Errors.h"

namespace argparse {

const ExitCode ExitCode::success{0};
const ExitCode ExitCode::failure{1};
const ExitCode ExitCode::validationFailure{64};

std::string CleanExit::description() const { return text ? *text : "--help"; }

std::string describeFailure(std::exception_ptr failure) {
  if (!failure)
    return "";
  try {
    std::rethrow_exception(failure);
  } catch (const LocalizedError &error) {
    if (std::optional<std::string> description = error.localizedDescription())
      return *description;
    if (const auto *plain = dynamic_cast<const std::exception *>(&error))
      return plain->what();
    return "unknown failure";
  } catch (const ValidationError &error) {
    return error.message;
  } catch (const CleanExit &error) {
    return error.description();
  } catch (const ExitCode &error) {
    return "ExitCode(" + std::to_string(error.rawValue) + ")";
  } catch (const std::exception &error) {
    return error.what();
  } catch (...) {
    return "unknown failure";
  }
}

} // namespace argparse
