#pragma once

#include <cstdint>

namespace tessarine::detail {

class TProgram;

/// Fills the flags of a program whose nodes are complete; ACol and ARow are the cell it was compiled at.
void FindProgramFlags(TProgram& AProgram, int32_t ACol, int32_t ARow);

}  // namespace tessarine::detail
