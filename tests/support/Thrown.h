#pragma once

#include <string>
#include <utility>

#include <tessarine/platform/Errors.h>

namespace tessarine::test {

/// What AWork throws, as "format: TEXT" or "limit: TEXT" or "other: TEXT"; "nothing" when it does not.
template <typename TWork>
std::string Thrown(TWork&& AWork) {
  try {
    std::forward<TWork>(AWork)();
  } catch (const EFileFormat& error) {
    return std::string("format: ") + error.what();
  } catch (const ELimit& error) {
    return std::string("limit: ") + error.what();
  } catch (const ETessarineError& error) {
    return std::string("other: ") + error.what();
  }
  return "nothing";
}

}  // namespace tessarine::test
