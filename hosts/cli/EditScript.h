#pragma once

#include <cstdint>
#include <string>
#include <string_view>

namespace tessarine::cli {

class TSession;

/// What the lines of a script may say, for people.
std::string EditScriptHelp();

/// Carries out the edits of a script, a JSON object a line; empty lines are skipped. ASheetIndex is the sheet of those
/// that name none. Throws ECli with the script's name and the line; the workbook is then half edited and not to be
/// saved.
void RunEditScript(std::string_view AScript, const std::string& AName, TSession& ASession, int32_t ASheetIndex);

}  // namespace tessarine::cli
