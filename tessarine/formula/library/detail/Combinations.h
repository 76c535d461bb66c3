#pragma once

/// Counts of selections. All arguments are whole numbers in doubles; what exceeds 2^53 is rounded, what exceeds a
/// double is an infinity, what has no meaning NaN.
namespace tessarine::detail {

/// Ways to choose AChosen of ANumber things: exact up to 2^53.
double CombinationCount(double ANumber, double AChosen);

/// Ways to choose AChosen of ANumber things in order.
double PermutationCount(double ANumber, double AChosen);

/// The product A * (A - AStep) * (A - 2 * AStep) ... of the positive factors; 1 for A up to 0.
double FallingProduct(double A, double AStep);

}  // namespace tessarine::detail
