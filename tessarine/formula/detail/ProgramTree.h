#pragma once

#include <cstdint>
#include <memory>

#include <tessarine/formula/detail/Program.h>

namespace tessarine::detail {

/// The tree of a node of a program as it stands at a cell: the way back from the compiler. Numbers have the text of
/// their values; source spans are not known.
std::unique_ptr<TAstNode> MakeTree(const TProgram& AProgram, const TProgramNode& ANode, int32_t ACol, int32_t ARow);

}  // namespace tessarine::detail
